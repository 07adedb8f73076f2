#pragma once
// What the command line asks of the main window. The file rule is the old
// one: every argument after the program name is looked at, an argument is
// taken when it contains ".kef" (environment) or ".ksr" (record file)
// anywhere, case-sensitive, and a later match replaces an earlier one.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel {

struct StartupArgs {
    std::string environmentFile;        // last argument containing ".kef"
    std::string recordFile;             // last argument containing ".ksr"
    std::optional<std::string> dataDir; // --data-dir DIR
    bool simulate = false;              // --simulate [SCENARIO]
    std::string scenario;               // empty: the built-in demo scenario
    bool recordAtStart = false;         // --record: begin recording once the window is up
    std::optional<double> quitAfterSeconds; // --quit-after S: stop and close on its own (demos)
    bool help = false;                  // --help / -h
    bool verbose = false;               // --verbose / -v: every kestrel.* log category on
    std::vector<std::string> errors;    // bad options, as texts for the user
};

// The last of args[1..] that contains needle (plain substring, case-sensitive); empty when none.
[[nodiscard]] std::string LastArgContaining(const std::vector<std::string> &args, std::string_view needle);

// Where the environment file named in Kestrel.ini lives: a bare name, or a
// path written on Windows ("C:\Kestrel\line.kef", "\\server\share\line.kef"),
// is the file of that name in the data folder (which ends with '/'); an
// empty name is "Default.kef" there. Any other path is taken as it stands.
[[nodiscard]] std::string EnvironmentFilePath(const std::string &stored, const std::string &dataFolder);

// args[0] is the program name.
[[nodiscard]] StartupArgs ParseStartupArgs(const std::vector<std::string> &args);

} // namespace kestrel
