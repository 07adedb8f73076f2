// kestrel-cli: record, inspect, export and search recordings without the window.

#include <QLoggingCategory>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>
#include <string>

#include "base/build_info.h"
#include "cli_common.h"
#include "command.h"

namespace kestrel::cli {
std::vector<Command> &Commands()
{
    static std::vector<Command> commands;
    return commands;
}
} // namespace kestrel::cli

namespace {

// The commands parsed so far, outermost first ("env", "show").
std::vector<CLI::App *> parsedCommands(CLI::App &app)
{
    std::vector<CLI::App *> path;
    for (CLI::App *a = &app; !a->get_subcommands().empty();) {
        a = a->get_subcommands().front();
        path.push_back(a);
    }
    return path;
}

// The first word that is no option after the given commands: the command the user meant there.
const char *wordAfter(const std::vector<CLI::App *> &path, int argc, char **argv)
{
    std::size_t matched = 0;
    for (int i = 1; i < argc; ++i) {
        if (argv[i][0] == '-')
            continue;
        if (matched == path.size())
            return argv[i];
        if (path[matched]->get_name() == argv[i])
            ++matched;
    }
    return nullptr;
}

} // namespace

int main(int argc, char **argv)
{
    using namespace kestrel::cli;
    CLI::App app("Records, inspects, exports and searches Kestrel recordings without the window.", "kestrel-cli");
    app.require_subcommand(1);
    // Options named again take the last value; options of the program (--verbose) may follow a command.
    app.option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
    app.fallthrough();
    bool verbose = false;
    app.add_flag("-v,--verbose", verbose, "log what the ports, capture and recorder do (to standard error)");
    app.set_version_flag("--version", "kestrel-cli " + kestrel::BuildVersion() + " (built " + kestrel::BuildDate() + ")");

    auto commands = Commands();
    std::sort(commands.begin(), commands.end(), [](const auto &a, const auto &b) { return std::strcmp(a.name, b.name) < 0; });
    std::vector<std::pair<CLI::App *, std::function<int()>>> runs;
    for (const Command &c : commands) {
        CLI::App *sub = app.add_subcommand(c.name, c.summary);
        runs.emplace_back(sub, c.declare(*sub));
    }
    app.footer("'kestrel-cli COMMAND --help' describes a command."); // after the commands: they would inherit it

    if (argc < 2) {
        std::fputs(app.help().c_str(), stderr);
        return kExitUsage;
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp &e) {
        return app.exit(e);
    } catch (const CLI::CallForAllHelp &e) {
        return app.exit(e);
    } catch (const CLI::CallForVersion &e) {
        return app.exit(e);
    } catch (const CLI::ParseError &e) {
        const std::vector<CLI::App *> path = parsedCommands(app);
        CLI::App &last = path.empty() ? app : *path.back();
        std::string name;
        for (const CLI::App *a : path)
            name += (name.empty() ? "" : " ") + a->get_name();
        if (last.get_require_subcommand_min() > 0 && last.get_subcommands().empty()) {
            // A command of commands (kestrel-cli, kestrel-cli env) without a known one after it.
            std::string outer = "kestrel-cli"; // what stands before the last command in its usage line
            for (std::size_t i = 0; i + 1 < path.size(); ++i)
                outer += " " + path[i]->get_name();
            const std::string prefix = "kestrel-cli" + (name.empty() ? "" : " " + name);
            if (const char *word = wordAfter(path, argc, argv))
                std::fprintf(stderr, "%s: unknown command '%s'\n\n", prefix.c_str(), word);
            else
                std::fprintf(stderr, "%s: no command given\n\n", prefix.c_str());
            std::fputs((path.empty() ? app.help() : last.help(outer)).c_str(), stderr);
            return kExitUsage;
        }
        return UsageError(name, e.what());
    }
    if (verbose)
        QLoggingCategory::setFilterRules(QStringLiteral("kestrel.*=true"));
    // No exception ends the program unexplained: out of memory or anything else unforeseen
    // is one line and exit code 3.
    try {
        for (auto &[sub, run] : runs)
            if (sub->parsed())
                return run();
    } catch (const std::bad_alloc &) {
        std::fputs("kestrel-cli: out of memory\n", stderr);
        return kExitFailure;
    } catch (const std::exception &e) {
        std::fprintf(stderr, "kestrel-cli: stopped by an unexpected error: %s\n", e.what());
        return kExitFailure;
    }
    return kExitUsage;
}
