#include "app/tool_job_window.h"

#include <QCloseEvent>

namespace kestrel {

ToolJobWindow::ToolJobWindow(QWidget *parent)
    : QDialog(parent, Qt::Tool | Qt::WindowTitleHint | Qt::WindowCloseButtonHint)
{
}

void ToolJobWindow::showInFront()
{
    refreshLimits(); // showEvent reads it too, but not for a window already open
    show();
    raise();
    activateWindow();
}

void ToolJobWindow::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    place_.applyOnce(*this);
    refreshLimits();
}

void ToolJobWindow::hideEvent(QHideEvent *event)
{
    // A window that goes (closed, or the main window starts a recording) ends its job.
    stop_ = true;
    place_.remember(*this);
    QDialog::hideEvent(event);
}

void ToolJobWindow::moveEvent(QMoveEvent *event)
{
    QDialog::moveEvent(event);
    if (isVisible())
        place_.remember(*this);
}

void ToolJobWindow::changeEvent(QEvent *event)
{
    QDialog::changeEvent(event);
    // Back in front: the recording may have grown or another one may have been opened.
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        refreshLimits();
    else if (event->type() == QEvent::WindowStateChange)
        place_.remember(*this);
}

void ToolJobWindow::closeEvent(QCloseEvent *event)
{
    stop_ = true;
    QDialog::closeEvent(event);
}

void ToolJobWindow::reject()
{
    if (jobRunning()) {
        stop_ = true; // Escape first stops the job; the window stays with what it says
        return;
    }
    QDialog::reject();
}

} // namespace kestrel
