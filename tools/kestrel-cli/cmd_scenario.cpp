// kestrel-cli scenario: checks a scenario file for the simulated line, or
// prints the built-in demo as a starting point for one's own.

#include <cstdio>
#include <memory>

#include "cli_common.h"
#include "ports/scenario.h"

namespace kestrel::cli {
namespace {

int runScenario(const std::string &file)
{
    ScenarioError err;
    const auto sc = LoadScenarioFile(file, err);
    if (!sc) {
        // The file's own text comes back in the reason: no control sequence of it reaches the terminal.
        std::fprintf(stderr, "kestrel-cli scenario: %s: %s\n", Printable(file).c_str(),
                     Printable(err.text()).c_str());
        return err.line > 0 ? kExitUsage : kExitFailure;
    }
    std::size_t bytesA = 0, bytesB = 0;
    for (const auto &st : sc->steps) {
        if (st.kind == ScenarioStep::Kind::Bytes)
            (st.port == kSimPortA ? bytesA : bytesB) += st.bytes.size();
    }
    std::printf("%s: %zu steps, %zu bytes on A (D2), %zu bytes on B (D1), %s\n", Printable(file).c_str(), sc->steps.size(),
                bytesA, bytesB,
                sc->loops == 0 ? "repeated for ever" : (std::to_string(sc->loops) + (sc->loops == 1 ? " pass" : " passes")).c_str());
    return kExitOk;
}

std::function<int()> declareScenario(CLI::App &cmd)
{
    struct Options {
        std::string file;
        bool demo = false;
    };
    auto o = std::make_shared<Options>();
    CLI::App *what = cmd.add_option_group("file or demo", "check FILE.ksc or print the demo");
    what->add_option("FILE.ksc", o->file, "the scenario to check")->type_name("");
    what->add_flag("--demo", o->demo, "print the built-in demo scenario, a starting point for one's own");
    what->require_option(1);
    return [o] {
        if (!o->demo)
            return runScenario(o->file);
        const auto text = DemoScenarioText();
        std::fwrite(text.data(), 1, text.size(), stdout);
        return kExitOk;
    };
}

const Registration reg({"scenario", "check a scenario file for the simulated line", declareScenario});

} // namespace
} // namespace kestrel::cli
