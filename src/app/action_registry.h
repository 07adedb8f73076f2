#pragma once
// The one registry of the main window's commands. Every menu entry, tool bar
// button and speed button is bound to one of these actions, found by name
// (actStart, actStop, ...). Commands whose feature is not in this version yet
// exist, disabled, with a tooltip that says so.

#include <QHash>
#include <QObject>
#include <QString>

class QAction;
class QActionGroup;

namespace kestrel {

struct ActionDef {
    const char *name;
    int caption;      // string number of the menu text
    int hint;         // string number of the tooltip; 0: the caption
    const char *icon; // resource image, or nullptr
    bool checkable;
    bool later;       // the feature comes in a later version
    const char *shortcut;
    const char *group; // exclusive group name, or nullptr
};

class ActionManager final : public QObject {
    Q_OBJECT
public:
    explicit ActionManager(QObject *parent);

    // nullptr for an unknown name.
    [[nodiscard]] QAction *action(const QString &name) const;
    [[nodiscard]] QActionGroup *group(const QString &name) const;
    [[nodiscard]] QList<QAction *> actions() const { return ordered_; }
    [[nodiscard]] static bool isLater(const QString &name);

    // Texts and tooltips in the current language.
    void InitialLoads();

private:
    QHash<QString, QAction *> byName_;
    QHash<QString, QActionGroup *> groups_;
    QList<QAction *> ordered_;
};

} // namespace kestrel
