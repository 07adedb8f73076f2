// kestrel-cli: record, inspect, export and search recordings without the window.

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "command.h"

namespace kestrel::cli {
std::vector<Command> &Commands()
{
    static std::vector<Command> commands;
    return commands;
}
} // namespace kestrel::cli

namespace {

void printUsage(std::FILE *to)
{
    auto cmds = kestrel::cli::Commands();
    std::sort(cmds.begin(), cmds.end(), [](const auto &a, const auto &b) { return std::strcmp(a.name, b.name) < 0; });
    std::fprintf(to, "usage: kestrel-cli COMMAND [OPTIONS]\n\ncommands:\n");
    for (const auto &c : cmds)
        std::fprintf(to, "  %-8s %s\n", c.name, c.summary);
    std::fprintf(to, "\n'kestrel-cli COMMAND --help' describes a command.\n");
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 2 || !std::strcmp(argv[1], "--help") || !std::strcmp(argv[1], "-h")) {
        printUsage(argc < 2 ? stderr : stdout);
        return argc < 2 ? kestrel::cli::kExitUsage : kestrel::cli::kExitOk;
    }
    for (const auto &c : kestrel::cli::Commands()) {
        if (std::strcmp(c.name, argv[1]) == 0)
            return c.run(std::vector<std::string>(argv + 2, argv + argc));
    }
    std::fprintf(stderr, "kestrel-cli: unknown command '%s'\n\n", argv[1]);
    printUsage(stderr);
    return kestrel::cli::kExitUsage;
}
