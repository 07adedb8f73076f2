#pragma once
// What each grid cell shows, decided without a window: the painter asks for
// a cell and draws what comes back. The same decision feeds the status line.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "present/byte_render.h"
#include "present/grid/fetch_buffer.h"
#include "present/grid/grid_layout.h"
#include "present/grid/mark_cell.h"
#include "present/grid/view_modes.h"
#include "present/time_text.h"

namespace kestrel::grid {

enum class ContentKind {
    Empty,     // nothing (beyond the recording, or no byte on that circuit)
    Text,      // plain text at left + 2, top + 2 (numbers, times, names)
    Byte,      // a data byte as RenderByte decided it
    Waveform,  // a level line; waveCase 0..7
    Mark,      // the mark/trigger cell
    Errors,    // the PE/FE/LE markers
};

enum class TextTone { Normal, Dim, Description, LineName };

struct GridCell {
    ContentKind kind = ContentKind::Empty;
    std::string text;
    TextTone tone = TextTone::Normal;
    CellContent byte;
    int waveCase = 0;
    MarkStyle mark = MarkStyle::None;
    ErrorMarks errors;
};

// Everything the decision reads. The buffer's slot 0 is the MP at position.
struct GridFrame {
    ViewShape shape;
    const GridModes *modes = nullptr;
    const FetchBuffer *buffer = nullptr;
    std::uint64_t position = 0;
    int lang = 0;              // language offset, 0 or 10000
    double relativeBase = 0.0; // start of relative time
    bool recordingOpen = true; // false: the grid shows no recording at all
};

// The MP a cell shows, or nullptr when its slot lies beyond the recording.
[[nodiscard]] const MpRecord *CellMp(const GridFrame &f, int col, int row);

[[nodiscard]] GridCell DescribeCell(const GridFrame &f, int col, int row, TimeTextFormatter &times);

// Status line texts for the current cell, one per status panel: the MP
// number, its time ("Tx:"), the time from the MP before it ("Dx:") and the
// running error counts ("PE:", "FE:", "LE:"). Without an MP, one text saying
// why: no recording open, or no MP in this row.
[[nodiscard]] std::vector<std::string> StatusLine(const GridFrame &f, int col, int row, TimeTextFormatter &times);

} // namespace kestrel::grid
