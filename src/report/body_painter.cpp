#include "report/body_painter.h"

#include <QPainter>
#include <algorithm>

#include "present/grid/cell_content.h"

namespace kestrel::report {

namespace {
// The report's grid is printed on white, as the light screen set shows it.
const QColor kHeadBack(0xe6, 0xe8, 0xec);
const QColor kHeadLine(0x9a, 0xa0, 0xa8);
constexpr int kTextPixels = 11; // the grid's cell text at 100 %
// Room for "carriage return <---|---> line feed" in the vertical view's last column.
constexpr int kDescriptionWidth = 190;
} // namespace

int ViewOf(ReportBody body)
{
    switch (body) {
    case ReportBody::Dump: return grid::kViewDataDump;
    case ReportBody::DataOnly: return grid::kViewDataOnly;
    case ReportBody::Vertical: break;
    }
    return grid::kViewVertical;
}

BodyPainter::BodyPainter(const RecordReader &reader, const ReportRequest &request, double width)
    : reader_(reader), request_(request), buffer_(std::make_unique<grid::FetchBuffer>()),
      times_(TimeLocale::System(), request.lang)
{
    const int view = ViewOf(request.body);
    const int charMode = request.charMode == 0 ? CharMode::Ascii : request.charMode;
    modes_.panel.view = view;
    modes_.panel.charMode = charMode;
    modes_.panel.secondaryMode = request.secondaryMode;
    modes_.panel.overlay = request.controlMode;
    modes_.SetTimeMode(request.timeMode);
    modes_.SetNaming(request.namingSet);

    clientWidth_ = static_cast<int>(width);
    shape_ = grid::ShapeForView(view, clientWidth_, charMode);
    // The vertical view's description takes what the other columns leave; a
    // view wider than the paper is drawn smaller rather than cut.
    int needed = grid::TotalWidth(shape_, clientWidth_, request.secondaryMode);
    if (view == grid::kViewVertical) {
        const int description = grid::ColumnWidth(shape_, shape_.columns - 1, clientWidth_, request.secondaryMode);
        needed = std::max(needed, needed - std::max(description, 0) + kDescriptionWidth);
    }
    if (needed > clientWidth_) {
        scale_ = width / needed;
        clientWidth_ = needed;
    }

    MpRecord mp;
    if (reader.read(reader.recordCount() > 1 ? 1 : 0, mp))
        relativeBase_ = mp.time;

    style_.textFont = QFont(QStringLiteral("DejaVu Sans"));
    style_.textFont.setPixelSize(kTextPixels);
    style_.textFont.setStretch(QFont::SemiCondensed);
    style_.text = Qt::black;
    style_.dim = QColor(0xa0, 0xa0, 0xa0);
    style_.colours = grid::LightGridColours();
    style_.fillWaveform = true;
}

BodyUnits BodyPainter::units() const
{
    const std::uint64_t mps = request_.last - request_.first + 1;
    const std::uint64_t per = mpsPerUnit();
    BodyUnits u;
    u.count = (mps + per - 1) / per;
    u.unitHeight = shape_.rowHeight * shape_.rowsPerLine * scale_;
    u.headHeight = shape_.rowHeight * scale_;
    return u;
}

std::uint64_t BodyPainter::MpsUpTo(std::uint64_t endUnit) const
{
    return std::min(request_.last - request_.first + 1, endUnit * mpsPerUnit());
}

void BodyPainter::PaintHeadRow(QPainter &p)
{
    QFont f = style_.textFont;
    p.setFont(f);
    for (int col = 0; col < shape_.columns; ++col) {
        const int w = grid::ColumnWidth(shape_, col, clientWidth_, request_.secondaryMode);
        if (w <= 0)
            continue;
        const QRect r(grid::ColumnLeft(shape_, col, clientWidth_, request_.secondaryMode), 0, w, shape_.rowHeight);
        p.fillRect(r, kHeadBack);
        const bool ruler = shape_.view != grid::kViewVertical && col >= 2;
        const QRect text = ruler ? r.adjusted(grid::kRulerTextDx, grid::kRulerTextDy, 0, 0)
                                 : r.adjusted(grid::kHeaderTextDx, grid::kCellTextDy, 0, 0);
        p.save();
        p.setClipRect(r);
        p.setPen(Qt::black);
        p.drawText(text, Qt::AlignLeft | Qt::AlignTop,
                   QString::fromStdString(grid::HeaderText(shape_, col, modes_.namingSet(), modes_.timeMode(),
                                                           request_.lang)));
        p.restore();
        p.fillRect(QRect(r.right(), r.top(), 1, r.height()), kHeadLine);
        p.fillRect(QRect(r.left(), r.bottom(), r.width(), 1), kHeadLine);
    }
}

bool BodyPainter::Paint(QPainter &p, double y, std::uint64_t first, std::uint64_t end)
{
    if (end <= first)
        return true;
    const std::uint64_t count = reader_.recordCount();
    const std::uint64_t from = request_.first + first * mpsPerUnit();
    const std::uint64_t to = std::min(request_.last, request_.first + end * mpsPerUnit() - 1);
    // The MP before the page for delta times and the dump's divider; in the
    // vertical view the one after it for the waveform's next level.
    const std::uint64_t lo = from > 0 ? from - 1 : 0;
    std::uint64_t hi = to;
    if (shape_.view == grid::kViewVertical && to + 1 < count)
        hi = to + 1;
    const std::uint64_t want = hi - lo + 1;
    const bool complete = reader_.readBlock(lo, want, records_) == want;
    // Places are shifted by one so that MP 0 too has a slot before it (empty):
    // MP n sits at place n + 1 and slot 1 of the frame shows MP from.
    if (!records_.empty())
        buffer_->FillFromRecords(records_, lo + records_.size());
    else
        buffer_->Clear();

    grid::GridFrame frame;
    frame.shape = shape_;
    frame.modes = &modes_;
    frame.buffer = buffer_.get();
    frame.position = from;
    frame.lang = request_.lang;
    frame.relativeBase = relativeBase_;

    p.save();
    p.translate(0, y);
    p.scale(scale_, scale_);
    PaintHeadRow(p);
    const int rows = static_cast<int>(end - first) * shape_.rowsPerLine;
    const int width = grid::TotalWidth(shape_, clientWidth_, request_.secondaryMode);
    for (int row = 1; row <= rows; ++row) {
        const int top = row * shape_.rowHeight;
        const bool d2 = grid::RoleOf(shape_, 0, row).d2;
        p.fillRect(QRect(0, top, width, shape_.rowHeight), d2 ? style_.colours.d2RowTint : QColor(Qt::white));
        for (int col = 0; col < shape_.columns; ++col) {
            const int w = grid::ColumnWidth(shape_, col, clientWidth_, request_.secondaryMode);
            if (w <= 0)
                continue;
            const QRect r(grid::ColumnLeft(shape_, col, clientWidth_, request_.secondaryMode), top, w, shape_.rowHeight);
            grid::PaintCellContent(p, r, grid::DescribeCell(frame, col, row, times_), style_);
            p.fillRect(QRect(r.right(), top, 1, shape_.rowHeight), style_.colours.gridLine);
        }
        p.fillRect(QRect(0, top + shape_.rowHeight - 1, width, 1), style_.colours.gridLine);
    }
    p.restore();
    return complete;
}

} // namespace kestrel::report
