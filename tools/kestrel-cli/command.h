#pragma once
// kestrel-cli sub-commands register themselves here, one source file each
// (cmd_record.cpp, cmd_export.cpp, ...), so that adding one touches no other file.

#include <functional>
#include <vector>

namespace CLI {
class App;
}

namespace kestrel::cli {

struct Command {
    const char *name;
    const char *summary; // one line for the overview
    // Declares the command's options and arguments on its sub-command (the one place they are
    // spelt) and returns what runs the command once they are parsed; that returns the exit code.
    std::function<int()> (*declare)(CLI::App &command);
};

// Holds each command registered so far; safe to call during static initialisation.
std::vector<Command> &Commands();

struct Registration {
    explicit Registration(Command c) { Commands().push_back(c); }
};

// Exit codes shared by the commands.
inline constexpr int kExitOk = 0;
inline constexpr int kExitNotFound = 1; // a search found nothing
inline constexpr int kExitUsage = 2;    // bad option or argument
inline constexpr int kExitFailure = 3;  // file, port or write failure

} // namespace kestrel::cli
