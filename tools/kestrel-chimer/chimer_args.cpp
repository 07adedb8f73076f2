#include "chimer_args.h"

#include <algorithm>

namespace kestrel::chimer {

namespace {

ChimerArgs invalid(const QString &why)
{
    ChimerArgs a;
    a.error = why;
    return a;
}

} // namespace

ChimerArgs ParseChimerArgs(const QStringList &args)
{
    ChimerArgs result;
    bool modeSeen = false;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString &arg = args[i];
        if (arg == QLatin1String("--help") || arg == QLatin1String("-h")) {
            ChimerArgs help;
            help.mode = ChimerMode::Help;
            return help;
        }
        if (arg == QLatin1String("--quit-after")) {
            if (i + 1 >= args.size())
                return invalid(QStringLiteral("--quit-after needs a time in milliseconds"));
            bool ok = false;
            const QString &value = args[++i];
            const int ms = value.toInt(&ok);
            // Digits only: toInt also takes a sign and blanks around the number.
            const bool digitsOnly = !value.isEmpty() && std::all_of(value.begin(), value.end(), [](QChar c) {
                return c >= QLatin1Char('0') && c <= QLatin1Char('9');
            });
            if (!ok || !digitsOnly || ms <= 0)
                return invalid(QStringLiteral("--quit-after takes a whole number of milliseconds above 0, not '%1'")
                                   .arg(value));
            result.quitAfterMs = ms;
            continue;
        }
        const bool modeOption =
            arg.size() >= 2 && arg[0] == QLatin1Char('-') && (arg[1] == QLatin1Char('s') || arg[1] == QLatin1Char('r'));
        if (modeOption) {
            const QString option = arg.left(2);
            if (modeSeen)
                return invalid(QStringLiteral("give only one of -s and -r"));
            modeSeen = true;
            result.mode = arg[1] == QLatin1Char('s') ? ChimerMode::Once : ChimerMode::Repeat;
            // The path is glued to the option or is the next argument, whatever it starts with.
            if (arg.size() > 2) {
                result.file = arg.mid(2);
            } else if (i + 1 < args.size()) {
                result.file = args[++i];
            } else {
                return invalid(QStringLiteral("%1 needs the sound file to play").arg(option));
            }
            if (result.file.isEmpty())
                return invalid(QStringLiteral("%1 needs the sound file to play").arg(option));
            continue;
        }
        if (arg.startsWith(QLatin1Char('-')))
            return invalid(QStringLiteral("unknown option '%1'").arg(arg));
        return invalid(QStringLiteral("unexpected argument '%1': put -s or -r before the file").arg(arg));
    }
    if (!modeSeen)
        return invalid(QStringLiteral("no sound file given: -s FILE plays it once, -r FILE repeats it"));
    return result;
}

QString ChimerUsage()
{
    return QStringLiteral(
        "Usage: kestrel-chimer -s FILE | -r FILE\n"
        "Plays a WAV or MP3 file as Kestrel's trigger alert and shows a window to stop it.\n"
        "\n"
        "  -s FILE   play the file once, then quit\n"
        "  -r FILE   play the file again and again until stopped\n"
        "  -h, --help  show this help\n"
        "\n"
        "The file may also follow the option directly (-sFILE).\n"
        "Exit codes: 0 done, 2 bad arguments, 3 file missing or not playable, 4 no screen.\n");
}

} // namespace kestrel::chimer
