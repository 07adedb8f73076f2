#include "present/grid/waveform.h"

namespace kestrel::grid {

namespace {

constexpr WavePoint TopLow{false, false};
constexpr WavePoint TopHigh{true, false};
constexpr WavePoint BottomLow{false, true};
constexpr WavePoint BottomHigh{true, true};

constexpr std::array<WaveShape, 8> kShapes = {{
    {{TopLow, BottomLow}, 2, false},                      // 0 0 0: stays low
    {{TopLow, BottomLow, BottomHigh}, 3, false},          // 0 0 1: rises after this MP
    {{TopLow, TopHigh, BottomHigh, BottomLow}, 4, true},  // 0 1 0: a pulse
    {{TopLow, TopHigh, BottomHigh}, 3, true},             // 0 1 1: rises at this MP
    {{TopHigh, TopLow, BottomLow}, 3, false},             // 1 0 0: falls at this MP
    {{TopHigh, TopLow, BottomLow, BottomHigh}, 4, false}, // 1 0 1: a gap
    {{TopHigh, BottomHigh, BottomLow}, 3, true},          // 1 1 0: falls after this MP
    {{TopHigh, BottomHigh}, 2, true},                     // 1 1 1: stays high
}};

} // namespace

int WaveformCase(std::uint8_t previous, std::uint8_t current, std::uint8_t next)
{
    return 4 * (previous != 0) + 2 * (current != 0) + (next != 0);
}

const WaveShape &WaveformShape(int waveCase)
{
    return kShapes[static_cast<std::size_t>(waveCase & 7)];
}

} // namespace kestrel::grid
