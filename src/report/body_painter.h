#pragma once
// The report's body: grid lines of the vertical, dump or data-only view,
// painted cell by cell through the grid's own cell decision and painter, so
// that a page shows what the screen shows. Each page reads just the MPs it
// shows (and one on either side for delta times and waveforms) into a fetch
// buffer of fixed size: memory does not grow with the range.

#include <QFont>
#include <cstdint>
#include <memory>
#include <vector>

#include "present/grid/cell_painter.h"
#include "present/grid/fetch_buffer.h"
#include "present/grid/grid_layout.h"
#include "present/grid/view_modes.h"
#include "present/time_text.h"
#include "record/record_reader.h"
#include "report/report_layout.h"
#include "report/report_request.h"

class QPainter;

namespace kestrel::report {

[[nodiscard]] int ViewOf(ReportBody body);

class BodyPainter {
public:
    // width: the content box's width in units; the body is scaled down when its columns need more.
    BodyPainter(const RecordReader &reader, const ReportRequest &request, double width);

    [[nodiscard]] BodyUnits units() const;
    [[nodiscard]] std::uint64_t mpsPerUnit() const { return static_cast<std::uint64_t>(shape_.mpsPerRow); }
    [[nodiscard]] double scale() const { return scale_; }
    // MPs of the range shown by units [0, end).
    [[nodiscard]] std::uint64_t MpsUpTo(std::uint64_t endUnit) const;

    // Paints the head row at y and units [first, end) below it. False when
    // the recording could not be read (it was cut while the report ran).
    bool Paint(QPainter &p, double y, std::uint64_t first, std::uint64_t end);

private:
    void PaintHeadRow(QPainter &p);

    const RecordReader &reader_;
    const ReportRequest &request_;
    grid::ViewShape shape_;
    grid::GridModes modes_;
    int clientWidth_ = 0;
    double scale_ = 1.0;
    double relativeBase_ = 0.0;
    std::unique_ptr<grid::FetchBuffer> buffer_;
    std::vector<MpRecord> records_;
    TimeTextFormatter times_;
    grid::CellPaintStyle style_;
};

} // namespace kestrel::report
