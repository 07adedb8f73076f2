#pragma once
// Drawing of one data byte and of a level waveform into a grid cell. The
// glyph, caret and mnemonic drawings use the monospace cell font at the
// sizes of the character panel; the caller's pen, brush and font are kept.

#include <QColor>
#include <QFont>
#include <QRect>
#include <QString>

#include "present/byte_render.h"

class QPainter;

namespace kestrel::grid {

// One glyph, vertically centred in the rectangle, aligned as asked.
void TextOutUnicode(QPainter &p, const QRect &cell, char16_t glyph, Qt::Alignment horizontal = Qt::AlignHCenter,
                    double scale = 1.0);
// Caret notation: a small "^" in the corner and the letter below it.
void TextOutCtrlChar(QPainter &p, const QRect &cell, double hScale, double vScale, const QString &caretText);
// A two- or three-letter mnemonic on a diagonal; other lengths draw nothing.
void TextOutCmdChar(QPainter &p, const QRect &cell, double hScale, double vScale, const QString &mnemonic);

// Below this a number is no longer read reliably; a cell too narrow for it shows "…".
inline constexpr int kSmallestNumberPixels = 8;
// textFont, made smaller where needed so that the whole of text fits width.
[[nodiscard]] QFont NumberFont(const QFont &textFont, const QString &text, int width);

// The whole cell decision of a byte: glyph, caret, mnemonic or number text.
// zoomPercent scales the glyph, caret and mnemonic drawings with the grid's font size.
void DrawByteCell(QPainter &p, const QRect &cell, const CellContent &content, const QFont &textFont,
                  int zoomPercent = 100);

// The level line of one cell (case 0..7); fill paints the high band first.
void DrawWaveform(QPainter &p, const QRect &cell, int waveCase, bool fill, const QColor &line, const QColor &band);

} // namespace kestrel::grid
