#include "app/tool_window_place.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

namespace kestrel {

namespace {

int WindowStateOf(const QWidget &window) { return window.isMinimized() ? 1 : window.isMaximized() ? 2 : 0; }

} // namespace

void ToolWindowPlace::set(QWidget &window, const ToolWindowPlacement &placement)
{
    placement_ = placement;
    placed_ = false;
    if (window.isVisible())
        apply(window);
}

ToolWindowPlacement ToolWindowPlace::get(const QWidget &window) const
{
    ToolWindowPlacement p = placement_;
    if (placed_) {
        const QPoint at = window.isVisible() ? window.pos() : QPoint(placement_.Left, placement_.Top);
        p.Left = at.x();
        p.Top = at.y();
        p.WindowState = WindowStateOf(window);
    }
    p.Visible = window.isVisible();
    return p;
}

void ToolWindowPlace::remember(const QWidget &window)
{
    if (!placed_)
        return;
    placement_.Left = window.pos().x();
    placement_.Top = window.pos().y();
    placement_.WindowState = WindowStateOf(window);
}

void ToolWindowPlace::applyOnce(QWidget &window)
{
    if (!placed_)
        apply(window);
}

void ToolWindowPlace::apply(QWidget &window)
{
    placed_ = true;
    // Back where it stood, when that spot is still on a screen; else over the main window.
    const QPoint saved(placement_.Left, placement_.Top);
    if (QGuiApplication::screenAt(saved + QPoint(40, 20)) != nullptr)
        window.move(saved);
    else if (window.parentWidget() != nullptr)
        window.move(window.parentWidget()->geometry().center() - window.rect().center());
    if (placement_.WindowState == 1)
        window.setWindowState(window.windowState() | Qt::WindowMinimized);
}

} // namespace kestrel
