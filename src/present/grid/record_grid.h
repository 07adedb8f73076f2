#pragma once
// DrawGrid1: the record grid over a record file. A custom-painted scroll area
// that paints only the visible rows; its top position is a 64-bit MP index
// and its vertical scroll bar (ScrollBar1) is rescaled past INT_MAX. While a
// recording runs, the redraw thread has it take the newest MPs from the
// recorder's live buffer and repaint cell by cell; it follows the end unless
// the display is held or the user scrolled away.
//
// The main window owns the mode buttons and calls the public slots below; it
// reads the results back through modes() and the signals.

#include <QAbstractScrollArea>
#include <QStringList>
#include <memory>

#include "record/record_reader.h"
#include "present/grid/cell_content.h"
#include "present/grid/fetch_buffer.h"
#include "present/grid/grid_keys.h"
#include "present/grid/view_modes.h"

class QAction;
class QMenu;
class QScrollBar;

namespace kestrel {
class Prompter;
}

namespace kestrel::grid {

class LiveSource;
class RedrawThread;

class RecordGrid : public QAbstractScrollArea {
    Q_OBJECT
public:
    explicit RecordGrid(QWidget *parent = nullptr);
    ~RecordGrid() override;

    // --- the recording -------------------------------------------------
    // Opens the view handle on a record file and shows it from the top.
    // False (with the reason in errorText) when it cannot be opened; the grid
    // then stays empty.
    bool OpenRecording(const QString &path);
    void CloseRecording();
    [[nodiscard]] bool isRecordingOpen() const { return reader_.isOpen(); }
    [[nodiscard]] QString errorText() const { return error_; }

    // Live mode: starts the redraw thread over the recorder's live source
    // (the source must outlive StopRedraw). StopRedraw ends the thread.
    void StartRedraw(LiveSource *source);
    void StopRedraw();
    [[nodiscard]] bool isRedrawRunning() const;

    // --- state the window reads ---------------------------------------
    [[nodiscard]] GridModes &modes() { return modes_; }
    [[nodiscard]] const GridModes &modes() const { return modes_; }
    [[nodiscard]] std::int64_t position() const { return position_; }
    [[nodiscard]] std::int64_t recordCount() const { return recordCount_; }
    [[nodiscard]] int currentCol() const { return col_; }
    [[nodiscard]] int currentRow() const { return row_; }
    [[nodiscard]] int rowCount() const { return dataRows_ + kHeaderRows; }
    [[nodiscard]] int colCount() const { return shape_.columns; }
    [[nodiscard]] const ViewShape &shape() const { return shape_; }
    [[nodiscard]] std::int64_t largeChange() const { return PageMps(shape_, dataRows_); }
    [[nodiscard]] bool followEnd() const { return followEnd_; }
    [[nodiscard]] bool hold() const { return hold_; }
    [[nodiscard]] QStringList statusLine() const { return status_; }
    [[nodiscard]] const FetchBuffer &fetchBuffer() const { return buffer_; }
    // Rectangle of a cell in viewport coordinates (empty when not visible).
    [[nodiscard]] QRect CellRect(int col, int row) const;
    // The text property the copy action sets.
    [[nodiscard]] QString text() const { return text_; }
    void setPrompter(Prompter *prompter) { prompter_ = prompter; }
    // The relative time base (reset by the recorder, taken from MP 1 on fetch).
    void SetRelativeBase(double base) { relativeBase_ = base; }
    [[nodiscard]] double relativeBase() const { return relativeBase_; }

public slots:
    // View buttons.
    void btnViewVerticalClick();
    void btnViewDataOnlyClick();
    void btnViewDataDumpClick();
    void btnViewHorizontalClick(); // only shows the "Titel"/"Text" box
    void SelectView(int view);
    // Character panel (ASCII 1 .. BIN 6), overlay buttons (down state after the click).
    void btnCharModeClick(int mode);
    void btnCharCtlClick(bool down);
    void btnCharCmdClick(bool down);
    void btnChar01FResetClick();
    // Time buttons (down state after the click).
    void btnTimeAbsoluteClick();
    void btnTimeRelativeClick(bool down);
    void btnTimeDeltaClick(bool down);
    void TogglePinLabels();
    // Grid lines.
    void actShowAllGridLinesExecute();
    void actShowHorizontalGridLinesExecute();
    void actShowVerticalGridLinesExecute();
    void actShowNoGridLinesExecute();
    void SetWaveformFill(bool on);
    // Scrolling.
    void btnScrollTop();
    void btnScrollEnd();
    void btnGotoBottomClick() { btnScrollEnd(); }
    void GotoMp(std::int64_t mp); // puts MP mp into the top row
    // Display hold and following the newest MPs.
    void SetHold(bool on);
    void SetFollowEnd(bool on);
    // Repaint helpers.
    void ClearGrid();
    void RedrawGrid();
    void btnResetGrid();
    void RefreshStatusLine();
    void actCopyExecute();
    // The language changed: headers, status line and menu texts again.
    void InitialLoads();
    // Modes were changed from outside (settings loaded): re-apply everything.
    void ApplyModes();

signals:
    // Status bar panels for the current cell.
    void statusLineChanged(const QStringList &panels);
    // The held display's progress text for pnlStatusBarPanel1.
    void progressTextChanged(const QString &text);
    // A line gauge's value: 0 load actual, 1 load peak, 2 quality (percent).
    void gaugeChanged(int gauge, int percent);
    // The overlay buttons' enabled states changed (after a mode button).
    void overlayButtonsChanged(bool caretEnabled, bool mnemonicEnabled);
    // MPs in the recording changed: other windows update their ranges.
    void recordCountChanged(qint64 count);
    void followEndChanged(bool on);
    void viewChanged(int view);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;

private:
    friend class RedrawThread;
    // Steps the redraw thread runs on this (GUI) thread.
    void LivePassBegin(int &rows, int &cols);
    void LiveGauge(int phase);
    void LiveFetchCellRect(int col, int row);
    void LiveDrawCurrentCell();

    void ApplyLayout();
    void ScrollBar1Change();     // scroll position moved: fetch and measure
    void TakeNewest();           // following a recording: the live buffer's newest MPs, the last page
    void SetPosition(std::int64_t pos);
    void UpdateScrollBar();
    void EnsureFetched();
    void MeasureFile();
    void SetRecordCount(std::int64_t count);
    bool ApplyKey(GridKey key);
    bool ApplyOutcome(const KeyOutcome &out, const KeyContext &before);
    [[nodiscard]] KeyContext KeyState() const;
    [[nodiscard]] GridFrame Frame() const;
    void DrawGrid1DrawCell(QPainter &p, int col, int row, const QRect &rect);
    void PaintHeaderCell(QPainter &p, int col, const QRect &rect);
    [[nodiscard]] int ColumnAt(int x) const;
    void AfterModeChange();
    [[nodiscard]] int Lang() const;

    RecordReader reader_;
    FetchBuffer buffer_;
    GridModes modes_;
    ViewShape shape_;
    int dataRows_ = 1;
    std::int64_t position_ = 0;
    std::int64_t recordCount_ = 0;
    ScrollMapping mapping_;
    int col_ = 0;
    int row_ = 1;
    bool followEnd_ = false;
    bool hold_ = false;
    bool settingBar_ = false;
    static constexpr int kWheelNotch = 120;
    int wheelRest_ = 0; // wheel turn not yet worth a whole notch
    double relativeBase_ = 0.0;
    QStringList status_;
    QString text_;
    QString error_;
    Prompter *prompter_ = nullptr;
    QFont textFont_;
    QMenu *popup_ = nullptr;
    QAction *actCopy_ = nullptr;
    std::unique_ptr<TimeTextFormatter> times_;
    LiveSource *live_ = nullptr;
    std::unique_ptr<RedrawThread> redraw_;
    QRect liveCellRect_;
    bool cleared_ = false;
};

} // namespace kestrel::grid
