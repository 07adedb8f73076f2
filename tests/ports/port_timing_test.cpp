#include <gtest/gtest.h>

#include "ports/port_timing.h"

using namespace kestrel;

namespace {
constexpr std::int64_t kF = 1'000'000'000;
}

TEST(LineTiming, BitsAndCharacterTimeFromPortSettings)
{
    struct Case {
        PortSettings s;
        int bits;
        std::int64_t tchar;
    };
    const Case cases[] = {
        {{9600, 8, Parity::None, StopBits::One}, 10, 10 * kF / 9600 + 1},
        {{9600, 7, Parity::Even, StopBits::Two}, 11, 11 * kF / 9600 + 1},
        {{300, 5, Parity::None, StopBits::OnePointFive}, 8, 8 * kF / 300 + 1},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(BitsPerCharacter(c.s), c.bits);
        const LineTiming t = ComputeLineTiming(c.s, kF);
        EXPECT_EQ(t.tchar, c.tchar);
        EXPECT_DOUBLE_EQ(t.cps, static_cast<double>(c.s.baud) / c.bits);
    }
}

