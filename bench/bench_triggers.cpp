// Loading many triggers: 100,000 appended to a trigger list, and environments
// of 3,000 and 30,000 triggers saved and loaded again (30,000 is near the
// largest settings file read, 16 MB). Linear loading grows about ten times
// from the smaller to the larger; a list that renumbered itself on every
// append grew a hundred.

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>

#include "config/environment.h"

using namespace kestrel;

namespace {

double loadSeconds(const std::filesystem::path &file, std::size_t triggers)
{
    Environment env;
    for (std::size_t i = 0; i < triggers; ++i) {
        TriggerDef t;
        t.Name = "trigger " + std::to_string(i);
        t.Data = "ATD";
        env.triggers.Append(t);
    }
    if (!SaveEnvironment(env, file)) {
        std::fprintf(stderr, "cannot write %s\n", file.c_str());
        return -1;
    }
    EnvLoadContext ctx;
    const auto t0 = std::chrono::steady_clock::now();
    const EnvLoadResult loaded = LoadEnvironment(file, ctx);
    const double s = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    if (loaded.env.triggers.size() != triggers) {
        std::fprintf(stderr, "loaded %zu of %zu triggers\n", loaded.env.triggers.size(), triggers);
        return -1;
    }
    return s;
}

} // namespace

double appendSeconds(std::size_t triggers)
{
    TriggerList list;
    TriggerDef t;
    const auto t0 = std::chrono::steady_clock::now();
    for (std::size_t i = 0; i < triggers; ++i)
        list.Append(t);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
}

int main()
{
    const std::filesystem::path file = std::filesystem::temp_directory_path() / "kestrel-bench-triggers.kef";
    const double small = loadSeconds(file, 3'000);
    const double large = loadSeconds(file, 30'000);
    std::filesystem::remove(file);
    if (small < 0 || large < 0)
        return 1;
    std::printf("trigger_list_append_100k: %.3f s\n", appendSeconds(100'000));
    std::printf("env_load_3k_triggers: %.3f s\n", small);
    std::printf("env_load_30k_triggers: %.3f s\n", large);
    std::printf("env_load_growth_3k_to_30k: %.1f x\n", large / small);
    return 0;
}
