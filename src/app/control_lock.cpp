#include "app/control_lock.h"

#include <QAction>
#include <QWidget>

namespace kestrel {

void ControlLock::lock()
{
    if (locked_)
        return;
    for (auto &e : actions_)
        if (e.control) {
            e.wasEnabled = e.control->isEnabled();
            e.control->setEnabled(false);
        }
    for (auto &e : widgets_)
        if (e.control) {
            // The widget's own state, not the one inherited from a disabled parent.
            e.wasEnabled = !e.control->testAttribute(Qt::WA_ForceDisabled);
            e.control->setEnabled(false);
        }
    locked_ = true;
}

void ControlLock::unlock()
{
    if (!locked_)
        return;
    for (auto &e : actions_)
        if (e.control)
            e.control->setEnabled(e.wasEnabled);
    for (auto &e : widgets_)
        if (e.control)
            e.control->setEnabled(e.wasEnabled);
    locked_ = false;
}

} // namespace kestrel
