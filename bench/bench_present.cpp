// Throughput of the per-MP rendering work that the export and the grid repeat
// millions of times: time texts and byte texts.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <string>

#include "present/byte_render.h"
#include "present/time_text.h"
#include "base/string_table.h"

using namespace kestrel;

namespace {
template <typename F>
double PerSecond(long iterations, F &&f)
{
    const auto start = std::chrono::steady_clock::now();
    for (long i = 0; i < iterations; ++i)
        f(i);
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    return static_cast<double>(iterations) / took.count();
}
} // namespace

int main()
{
    constexpr long kN = 5'000'000;
    const double start = 46347.5;
    const double step = 104e-6 / 86400.0; // one character at 115200 baud
    TimeTextFormatter f(TimeLocale::Fixed(), kLangEnglish);
    std::string out;

    const double abs = PerSecond(kN, [&](long i) {
        out.clear();
        f.AppendText(out, TimeMode::Absolute, start + static_cast<double>(i) * step, 0, std::nullopt);
        benchmark::DoNotOptimize(out.data());
    });
    const double rel = PerSecond(kN, [&](long i) {
        out.clear();
        f.AppendText(out, TimeMode::Relative, start + static_cast<double>(i) * step, start, std::nullopt);
        benchmark::DoNotOptimize(out.data());
    });
    const double bytes = PerSecond(kN, [&](long i) {
        const auto b = static_cast<std::uint8_t>(i);
        std::string t = RenderByteText(b, CharMode::Ascii, Overlay::Mnemonic);
        t += ByteToHex(b);
        t += ByteToBin(b);
        benchmark::DoNotOptimize(t.data());
    });
    std::printf("time_text_absolute_per_s: %.0f texts/s\n", abs);
    std::printf("time_text_relative_per_s: %.0f texts/s\n", rel);
    std::printf("byte_text_per_s: %.0f bytes/s\n", bytes);
    return 0;
}
