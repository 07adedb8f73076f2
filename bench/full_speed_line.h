#pragma once
// The full-speed line of the live benchmarks: both ports at 921,600 baud,
// handed over 16 bytes at a time as a UART FIFO would, 1024 bytes per
// direction and pass, for ever.

#include <cstdio>
#include <string>

namespace kestrel::bench {

inline constexpr int kFullSpeedChunk = 16;  // bytes per hand-over
inline constexpr int kFullSpeedBlock = 1024; // bytes per direction and pass

// The scenario text (docs/scenario-format.md).
inline std::string FullSpeedScenario()
{
    auto hexBytes = [](int offset) {
        std::string s;
        for (int i = 0; i < kFullSpeedBlock; ++i) {
            char b[4];
            std::snprintf(b, sizeof b, "%02X ", (i + offset) & 0xFF);
            s += b;
        }
        return s;
    };
    return "baud 921600\nchunk " + std::to_string(kFullSpeedChunk) + "\nloop\nb " + hexBytes(0) + "\n& a " +
           hexBytes(128) + "\n";
}

} // namespace kestrel::bench
