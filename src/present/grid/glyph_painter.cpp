#include "present/grid/glyph_painter.h"

#include <QFont>
#include <QFontMetricsF>
#include <QPainter>
#include <QPolygon>
#include <algorithm>

#include "present/grid/grid_layout.h"
#include "present/grid/waveform.h"

namespace kestrel::grid {

namespace {

constexpr int kCaretLetterPoints = 8; // the letter under the caret

// The sizes are given in points at 96 dpi and set in pixels, like the grid's
// text font: a glyph keeps its size in the fixed-height row on any screen and
// on a printed page, whose painter maps 96 units to the inch.
QFont CellFont(double pointSize)
{
    QFont f(QString::fromLatin1(kCellFontFamily.data(), static_cast<int>(kCellFontFamily.size())));
    f.setStyleHint(QFont::Monospace);
    f.setPixelSize(std::max(1, static_cast<int>(pointSize * 96.0 / 72.0 + 0.5)));
    f.setBold(false);
    f.setItalic(false);
    return f;
}

// scale: the grid's zoom; the letters' sizes and steps grow with it.
void DrawLetters(QPainter &p, const QRect &cell, const LetterDrawing &d, double scale)
{
    if (d.count == 0)
        return;
    // Sizes and horizontal steps stay as given. A grid row (16 px, the last
    // one the grid line) is too low for the vertical steps of a three-letter
    // mnemonic: its last letter would end 4 px below the row and read as a
    // smudge. There the vertical steps shrink just enough to keep every
    // letter whole; a cell with room keeps them unchanged.
    const LetterPlacement &last = d.letters[static_cast<std::size_t>(d.count - 1)];
    double squeeze = 1.0;
    if (last.dy > 0) {
        const double room = cell.height() - 1 - QFontMetricsF(CellFont(last.fontSize * scale)).capHeight();
        squeeze = std::clamp(room / last.dy, 0.0, 1.0);
    }
    p.save();
    p.setClipRect(cell);
    for (int i = 0; i < d.count; ++i) {
        const LetterPlacement &l = d.letters[static_cast<std::size_t>(i)];
        if (l.letter == '^') {
            // Drawn, not taken from the font: a 5-point "^" is 2 or 3 pixels high and reads
            // as an accent. A chevron as wide as the letter below it reads as a caret.
            const double w =
                QFontMetricsF(CellFont(kCaretLetterPoints * scale)).horizontalAdvance(QLatin1Char('M')) * 0.8;
            const double x = cell.left() + l.dx + 1, y = cell.top() + 1.5 * scale;
            p.setRenderHint(QPainter::Antialiasing, true);
            p.setPen(QPen(p.pen().color(), 1.2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
            const QPointF chevron[3] = {{x, y + 3.5 * scale}, {x + w / 2, y}, {x + w, y + 3.5 * scale}};
            p.drawPolyline(chevron, 3);
            continue;
        }
        const QFont f = CellFont(l.fontSize * scale);
        p.setFont(f);
        // The offsets place the top of a capital letter; the monospace font's
        // ascent has much more room above its capitals than the fonts these
        // sizes were chosen for, and the letters would fall out of the row.
        const QFontMetricsF fm(f);
        const QPointF baseline(cell.left() + l.dx, cell.top() + l.dy * squeeze + fm.capHeight());
        p.drawText(baseline, QString(QChar::fromLatin1(l.letter)));
    }
    p.restore();
}

} // namespace

void TextOutUnicode(QPainter &p, const QRect &cell, char16_t glyph, Qt::Alignment horizontal, double scale)
{
    if (glyph == 0 || cell.width() <= 0)
        return;
    p.save();
    p.setFont(CellFont(kGlyphFontSize * scale));
    p.drawText(cell, static_cast<int>(horizontal | Qt::AlignVCenter | Qt::TextSingleLine), QString(QChar(glyph)));
    p.restore();
}

void TextOutCtrlChar(QPainter &p, const QRect &cell, double hScale, double vScale, const QString &caretText)
{
    DrawLetters(p, cell, CaretDrawing(caretText.toStdString(), hScale, vScale), std::min(hScale, vScale));
}

void TextOutCmdChar(QPainter &p, const QRect &cell, double hScale, double vScale, const QString &mnemonic)
{
    DrawLetters(p, cell, MnemonicDrawing(mnemonic.toStdString(), hScale, vScale), std::min(hScale, vScale));
}

QFont NumberFont(const QFont &textFont, const QString &text, int width)
{
    // The grid's font, made smaller (down to the smallest size that still reads) until
    // the whole number fits its cell.
    QFont f = textFont;
    const int from = f.pixelSize() > 0 ? f.pixelSize() : 11;
    for (int size = from; size >= kSmallestNumberPixels; --size) {
        f.setPixelSize(size);
        if (QFontMetrics(f).horizontalAdvance(text) <= width)
            break;
    }
    return f;
}

void DrawByteCell(QPainter &p, const QRect &cell, const CellContent &content, const QFont &textFont, int zoomPercent)
{
    const double scale = zoomPercent / 100.0;
    switch (content.kind) {
    case CellKind::Glyph:
        TextOutUnicode(p, cell, content.glyph, Qt::AlignHCenter, scale);
        break;
    case CellKind::Caret:
        TextOutCtrlChar(p, cell, scale, scale, QString::fromStdString(content.text));
        break;
    case CellKind::Mnemonic:
        TextOutCmdChar(p, cell, scale, scale, QString::fromStdString(content.text));
        break;
    case CellKind::Number: {
        p.save();
        p.setFont(NumberFont(textFont, QString::fromStdString(content.text), cell.width() - kCellTextDx));
        p.setClipRect(cell);
        const QString text = QString::fromStdString(content.text);
        // A value that does not fit even the smallest readable size shows as "…", never cut
        // to digits that read as another value.
        const bool fits = QFontMetrics(p.font()).horizontalAdvance(text) <= cell.width() - kCellTextDx;
        p.drawText(cell.adjusted(kCellTextDx, kCellTextDy, 0, 0), Qt::AlignLeft | Qt::AlignTop,
                   fits ? text : QStringLiteral("…"));
        p.restore();
        break;
    }
    case CellKind::Nothing:
        break;
    }
}

void DrawWaveform(QPainter &p, const QRect &cell, int waveCase, bool fill, const QColor &line, const QColor &band)
{
    const WaveShape &shape = WaveformShape(waveCase);
    // One pixel in, so that the 2-pixel pen is not half clipped at the edge.
    const int x0 = cell.left() + 1;
    const int x1 = x0 + WaveStepWidth(cell.width());
    const int top = cell.top();
    const int bottom = cell.bottom() + 1;
    p.save();
    p.setClipRect(cell);
    if (fill && shape.fillable)
        p.fillRect(QRect(QPoint(x0, top), QPoint(x1, bottom)), band);
    QPen pen(line, kWavePenWidth, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin);
    p.setPen(pen);
    p.setBrush(QBrush(band, Qt::SolidPattern));
    QPolygon levels;
    for (int i = 0; i < shape.count; ++i) {
        const WavePoint &pt = shape.points[static_cast<std::size_t>(i)];
        levels << QPoint(pt.high ? x1 : x0, pt.bottom ? bottom : top);
    }
    p.drawPolyline(levels);
    p.restore();
}

} // namespace kestrel::grid
