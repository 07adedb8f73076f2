#pragma once
// Signal waveform of one grid cell. Time runs downward; the low level sits at
// the cell's left edge, the high level one step width to the right. The shape
// depends on the previous, current and next level: case = 4p + 2c + n.

#include <array>
#include <cstdint>

namespace kestrel::grid {

struct WavePoint {
    bool high = false;   // x1 (left + step) instead of x0 (left)
    bool bottom = false; // cell bottom + 1 instead of the top
};

struct WaveShape {
    std::array<WavePoint, 4> points{};
    int count = 0;
    bool fillable = false; // the current level is high: the band x0..x1 may be filled
};

[[nodiscard]] int WaveformCase(std::uint8_t previous, std::uint8_t current, std::uint8_t next);
[[nodiscard]] const WaveShape &WaveformShape(int waveCase);
// Step width: (cell width / 10) * 6, the division first.
[[nodiscard]] constexpr int WaveStepWidth(int cellWidth) { return (cellWidth / 10) * 6; }

// Pen width of the waveform; its colours follow the grid's (grid_colours.h).
inline constexpr int kWavePenWidth = 2;

} // namespace kestrel::grid
