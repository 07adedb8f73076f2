// The options from the main window: OK saves the configuration and refills the
// port settings boxes from the new lists, a chosen style is applied at once and
// comes back after a restart, a style file that cannot be used is said and
// changes nothing, and [DataGrid] GridOptions is read at start and written from
// the grid.

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <fstream>

#include "app/action_registry.h"
#include "app/app_style.h"
#include "app/main_form.h"
#include "app/options_form.h"
#include "base/string_table.h"
#include "capture/recording_session.h"
#include "config/ini_file.h"
#include "present/grid/grid_colours.h"
#include "present/grid/grid_options.h"
#include "present/grid/record_grid.h"
#include "support/main_window.h"
#include "support/screenshots.h"
#include "support/temp_dir.h"

using namespace kestrel;

namespace {

const QApplication &g_app = test::WidgetApp(); // before the first widget

void pump(int ms) { test::Pump(ms); }

IniFile Ini(const std::filesystem::path &dir) { return IniFile::Parse(test::ReadWholeFile(dir / "Kestrel.ini")); }

// A main window on the simulated line; a second one on the same folder is a restart.
struct Window : test::MainWindow {
    explicit Window(const std::filesystem::path &dir) : test::MainWindow({.folder = dir, .lang = kLangEnglish}) {}
    ~Window()
    {
        if (w)
            w->quitCleanly();
    }
    TFormOptions *openOptions(const char *action = "actOptions")
    {
        QAction *a = w->actions().action(action);
        EXPECT_TRUE(a->isEnabled()) << action;
        a->trigger();
        pump(20);
        auto *form = w->findChild<TFormOptions *>("TFormOptions");
        EXPECT_NE(form, nullptr);
        EXPECT_TRUE(form != nullptr && form->isVisible());
        return form;
    }
    QStringList items(const char *combo)
    {
        QStringList out;
        auto *c = w->findChild<QComboBox *>(combo);
        for (int i = 0; i < c->count(); ++i)
            out << c->itemText(i);
        return out;
    }
};

// Every test leaves the program in the platform look, as the next one expects it.
struct MainOptions : ::testing::Test {
    test::TempDir dir;
    void TearDown() override { (void)ApplyStyle(ProgramConfig{}, dir.path(), 0); }
};

} // namespace

TEST_F(MainOptions, OKSavesTheConfigurationAndTheBoxesOfferTheNewLists)
{
    Window win(dir.path());
    auto *baud = win.w->findChild<QComboBox *>("cbPortBaudRate");
    baud->setCurrentText("19200");
    const QString before = baud->currentText();
    TFormOptions *form = win.openOptions("actPortOptions");
    ASSERT_NE(form, nullptr);
    form->findChild<QPlainTextEdit *>("edBaudrates")->setPlainText("2400,4800,9600");
    form->findChild<QComboBox *>("cbSelHwProfile")->setEditText("usb cable");
    form->findChild<QComboBox *>("cbComA")->setCurrentIndex(1);
    form->findChild<QComboBox *>("cbComB")->setCurrentIndex(0);
    form->findChild<QPushButton *>("btnOK")->click();
    EXPECT_FALSE(form->isVisible());

    // The setting in use stays chosen, even where the new list does not offer it.
    EXPECT_EQ(win.items("cbPortBaudRate"), (QStringList{"2400", "4800", "9600", before}));
    EXPECT_EQ(baud->currentText(), before);
    EXPECT_EQ(win.w->session().capture().storedIndexA(), 1);
    EXPECT_EQ(win.w->session().capture().storedIndexB(), 0);
    EXPECT_TRUE(win.w->isEnvironmentChanged());
    const IniFile ini = Ini(dir.path());
    EXPECT_EQ(ini.ReadString("Hardware", "Profile", ""), "usb cable.ksh");
    EXPECT_EQ(ini.ReadString("Port Standards", "Baudrates", ""), "2400,4800,9600");
    EXPECT_EQ(ReadHardwareProfile(dir.path() / "profiles" / "usb cable.ksh", {}).lists.baudRates,
              (std::vector<std::string>{"2400", "4800", "9600"}));
}

TEST_F(MainOptions, AChosenStyleIsAppliedAtOnceAndComesBackAfterARestart)
{
    {
        Window win(dir.path());
        // The first start installed the shipped styles and their slots.
        EXPECT_TRUE(std::filesystem::exists(dir.path() / "themes" / "Dark.qss"));
        EXPECT_EQ(Ini(dir.path()).ReadString("Skin2", "Name", ""), "Dark");
        EXPECT_FALSE(grid::IsDarkBase(win.w->grid().palette().base().color()));

        TFormOptions *form = win.openOptions();
        auto *theme = form->findChild<QComboBox *>("cbTheme");
        theme->setCurrentIndex(theme->findText("Dark"));
        pump(20);
        EXPECT_EQ(AppliedStyle(), 2);
        EXPECT_TRUE(grid::IsDarkBase(win.w->grid().palette().base().color()));
        EXPECT_EQ(win.w->grid().Colours().waveFill, QColor("#424f63")); // from the sheet

        // Abort puts the look back; OK keeps the choice.
        form->findChild<QPushButton *>("btnAbort")->click();
        EXPECT_EQ(AppliedStyle(), 0);
        EXPECT_FALSE(grid::IsDarkBase(win.w->grid().palette().base().color()));
        EXPECT_EQ(Ini(dir.path()).ReadInteger("Skin", "Current", -1), 0);
        form = win.openOptions();
        theme = form->findChild<QComboBox *>("cbTheme");
        theme->setCurrentIndex(theme->findText("Dark"));
        form->findChild<QPushButton *>("btnOK")->click();
        EXPECT_EQ(Ini(dir.path()).ReadInteger("Skin", "Current", -1), 2);
    }
    (void)ApplyStyle(ProgramConfig{}, dir.path(), 0); // as a new process would start
    Window again(dir.path());
    EXPECT_EQ(AppliedStyle(), 2);
    EXPECT_TRUE(grid::IsDarkBase(again.w->grid().palette().base().color()));
    EXPECT_EQ(again.w->grid().Colours().markBack[1], QColor("#1b3d22"));
    EXPECT_TRUE(again.prompter.asked.empty());
    // A save at close keeps it too.
    again.w->quitCleanly();
    again.w.reset();
    EXPECT_EQ(Ini(dir.path()).ReadInteger("Skin", "Current", -1), 2);
}

TEST_F(MainOptions, TheStyleMenuOffersTheNamedSlotsAndKeepsTheChoice)
{
    std::filesystem::create_directories(dir.path() / "themes");
    std::ofstream(dir.path() / "themes" / "Paper & Ink.qss") << "QToolTip { color: black; }";
    std::ofstream(dir.path() / "Kestrel.ini")
        << "[Skin]\nMax=3\n[Skin1]\nName=None\n[Skin2]\nName=Paper & Ink\n[Skin3]\nName=Gone\nDark=1\n";
    Window win(dir.path());
    auto *menu = win.w->findChild<QMenu *>("mnuStyles");
    ASSERT_NE(menu, nullptr);
    QStringList entries;
    for (QAction *a : menu->actions())
        entries << a->text();
    EXPECT_EQ(entries, (QStringList{QString::fromStdString(Str(9219)), "Paper && Ink", "Gone"}));
    EXPECT_EQ(menu->title(), "&Style");
    EXPECT_TRUE(menu->actions()[0]->isChecked());

    menu->actions()[1]->trigger();
    EXPECT_EQ(AppliedStyle(), 2);
    EXPECT_TRUE(menu->actions()[1]->isChecked());
    EXPECT_EQ(Ini(dir.path()).ReadInteger("Skin", "Current", -1), 2);
    // A slot whose file is gone: said, and the menu stays on the look shown.
    menu->actions()[2]->trigger();
    ASSERT_EQ(win.prompter.asked.size(), 1u);
    EXPECT_NE(win.prompter.asked[0].text.find(StrIn(9244, kLangEnglish)), std::string::npos);
    EXPECT_TRUE(menu->actions()[1]->isChecked());
    EXPECT_EQ(Ini(dir.path()).ReadInteger("Skin", "Current", -1), 2);
}

TEST_F(MainOptions, AStyleFileThatCannotBeUsedIsSaidAndChangesNothing)
{
    std::filesystem::create_directories(dir.path() / "themes");
    const std::string broken = "QLabel { color: red; \n #DrawGrid1 { qproperty-waveLine: ";
    std::ofstream(dir.path() / "themes" / "Broken.qss") << broken;
    std::ofstream(dir.path() / "Kestrel.ini") << "[Skin]\nMax=1\nCurrent=1\n[Skin1]\nName=Broken\nDark=1\n";
    Window win(dir.path());
    ASSERT_EQ(win.prompter.asked.size(), 1u);
    EXPECT_EQ(win.prompter.asked[0].title, "WARNING");
    EXPECT_NE(win.prompter.asked[0].text.find("Broken"), std::string::npos);
    EXPECT_NE(win.prompter.asked[0].text.find(StrIn(9247, kLangEnglish)), std::string::npos);
    EXPECT_EQ(AppliedStyle(), 0);
    EXPECT_FALSE(grid::IsDarkBase(win.w->grid().palette().base().color()));
    EXPECT_TRUE(qApp->styleSheet().isEmpty());
    win.w->quitCleanly();
    win.w.reset();
    EXPECT_EQ(test::ReadWholeFile(dir.path() / "themes" / "Broken.qss"), broken);
    EXPECT_EQ(Ini(dir.path()).ReadInteger("Skin", "Current", -1), 1);
}

TEST_F(MainOptions, GridOptionsAreReadAtStartAndWrittenFromTheGrid)
{
    // Horizontal lines only, and bits the grid does not use, which are carried along.
    const int stored = grid::GridOption::FixedVertLine | grid::GridOption::FixedHorzLine |
                       grid::GridOption::HorzLine | grid::GridOption::RangeSelect | (1 << 12);
    std::ofstream(dir.path() / "Kestrel.ini") << "[DataGrid]\nGridOptions=" << stored << "\n";
    {
        Window win(dir.path());
        EXPECT_EQ(win.w->grid().modes().gridLines(), (grid::GridLineOptions{false, true}));
        EXPECT_TRUE(win.w->actions().action("actShowHorizontalGridLines")->isChecked());
        win.w->actions().action("actShowVerticalGridLines")->trigger();
    }
    const int written = Ini(dir.path()).ReadInteger("DataGrid", "GridOptions", -1);
    EXPECT_EQ(written, (stored & ~grid::GridOption::HorzLine) | grid::GridOption::VertLine);

    // Without the key the grid's own set is written.
    test::TempDir fresh;
    {
        Window win(fresh.path());
        EXPECT_TRUE(win.w->actions().action("actShowAllGridLines")->isChecked());
    }
    EXPECT_EQ(Ini(fresh.path()).ReadInteger("DataGrid", "GridOptions", -1), grid::kDefaultGridOptions);
}
