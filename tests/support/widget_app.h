#pragma once
// Widget tests need one QApplication before their first widget. It is made on
// first use, shared by every test file of a program, and never destroyed:
// tearing Qt down during static destruction crashes.

#include <QApplication>

namespace kestrel::test {

inline QApplication &WidgetApp()
{
    static int argc = 1;
    static char name[] = "kestrel-widget-test";
    static char *argv[] = {name, nullptr};
    if (auto *made = qobject_cast<QApplication *>(QCoreApplication::instance()))
        return *made;
    static QApplication *app = new QApplication(argc, argv);
    return *app;
}

} // namespace kestrel::test
