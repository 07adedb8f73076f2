#pragma once
// A tool window that runs one long job at a time (the export, the report): it
// keeps its place between sessions, re-reads the recording's size when it comes
// back to the front, and stops its job when it goes — hidden, closed, or by
// Escape, which stops a running job before it closes the window.

#include <atomic>

#include <QDialog>

#include "app/tool_window_place.h"

namespace kestrel {

class ToolJobWindow : public QDialog {
public:
    // Where the window stands and whether it is open ([EXWindow], [REWindow]).
    void setPlacement(const ToolWindowPlacement &placement) { place_.set(*this, placement); }
    [[nodiscard]] ToolWindowPlacement placement() const { return place_.get(*this); }

    // Re-reads the recording's size for the range controls.
    virtual void refreshLimits() = 0;
    // Opens the window, or brings it to the front with the recording's size read again.
    void showInFront();

protected:
    explicit ToolJobWindow(QWidget *parent);

    [[nodiscard]] virtual bool jobRunning() const = 0;

    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void moveEvent(QMoveEvent *event) override;
    void changeEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void reject() override;

    std::atomic<bool> stop_{false}; // the running job ends at its next look

private:
    ToolWindowPlace place_;
};

} // namespace kestrel
