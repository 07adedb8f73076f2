#include "present/grid/cell_painter.h"

#include <QPainter>
#include <QString>

#include "present/grid/glyph_painter.h"
#include "present/grid/grid_layout.h"

namespace kestrel::grid {

namespace {
QString Q(const std::string &s) { return QString::fromStdString(s); }
} // namespace

void PaintCellContent(QPainter &p, const QRect &r, const GridCell &cell, const CellPaintStyle &style)
{
    switch (cell.kind) {
    case ContentKind::Empty:
        break;
    case ContentKind::Text: {
        p.save();
        p.setClipRect(r);
        QColor c = style.text;
        if (cell.tone == TextTone::Description)
            c = style.colours.description;
        else if (cell.tone == TextTone::Dim)
            c = style.dim;
        p.setFont(style.textFont);
        if (cell.tone == TextTone::LineName) {
            QFont bold = style.textFont;
            bold.setBold(true);
            p.setFont(bold);
        }
        p.setPen(c);
        p.drawText(r.adjusted(kCellTextDx, kCellTextDy, 0, 0), Qt::AlignLeft | Qt::AlignTop, Q(cell.text));
        p.restore();
        break;
    }
    case ContentKind::Byte:
        p.setPen(cell.tone == TextTone::Dim ? style.dim : style.text);
        DrawByteCell(p, r, cell.byte, style.textFont, style.zoomPercent);
        break;
    case ContentKind::Waveform:
        DrawWaveform(p, r, cell.waveCase, style.fillWaveform, style.colours.waveLine, style.colours.waveFill);
        break;
    case ContentKind::Mark: {
        const auto mark = static_cast<std::size_t>(MarkIndex(cell.mark));
        const QRect badge = r.adjusted(2, 1, -2, -2);
        p.save();
        p.setRenderHint(QPainter::Antialiasing, true);
        p.setPen(style.colours.markText[mark]);
        p.setBrush(style.colours.markBack[mark]);
        p.drawRoundedRect(badge, 3, 3);
        QFont f = style.textFont;
        f.setBold(true);
        f.setPixelSize(Zoomed(10, style.zoomPercent));
        p.setFont(f);
        p.setClipRect(badge);
        // Bottom-aligned inside the border, so that the low line of
        // "T_4" or "E_0" stays clear of the tag's edge.
        p.drawText(badge.adjusted(1, 0, -1, -1), Qt::AlignHCenter | Qt::AlignBottom, Q(cell.text));
        p.restore();
        break;
    }
    case ContentKind::Errors: {
        // One small red tile per error, in the order P, F, L.
        p.save();
        QFont f = style.textFont;
        f.setBold(true);
        f.setPixelSize(Zoomed(9, style.zoomPercent));
        p.setFont(f);
        p.setClipRect(r);
        int x = r.left() + 2;
        const std::string letters = ErrorLetters(cell.errors);
        for (char letter : letters) {
            const QRect tile(x, r.top() + 3, 9, r.height() - 6);
            p.fillRect(tile, style.colours.errorBack);
            p.setPen(style.colours.errorText);
            p.drawText(tile, Qt::AlignCenter, QString(QChar::fromLatin1(letter)));
            x += 11;
        }
        p.restore();
        break;
    }
    }
}

} // namespace kestrel::grid
