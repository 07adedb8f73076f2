// kestrel-chimer: the sound of a fired trigger. The main program starts it detached with
// -s FILE (play once) or -r FILE (repeat until stopped); a small window lets the user stop it.

#include <QApplication>
#include <QStringList>
#include <QTimer>

#include <cstdio>
#include <cstdlib>

#include "alert_player.h"
#include "alert_window.h"
#include "base/locale_language.h"
#include "chimer_args.h"
#include "sound_file_check.h"

using namespace kestrel::chimer;

namespace {

int fail(const QString &message, int code)
{
    std::fprintf(stderr, "kestrel-chimer: %s\n", qPrintable(message));
    return code;
}

// Qt aborts when its window system cannot be reached; saying so is kinder. Other platforms
// (offscreen, eglfs, ...) are left to Qt.
bool screenReachable()
{
    const auto value = [](const char *name) {
        const char *v = std::getenv(name);
        return QString::fromLocal8Bit(v ? v : "");
    };
    const QString platform = value("QT_QPA_PLATFORM").section(QLatin1Char(':'), 0, 0);
    if (platform.isEmpty())
        return !value("DISPLAY").isEmpty() || !value("WAYLAND_DISPLAY").isEmpty();
    if (platform == QLatin1String("xcb"))
        return !value("DISPLAY").isEmpty();
    if (platform.startsWith(QLatin1String("wayland")))
        return !value("WAYLAND_DISPLAY").isEmpty();
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    // Arguments and file are checked before Qt starts, so bad use never opens a window.
    QStringList args;
    for (int i = 1; i < argc; ++i)
        args << QString::fromLocal8Bit(argv[i]);
    const ChimerArgs parsed = ParseChimerArgs(args);
    if (parsed.mode == ChimerMode::Help) {
        std::fputs(qPrintable(ChimerUsage()), stdout);
        return kExitOk;
    }
    if (parsed.mode == ChimerMode::Invalid)
        return fail(parsed.error + QStringLiteral(" (try --help)"), kExitUsage);
    if (const QString problem = SoundFileProblem(parsed.file); !problem.isEmpty())
        return fail(problem, kExitFile);
    if (!screenReachable())
        return fail(QStringLiteral("no display to show the alert on (DISPLAY or WAYLAND_DISPLAY is not set)"),
                    kExitNoWindow);

    QApplication app(argc, argv);
    app.setApplicationName(QStringLiteral("kestrel-chimer"));

    AlertWindow window(parsed.file, kestrel::LanguageFromEnvironment());
    AlertPlayer player;
    int exitCode = kExitOk;
    QObject::connect(&window, &AlertWindow::stopRequested, &app, [&] {
        player.stop();
        app.exit(exitCode);
    });
    QObject::connect(&player, &AlertPlayer::playedOnce, &app, [&] { app.exit(exitCode); });
    QObject::connect(&player, &AlertPlayer::failed, &window, [&](const QString &reason) {
        exitCode = kExitFile; // the window stays, so the user sees why nothing sounds
        window.showError(reason);
    });
    if (parsed.quitAfterMs > 0)
        QTimer::singleShot(parsed.quitAfterMs, Qt::PreciseTimer, &app, [&] { app.exit(exitCode); });

    if (AlertPlayer::noAudioOutput())
        window.showNoSoundOutput();
    window.show();
    player.play(parsed.file, parsed.mode == ChimerMode::Repeat);
    return app.exec();
}
