// Photographs the goto, search and measure window in German and English on a
// 1024 x 768 screen: each search page, the delta-time page, the trigger-point
// and the MP page. Saves into the folder given as the first argument; fails
// when a picture is missing or blank, or the window does not fit the screen.

#include <QApplication>
#include <QPixmap>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QScreen>
#include <QTabWidget>
#include <cstdio>
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
    if (argc < 2) {
        std::fprintf(stderr, "usage: kestrel_goto_screenshots OUTPUT_FOLDER\n");
        return 2;
    }
    const std::filesystem::path out = argv[1];
    std::filesystem::create_directories(out);
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
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    form.findChild<QPlainTextEdit *>("edDataAsc")->setPlainText("OK^M^J");
    form.findChild<QRadioButton *>("rbM2rise")->setChecked(true);
    form.findChild<QRadioButton *>("rbPEyes")->setChecked(true);

    int failures = 0;
    auto shoot = [&](const std::string &name) {
        test::Pump(150);
        const QPixmap shot = form.grab();
        const std::string path = (out / ("goto-" + name + ".png")).string();
        const bool fits = form.frameGeometry().width() <= screen.width() && form.frameGeometry().height() <= screen.height();
        if (!fits || !shot.save(QString::fromStdString(path)) || !test::LooksDrawn(shot.toImage(), 200, 150, 4, 5)) {
            std::fprintf(stderr, "screenshot %s is missing, blank or larger than the screen\n", path.c_str());
            ++failures;
        } else {
            std::printf("saved %s\n", path.c_str());
        }
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
