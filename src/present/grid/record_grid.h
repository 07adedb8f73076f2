#pragma once
// DrawGrid1: the record grid over a record file. A custom-painted scroll area
// that paints only the visible rows; its top position is a 64-bit MP index
// and its vertical scroll bar (ScrollBar1) is rescaled past INT_MAX. While a
// recording runs, the redraw thread has it take the newest MPs from the
// recorder's live buffer and repaint the rows that changed; it follows the
// end unless the display is held or the user scrolled away.
//
// The main window owns the mode buttons and calls the public slots below; it
// reads the results back through modes() and the signals.

#include <QAbstractScrollArea>
#include <QStringList>
#include <memory>

#include "record/record_reader.h"
#include "present/grid/cell_content.h"
#include "present/grid/fetch_buffer.h"
#include "present/grid/grid_colours.h"
#include "present/grid/grid_keys.h"
#include "present/grid/view_modes.h"

class QAction;
class QMenu;
class QScrollBar;

namespace kestrel::grid {

class LiveSource;
class RedrawThread;
struct PassRequest;

class RecordGrid : public QAbstractScrollArea {
    Q_OBJECT
    // Colours a style sheet may set (qproperty-waveLine: #9aa4b1); an unset one
    // follows the palette's light or dark set (grid_colours.h).
    Q_PROPERTY(QColor rowTintD2 MEMBER rowTintD2_ NOTIFY coloursChanged)
    Q_PROPERTY(QColor gridLineColour MEMBER gridLineColour_ NOTIFY coloursChanged)
    Q_PROPERTY(QColor descriptionColour MEMBER descriptionColour_ NOTIFY coloursChanged)
    Q_PROPERTY(QColor currentCellBack MEMBER currentCellBack_ NOTIFY coloursChanged)
    Q_PROPERTY(QColor errorBack MEMBER errorBack_ NOTIFY coloursChanged)
    Q_PROPERTY(QColor errorText MEMBER errorText_ NOTIFY coloursChanged)
    Q_PROPERTY(QColor waveLine MEMBER waveLine_ NOTIFY coloursChanged)
    Q_PROPERTY(QColor waveFill MEMBER waveFill_ NOTIFY coloursChanged)
    Q_PROPERTY(QColor markStartBack MEMBER markStartBack_ NOTIFY coloursChanged)
    Q_PROPERTY(QColor markStartText MEMBER markStartText_ NOTIFY coloursChanged)
    Q_PROPERTY(QColor markStopBack MEMBER markStopBack_ NOTIFY coloursChanged)
    Q_PROPERTY(QColor markStopText MEMBER markStopText_ NOTIFY coloursChanged)
    Q_PROPERTY(QColor markOtherBack MEMBER markOtherBack_ NOTIFY coloursChanged)
    Q_PROPERTY(QColor markOtherText MEMBER markOtherText_ NOTIFY coloursChanged)
    Q_PROPERTY(QColor triggerStartBack MEMBER triggerStartBack_ NOTIFY coloursChanged)
    Q_PROPERTY(QColor triggerStartText MEMBER triggerStartText_ NOTIFY coloursChanged)
    Q_PROPERTY(QColor triggerStopBack MEMBER triggerStopBack_ NOTIFY coloursChanged)
    Q_PROPERTY(QColor triggerStopText MEMBER triggerStopText_ NOTIFY coloursChanged)
    Q_PROPERTY(QColor triggerSeenBack MEMBER triggerSeenBack_ NOTIFY coloursChanged)
    Q_PROPERTY(QColor triggerSeenText MEMBER triggerSeenText_ NOTIFY coloursChanged)
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
    // Widths of the first count columns of a view (dragged ones or built-in), as the
    // configuration keeps them per view; set from it, where a width of 0 or less, or
    // the built-in one, keeps the built-in width.
    [[nodiscard]] std::vector<int> ColumnWidthsOf(int view, std::size_t count) const;
    void SetColumnWidths(int view, const std::vector<int> &widths);
    // True when column col of a view has a width of the user's (dragged or kept).
    [[nodiscard]] bool HasUserWidth(int view, int col) const;
    // The font size setting: the grid's texts, glyphs, rows and columns at percent of their
    // size (kZoomMin..kZoomMax).
    void setZoom(int percent);
    [[nodiscard]] int zoom() const { return zoom_; }
    // The font of the cells' texts.
    [[nodiscard]] const QFont &textFont() const { return textFont_; }
    // The colours painted now: those a style sheet set, the others from the set that
    // suits the palette's base. ResetColours forgets what a style sheet set, before
    // another one is applied.
    [[nodiscard]] GridColours Colours() const;
    void ResetColours();
    // The option set as Kestrel.ini keeps it (grid_options.h): the grid lines now
    // shown, and every other bit as it was set.
    [[nodiscard]] int GridOptions() const;
    void SetGridOptions(int options);
    // The text property the copy action sets.
    [[nodiscard]] QString text() const { return text_; }
    // The relative time base (reset by the recorder, taken from MP 1 on fetch).
    void SetRelativeBase(double base) { relativeBase_ = base; }
    [[nodiscard]] double relativeBase() const { return relativeBase_; }

public slots:
    // Views 1 (vertical), 3 (data only) and 4 (dump); any other number, such
    // as the horizontal view 2 that does not exist, leaves the view as it is
    // and emits viewUnavailable.
    void selectView(int view);
    // Character mode ASCII 1 .. BIN 6 (in the dump view 3..6 set the numeric columns).
    void setCharMode(int mode);
    // The control-character overlays: caret notation, mnemonics, none.
    void setCaretOverlay(bool on);
    void setMnemonicOverlay(bool on);
    void clearOverlay();
    // Time column: absolute, or relative / delta while on (absolute when off).
    void setTimeAbsolute();
    void setTimeRelative(bool on);
    void setTimeDelta(bool on);
    // Circuit names (D1, D2, ...) or pin names (Tx, Rx, ...) in the headers.
    void toggleNaming();
    void setGridLines(GridLines lines);
    void setWaveformFill(bool on);
    // The top or the end of the recording; the end follows a running one.
    void scrollToTop();
    void scrollToEnd();
    void GotoMp(std::int64_t mp); // puts MP mp into the top row
    // A search found MP mp: it goes into the first data row (or, in the last page, its row),
    // which becomes the current row.
    void ShowFound(std::int64_t mp);
    // Display hold and following the newest MPs.
    void SetHold(bool on);
    void SetFollowEnd(bool on);
    // Held display during a recording: keys and the wheel look back instead of being ignored.
    void StartBrowsing();
    // Repaint helpers.
    void ClearGrid();
    void RedrawGrid();
    // First cell, no horizontal scroll, layout measured again.
    void resetView();
    void RefreshStatusLine();
    // The copy item: sets the text property only (the grid copies nothing).
    void copyCell();
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
    // The user dragged a column of the vertical view to a new width.
    void columnWidthsChanged();
    void zoomChanged(int percent);
    // A view that does not exist was asked for (the window tells the user).
    void viewUnavailable(int view);
    // A style sheet set one of the colour properties.
    void coloursChanged();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;

private:
    friend class RedrawThread;
    // One pass of the redraw thread, on this (GUI) thread.
    void LiveShow(const PassRequest &pass);
    void LiveGauge(int gauge, const std::vector<MpRecord> &newest);
    // Takes the newest MPs and paints the rows that changed.
    void LiveFollow(std::vector<MpRecord> newest);

    void ApplyLayout();
    void ScrollBar1Change();     // scroll position moved: fetch and measure
    // Following a recording: the newest MPs, the last page. True when they
    // came from the live buffer (rows already painted stay valid), false when
    // the page had to be read from the file.
    bool TakeNewest(std::vector<MpRecord> newest);
    void UpdateRows(int first, int last);
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
    [[nodiscard]] QColor RowBack(int row) const;
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
    // Column widths the user dragged in the vertical view, and a drag in progress.
    std::array<UserWidths, 5> userWidths_{}; // by view
    int resizing_ = -1; // the column whose right border is dragged
    int zoom_ = 100;
    int resizeFromX_ = 0, resizeFromWidth_ = 0;
    // The column whose right border is at pt in the header row, or -1.
    [[nodiscard]] int BorderAt(const QPoint &pt) const;
    [[nodiscard]] const UserWidths &UserWidthsOf(int view) const;
    bool settingBar_ = false;
    static constexpr int kWheelNotch = 120;
    int wheelRest_ = 0; // wheel turn not yet worth a whole notch
    double relativeBase_ = 0.0;
    QStringList status_;
    QString text_;
    QString error_;
    QFont textFont_;
    QMenu *popup_ = nullptr;
    QAction *actCopy_ = nullptr;
    std::unique_ptr<TimeTextFormatter> times_;
    LiveSource *live_ = nullptr;
    std::unique_ptr<RedrawThread> redraw_;
    bool cleared_ = false;
    GridColours colours_; // of the paint in progress
    int gridOptions_; // the bits the grid carries along besides its lines
    // Set by a style sheet; invalid: the palette's set decides.
    QColor rowTintD2_;
    QColor gridLineColour_;
    QColor descriptionColour_;
    QColor currentCellBack_;
    QColor errorBack_;
    QColor errorText_;
    QColor waveLine_;
    QColor waveFill_;
    QColor markStartBack_;
    QColor markStartText_;
    QColor markStopBack_;
    QColor markStopText_;
    QColor markOtherBack_;
    QColor markOtherText_;
    QColor triggerStartBack_;
    QColor triggerStartText_;
    QColor triggerStopBack_;
    QColor triggerStopText_;
    QColor triggerSeenBack_;
    QColor triggerSeenText_;
};

} // namespace kestrel::grid
