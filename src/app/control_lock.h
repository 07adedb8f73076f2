#pragma once
// Remembers whether each control of a set was enabled, disables them all, and
// later gives every control back exactly the state it had. Recording locks
// the controls whose use would disturb the recording.

#include <QPointer>
#include <QVector>

class QAction;
class QWidget;

namespace kestrel {

class ControlLock {
public:
    void add(QAction *action) { actions_.push_back({action, true}); }
    void add(QWidget *widget) { widgets_.push_back({widget, true}); }

    // SaveActualCtrlsStatus + disable. Locking twice keeps the first remembered states.
    void lock();
    void unlock();
    [[nodiscard]] bool isLocked() const { return locked_; }

private:
    template <class T> struct Entry {
        QPointer<T> control;
        bool wasEnabled;
    };
    QVector<Entry<QAction>> actions_;
    QVector<Entry<QWidget>> widgets_;
    bool locked_ = false;
};

} // namespace kestrel
