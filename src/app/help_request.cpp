#include "app/help_request.h"

#include <QApplication>
#include <QShortcut>

#include "app/help_window.h"
#include "help/help_catalogue.h"

namespace kestrel {

THelpWindow *ShowHelpFor(QWidget *from)
{
    std::string_view page;
    for (const QWidget *w = from; w != nullptr && page.empty(); w = w->parentWidget())
        page = help::PageForForm(w->objectName().toStdString());
    if (page.empty())
        page = help::kMainPage;
    // The one help window is a child of the program's top window, so it lives as long as the program.
    QWidget *top = from;
    while (top->parentWidget() != nullptr)
        top = top->parentWidget();
    auto *help = qobject_cast<THelpWindow *>(top);
    if (help == nullptr)
        help = top->findChild<THelpWindow *>(QString(), Qt::FindDirectChildrenOnly);
    if (help == nullptr)
        help = new THelpWindow(top);
    help->showPage(QString::fromUtf8(page.data(), qsizetype(page.size())));
    return help;
}

void InstallHelpKey(QWidget *window)
{
    auto *key = new QShortcut(QKeySequence(Qt::Key_F1), window);
    key->setContext(Qt::WindowShortcut);
    QObject::connect(key, &QShortcut::activated, window, [window] {
        // The panel that has the focus may have a page of its own.
        QWidget *focus = QApplication::focusWidget();
        ShowHelpFor(focus != nullptr && window->isAncestorOf(focus) ? focus : window);
    });
}

} // namespace kestrel
