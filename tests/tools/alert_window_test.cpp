// The alert window in both languages: the file's name, the Stop button, errors shown in the
// window, and every way of ending the alert reported once.

#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <tuple>

#include "alert_window.h"
#include "base/string_table.h"
#include "support/widget_app.h"

using namespace kestrel;
using namespace kestrel::chimer;

namespace {

// Widgets and players need an application object before the first test runs.
const QApplication &g_app = test::WidgetApp();

QLabel *fileLabel(AlertWindow &w) { return w.findChild<QLabel *>("lblAlertFile"); }
QLabel *messageLabel(AlertWindow &w) { return w.findChild<QLabel *>("lblAlertMessage"); }
QPushButton *stopButton(AlertWindow &w) { return w.findChild<QPushButton *>("btnAlertStop"); }

} // namespace

TEST(AlertWindow, ShowsTheFileStopAndErrorsInTheUsersLanguage)
{
    const std::tuple<int, const char *, const char *> languages[] = {
        {kLangEnglish, "Stop", "The file cannot be played:"},
        {kLangGerman, "Stopp", "Die Datei lässt sich nicht abspielen:"},
    };
    for (const auto &[lang, stop, cannot] : languages) {
        AlertWindow w("/home/op/sounds/bell.wav", lang);
        w.show();
        EXPECT_EQ(stopButton(w)->text(), stop);
        EXPECT_EQ(fileLabel(w)->text(), "bell.wav");
        EXPECT_FALSE(messageLabel(w)->isVisible());

        w.showNoSoundOutput();
        EXPECT_TRUE(messageLabel(w)->isVisible());
        EXPECT_FALSE(messageLabel(w)->text().startsWith("[#")); // the table has the entry
        w.showError("Internal data stream error.");
        EXPECT_EQ(messageLabel(w)->text(), QString(cannot) + "\nInternal data stream error.");
    }
}

// A long name is cut in the middle, a long reason wraps: the window keeps its width.
TEST(AlertWindow, LongNamesAndErrorsKeepTheWindowSmall)
{
    const QString name = QString("alarm-") + QString(300, 'x') + "-end.wav";
    AlertWindow w("/tmp/" + name, kLangEnglish);
    w.show();
    const QString shown = fileLabel(w)->text();
    EXPECT_TRUE(shown.startsWith("alarm-") && shown.endsWith("-end.wav") && shown.contains(QChar(0x2026)))
        << shown.toStdString();
    EXPECT_LE(fileLabel(w)->fontMetrics().horizontalAdvance(shown), fileLabel(w)->width());

    const int widthBefore = w.width();
    w.showError(QString("Could not decode the stream because ").repeated(8));
    QApplication::processEvents();
    EXPECT_EQ(w.width(), widthBefore);
    EXPECT_LT(w.width(), 600);
    EXPECT_GE(messageLabel(w)->height(), messageLabel(w)->heightForWidth(messageLabel(w)->width()));
}

TEST(AlertWindow, StopButtonAndClosingBothEndTheAlertOnce)
{
    AlertWindow w("/tmp/bell.wav", kLangEnglish);
    w.show();
    QSignalSpy stops(&w, &AlertWindow::stopRequested);
    stopButton(w)->click();
    EXPECT_EQ(stops.count(), 1);
    EXPECT_TRUE(w.close());
    EXPECT_EQ(stops.count(), 2);
}
