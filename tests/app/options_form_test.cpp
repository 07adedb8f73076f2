// The options dialog and the value selector on their own: what the dialog shows
// when it opens, the confirm sequence of OK (an existing profile only after
// "yes", "no" shows the file again, a new name without a question), OK's
// refusals, Abort, the style applied at once, the selector's buttons, and no
// text of the other language after a switch.

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTimer>
#include <fstream>

#include "app/options_form.h"
#include "app/selector_form.h"
#include "base/prompt.h"
#include "base/string_table.h"
#include "config/data_folder.h"
#include "config/hardware_profile.h"
#include "config/port_value_lists.h"
#include "support/scripted_prompter.h"
#include "support/stale_language.h"
#include "support/temp_dir.h"
#include "support/widget_app.h"

using namespace kestrel;

namespace {

const QApplication &g_app = test::WidgetApp(); // before the first widget

using V = std::vector<std::string>;

std::string ReadAll(const std::filesystem::path &p)
{
    std::ifstream in(p, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

struct Options {
    test::TempDir dir;
    test::ScriptedPrompter prompter{MsgResult::Yes};
    TFormOptions form{prompter};
    std::vector<int> stylesApplied;
    bool styleWorks = true;
    std::vector<OptionsChoice> choices;
    OptionsSetup setup;

    Options()
    {
        SetGlobalLang(kLangEnglish);
        EXPECT_TRUE(EnsureDataFolder(dir.path()).ok());
        HardwareProfile bench;
        bench.Name = "Bench cable";
        bench.Manufacturer = "Lab";
        bench.lists = {{"1200", "9600"}, {"7", "8"}, {"N", "E"}, {"1", "2"}};
        bench.ports[0] = "/dev/ttyS0";
        EXPECT_TRUE(WriteHardwareProfile(bench, ProfilePath(dir.path(), "bench.ksh")).ok());
        EXPECT_TRUE(WriteHardwareProfile(HardwareProfile{}, ProfilePath(dir.path(), "default.ksh")).ok());

        setup.dataFolder = dir.path();
        setup.config.Profile = "bench.ksh";
        setup.config.portStandards = {{"300", "1200", "9600"}, {"7", "8"}, {"N", "E"}, {"1", "2"}};
        setup.config.BeginRecordOnProgStart = true;
        setup.config.skins = {SkinSlot{}, SkinSlot{"Light", false, true}, SkinSlot{}, SkinSlot{"Dark", true, true}};
        setup.ports = {"/dev/ttyS0", "/dev/ttyUSB0"};
        setup.portA = 1;
        setup.portB = 0;
        form.applyStyle = [this](int slot) {
            stylesApplied.push_back(slot);
            return styleWorks;
        };
        form.confirmed = [this](const OptionsChoice &c) { choices.push_back(c); };
        open();
    }
    void open(int page = OptionsPage::ProgStart)
    {
        form.Open(setup, page);
        form.show();
        QApplication::processEvents();
    }
    template <class T> T *find(const char *name) { return form.findChild<T *>(name); }
    QLineEdit *edit(const char *name) { return find<QLineEdit>(name); }
    QComboBox *combo(const char *name) { return find<QComboBox>(name); }
    void click(const char *name) { find<QPushButton>(name)->click(); }
    QString baud() { return find<QPlainTextEdit>("edBaudrates")->toPlainText(); }
    void setProfileName(const QString &name) { combo("cbSelHwProfile")->setEditText(name); }
    void chooseProfile(const QString &name)
    {
        QComboBox *c = combo("cbSelHwProfile");
        c->setCurrentIndex(c->findText(name));
        emit c->activated(c->currentIndex());
    }
};

} // namespace

TEST(OptionsForm, OpensWithTheProfileInUseTheProgramWideListsPortsStylesAndSwitches)
{
    Options o;
    EXPECT_EQ(o.find<QTabWidget>("pcOptions")->currentIndex(), OptionsPage::ProgStart);
    EXPECT_TRUE(o.find<QCheckBox>("cbBeginRecAtProgStart")->isChecked());
    EXPECT_FALSE(o.find<QCheckBox>("cbDispHoldAtProgStart")->isChecked());
    QComboBox *profiles = o.combo("cbSelHwProfile");
    ASSERT_EQ(profiles->count(), 2);
    EXPECT_EQ(profiles->itemText(0), "bench.ksh");
    EXPECT_EQ(profiles->currentText(), "bench.ksh");
    EXPECT_EQ(o.edit("edInterfaceName")->text(), "Bench cable");
    EXPECT_EQ(o.baud(), "300, 1200, 9600"); // the lists in use, not the file's
    EXPECT_EQ(o.combo("cbComA")->currentIndex(), 1);
    EXPECT_EQ(o.combo("cbComA")->itemData(1).toString(), "/dev/ttyUSB0");
    QComboBox *theme = o.combo("cbTheme");
    ASSERT_EQ(theme->count(), 3); // the platform look and the two named slots
    EXPECT_EQ(theme->itemText(0), QString::fromStdString(Str(9219)));
    EXPECT_EQ(theme->itemText(2), "Dark");
    EXPECT_FALSE(o.find<QPushButton>("btnEditParities")->isEnabled()); // typed only
    EXPECT_TRUE(o.stylesApplied.empty()); // opening applies nothing

    // The port options open on the interface page; without ports there is nothing to choose.
    o.setup.ports.clear();
    o.open(OptionsPage::Interface);
    EXPECT_EQ(o.find<QTabWidget>("pcOptions")->currentIndex(), OptionsPage::Interface);
    EXPECT_FALSE(o.combo("cbComA")->isEnabled());
    EXPECT_EQ(o.combo("cbComA")->currentText(), QString::fromStdString(Str(7646)));
}

TEST(OptionsForm, AnEditedProfileIsOverwrittenOnlyAfterYesAndNoShowsTheFileAgain)
{
    Options o;
    const auto file = ProfilePath(o.dir.path(), "bench.ksh");
    const std::string before = ReadAll(file);
    o.edit("edInterfaceName")->setText("Bench cable, rev. B");
    o.edit("edDatabits")->setText("8");

    o.prompter.answerNext(MsgResult::No);
    o.click("btnOK");
    ASSERT_EQ(o.prompter.asked.size(), 1u);
    EXPECT_EQ(o.prompter.asked[0].title, "CONFIRMATION");
    EXPECT_EQ(o.prompter.asked[0].text, StrIn(9208, kLangEnglish));
    EXPECT_EQ(o.prompter.asked[0].buttons, Buttons::YesNo);
    EXPECT_TRUE(o.form.isVisible());
    EXPECT_TRUE(o.choices.empty());
    EXPECT_EQ(o.edit("edInterfaceName")->text(), "Bench cable"); // the file's values again
    EXPECT_EQ(o.edit("edDatabits")->text(), "7,8");
    EXPECT_EQ(ReadAll(file), before);

    o.edit("edInterfaceName")->setText("Bench cable, rev. B");
    o.prompter.answerNext(MsgResult::Yes);
    o.click("btnOK");
    EXPECT_EQ(o.prompter.asked.size(), 2u);
    EXPECT_FALSE(o.form.isVisible());
    ASSERT_EQ(o.choices.size(), 1u);
    EXPECT_EQ(o.choices[0].profileName, "bench.ksh");
    // "No" had put the file's lists into the fields; they are what is confirmed now.
    EXPECT_EQ(o.choices[0].profile.lists.baudRates, (V{"1200", "9600"}));
    EXPECT_EQ(o.choices[0].portA, 1);
    const HardwareProfile written = ReadHardwareProfile(file, {});
    EXPECT_EQ(written.Name, "Bench cable, rev. B");
    EXPECT_EQ(written.lists.baudRates, (V{"1200", "9600"}));
    EXPECT_EQ(written.ports[0], "/dev/ttyS0"); // the port entries are kept with the profile
}

TEST(OptionsForm, ANewProfileNameIsCreatedWithoutAQuestion)
{
    Options o;
    o.setProfileName("field kit");
    o.click("btnOK");
    EXPECT_TRUE(o.prompter.asked.empty());
    ASSERT_EQ(o.choices.size(), 1u);
    EXPECT_EQ(o.choices[0].profileName, "field kit.ksh");
    EXPECT_TRUE(std::filesystem::exists(ProfilePath(o.dir.path(), "field kit.ksh")));
    EXPECT_EQ(o.combo("cbSelHwProfile")->count(), 3); // the list is refreshed
}

TEST(OptionsForm, BadInputIsSaidAndNothingTypedIsLost)
{
    Options o;
    {
        std::ofstream bin(ProfilePath(o.dir.path(), "broken.ksh"), std::ios::binary);
        bin << "[Hardware]\nName=" << std::string(4, '\0');
    }
    o.open();
    // A profile that cannot be read: said, and the fields keep what they showed.
    o.edit("edManufacturer")->setText("typed");
    o.chooseProfile("broken.ksh");
    ASSERT_EQ(o.prompter.asked.size(), 1u);
    EXPECT_NE(o.prompter.asked[0].text.find("broken.ksh"), std::string::npos);
    EXPECT_EQ(o.edit("edManufacturer")->text(), "typed");

    // A value no port can use: the message names it and its list; the text stays as typed.
    o.find<QPlainTextEdit>("edBaudrates")->setPlainText("1200, fast,\n9600");
    o.click("btnOK");
    EXPECT_NE(o.prompter.asked.back().text.find("\"fast\" in the list \"Baud rates\""), std::string::npos);
    EXPECT_EQ(o.baud(), "1200, fast,\n9600");
    EXPECT_EQ(o.find<QTabWidget>("pcOptions")->currentIndex(), OptionsPage::Interface);

    o.find<QPlainTextEdit>("edBaudrates")->setPlainText("1200");
    o.combo("cbComA")->setCurrentIndex(0); // B is on /dev/ttyS0 too
    o.click("btnOK");
    EXPECT_EQ(o.prompter.asked.back().text, StrIn(9242, kLangEnglish));
    o.combo("cbComA")->setCurrentIndex(1);
    o.setProfileName("sub/dir.ksh");
    o.click("btnOK");
    EXPECT_EQ(o.prompter.asked.back().title, "ERROR");
    EXPECT_EQ(o.prompter.asked.size(), 4u);
    EXPECT_TRUE(o.form.isVisible());
    EXPECT_TRUE(o.choices.empty());
    EXPECT_FALSE(std::filesystem::exists(o.dir.path() / "profiles" / "sub"));
}

TEST(OptionsForm, AbortReadsTheProfileInUseAgainAndPutsTheStyleBack)
{
    Options o;
    const auto file = ProfilePath(o.dir.path(), "bench.ksh");
    // A style that cannot be used leaves the box on the look shown.
    o.styleWorks = false;
    o.combo("cbTheme")->setCurrentIndex(1);
    EXPECT_EQ(o.combo("cbTheme")->currentIndex(), 0);
    o.styleWorks = true;
    o.combo("cbTheme")->setCurrentIndex(2); // Dark, shown at once
    EXPECT_EQ(o.stylesApplied, (std::vector<int>{1, 3}));
    o.edit("edInterfaceName")->setText("scribbled");
    o.chooseProfile("default.ksh");
    EXPECT_EQ(o.edit("edInterfaceName")->text(), "Default Profile");
    // Meanwhile the profile in use changed on disk: Abort shows what the file holds now.
    std::ofstream(file) << "[Hardware]\nName=Edited elsewhere\n";
    const std::string onDisk = ReadAll(file);
    o.click("btnAbort");
    EXPECT_FALSE(o.form.isVisible());
    EXPECT_EQ(o.edit("edInterfaceName")->text(), "Edited elsewhere");
    EXPECT_EQ(o.baud(), "300, 1200, 9600"); // the program-wide lists, as before
    EXPECT_EQ(o.stylesApplied, (std::vector<int>{1, 3, 0}));
    EXPECT_TRUE(o.choices.empty());
    EXPECT_TRUE(o.prompter.asked.empty());
    EXPECT_EQ(ReadAll(file), onDisk);
}

TEST(OptionsForm, TheEditButtonsOpenTheSelectorWhoseSaveReplacesTheField)
{
    Options o;
    o.open(OptionsPage::Interface);
    // The selector is modal: it is worked from the event loop while it waits.
    QTimer::singleShot(0, [&] {
        auto *sel = o.form.findChild<TFormSelector *>("TFormSelector");
        ASSERT_NE(sel, nullptr);
        EXPECT_TRUE(sel->windowTitle().contains("Baud rates"));
        EXPECT_EQ(sel->selectedValues(), (V{"300", "1200", "9600"}));
        auto *available = sel->findChild<QListWidget *>("lbAvailable");
        const auto found = available->findItems("115200", Qt::MatchExactly);
        ASSERT_EQ(found.size(), 1);
        available->setCurrentItem(found[0]);
        sel->findChild<QPushButton *>("btnToSelected")->click();
        sel->findChild<QPushButton *>("btnSave")->click();
    });
    o.click("btnSelectBaudRates");
    EXPECT_EQ(o.baud(), "300, 1200, 9600, 115200");

    QTimer::singleShot(0, [&] {
        auto *sel = o.form.findChild<TFormSelector *>("TFormSelector");
        EXPECT_EQ(sel->selectedValues(), (V{"1", "2"}));
        sel->findChild<QPushButton *>("btnCancel")->click();
    });
    o.click("btnEditStopbits");
    EXPECT_EQ(o.edit("edStopbits")->text(), "1,2");
}

TEST(Selector, TheButtonsWorkTheListsAndABadValueStaysTyped)
{
    SetGlobalLang(kLangGerman);
    test::ScriptedPrompter prompter;
    TFormSelector sel(prompter);
    sel.Open(PortValueKind::DataBits, {"8", "7"});
    sel.show();
    auto *available = sel.findChild<QListWidget *>("lbAvailable");
    auto *typed = sel.findChild<QLineEdit *>("edAvailableValues");
    auto click = [&](const char *name) { sel.findChild<QPushButton *>(name)->click(); };
    EXPECT_EQ(sel.availableValues(), (V{"5", "6"}));
    EXPECT_FALSE(sel.findChild<QPushButton *>("btnToSelected")->isEnabled()); // nothing chosen

    available->setCurrentRow(1); // 6
    click("btnToSelected");
    sel.findChild<QListWidget *>("lbSelected")->setCurrentRow(1); // 8
    click("ToAvailable");
    EXPECT_EQ(sel.selectedValues(), (V{"6", "7"}));
    available->setCurrentRow(0);
    click("btnDelValue");
    EXPECT_EQ(sel.availableValues(), (V{"8"}));
    click("btnResetValues");
    EXPECT_EQ(sel.availableValues(), (V{"5", "8"}));

    typed->setText("9");
    click("btnAddValue");
    ASSERT_EQ(prompter.asked.size(), 1u);
    EXPECT_EQ(prompter.asked[0].title, "WARNUNG");
    EXPECT_NE(prompter.asked[0].text.find("„9“"), std::string::npos);
    EXPECT_EQ(typed->text(), "9");

    // A value typed and added is the chosen one; Speichern hands back the selected list.
    sel.Open(PortValueKind::BaudRates, {"9600"});
    typed->setText("250000");
    click("btnAddValue");
    click("btnToSelected");
    QTimer::singleShot(0, [&] { click("btnSave"); });
    EXPECT_EQ(sel.Exec(PortValueKind::BaudRates, sel.selectedValues()), (std::optional<V>{{"9600", "250000"}}));
}

TEST(OptionsForm, NoTextOfTheOtherLanguageIsLeftAfterASwitchInEitherDialog)
{
    Options o;
    TFormSelector &sel = *new TFormSelector(o.prompter, &o.form);
    for (auto [lang, other] : {std::pair{kLangGerman, kLangEnglish}, {kLangEnglish, kLangGerman}}) {
        SetGlobalLang(lang);
        o.form.InitialLoads();
        sel.InitialLoads();
        EXPECT_EQ(test::StaleTexts(&o.form, other), QStringList()) << lang;
        EXPECT_EQ(test::StaleTexts(&sel, other), QStringList()) << lang;
        // Without ports the port boxes say so in the language now in use.
        o.setup.ports.clear();
        o.open();
        SetGlobalLang(other);
        o.form.InitialLoads();
        EXPECT_EQ(o.combo("cbComB")->itemText(0), QString::fromStdString(StrIn(7646, other)));
    }
}
