#pragma once
// Paints one data cell of the record grid as DescribeCell decided it: texts,
// bytes, waveforms, mark badges and error tiles. The grid widget and the
// printed report share it, so paper shows what the screen shows.

#include <QColor>
#include <QFont>
#include <QRect>

#include "present/grid/cell_content.h"
#include "present/grid/grid_colours.h"

class QPainter;

namespace kestrel::grid {

struct CellPaintStyle {
    QFont textFont;       // the cells' text font (pixel sized)
    int zoomPercent = 100;
    QColor text;          // ordinary text and bytes
    QColor dim;           // the dump's divider and other faint cells
    GridColours colours;
    bool fillWaveform = true;
};

// The row background is painted already; the cell paints only its content.
void PaintCellContent(QPainter &p, const QRect &r, const GridCell &cell, const CellPaintStyle &style);

} // namespace kestrel::grid
