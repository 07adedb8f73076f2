#pragma once
// What the recorder asks of the window. The main window implements it; the
// command-line recorder and the tests leave every method at its default.

#include <string>

namespace kestrel {

class RecorderView {
public:
    virtual ~RecorderView() = default;
    // Recording on / off: combos, tool windows, lights, the controls locked while recording.
    virtual void SetRecordOnControls() {}
    virtual void SetRecordOffControls() {}
    virtual void setModeText(const std::string &) {}   // "MONITOR - MODUS" / "EXAMINE - MODUS"
    virtual void setStatusText(const std::string &) {} // e.g. while pending data are read
    virtual void setRecordButtons(bool /*recordDown*/) {} // btnREC down means btnSTOP up
    virtual void setPauseButton(bool /*down*/) {}
    virtual void setLightsMonitoring(bool /*on*/) {}
    virtual void startBlinkTimer() {}
    // The two status lights (apdLEDViewHold, apdLEDRecorder) after a blink tick.
    virtual void setStatusLights(bool /*viewHoldOn*/, bool /*recorderOn*/) {}
    virtual void setViewHoldButton(bool /*down*/) {}
    virtual void refreshSizeLabel(const std::string & /*label*/) {}
    virtual void resetViewToStart() {}
    virtual void clearGrid() {}
    virtual void redrawGrid() {}
    virtual void scrollGridToEnd() {}
    virtual void clearGauges() {}
    virtual void environmentChanged() {}
    virtual void startRedrawThread() {}
    virtual void stopRedrawThread() {}
};

} // namespace kestrel
