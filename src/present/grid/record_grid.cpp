#include "present/grid/record_grid.h"

#include <QAction>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QScrollBar>
#include <algorithm>
#include <filesystem>

#include "present/grid/cell_painter.h"
#include "present/grid/glyph_painter.h"
#include "present/grid/grid_options.h"
#include "present/grid/grid_texts.h"
#include "present/grid/live_repaint.h"
#include "present/grid/live_source.h"
#include "present/grid/redraw_loop.h"
#include "present/grid/redraw_thread.h"
#include "base/string_table.h"
#include "record/recording_check.h"

namespace kestrel::grid {

namespace {
constexpr int kBorderGrip = 3;        // pixels either side of a header border that grab it
constexpr int kNarrowestColumn = 8;   // a dragged column keeps a sliver to grab again
constexpr int kWidestColumn = 1000;
constexpr int kTextPixels = 11;       // the cells' text at 100 %
} // namespace

namespace {

QString Q(const std::string &s) { return QString::fromStdString(s); }


} // namespace

RecordGrid::RecordGrid(QWidget *parent)
    : QAbstractScrollArea(parent), times_(std::make_unique<TimeTextFormatter>(TimeLocale::System(), -1)),
      gridOptions_(kDefaultGridOptions)
{
    setObjectName(QStringLiteral("DrawGrid1"));
    verticalScrollBar()->setObjectName(QStringLiteral("ScrollBar1"));
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setFocusPolicy(Qt::StrongFocus);
    // The system sans font, condensed so that a full time stamp fits its column.
    textFont_ = font();
    textFont_.setPixelSize(kTextPixels);
    textFont_.setStretch(QFont::SemiCondensed);
    viewport()->setAutoFillBackground(false);
    viewport()->setMouseTracking(true); // the resize cursor over a header border
    // Every paint fills its whole rectangle: Qt may then move painted rows
    // with scroll() instead of painting them again.
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);

    // The popup holds one copy item that stays disabled and hidden; its
    // action only sets the grid's text.
    popup_ = new QMenu(this);
    popup_->setObjectName(QStringLiteral("pmDrawGrid1"));
    actCopy_ = new QAction(Q(Str(txt::kCopyItem)), this);
    actCopy_->setObjectName(QStringLiteral("actCopy"));
    actCopy_->setEnabled(false);
    actCopy_->setVisible(false);
    connect(actCopy_, &QAction::triggered, this, &RecordGrid::copyCell);
    popup_->addAction(actCopy_);

    ApplyLayout();
}

RecordGrid::~RecordGrid()
{
    // Only the thread: no signals from a grid that is going away.
    if (redraw_)
        redraw_->Stop();
}

int RecordGrid::Lang() const { return GlobalLang(); }

GridColours RecordGrid::Colours() const
{
    GridColours c = IsDarkBase(palette().base().color()) ? DarkGridColours() : LightGridColours();
    if (rowTintD2_.isValid())
        c.d2RowTint = rowTintD2_;
    if (gridLineColour_.isValid())
        c.gridLine = gridLineColour_;
    if (descriptionColour_.isValid())
        c.description = descriptionColour_;
    if (currentCellBack_.isValid())
        c.currentCell = currentCellBack_;
    if (errorBack_.isValid())
        c.errorBack = errorBack_;
    if (errorText_.isValid())
        c.errorText = errorText_;
    if (waveLine_.isValid())
        c.waveLine = waveLine_;
    if (waveFill_.isValid())
        c.waveFill = waveFill_;
    if (markStartBack_.isValid())
        c.markBack[static_cast<std::size_t>(MarkIndex(MarkStyle::SystemStart))] = markStartBack_;
    if (markStartText_.isValid())
        c.markText[static_cast<std::size_t>(MarkIndex(MarkStyle::SystemStart))] = markStartText_;
    if (markStopBack_.isValid())
        c.markBack[static_cast<std::size_t>(MarkIndex(MarkStyle::SystemStop))] = markStopBack_;
    if (markStopText_.isValid())
        c.markText[static_cast<std::size_t>(MarkIndex(MarkStyle::SystemStop))] = markStopText_;
    if (markOtherBack_.isValid())
        c.markBack[static_cast<std::size_t>(MarkIndex(MarkStyle::SystemOther))] = markOtherBack_;
    if (markOtherText_.isValid())
        c.markText[static_cast<std::size_t>(MarkIndex(MarkStyle::SystemOther))] = markOtherText_;
    if (triggerStartBack_.isValid())
        c.markBack[static_cast<std::size_t>(MarkIndex(MarkStyle::TriggerStart))] = triggerStartBack_;
    if (triggerStartText_.isValid())
        c.markText[static_cast<std::size_t>(MarkIndex(MarkStyle::TriggerStart))] = triggerStartText_;
    if (triggerStopBack_.isValid())
        c.markBack[static_cast<std::size_t>(MarkIndex(MarkStyle::TriggerStop))] = triggerStopBack_;
    if (triggerStopText_.isValid())
        c.markText[static_cast<std::size_t>(MarkIndex(MarkStyle::TriggerStop))] = triggerStopText_;
    if (triggerSeenBack_.isValid())
        c.markBack[static_cast<std::size_t>(MarkIndex(MarkStyle::TriggerDetected))] = triggerSeenBack_;
    if (triggerSeenText_.isValid())
        c.markText[static_cast<std::size_t>(MarkIndex(MarkStyle::TriggerDetected))] = triggerSeenText_;
    return c;
}

void RecordGrid::ResetColours()
{
    rowTintD2_ = QColor();
    gridLineColour_ = QColor();
    descriptionColour_ = QColor();
    currentCellBack_ = QColor();
    errorBack_ = QColor();
    errorText_ = QColor();
    waveLine_ = QColor();
    waveFill_ = QColor();
    markStartBack_ = QColor();
    markStartText_ = QColor();
    markStopBack_ = QColor();
    markStopText_ = QColor();
    markOtherBack_ = QColor();
    markOtherText_ = QColor();
    triggerStartBack_ = QColor();
    triggerStartText_ = QColor();
    triggerStopBack_ = QColor();
    triggerStopText_ = QColor();
    triggerSeenBack_ = QColor();
    triggerSeenText_ = QColor();
    viewport()->update();
}

int RecordGrid::GridOptions() const { return GridOptionsWithLines(gridOptions_, modes_.gridLines()); }

void RecordGrid::SetGridOptions(int options)
{
    gridOptions_ = options;
    setGridLines(GridLinesOf(LinesOfGridOptions(options)));
}

// --- recording ---------------------------------------------------------

bool RecordGrid::OpenRecording(const QString &path)
{
    CloseRecording();
    // Only a plain file is a recording: opening a named pipe or a device
    // would wait for a writer and freeze the window.
    std::error_code ec;
    const auto kind = std::filesystem::status(path.toStdString(), ec).type();
    if (!ec && kind != std::filesystem::file_type::regular) {
        error_ = Q(Str(txt::kNotARecordFile));
        return false;
    }
    if (const Result opened = reader_.open(path.toStdString()); !opened) {
        error_ = Q(opened.detail);
        return false;
    }
    error_.clear();
    position_ = 0;
    col_ = 0;
    row_ = 1;
    cleared_ = false;
    MeasureFile();
    ApplyLayout();
    RefreshStatusLine();
    viewport()->update();
    return true;
}

void RecordGrid::CloseRecording()
{
    reader_.close();
    buffer_.Clear();
    recordCount_ = 0;
    position_ = 0;
    mapping_ = {};
    UpdateScrollBar();
    RefreshStatusLine();
    viewport()->update();
}

void RecordGrid::StartRedraw(LiveSource *source)
{
    StopRedraw();
    if (source == nullptr)
        return;
    live_ = source;
    live_->WantNewest(static_cast<std::size_t>(largeChange() + 2));
    SetFollowEnd(true);
    redraw_ = std::make_unique<RedrawThread>(*this, *source);
    redraw_->SetHold(hold_);
    redraw_->Start();
}

void RecordGrid::StopRedraw()
{
    if (redraw_) {
        redraw_->Stop();
        redraw_.reset();
    }
    if (live_ != nullptr) {
        live_ = nullptr;
        SetFollowEnd(false);
        ScrollBar1Change(); // back to the file's view of the recording
    }
}

bool RecordGrid::isRedrawRunning() const { return redraw_ && redraw_->running(); }

// --- layout and scrolling ----------------------------------------------

void RecordGrid::ApplyLayout()
{
    shape_ = ShapeForView(modes_.view(), viewport()->width(), modes_.charMode(), zoom_, UserWidthsOf(modes_.view()));
    dataRows_ = DataRowsFor(shape_, viewport()->height());
    col_ = std::clamp(col_, 0, shape_.columns - 1);
    row_ = std::clamp(row_, 1, dataRows_);
    const int total = TotalWidth(shape_, viewport()->width(), modes_.secondaryMode());
    horizontalScrollBar()->setRange(0, std::max(0, total - viewport()->width()));
    horizontalScrollBar()->setPageStep(viewport()->width());
    horizontalScrollBar()->setSingleStep(15);
    if (live_ != nullptr)
        live_->WantNewest(static_cast<std::size_t>(largeChange() + 2));
    ScrollBar1Change();
}

void RecordGrid::MeasureFile()
{
    if (reader_.isOpen())
        SetRecordCount(static_cast<std::int64_t>(reader_.recordCount()));
}

void RecordGrid::SetRecordCount(std::int64_t count)
{
    if (count != recordCount_) {
        recordCount_ = count;
        emit recordCountChanged(recordCount_);
    }
}

void RecordGrid::UpdateScrollBar()
{
    mapping_.maxPosition = EndPosition(recordCount_, largeChange());
    QScrollBar *bar = verticalScrollBar();
    settingBar_ = true;
    bar->setRange(0, mapping_.barMaximum());
    bar->setPageStep(static_cast<int>(std::clamp<std::int64_t>(mapping_.ToBar(largeChange()), 1, INT_MAX)));
    bar->setSingleStep(static_cast<int>(std::clamp<std::int64_t>(mapping_.ToBar(StepMps(shape_)), 1, INT_MAX)));
    bar->setValue(mapping_.ToBar(position_));
    settingBar_ = false;
}

void RecordGrid::EnsureFetched()
{
    if (!reader_.isOpen())
        return;
    const std::int64_t need = largeChange() + 2; // slot 0 .. the last row's next slot
    const auto pos = static_cast<std::uint64_t>(position_);
    if (buffer_.Covers(pos, static_cast<std::uint64_t>(need), static_cast<std::uint64_t>(recordCount_)))
        return;
    // Centre the window on the page so that scrolling either way reuses it.
    const std::int64_t spare = std::max<std::int64_t>(0, kFetchSlots - need);
    const std::int64_t first = std::max<std::int64_t>(0, position_ - spare / 2);
    if (const auto base = buffer_.Fetch(reader_, static_cast<std::uint64_t>(first)))
        relativeBase_ = *base;
}

void RecordGrid::ScrollBar1Change()
{
    MeasureFile();
    if (live_ != nullptr && followEnd_ && !hold_) {
        // Following a recording (again): the newest MPs at once, not only
        // when the next one arrives.
        TakeNewest(live_->NewestMps());
    } else {
        position_ = std::clamp<std::int64_t>(position_, 0, EndPosition(recordCount_, largeChange()));
        EnsureFetched();
    }
    UpdateScrollBar();
    viewport()->update();
    RefreshStatusLine();
}

void RecordGrid::SetPosition(std::int64_t pos)
{
    position_ = pos;
    cleared_ = false;
    ScrollBar1Change();
}

void RecordGrid::scrollContentsBy(int dx, int dy)
{
    if (dx != 0)
        viewport()->update();
    if (dy == 0 || settingBar_)
        return;
    const std::int64_t pos = mapping_.FromBar(verticalScrollBar()->value());
    if (live_ != nullptr) {
        // Scrolling away from the newest MPs stops following them; coming back
        // to the end takes it up again.
        const bool atEnd = pos >= mapping_.maxPosition;
        if (atEnd != followEnd_)
            SetFollowEnd(atEnd);
    }
    SetPosition(pos);
}

void RecordGrid::resizeEvent(QResizeEvent *event)
{
    QAbstractScrollArea::resizeEvent(event);
    ApplyLayout();
}

// --- keys, wheel, mouse ------------------------------------------------

KeyContext RecordGrid::KeyState() const
{
    KeyContext c;
    c.position = position_;
    c.maximum = recordCount_;
    c.smallChange = StepMps(shape_);
    c.largeChange = largeChange();
    c.col = col_;
    c.row = row_;
    c.colCount = shape_.columns;
    c.rowCount = dataRows_ + kHeaderRows;
    c.view = modes_.view();
    c.followEnd = followEnd_;
    c.fileOpen = reader_.isOpen() || live_ != nullptr;
    return c;
}

bool RecordGrid::ApplyKey(GridKey key)
{
    const KeyContext before = KeyState();
    return ApplyOutcome(ApplyGridKey(key, before), before);
}

bool RecordGrid::ApplyOutcome(const KeyOutcome &out, const KeyContext &before)
{
    if (!out.consumed && !out.invalidate)
        return false;
    const bool cellMoved = out.col != col_ || out.row != row_;
    col_ = out.col;
    row_ = out.row;
    if (out.moved(before))
        SetPosition(out.position);
    else if (cellMoved || out.invalidate)
        viewport()->update();
    if (cellMoved)
        RefreshStatusLine();
    return out.consumed;
}

void RecordGrid::keyPressEvent(QKeyEvent *event)
{
    GridKey key;
    switch (event->key()) {
    case Qt::Key_PageUp: key = GridKey::PageUp; break;
    case Qt::Key_PageDown: key = GridKey::PageDown; break;
    case Qt::Key_Home: key = GridKey::Home; break;
    case Qt::Key_End: key = GridKey::End; break;
    case Qt::Key_Up: key = GridKey::Up; break;
    case Qt::Key_Down: key = GridKey::Down; break;
    case Qt::Key_Left: key = GridKey::Left; break;
    case Qt::Key_Right: key = GridKey::Right; break;
    default:
        QAbstractScrollArea::keyPressEvent(event);
        return;
    }
    if (key == GridKey::End && live_ != nullptr)
        SetFollowEnd(true);
    else
        StartBrowsing();
    ApplyKey(key);
    event->accept();
}

void RecordGrid::wheelEvent(QWheelEvent *event)
{
    event->accept();
    StartBrowsing();
    if (followEnd_) {
        wheelRest_ = 0;
        return;
    }
    // One line per notch (120 eighths of a degree): a touchpad's small pieces
    // add up to a notch, a fast wheel's double notch gives two lines.
    wheelRest_ += event->angleDelta().y();
    while (wheelRest_ <= -kWheelNotch || wheelRest_ >= kWheelNotch) {
        const bool down = wheelRest_ < 0;
        wheelRest_ += down ? kWheelNotch : -kWheelNotch;
        const KeyContext before = KeyState();
        ApplyOutcome(ApplyWheel(down, before), before);
    }
}

int RecordGrid::ColumnAt(int x) const
{
    const int vx = x + horizontalScrollBar()->value();
    for (int c = 0; c < shape_.columns; ++c) {
        const int left = ColumnLeft(shape_, c, viewport()->width(), modes_.secondaryMode());
        const int w = std::max(0, ColumnWidth(shape_, c, viewport()->width(), modes_.secondaryMode()));
        if (vx >= left && vx < left + w)
            return c;
    }
    return -1;
}

const UserWidths &RecordGrid::UserWidthsOf(int view) const
{
    return userWidths_[static_cast<std::size_t>(std::clamp(view, 0, 4))];
}

int RecordGrid::BorderAt(const QPoint &pt) const
{
    if (pt.y() >= shape_.rowHeight * kHeaderRows)
        return -1;
    const int vx = pt.x() + horizontalScrollBar()->value();
    int left = 0;
    for (int c = 0; c < shape_.columns; ++c) {
        left += std::max(0, ColumnWidth(shape_, c, viewport()->width(), modes_.secondaryMode()));
        if (left > vx + kBorderGrip)
            break;
        if (std::abs(vx - left) <= kBorderGrip && UserWidthSlot(shape_.view, c) >= 0)
            return c;
    }
    return -1;
}

bool RecordGrid::HasUserWidth(int view, int col) const
{
    const int slot = UserWidthSlot(view, col);
    return slot >= 0 && UserWidthsOf(view)[static_cast<std::size_t>(slot)] > 0;
}

std::vector<int> RecordGrid::ColumnWidthsOf(int view, std::size_t count) const
{
    ViewShape v = ShapeForView(view, viewport()->width(), CharMode::Ascii, zoom_, UserWidthsOf(view));
    if (view == kViewDataOnly) // every kept data column has the data cells' width, shown or not
        v.columns = std::max(v.columns, static_cast<int>(count));
    std::vector<int> out;
    for (std::size_t c = 0; c < count; ++c)
        out.push_back(std::max(0, ColumnWidth(v, static_cast<int>(c), viewport()->width(), CharMode::Hex)));
    return out;
}

void RecordGrid::setZoom(int percent)
{
    const int z = std::clamp(percent, kZoomMin, kZoomMax);
    if (z == zoom_)
        return;
    zoom_ = z;
    textFont_.setPixelSize(Zoomed(kTextPixels, zoom_));
    ApplyLayout();
    emit zoomChanged(zoom_);
}

void RecordGrid::SetColumnWidths(int view, const std::vector<int> &widths)
{
    if (view < 0 || view > 4)
        return;
    UserWidths &user = userWidths_[static_cast<std::size_t>(view)];
    user = {};
    const ViewShape builtIn = ShapeForView(view, viewport()->width(), CharMode::Ascii, zoom_);
    // Each slot takes the first kept column it sizes.
    std::array<bool, 13> taken{};
    for (std::size_t c = 0; c < widths.size(); ++c) {
        const int slot = UserWidthSlot(view, static_cast<int>(c));
        if (slot < 0 || taken[static_cast<std::size_t>(slot)])
            continue;
        taken[static_cast<std::size_t>(slot)] = true;
        const int w = widths[c];
        const bool own = w > 0 && w != ColumnWidth(builtIn, static_cast<int>(c), viewport()->width(), CharMode::Hex);
        user[static_cast<std::size_t>(slot)] = static_cast<std::int16_t>(own ? std::clamp(w, kNarrowestColumn, kWidestColumn) : 0);
    }
    ApplyLayout();
}

void RecordGrid::mouseMoveEvent(QMouseEvent *event)
{
    const QPoint pt = event->position().toPoint();
    if (resizing_ >= 0) {
        const int w = std::clamp(resizeFromWidth_ + pt.x() - resizeFromX_, kNarrowestColumn, kWidestColumn);
        const int slot = UserWidthSlot(shape_.view, resizing_);
        userWidths_[static_cast<std::size_t>(std::clamp(shape_.view, 0, 4))][static_cast<std::size_t>(slot)] =
            static_cast<std::int16_t>(w);
        ApplyLayout();
        return;
    }
    if (BorderAt(pt) >= 0)
        viewport()->setCursor(Qt::SplitHCursor);
    else
        viewport()->unsetCursor();
    QAbstractScrollArea::mouseMoveEvent(event);
}

void RecordGrid::mouseReleaseEvent(QMouseEvent *event)
{
    if (resizing_ >= 0) {
        resizing_ = -1;
        emit columnWidthsChanged();
        return;
    }
    QAbstractScrollArea::mouseReleaseEvent(event);
}

void RecordGrid::mousePressEvent(QMouseEvent *event)
{
    setFocus(Qt::MouseFocusReason);
    const QPoint pt = event->position().toPoint();
    if (const int border = BorderAt(pt); border >= 0 && event->button() == Qt::LeftButton) {
        // Dragging a header border sizes the column to its left.
        resizing_ = border;
        resizeFromX_ = pt.x();
        resizeFromWidth_ = ColumnWidth(shape_, border, viewport()->width(), modes_.secondaryMode());
        return;
    }
    const int row = pt.y() / shape_.rowHeight;
    const int col = ColumnAt(pt.x());
    if (row >= 1 && row <= dataRows_ && col >= 0) {
        col_ = col;
        row_ = row;
        viewport()->update();
        RefreshStatusLine();
    }
    QAbstractScrollArea::mousePressEvent(event);
}

// --- slots the window calls -------------------------------------------

void RecordGrid::selectView(int view)
{
    if (!modes_.SelectView(view)) {
        emit viewUnavailable(view);
        return;
    }
    ApplyLayout();
    if (followEnd_)
        scrollToEnd();
    AfterModeChange();
    emit viewChanged(view);
}

void RecordGrid::setCharMode(int mode)
{
    modes_.panel.ChooseMode(mode);
    // A number mode may need wider byte cells (and so fewer data columns).
    if (ShapeForView(modes_.view(), viewport()->width(), modes_.charMode(), zoom_, UserWidthsOf(modes_.view()))
            .byteWidth != shape_.byteWidth)
        ApplyLayout();
    AfterModeChange();
}

void RecordGrid::setCaretOverlay(bool on)
{
    if (on != (modes_.overlay() == Overlay::Caret))
        modes_.panel.ClickCaretButton();
    AfterModeChange();
}

void RecordGrid::setMnemonicOverlay(bool on)
{
    if (on != (modes_.overlay() == Overlay::Mnemonic))
        modes_.panel.ClickMnemonicButton();
    AfterModeChange();
}

void RecordGrid::clearOverlay()
{
    modes_.panel.ClickResetButton();
    AfterModeChange();
}

void RecordGrid::setTimeAbsolute()
{
    modes_.ClickTimeAbsolute();
    AfterModeChange();
}

void RecordGrid::setTimeRelative(bool on)
{
    modes_.ClickTimeRelative(on);
    AfterModeChange();
}

void RecordGrid::setTimeDelta(bool on)
{
    modes_.ClickTimeDelta(on);
    AfterModeChange();
}

void RecordGrid::toggleNaming()
{
    modes_.ToggleNaming();
    AfterModeChange();
}

void RecordGrid::setGridLines(GridLines lines)
{
    modes_.SetGridLines(lines);
    viewport()->update();
}

void RecordGrid::setWaveformFill(bool on)
{
    modes_.SetFillWaveform(on);
    viewport()->update();
}

void RecordGrid::ApplyModes()
{
    if (!IsGridView(modes_.view()))
        modes_.SelectView(kViewVertical);
    ApplyLayout();
    AfterModeChange();
}

void RecordGrid::AfterModeChange()
{
    emit overlayButtonsChanged(modes_.panel.caretButtonEnabled, modes_.panel.mnemonicButtonEnabled);
    // The dump's number columns change width with the secondary mode.
    const int total = TotalWidth(shape_, viewport()->width(), modes_.secondaryMode());
    horizontalScrollBar()->setRange(0, std::max(0, total - viewport()->width()));
    viewport()->update();
    RefreshStatusLine();
}

void RecordGrid::scrollToTop()
{
    // Home with Control held: the top of the recording and its first cell;
    // like Home itself nothing while the grid follows a recording's end.
    if (ApplyKey(GridKey::Home) && !followEnd_) {
        row_ = 1;
        col_ = 0;
        viewport()->update();
        RefreshStatusLine();
    }
}

void RecordGrid::scrollToEnd()
{
    if (live_ != nullptr)
        SetFollowEnd(true);
    ApplyKey(GridKey::End);
}

void RecordGrid::GotoMp(std::int64_t mp)
{
    MeasureFile();
    SetPosition(std::clamp<std::int64_t>(mp - 1, 0, EndPosition(recordCount_, largeChange())));
}

void RecordGrid::ShowFound(std::int64_t mp)
{
    GotoMp(mp);
    // In the last page the MP cannot come up to the first row: the current row is its row
    // there, so the next search goes on from it.
    const std::int64_t perRow = std::max<std::int64_t>(1, StepMps(shape_));
    row_ = static_cast<int>(std::clamp<std::int64_t>((mp - position_ - 1) / perRow + 1, 1, std::max(1, dataRows_)));
    viewport()->update();
    RefreshStatusLine();
}

void RecordGrid::SetHold(bool on)
{
    hold_ = on;
    if (redraw_)
        redraw_->SetHold(on);
    if (!on) {
        emit progressTextChanged(QString()); // the hold bar lasts only as long as the hold
        // Looking back ends with the hold: the newest MPs again.
        if (live_ != nullptr)
            SetFollowEnd(true);
        ScrollBar1Change();
    }
}

void RecordGrid::StartBrowsing()
{
    // With the display held, a running recording can be looked back over: a key or the
    // wheel stops following its end (without the hold they are ignored while following).
    if (live_ != nullptr && hold_ && followEnd_)
        SetFollowEnd(false);
}

void RecordGrid::SetFollowEnd(bool on)
{
    if (followEnd_ == on)
        return;
    followEnd_ = on;
    emit followEndChanged(on);
}

void RecordGrid::ClearGrid()
{
    cleared_ = true;
    viewport()->update();
}

void RecordGrid::RedrawGrid()
{
    cleared_ = false;
    RefreshStatusLine();
    viewport()->update();
}

void RecordGrid::resetView()
{
    col_ = 0;
    row_ = 1;
    horizontalScrollBar()->setValue(0);
    ApplyLayout();
}

void RecordGrid::RefreshStatusLine()
{
    const std::vector<std::string> panels = StatusLine(Frame(), col_, row_, *times_);
    QStringList list;
    for (const std::string &s : panels)
        list << Q(s);
    if (list != status_) {
        status_ = list;
        emit statusLineChanged(status_);
    }
}

void RecordGrid::copyCell() { text_ = Q(Str(txt::kCopyExecuted)); }

void RecordGrid::InitialLoads()
{
    actCopy_->setText(Q(Str(txt::kCopyItem)));
    status_.clear(); // force the status line out in the new language
    RefreshStatusLine();
    viewport()->update();
}

// --- steps of the redraw thread (GUI thread) ---------------------------

bool RecordGrid::TakeNewest(std::vector<MpRecord> newest)
{
    // The newest MP's place: its 32-bit number wraps, so it is found from the file's length.
    std::uint64_t lastIndex = 0;
    if (newest.empty()) {
        MeasureFile();
    } else {
        const std::uint64_t inFile = reader_.isOpen() ? reader_.recordCount() : 0;
        lastIndex = MpIndexAtOrBefore(newest.back().number, inFile > 0 ? inFile - 1 : newest.back().number);
        SetRecordCount(static_cast<std::int64_t>(lastIndex + 1));
    }
    position_ = EndPosition(recordCount_, largeChange());
    cleared_ = false;
    // The live buffer holds the page and its neighbours, except just after
    // the page grew (another view, a taller window) and before enough new MPs
    // came: then the file has them. Read from the page on, near the file's
    // end that is a page's worth, not a whole fetch window.
    const auto need = largeChange() + 2;
    const bool liveHasPage = !newest.empty() &&
                             (static_cast<std::int64_t>(newest.size()) >= need || lastIndex + 1 == newest.size());
    if (liveHasPage || !reader_.isOpen()) {
        if (const auto base = buffer_.FillFromRecords(newest, lastIndex))
            relativeBase_ = *base;
        return true;
    }
    if (!buffer_.Covers(static_cast<std::uint64_t>(position_), static_cast<std::uint64_t>(need),
                        static_cast<std::uint64_t>(recordCount_))) {
        if (const auto base = buffer_.Fetch(reader_, static_cast<std::uint64_t>(position_)))
            relativeBase_ = *base;
    }
    return false;
}

void RecordGrid::LiveShow(const PassRequest &pass)
{
    if (live_ == nullptr)
        return;
    // One snapshot of the live buffer serves the gauge and the grid.
    std::vector<MpRecord> newest = live_->NewestMps();
    for (int g = 0; g < kGaugeCount; ++g)
        if ((pass.gauges & (1u << g)) != 0)
            LiveGauge(g, newest);
    if (pass.progress > 0)
        emit progressTextChanged(Q(ProgressText(pass.progress)));
    if (pass.grid) {
        if (followEnd_ && !hold_) {
            LiveFollow(std::move(newest));
        } else {
            // Scrolled away or held: the file grows underneath; keep the range current.
            MeasureFile();
            UpdateScrollBar();
        }
    }
    RefreshStatusLine();
}

void RecordGrid::LiveFollow(std::vector<MpRecord> newest)
{
    const std::int64_t oldPos = position_;
    const std::int64_t oldCount = recordCount_;
    const double oldBase = relativeBase_;
    const bool wasCleared = cleared_;
    const bool rowsKept = TakeNewest(std::move(newest));
    UpdateScrollBar();

    const LiveRepaint rows = LiveRowsToRepaint(shape_, dataRows_, oldPos, oldCount, position_, recordCount_);
    // The relative time base shows in every time cell.
    if (rows.all || !rowsKept || wasCleared || relativeBase_ != oldBase) {
        UpdateRows(1, dataRows_);
        return;
    }
    if (rows.scrollRows > 0) {
        // Moves the painted rows up (and whatever is still waiting to be
        // painted with them); the rows moved in at the bottom get painted.
        viewport()->scroll(0, -rows.scrollRows * shape_.rowHeight, QRect(0, shape_.rowHeight, viewport()->width(), dataRows_ * shape_.rowHeight));
        // The current cell's highlight stays on its row, not on its pixels.
        UpdateRows(row_ - rows.scrollRows, row_ - rows.scrollRows);
        UpdateRows(row_, row_);
    }
    UpdateRows(rows.firstRow, dataRows_);
}

void RecordGrid::UpdateRows(int first, int last)
{
    first = std::max(first, 1);
    last = std::min(last, dataRows_);
    if (first > last)
        return;
    viewport()->update(0, first * shape_.rowHeight, viewport()->width(), (last - first + 1) * shape_.rowHeight);
}

void RecordGrid::LiveGauge(int gauge, const std::vector<MpRecord> &newest)
{
    if (newest.empty())
        return;
    const MpRecord &mp = newest.back();
    const int value = gauge == 0 ? mp.loadActual : gauge == 1 ? mp.loadPeak : mp.quality;
    emit gaugeChanged(gauge, value);
}

// --- painting ------------------------------------------------------------

GridFrame RecordGrid::Frame() const
{
    GridFrame f;
    f.shape = shape_;
    f.modes = &modes_;
    f.buffer = &buffer_;
    f.position = static_cast<std::uint64_t>(position_);
    f.lang = Lang();
    f.relativeBase = relativeBase_;
    f.recordingOpen = reader_.isOpen() || live_ != nullptr;
    return f;
}

QRect RecordGrid::CellRect(int col, int row) const
{
    if (col < 0 || col >= shape_.columns || row < 0 || row > dataRows_)
        return {};
    const int w = ColumnWidth(shape_, col, viewport()->width(), modes_.secondaryMode());
    if (w <= 0)
        return {};
    const int x = ColumnLeft(shape_, col, viewport()->width(), modes_.secondaryMode()) - horizontalScrollBar()->value();
    const QRect r(x, row * shape_.rowHeight, w, shape_.rowHeight);
    return r.intersects(viewport()->rect()) ? r : QRect();
}

void RecordGrid::paintEvent(QPaintEvent *event)
{
    QPainter p(viewport());
    const QRect dirty = event->rect();
    p.setFont(textFont_);
    colours_ = Colours(); // once per paint, not per cell
    // The visible columns, left to right (a column of no width has no cell).
    int left = INT_MAX, right = INT_MIN;
    for (int col = 0; col < shape_.columns; ++col) {
        const QRect r = CellRect(col, 0);
        if (!r.isEmpty()) {
            left = std::min(left, r.left());
            right = std::max(right, r.right());
        }
    }
    // The background shows only beside and below the cells, which fill
    // themselves row by row.
    const QRegion cells = left > right ? QRegion() : QRegion(left, 0, right - left + 1, (dataRows_ + 1) * shape_.rowHeight);
    for (const QRect &r : QRegion(dirty).subtracted(cells))
        p.fillRect(r, palette().window());
    if (left > right)
        return;
    int firstRow = dataRows_ + 1, lastRow = 0;
    for (int row = 0; row <= dataRows_; ++row) {
        if (row * shape_.rowHeight > dirty.bottom() || (row + 1) * shape_.rowHeight <= dirty.top())
            continue;
        if (row > 0) {
            // One fill for the row; a cell fills again only where it differs.
            p.fillRect(QRect(left, row * shape_.rowHeight, right - left + 1, shape_.rowHeight), RowBack(row));
            firstRow = std::min(firstRow, row);
            lastRow = row;
        }
        for (int col = 0; col < shape_.columns; ++col) {
            const QRect r = CellRect(col, row);
            if (r.isEmpty() || !r.intersects(dirty))
                continue;
            if (row == 0)
                PaintHeaderCell(p, col, r);
            else
                DrawGrid1DrawCell(p, col, row, r);
        }
    }
    if (firstRow > lastRow)
        return;

    // The lines between data cells: each cell's right and bottom pixel, over
    // whatever its content drew there. One-pixel fills, not pen strokes: a
    // stroke is drawn pixel by pixel, a fill span by span.
    const GridLineOptions lines = modes_.gridLines();
    const int top = firstRow * shape_.rowHeight;
    const int height = (lastRow - firstRow + 1) * shape_.rowHeight;
    if (lines.vertical) {
        for (int col = 0; col < shape_.columns; ++col) {
            const QRect r = CellRect(col, firstRow);
            if (!r.isEmpty())
                p.fillRect(QRect(r.right(), top, 1, height), colours_.gridLine);
        }
    }
    if (lines.horizontal)
        for (int row = firstRow; row <= lastRow; ++row)
            p.fillRect(QRect(left, (row + 1) * shape_.rowHeight - 1, right - left + 1, 1), colours_.gridLine);
    const QRect current = CellRect(col_, row_);
    if (hasFocus() && !current.isEmpty() && current.intersects(dirty)) {
        p.setPen(QPen(palette().highlight().color(), 1, Qt::DotLine));
        p.setBrush(Qt::NoBrush);
        p.drawRect(current.adjusted(0, 0, -1, -1));
    }
}

QColor RecordGrid::RowBack(int row) const
{
    return RoleOf(shape_, 0, row).d2 ? colours_.d2RowTint : palette().base().color();
}

void RecordGrid::PaintHeaderCell(QPainter &p, int col, const QRect &r)
{
    p.fillRect(r, palette().button());
    p.setPen(palette().buttonText().color());
    const bool ruler = shape_.view != kViewVertical && col >= 2;
    const QRect text = ruler ? r.adjusted(kRulerTextDx, kRulerTextDy, 0, 0) : r.adjusted(kHeaderTextDx, kHeaderTextDy, 0, 0);
    p.save();
    p.setClipRect(r);
    p.drawText(text, Qt::AlignLeft | Qt::AlignTop,
               Q(HeaderText(shape_, col, modes_.namingSet(), modes_.timeMode(), Lang())));
    p.restore();
    // Lines of the fixed row are always drawn.
    p.setPen(palette().mid().color());
    p.drawLine(r.topRight(), r.bottomRight());
    p.drawLine(r.bottomLeft(), r.bottomRight());
}

void RecordGrid::DrawGrid1DrawCell(QPainter &p, int col, int row, const QRect &r)
{
    // The row is filled already; only the current cell stands out.
    if (col == col_ && row == row_)
        p.fillRect(r, colours_.currentCell);

    if (!cleared_) {
        CellPaintStyle style;
        style.textFont = textFont_;
        style.zoomPercent = zoom_;
        style.text = palette().text().color();
        style.dim = palette().mid().color();
        style.colours = colours_;
        style.fillWaveform = modes_.fillWaveform();
        PaintCellContent(p, r, DescribeCell(Frame(), col, row, *times_), style);
    }

}

} // namespace kestrel::grid
