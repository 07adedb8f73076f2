#include <gtest/gtest.h>

#include "ports/port_support.h"
#include "ports/port_timing.h"

using namespace kestrel;

// The writer's character time (whole stop bits) and the simulated line's (half bits kept).
TEST(LineTiming, BitsAndCharacterTimeFromPortSettings)
{
    constexpr std::int64_t kF = 1'000'000'000;
    struct Case {
        PortSettings s;
        int bits, halfBits;
    };
    const Case cases[] = {
        {{9600, 8, Parity::None, StopBits::One}, 10, 20},
        {{9600, 7, Parity::Even, StopBits::Two}, 11, 22},
        {{300, 5, Parity::None, StopBits::OnePointFive}, 8, 15},
        {{300, 5, Parity::Mark, StopBits::Two}, 9, 17},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(BitsPerCharacter(c.s), c.bits);
        EXPECT_EQ(CharacterBitsTimesTwo(c.s), c.halfBits);
        const LineTiming t = ComputeLineTiming(c.s, kF);
        EXPECT_EQ(t.tchar, c.bits * kF / c.s.baud + 1);
        EXPECT_DOUBLE_EQ(t.cps, static_cast<double>(c.s.baud) / c.bits);
    }
}
