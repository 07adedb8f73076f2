#pragma once
// Choosing a text in a port settings box without a change notification.

#include <QComboBox>
#include <QSignalBlocker>
#include <string>

namespace kestrel {

// A value the box does not offer (an environment from another profile, a list
// changed in the options) is added and chosen, so the setting is kept as it is.
inline void SelectComboText(QComboBox *c, const std::string &text)
{
    const QSignalBlocker quiet(c);
    const int i = c->findText(QString::fromStdString(text));
    if (i >= 0)
        c->setCurrentIndex(i);
    else if (!text.empty()) {
        c->addItem(QString::fromStdString(text));
        c->setCurrentIndex(c->count() - 1);
    }
}

} // namespace kestrel
