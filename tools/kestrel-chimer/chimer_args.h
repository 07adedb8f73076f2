#pragma once
// The command line of kestrel-chimer: which sound file to play, and once or until stopped.

#include <QString>
#include <QStringList>

namespace kestrel::chimer {

// Exit codes the main program and scripts can tell apart.
inline constexpr int kExitOk = 0;
inline constexpr int kExitUsage = 2;    // bad option or argument
inline constexpr int kExitFile = 3;     // the file is missing, unreadable or no sound
inline constexpr int kExitNoWindow = 4; // no screen to show the alert on

enum class ChimerMode { Once, Repeat, Help, Invalid };

struct ChimerArgs {
    ChimerMode mode = ChimerMode::Invalid;
    QString file;
    int quitAfterMs = 0; // 0: run until stopped or played; tests set it so a silent machine cannot hang them
    QString error;       // why the arguments are invalid, for one line on stderr
};

// Reads the arguments after the program name: "-s FILE" or "-sFILE" plays once, "-r FILE" or
// "-rFILE" repeats, "--help" (or "-h") asks for the usage. "--quit-after MS" is for tests.
[[nodiscard]] ChimerArgs ParseChimerArgs(const QStringList &args);

// What --help prints.
[[nodiscard]] QString ChimerUsage();

} // namespace kestrel::chimer
