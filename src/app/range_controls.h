#pragma once
// A range of MPs chosen with two edit fields (edtMPStart, edtMPStop), two
// track bars (tbMPStart, tbMPStop), a step button pair for each end
// (btnStartUp, btnStartDown, btnStopUp, btnStopDown) and btnResetRange. The
// edit fields and the track bars are kept equal both ways: moving a bar
// writes its MP into the field (SynchronizeByTrackBars), typing a valid MP
// moves the bar (SynchronizeByEditFields). Leaving a field with text that is
// no MP number puts the last valid value back (a number outside the
// recording becomes the nearest end) and says so under the fields. The start
// never passes the stop: the end the user moves pushes the other along.
//
// Recordings can hold more MPs than a track bar's int counts; TrackScale
// scales them onto the bars, exact at both ends. The widget knows nothing of
// what the range is for; the export dialog and the goto window both use it.

#include <QWidget>
#include <cstdint>

#include "present/range_scale.h"

class QLabel;
class QLineEdit;
class QSlider;
class QToolButton;

namespace kestrel {

// Text numbers of the range controls.
namespace RangeControlsMsg {
inline constexpr int FirstMp = 7900;
inline constexpr int LastMp = 7901;
inline constexpr int ResetRange = 7902;
inline constexpr int StepUp = 7903;
inline constexpr int StepDown = 7904;
inline constexpr int FieldHint = 7905;   // "MP number from %1 to %2"
inline constexpr int NotANumber = 7906;  // "%1" is not an MP number; %2 is back
inline constexpr int OutOfRange = 7907;  // %1 lies outside (%2 to %3); %4 was put in
inline constexpr int NoMps = 7731;       // "No recording open"
} // namespace RangeControlsMsg

class RangeControls final : public QWidget {
    Q_OBJECT
public:
    explicit RangeControls(QWidget *parent = nullptr);

    // The MPs that may be chosen; first > last: none (the controls are disabled).
    // A range that covered everything before covers everything after; any
    // other range is kept as far as the new limits allow.
    void setLimits(std::uint64_t first, std::uint64_t last);
    void setRange(std::uint64_t from, std::uint64_t to);
    [[nodiscard]] const TrackScale &limits() const { return scale_; }
    [[nodiscard]] bool hasMps() const { return !scale_.empty(); }
    [[nodiscard]] std::uint64_t from() const { return ends_.from; }
    [[nodiscard]] std::uint64_t to() const { return ends_.to; }
    // The note under the fields (why a field was put back); empty when there is none.
    [[nodiscard]] QString hint() const;

    void InitialLoads(); // texts in the current language

signals:
    void rangeChanged(std::uint64_t from, std::uint64_t to);

public slots:
    void SynchronizeByTrackBars();  // a bar moved: its MP into the field
    void SynchronizeByEditFields(); // a field holds a valid MP: the bar follows
    void edtMPStartExit();
    void edtMPStopExit();
    void btnStartUpClick();
    void btnStartDownClick();
    void btnStopUpClick();
    void btnStopDownClick();
    void btnResetRangeClick();

private:
    void apply(MpRangeEnds ends); // the ends into fields and bars (without echo); signals when they changed
    void leaveField(QLineEdit *field, bool start);
    void showHint(const QString &text);
    void updateEnabled();

    TrackScale scale_;
    MpRangeEnds ends_;
    QLabel *lblMPStart = nullptr;
    QLabel *lblMPStop = nullptr;
    QLineEdit *edtMPStart = nullptr;
    QLineEdit *edtMPStop = nullptr;
    QSlider *tbMPStart = nullptr;
    QSlider *tbMPStop = nullptr;
    QToolButton *btnStartUp = nullptr;
    QToolButton *btnStartDown = nullptr;
    QToolButton *btnStopUp = nullptr;
    QToolButton *btnStopDown = nullptr;
    QToolButton *btnResetRange = nullptr;
    QLabel *lblRangeHint = nullptr;
};

} // namespace kestrel
