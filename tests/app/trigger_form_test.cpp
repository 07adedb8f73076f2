// The linked pattern fields on the offscreen platform.

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFocusEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTableWidget>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <set>

#include "app/pattern_fields.h"
#include "base/string_table.h"

using namespace kestrel;

namespace {

int g_argc = 1;
char g_arg0[] = "test_trigger_form";
char *g_argv[] = {g_arg0, nullptr};
const QApplication *const g_app = new QApplication(g_argc, g_argv);

template <class W>
W *child(const QObject &parent, const char *name)
{
    W *w = parent.findChild<W *>(name);
    EXPECT_NE(w, nullptr) << name;
    return w;
}

QString Text(const QPlainTextEdit *field) { return field->toPlainText(); }

void Type(QWidget *field, const QString &keys) { QTest::keyClicks(field, keys); }

// Leaving a field for another one of the same window.
void Leave(QWidget *field)
{
    QFocusEvent out(QEvent::FocusOut, Qt::TabFocusReason);
    QApplication::sendEvent(field, &out);
}

struct PatternFieldsTest : ::testing::Test {
    PatternFields fields;
    QPlainTextEdit *asc = child<QPlainTextEdit>(fields, "edDataAsc");
    QPlainTextEdit *hex = child<QPlainTextEdit>(fields, "edDataHex");
    QPlainTextEdit *bin = child<QPlainTextEdit>(fields, "edDataBin");
};

TEST_F(PatternFieldsTest, EachFieldRewritesTheOtherTwo)
{
    QSignalSpy edited(&fields, &PatternFields::patternEdited);
    fields.setHexText("0D0A");
    EXPECT_EQ(fields.bytes(), "\r\n");
    EXPECT_EQ(Text(asc), "^M^J");
    EXPECT_EQ(Text(bin), "00001101 00001010");
    EXPECT_EQ(edited.count(), 0); // the program's own writing is no edit

    fields.setBytes("");
    Type(asc, "^M^J");
    EXPECT_EQ(fields.bytes(), "\r\n");
    EXPECT_EQ(Text(hex), "0D0A");
    EXPECT_EQ(Text(bin), "00001101 00001010");
    EXPECT_EQ(Text(asc), "^M^J"); // the field typed in keeps its text
    EXPECT_GT(edited.count(), 0);

    fields.setBytes("");
    asc->insertPlainText(QString::fromUtf8("Aä~")); // as a paste or an input method gives it
    EXPECT_EQ(fields.hexText(), "41E47E"); // Latin-1 characters are their bytes

    fields.setBytes("");
    Type(bin, "0100000101000010");
    EXPECT_EQ(Text(asc), "AB");
    EXPECT_EQ(Text(hex), "4142");
}

TEST_F(PatternFieldsTest, HexTakesOnlyDigitsAndUpperCase)
{
    Type(hex, "0G1");
    EXPECT_EQ(Text(hex), "01");
    EXPECT_EQ(fields.bytes(), "\x01");
    EXPECT_EQ(Text(asc), "^A");
    Type(hex, "a-f");
    EXPECT_EQ(Text(hex), "01AF");
    EXPECT_EQ(hex->textCursor().position(), 4); // the caret stays behind what was typed

    // Pasted garbage goes all at once, also two bad characters side by side.
    fields.setHexText("zz0d~~0a??");
    EXPECT_EQ(fields.hexText(), "0D0A");
}

TEST_F(PatternFieldsTest, BinaryGroupsByteWiseAndWaitsForWholeBytes)
{
    Type(bin, "0000110120");
    EXPECT_EQ(Text(bin), "00001101 0"); // the 2 is gone, the blank is layout
    EXPECT_EQ(fields.bytes(), "\r");     // the ninth digit starts a byte that is not there yet
    EXPECT_EQ(Text(hex), "0D");
    Type(bin, "0001010");
    EXPECT_EQ(Text(bin), "00001101 00001010");
    EXPECT_EQ(fields.hexText(), "0D0A");
    EXPECT_EQ(bin->textCursor().position(), 17);

    // Leaving a field drops what is not part of the pattern.
    Type(bin, "111");
    Leave(bin);
    EXPECT_EQ(Text(bin), "00001101 00001010");
    hex->moveCursor(QTextCursor::End);
    Type(hex, "F");
    EXPECT_EQ(Text(hex), "0D0AF");
    Leave(hex);
    EXPECT_EQ(Text(hex), "0D0A");
    asc->moveCursor(QTextCursor::End);
    Type(asc, "^");
    Leave(asc);
    EXPECT_EQ(Text(asc), "^M^J");
}

} // namespace
