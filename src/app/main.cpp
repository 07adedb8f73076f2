// kestrel: the main window program.

#include <QApplication>
#include <QLoggingCategory>
#include <QSocketNotifier>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sys/socket.h>
#include <unistd.h>

#include "app/main_form.h"
#include "app/startup_args.h"
#include "config/data_folder.h"
#include "config/program_config.h"
#include "base/string_table.h"

namespace {

int g_signalPipe[2] = {-1, -1};
kestrel::TFormMain *g_window = nullptr; // set once the window is built

void onTerminate(int)
{
    const char c = 1;
    [[maybe_unused]] const auto n = ::write(g_signalPipe[1], &c, 1);
}

// SIGTERM / SIGINT end a recording cleanly (stop mark written) and close the window.
// Installed before the window is built: a signal during start-up (a question
// open, nothing recorded yet) simply ends the program.
void installTerminationHandler(QApplication &app)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, g_signalPipe) != 0)
        return;
    auto *notifier = new QSocketNotifier(g_signalPipe[0], QSocketNotifier::Read, &app);
    QObject::connect(notifier, &QSocketNotifier::activated, &app, [notifier] {
        char c = 0;
        [[maybe_unused]] const auto n = ::read(g_signalPipe[0], &c, 1);
        notifier->setEnabled(false);
        if (g_window == nullptr)
            ::_exit(0);
        g_window->quitCleanly();
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
    const char *usage = "usage: kestrel [--simulate [SCENARIO.ksc]] [--record] [--data-dir DIR] "
                        "[--quit-after SECONDS] [--verbose] [FILE.kef] [FILE.ksr]\n";
    if (parsed.help) {
        std::printf("%s", usage);
        return 0;
    }
    if (!parsed.errors.empty()) {
        for (const std::string &e : parsed.errors)
            std::fprintf(stderr, "kestrel: %s\n", e.c_str());
        std::fprintf(stderr, "%s", usage);
        return 2;
    }

    if (parsed.verbose)
        QLoggingCategory::setFilterRules(QStringLiteral("kestrel.*=true"));

    kestrel::MainFormOptions options;
    const std::filesystem::path dataFolder = kestrel::ResolveDataFolder(parsed.dataDir);
    const kestrel::Result made = kestrel::EnsureDataFolder(dataFolder);
    if (!made.ok())
        std::fprintf(stderr, "kestrel: cannot create the data folder %s: %s\n", dataFolder.c_str(),
                     made.detail.c_str());
    options.dataFolder = dataFolder.string();
    if (options.dataFolder.empty() || options.dataFolder.back() != '/')
        options.dataFolder += '/';
    // The language first, so that every window comes up in it.
    kestrel::SetGlobalLang(kestrel::LoadLanguageConfig(dataFolder / kestrel::kConfigFileName) == kestrel::kLangEnglish
                               ? kestrel::kLangEnglish
                               : kestrel::kLangGerman);
    options.args = std::move(parsed);

    installTerminationHandler(app);
    kestrel::TFormMain window(std::move(options));
    g_window = &window;
    window.show();
    const int rc = QApplication::exec();
    g_window = nullptr;
    return rc;
}
