#pragma once
// The goto, search and measure window beside the main window. Its pages, in
// the order of pgGotoSearch: search (data, signal, error, time), delta-time
// measurement, trigger point, MP. It collects what the user wants; the search
// routines of the search library do the work over the recording the grid
// shows, and the grid is moved to what they find. A search keeps the window
// alive (the event loop runs every few thousand MPs) and "Stopp" ends it.
//
// The search range is the grid's scroll range, MP 0 to the last MP: the
// walk starts next to the current row and the end MP itself is never tested,
// so searching forward never finds a hit on the last MP of the recording, and
// searching backward never one on MP 0 (the recording's opening mark).

#include <QDialog>

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>

#include "present/range_scale.h"
#include "search/search_criteria.h"

class QButtonGroup;
class QDateEdit;
class QCheckBox;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QSlider;
class QTabWidget;
class QTimeEdit;

namespace kestrel {

class PatternFields;
class Prompter;
class RangeControls;
class UpDown;
namespace grid {
class RecordGrid;
}

// The pages of pgGotoSearch and of the inner search page control.
namespace GotoPage {
inline constexpr int Search = 0;
inline constexpr int Delta = 1;
inline constexpr int TriggerPoint = 2;
inline constexpr int Mp = 3;
} // namespace GotoPage
namespace SearchPage {
inline constexpr int Data = 0;
inline constexpr int Signal = 1;
inline constexpr int Error = 2;
inline constexpr int Time = 3;
} // namespace SearchPage

class TFormGoto final : public QDialog {
    Q_OBJECT
public:
    // recordPath: the file the grid shows, asked each time (it changes with New and Open).
    TFormGoto(Prompter &prompter, grid::RecordGrid &grid, std::function<std::string()> recordPath,
              QWidget *parent = nullptr);
    ~TFormGoto() override;

    void InitialLoads();
    // Shows the window on one of its pages (actGotoMP, actGotoTP, actSearchEvent, actDeltaTimeMeasurement).
    void showPage(int page);
    // The recording grew or another one was opened: the track bars and ranges follow.
    void recordingChanged();

    [[nodiscard]] int pageIndex() const;
    [[nodiscard]] int searchPageIndex() const;
    void setPageIndexes(int page, int searchPage);
    [[nodiscard]] bool searching() const { return searching_; }

public slots:
    void btnSearchForwardClick();
    void btnSearchReverseClick();
    void btnSearchStopClick();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    QWidget *buildSearchPage();
    QWidget *buildDataPage();
    QWidget *buildLevelPage(QButtonGroup **groups, int count, const int *lineTexts, int headText, int firstColumn);
    QWidget *buildTimePage();
    QWidget *buildDeltaPage();
    // A label, a number field with its up/down, a reset button and a track bar.
    QWidget *buildNumberPage(const char *name, int label, const char *suffix, QLineEdit *&field, UpDown *&upDown,
                             QPushButton *&reset, QSlider *&bar);
    QWidget *buildTriggerPage();
    QWidget *buildMpPage();

    void Search(int direction);
    [[nodiscard]] bool criteria(SearchCriteria &out);
    void gotoMp(std::uint64_t mp);
    void gotoTrigger(int number);
    void showDelta();
    void tell(int text);
    [[nodiscard]] std::uint64_t lastMp() const;

    Prompter &prompter_;
    grid::RecordGrid &grid_;
    std::function<std::string()> recordPath_;
    std::atomic<bool> stop_{false};
    bool searching_ = false;
    TrackScale mpScale_;

    QTabWidget *pgGotoSearch = nullptr;
    QTabWidget *PageControlSearch = nullptr;
    // data
    QCheckBox *ckSearchD1 = nullptr;
    QCheckBox *ckSearchD2 = nullptr;
    PatternFields *patternFields = nullptr;
    // signal and error: one group of three radio buttons per line (ignore, low, high)
    QButtonGroup *signalGroups_[6] = {};
    QButtonGroup *errorGroups_[3] = {};
    QLabel *lblSignalHead = nullptr;
    QLabel *lblErrorHead = nullptr;
    // time
    QDateEdit *pkSearchDate = nullptr;
    QTimeEdit *pkSearchTime = nullptr;
    QLabel *lblSearchTime = nullptr;
    // delta
    RangeControls *deltaRange = nullptr;
    QLineEdit *edtMPStartTime = nullptr;
    QLineEdit *edtMPStopTime = nullptr;
    QLineEdit *edtMPDeltaTime = nullptr;
    QLineEdit *edtMPDeltaTimeSec = nullptr;
    QLineEdit *edtMPDeltaTimeMSec = nullptr;
    QLineEdit *edtMPDeltaTimeUSec = nullptr;
    // trigger point and MP
    QLineEdit *edtGotoTR = nullptr;
    QSlider *tbGotoTR = nullptr;
    UpDown *UpDownTR = nullptr;
    QPushButton *btnResetGotoTR = nullptr;
    QLineEdit *edtGotoMP = nullptr;
    QSlider *tbGotoMP = nullptr;
    UpDown *UpDownMP = nullptr;
    QPushButton *btnResetGotoMP = nullptr;
    // buttons
    QPushButton *btnSearchForward = nullptr;
    QPushButton *btnSearchReverse = nullptr;
    QPushButton *btnSearchStop = nullptr;
    QPushButton *btnCancel = nullptr;
    QPushButton *btnHelp = nullptr;
    QProgressBar *ProgressBar1 = nullptr;
    QList<QPair<QWidget *, int>> texts_; // widgets whose text is a string number
};

} // namespace kestrel
