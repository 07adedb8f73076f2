#pragma once
// The colours the record grid paints with besides its palette's: row tint, cell
// lines, description text, the current cell, error tiles, waveforms and the mark
// badges. There is one set for a light base and one for a dark base; the grid
// takes the set that suits its palette, and a style sheet may set any single
// colour through the grid's properties (#DrawGrid1 { qproperty-waveLine: #9aa4b1; }).

#include <QColor>
#include <array>

#include "present/grid/mark_cell.h"

namespace kestrel::grid {

struct GridColours {
    QColor d2RowTint;   // rows that carry port A's data (D2)
    QColor gridLine;    // lines between data cells
    QColor description; // the vertical view's description texts
    QColor currentCell; // background of the cell with the focus frame
    QColor errorBack;   // the tiles of PE, FE, LE
    QColor errorText;
    QColor waveLine;    // the level line of S1 ... M3
    QColor waveFill;    // the band under a high level
    // Mark badges, indexed by MarkStyle (None unused).
    std::array<QColor, 7> markBack;
    std::array<QColor, 7> markText;
};

[[nodiscard]] GridColours LightGridColours();
[[nodiscard]] GridColours DarkGridColours();
// A base colour this dark takes the dark set.
[[nodiscard]] bool IsDarkBase(const QColor &base);

[[nodiscard]] inline int MarkIndex(MarkStyle style) { return static_cast<int>(style); }

} // namespace kestrel::grid
