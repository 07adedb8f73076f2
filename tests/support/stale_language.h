#pragma once
// Finds texts of the other language still shown after a language switch:
// every label, button, group, tab, menu, action, tool tip, table header and
// combo item under a widget is compared with the string table's texts of the
// other language (where the two languages differ).

#include <QAbstractButton>
#include <QAction>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QMenu>
#include <QSet>
#include <QTabWidget>
#include <QTableWidget>

#include "base/string_table.h"

namespace kestrel::test {

// Texts of the table in the language at offset `other` that the current language says differently.
// A text that is also one of the current language's (such as "Signal", German for a
// tab and English for another word) is not counted.
inline QSet<QString> OtherLanguageTexts(int other)
{
    QSet<QString> theirs, ours;
    const int own = other == kLangGerman ? kLangEnglish : kLangGerman;
    for (int n = 1; n < kLangEnglish; ++n) {
        const auto t = FindStr(n + other);
        const auto o = FindStr(n + own);
        if (o)
            ours.insert(QString::fromStdString(*o).remove('&').trimmed());
        if (!t || !o || *t == *o)
            continue;
        QString text = QString::fromStdString(*t).remove('&').trimmed();
        if (text.size() >= 3)
            theirs.insert(text);
    }
    return theirs - ours;
}

// "where: text" for every shown text that is one of the other language's.
inline QStringList StaleTexts(const QWidget *root, int other)
{
    const QSet<QString> foreign = OtherLanguageTexts(other);
    QStringList found;
    auto check = [&](const QObject *o, const QString &what, QString text) {
        text = text.remove('&').trimmed();
        const QString head = text.section("   [", 0, 0); // menu words carry the button caption
        if (foreign.contains(text) || foreign.contains(head))
            found << o->objectName() + " " + what + ": " + text;
    };
    for (const QWidget *w : root->findChildren<QWidget *>()) {
        check(w, "tool tip", w->toolTip());
        if (auto *l = qobject_cast<const QLabel *>(w))
            check(w, "text", l->text());
        if (auto *b = qobject_cast<const QAbstractButton *>(w))
            check(w, "text", b->text());
        if (auto *g = qobject_cast<const QGroupBox *>(w))
            check(w, "title", g->title());
        if (auto *m = qobject_cast<const QMenu *>(w))
            check(w, "title", m->title());
        if (auto *t = qobject_cast<const QTabWidget *>(w))
            for (int i = 0; i < t->count(); ++i)
                check(w, "tab", t->tabText(i));
        if (auto *c = qobject_cast<const QComboBox *>(w))
            for (int i = 0; i < c->count(); ++i)
                check(w, "item", c->itemText(i));
        if (auto *t = qobject_cast<const QTableWidget *>(w))
            for (int c = 0; c < t->columnCount(); ++c)
                if (const QTableWidgetItem *h = t->horizontalHeaderItem(c))
                    check(w, "header", h->text());
        if (w->isWindow())
            check(w, "window title", w->windowTitle());
    }
    for (const QAction *a : root->findChildren<QAction *>()) {
        check(a, "action", a->text());
        check(a, "action tip", a->toolTip());
    }
    return found;
}

} // namespace kestrel::test
