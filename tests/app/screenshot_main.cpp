// Records the built-in demo line with the main window for a few seconds, then
// photographs the window in the vertical, data-only and dump views into the
// folder given as the first argument. Run under Xvfb by the screenshot test;
// fails when a picture is missing or blank.

#include <QApplication>
#include <QMenu>
#include <QToolButton>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "app/action_registry.h"
#include "app/main_form.h"
#include "base/console_prompter.h"
#include "present/grid/record_grid.h"
#include "support/screenshots.h"

namespace {

const kestrel::test::ShotCheck kWindowShot{.minWidth = 400, .minHeight = 300, .colours = 8, .step = 7};

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    const std::filesystem::path out = kestrel::test::ShotFolder(argc, argv);
    if (out.empty())
        return 2;
    const std::filesystem::path data = out / "data";
    std::filesystem::remove_all(data);
    std::filesystem::create_directories(data / "recordings");

    // Triggers for the panel: start when the terminal dials, a mark at each second without
    // terminal data, and two that wait inactive (one of them with a command).
    const std::string env = (data / "Triggers.kef").string();
    {
        std::ofstream(env)
            << "[Trigger0]\nName=Dial\nDescription=the terminal dials out\nActive=1\nType=0\nEvent=0\nD1=1\n"
               "Data=415444\n"
               "[Trigger1]\nName=Quiet terminal\nDescription=no byte from the terminal for a second\nActive=1\n"
               "Type=2\nEvent=4\nInActivityTime=1\nEventD1=1\n"
               "[Trigger2]\nName=Hang-up\nActive=0\nType=1\nEvent=0\nD2=1\nData=4E4F2043415252494552\n"
               "ExecCommand=1\nCommandFilePath=/usr/bin/logger\nCommandParams=-t kestrel \"%TRIG_NAME%\"\n"
               "[Trigger3]\nName=Carrier lost\nActive=0\nType=1\nEvent=1\nM5=1\n";
    }
    kestrel::ConsolePrompter prompter(kestrel::MsgResult::Yes);
    kestrel::MainFormOptions o;
    o.args = kestrel::ParseStartupArgs({"kestrel", "--simulate", env, (data / "recordings" / "Demo.ksr").string()});
    o.dataFolder = data.string() + "/";
    o.prompter = &prompter;
    o.skipUnloadDelay = true;
    kestrel::TFormMain w(std::move(o));
    w.resize(1240, 900);
    w.show();
    w.FormShow();
    kestrel::test::Pump(300);

    auto click = [&](const char *name) {
        if (auto *b = w.findChild<QToolButton *>(name))
            b->click();
        kestrel::test::Pump(250);
    };
    click("btnREC");
    kestrel::test::Pump(3500);
    if (!w.grab().save(QString::fromStdString((out / "kestrel-live.png").string()))) {
        std::fprintf(stderr, "cannot write into %s\n", out.c_str());
        return 1;
    }
    click("btnSTOP");
    w.grid().GotoMp(0);

    int failures = 0;
    struct Shot {
        const char *view, *mode, *file, *overlay = nullptr;
    };
    for (const Shot shot : {Shot{"btnViewVertical", "btnCharAscii", "kestrel-vertical.png"},
                            Shot{"btnViewDataOnly", "btnCharAscii", "kestrel-data-only.png"},
                            Shot{"btnViewDataDump", "btnCharAscii", "kestrel-dump.png"},
                            Shot{"btnViewDataOnly", "btnCharHex", "kestrel-data-only-hex.png"},
                            Shot{"btnViewVertical", "btnCharBin", "kestrel-vertical-bin.png"},
                            Shot{"btnViewDataOnly", "btnCharAscii", "kestrel-data-only-caret.png", "btnCharCtl"},
                            Shot{"btnViewDataOnly", "btnCharAscii", "kestrel-data-only-mnemonic.png", "btnCharCmd"}}) {
        const char *file = shot.file;
        click(shot.view);
        click(shot.mode);
        if (shot.overlay != nullptr)
            click(shot.overlay);
        w.grid().GotoMp(0);
        kestrel::test::Pump(100);
        failures += kestrel::test::SaveShot(w, out / file, kWindowShot) ? 0 : 1;
    }
    // The window on a small and on a large screen, in both languages (the window as the
    // screen leaves it: 1024 x 768 less the desktop's bars, 1920 x 1080 likewise).
    // The font size setting at 150 %, with the caret overlay on the data-only view.
    click("btnViewDataOnly");
    click("btnCharCtl");
    w.grid().setZoom(150);
    w.grid().GotoMp(0);
    kestrel::test::Pump(250);
    if (!w.grab().save(QString::fromStdString((out / "kestrel-zoom-150.png").string())))
        ++failures;
    w.grid().setZoom(100);
    click("btnChar01FReset");
    click("btnViewVertical");
    click("btnCharAscii");
    for (auto [lang, action] : {std::pair{"en", "actLangEnglish"}, {"de", "actLangGerman"}}) {
        w.actions().action(action)->trigger();
        for (const QSize size : {QSize(1024, 740), QSize(1920, 1050)}) {
            w.resize(size);
            kestrel::test::Pump(150);
            const std::string name = "kestrel-" + std::string(lang) + "-" + std::to_string(size.width()) + "x" +
                                     std::to_string(size.height()) + ".png";
            failures += kestrel::test::SaveShot(w, out / name, kWindowShot) ? 0 : 1;
            if (w.grab().width() > size.width()) {
                std::fprintf(stderr, "%s is wider than the screen\n", name.c_str());
                ++failures;
            }
        }
    }
    // The View menu: words, with the buttons' captions and the shortcut keys beside them.
    for (QMenu *menu : w.findChildren<QMenu *>()) {
        if (!menu->actions().contains(w.actions().action("actViewVertical")))
            continue;
        menu->popup(QPoint(40, 40));
        kestrel::test::Pump(200);
        const std::string path = (out / "kestrel-view-menu.png").string();
        if (!menu->grab().save(QString::fromStdString(path)))
            ++failures;
        menu->hide();
    }
    w.quitCleanly();
    return failures == 0 ? 0 : 1;
}
