// Photographs the goto, search and measure window in German and English on a
// 1024 x 768 screen: each search page, the delta-time page, the trigger-point
// and the MP page. Saves into the folder given as the first argument; fails
// when a picture is missing or blank, or the window does not fit the screen.

#include <QApplication>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QScreen>
#include <QTabWidget>
#include <filesystem>

#include "app/goto_form.h"
#include "app/range_controls.h"
#include "base/console_prompter.h"
#include "base/string_table.h"
#include "present/grid/record_grid.h"
#include "support/recording_builder.h"
#include "support/screenshot_style.h"
#include "support/screenshots.h"

using namespace kestrel;

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    kestrel::test::ApplyShotStyle();
    const std::filesystem::path out = test::ShotFolder(argc, argv);
    if (out.empty())
        return 2;
    const std::string recording = (out / "goto-shot.ksr").string();
    test::RecordingBuilder b(46000.5, 0.001);
    for (int i = 0; i < 5000; ++i)
        b.both(static_cast<std::uint8_t>('A' + i % 26), static_cast<std::uint8_t>('a' + i % 26));
    b.write(recording);

    ConsolePrompter prompter(MsgResult::Ok);
    grid::RecordGrid grid;
    grid.resize(700, 400);
    grid.OpenRecording(QString::fromStdString(recording));
    TFormGoto form(prompter, grid, [&] { return recording; });
    form.findChild<QPlainTextEdit *>("edDataAsc")->setPlainText("OK^M^J");
    form.findChild<QRadioButton *>("rbM2rise")->setChecked(true);
    form.findChild<QRadioButton *>("rbPEyes")->setChecked(true);

    int failures = 0;
    const test::ShotCheck check{.room = QGuiApplication::primaryScreen()->geometry().size()};
    auto shoot = [&](const std::string &name) {
        failures += test::SaveShot(form, out / ("goto-" + name + ".png"), check) ? 0 : 1;
    };
    for (auto [lang, tag] : {std::pair{kLangGerman, "de"}, {kLangEnglish, "en"}}) {
        SetGlobalLang(lang);
        form.InitialLoads();
        const std::string l = tag;
        const char *searchPages[] = {"data", "signal", "error", "time"};
        for (int p = 0; p < 4; ++p) {
            form.showPage(GotoPage::Search);
            form.setPageIndexes(GotoPage::Search, p);
            shoot(l + "-search-" + searchPages[p]);
        }
        form.showPage(GotoPage::Delta);
        form.findChild<RangeControls *>("deltaRange")->setRange(100, 4321);
        shoot(l + "-delta");
        form.showPage(GotoPage::TriggerPoint);
        shoot(l + "-trigger-point");
        form.showPage(GotoPage::Mp);
        shoot(l + "-mp");
    }
    return failures == 0 ? 0 : 1;
}
