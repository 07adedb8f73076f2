// kestrel: the main window program.

#include <QApplication>
#include <QSocketNotifier>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sys/socket.h>
#include <unistd.h>

#include "app/main_form.h"
#include "app/startup_args.h"
#include "resources/string_table.h"

namespace {

int g_signalPipe[2] = {-1, -1};

void onTerminate(int)
{
    const char c = 1;
    [[maybe_unused]] const auto n = ::write(g_signalPipe[1], &c, 1);
}

// SIGTERM / SIGINT end a recording cleanly (stop mark written) and close the window.
void installTerminationHandler(kestrel::TFormMain &window)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, g_signalPipe) != 0)
        return;
    auto *notifier = new QSocketNotifier(g_signalPipe[0], QSocketNotifier::Read, &window);
    QObject::connect(notifier, &QSocketNotifier::activated, &window, [&window, notifier] {
        char c = 0;
        [[maybe_unused]] const auto n = ::read(g_signalPipe[0], &c, 1);
        notifier->setEnabled(false);
        window.quitCleanly();
    });
    struct sigaction sa {};
    sa.sa_handler = onTerminate;
    sigemptyset(&sa.sa_mask);
    sa.sa_flags = SA_RESTART;
    sigaction(SIGTERM, &sa, nullptr);
    sigaction(SIGINT, &sa, nullptr);
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QApplication::setOrganizationName("Kestrel");

    std::vector<std::string> args;
    for (const QString &a : QApplication::arguments())
        args.push_back(a.toStdString());
    kestrel::StartupArgs parsed = kestrel::ParseStartupArgs(args);
    if (!parsed.errors.empty()) {
        for (const std::string &e : parsed.errors)
            std::fprintf(stderr, "kestrel: %s\n", e.c_str());
        std::fprintf(stderr, "usage: kestrel [--simulate [SCENARIO]] [--record] [--data-dir DIR] "
                             "[--quit-after SECONDS] [FILE.kef] [FILE.ksr]\n");
        return 2;
    }

    kestrel::MainFormOptions options;
    options.dataFolder = kestrel::ResolveDataFolder(parsed.dataDir, std::getenv("KESTREL_DATA_DIR"),
                                                    std::getenv("XDG_DATA_HOME"), std::getenv("HOME"));
    std::error_code ec;
    for (const char *sub : {"recordings", "profiles", "themes"})
        std::filesystem::create_directories(options.dataFolder + sub, ec);
    if (ec)
        std::fprintf(stderr, "kestrel: cannot create the data folder %s: %s\n", options.dataFolder.c_str(),
                     ec.message().c_str());
    options.args = std::move(parsed);

    kestrel::TFormMain window(std::move(options));
    installTerminationHandler(window);
    window.show();
    return QApplication::exec();
}
