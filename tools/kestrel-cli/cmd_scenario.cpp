// kestrel-cli scenario: checks a scenario file for the simulated line, or
// prints the built-in demo as a starting point for one's own.

#include <cstdio>

#include "ports/scenario.h"
#include "command.h"

namespace kestrel::cli {
namespace {

int runScenario(const std::vector<std::string> &args)
{
    if (args.size() != 1 || args[0] == "--help" || args[0] == "-h") {
        std::fprintf(args.size() == 1 ? stdout : stderr,
                     "usage: kestrel-cli scenario FILE.ksc   check a scenario\n"
                     "       kestrel-cli scenario --demo     print the built-in demo scenario\n");
        return args.size() == 1 ? kExitOk : kExitUsage;
    }
    if (args[0] == "--demo") {
        const auto text = DemoScenarioText();
        std::fwrite(text.data(), 1, text.size(), stdout);
        return kExitOk;
    }
    ScenarioError err;
    const auto sc = LoadScenarioFile(args[0], err);
    if (!sc) {
        std::fprintf(stderr, "kestrel-cli scenario: %s: %s\n", args[0].c_str(),
                     err.line > 0 ? err.text().c_str() : err.reason.c_str());
        return err.line > 0 ? kExitUsage : kExitFailure;
    }
    std::size_t bytesA = 0, bytesB = 0;
    for (const auto &st : sc->steps) {
        if (st.kind == ScenarioStep::Kind::Bytes)
            (st.port == kSimPortA ? bytesA : bytesB) += st.bytes.size();
    }
    std::printf("%s: %zu steps, %zu bytes on A (D2), %zu bytes on B (D1), %s\n", args[0].c_str(), sc->steps.size(),
                bytesA, bytesB,
                sc->loops == 0 ? "repeated for ever" : (std::to_string(sc->loops) + (sc->loops == 1 ? " pass" : " passes")).c_str());
    return kExitOk;
}

const Registration reg({"scenario", "check a scenario file for the simulated line", runScenario});

} // namespace
} // namespace kestrel::cli
