// Photographs every page of the options dialog and the value selector in German
// and English, in the light and in the dark style, and the main window in the dark
// style after a few seconds of the demo line, into the folder given as the first
// argument. Run under Xvfb on a 1024 x 768 screen by the options_screenshots test;
// fails when a picture is missing or blank, or a dialog would not fit the screen.

#include <QAction>
#include <QApplication>
#include <QListWidget>
#include <QToolButton>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "app/action_registry.h"
#include "app/app_style.h"
#include "app/main_form.h"
#include "app/options_form.h"
#include "app/selector_form.h"
#include "base/console_prompter.h"
#include "base/string_table.h"
#include "config/data_folder.h"
#include "config/hardware_profile.h"
#include "config/program_config.h"
#include "config/styles.h"
#include "present/grid/record_grid.h"
#include "support/screenshots.h"

namespace {

constexpr int kScreenWidth = 1024;
constexpr int kScreenHeight = 768;
constexpr int kDesktopBars = 60; // a title bar and a panel of the desktop

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    const std::filesystem::path out = kestrel::test::ShotFolder(argc, argv);
    if (out.empty())
        return 2;
    const std::filesystem::path data = out / "options-data";
    std::filesystem::remove_all(data);
    if (!kestrel::EnsureDataFolder(data).ok() || !kestrel::InstallShippedStylesOnFirstStart(data).installed) {
        std::fprintf(stderr, "cannot prepare the data folder %s\n", data.c_str());
        return 1;
    }
    kestrel::HardwareProfile cable;
    cable.Name = "USB-RS232 Y-Monitorkabel";
    cable.Manufacturer = "Quorv";
    cable.lists = {{"1200", "2400", "4800", "9600", "19200", "38400", "57600", "115200"}, {"7", "8"}, {"N", "E", "O"},
                   {"1", "2"}};
    (void)kestrel::WriteHardwareProfile(cable, kestrel::ProfilePath(data, "y-cable.ksh"));
    (void)kestrel::WriteHardwareProfile(kestrel::HardwareProfile{}, kestrel::ProfilePath(data, "default.ksh"));

    kestrel::ConsolePrompter prompter(kestrel::MsgResult::Yes);
    int failures = 0;
    auto save = [&](QWidget &w, const std::string &name, bool dialog) {
        const int room = dialog ? kScreenHeight - kDesktopBars : kScreenHeight;
        failures += kestrel::test::SaveShot(w, out / name, {.room = QSize(kScreenWidth, room)}) ? 0 : 1;
    };

    kestrel::ProgramConfig cfg;
    kestrel::LoadConfiguration(data / kestrel::kConfigFileName, "TFormMain", cfg);
    cfg.Profile = "y-cable.ksh";
    cfg.portStandards = cable.lists;
    cfg.BeginRecordOnProgStart = true;
    kestrel::OptionsSetup setup;
    setup.dataFolder = data;
    setup.config = cfg;
    // A USB adapter under its stable name, as the scan lists it.
    const std::filesystem::path byId = data / "dev" / "serial" / "by-id";
    std::filesystem::create_directories(byId);
    std::ofstream(data / "dev" / "ttyUSB0") << "";
    const std::filesystem::path adapter = byId / "usb-FTDI_FT232R_USB_UART_A50285BI-if00-port0";
    std::filesystem::create_symlink("../../ttyUSB0", adapter);
    setup.ports = {"/dev/ttyS0", "/dev/ttyS1", adapter.string()};
    setup.portA = 2;
    setup.portB = 1;

    const char *pages[] = {"progstart", "display", "interface", "update"};
    for (const kestrel::ShippedStyle &style : kestrel::ShippedStyles()) {
        int slot = 0;
        for (int n : kestrel::StyleChoices(cfg))
            if (cfg.skins[static_cast<std::size_t>(n)].Name == style.name)
                slot = n;
        if (const kestrel::Result applied = kestrel::ApplyStyle(cfg, data, slot); !applied.ok() || slot == 0) {
            std::fprintf(stderr, "style %s cannot be applied: %s\n", style.name, applied.detail.c_str());
            ++failures;
            continue;
        }
        setup.style = slot;
        const std::string look = style.dark ? "dark" : "light";
        for (const auto &[lang, offset] : {std::pair{"de", kestrel::kLangGerman}, {"en", kestrel::kLangEnglish}}) {
            kestrel::SetGlobalLang(offset);
            kestrel::TFormOptions form(prompter);
            for (int page = 0; page < 4; ++page) {
                form.Open(setup, page);
                form.show();
                save(form, "options-" + look + "-" + lang + "-" + pages[page] + ".png", true);
            }
            kestrel::TFormSelector selector(prompter, &form);
            selector.Open(kestrel::PortValueKind::BaudRates, cable.lists.baudRates);
            selector.findChild<QListWidget *>("lbAvailable")->setCurrentRow(3);
            selector.show();
            save(selector, "selector-" + look + "-" + lang + ".png", true);
            selector.hide();
            form.hide();
        }
    }
    (void)kestrel::ApplyStyle(cfg, data, 0);

    // The main window in the dark style, as a restart with it chosen brings it up.
    (void)kestrel::SaveCurrentStyle(data / kestrel::kConfigFileName, 2);
    const std::string env = (data / "Triggers.kef").string();
    std::ofstream(env) << "[Trigger0]\nName=Dial\nActive=1\nType=0\nEvent=0\nD1=1\nData=415444\n"
                          "[Trigger1]\nName=Quiet terminal\nActive=1\nType=2\nEvent=4\nInActivityTime=1\nEventD1=1\n";
    kestrel::SetGlobalLang(kestrel::kLangEnglish);
    kestrel::MainFormOptions o;
    o.args = kestrel::ParseStartupArgs({"kestrel", "--simulate", env, (data / "recordings" / "Demo.ksr").string()});
    o.dataFolder = data.string() + "/";
    o.prompter = &prompter;
    o.skipUnloadDelay = true;
    kestrel::TFormMain w(std::move(o));
    w.resize(kScreenWidth, kScreenHeight - kDesktopBars);
    w.show();
    w.FormShow();
    kestrel::test::Pump(300);
    if (kestrel::AppliedStyle() != 2) {
        std::fprintf(stderr, "the main window did not come up in the dark style\n");
        ++failures;
    }
    if (auto *rec = w.findChild<QToolButton *>("btnREC"))
        rec->click();
    kestrel::test::Pump(3500);
    if (auto *stop = w.findChild<QToolButton *>("btnSTOP"))
        stop->click();
    kestrel::test::Pump(250);
    w.grid().GotoMp(0);
    save(w, "kestrel-dark-en.png", false);
    kestrel::SetGlobalLang(kestrel::kLangGerman);
    w.actions().action("actLangGerman")->trigger();
    w.actions().action("actViewDataOnly")->trigger();
    w.grid().GotoMp(0);
    save(w, "kestrel-dark-de-data-only.png", false);
    w.quitCleanly();
    return failures == 0 ? 0 : 1;
}
