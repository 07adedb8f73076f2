// Photographs the report window in German and English: as it comes up, with a
// range and other choices, while a PDF is being made, and its preview with the
// note that it shows only the first pages. Saves the windows and the whole
// screen into the folder given as the first argument. Run under Xvfb by the
// screenshot tests (1024 x 768 and a large screen); fails when a picture is
// missing or blank, or a window does not fit the screen.

#include <QApplication>
#include <QLineEdit>
#include <QPixmap>
#include <QProgressBar>
#include <QRadioButton>
#include <QScreen>
#include <QWidget>
#include <cstdio>
#include <filesystem>

#include "app/report_form.h"
#include "app/report_preview.h"
#include "base/prompt.h"
#include "base/string_table.h"
#include "present/byte_render.h"
#include "support/event_loop.h"
#include "support/recording_builder.h"
#include "support/screenshot_style.h"
#include "support/screenshots.h"

using namespace kestrel;

namespace {

class YesPrompter final : public Prompter {
public:
    int ShowMessage(const std::string &, const std::string &, int, int) override { return MsgResult::Yes; }
};

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    kestrel::test::ApplyShotStyle();
    if (argc < 2) {
        std::fprintf(stderr, "usage: kestrel_report_screenshots OUTPUT_FOLDER\n");
        return 2;
    }
    const std::filesystem::path out = argv[1];
    std::filesystem::create_directories(out);
    const std::string recording = (out / "report-shot.ksr").string();
    const std::string target = (out / "report-shot.pdf").string();
    test::RecordingBuilder b(45000.5, 0.01);
    for (int i = 0; i < 60000; ++i)
        b.both(static_cast<std::uint8_t>('A' + i % 26), static_cast<std::uint8_t>(i * 3));
    b.write(recording);

    YesPrompter prompter;
    TFormReport form(prompter);
    form.setSourceProvider([&] {
        ReportSource s;
        s.recordFile = recording;
        s.charMode = CharMode::Ascii;
        s.controlMode = Overlay::Mnemonic;
        s.header = {"Pump line 7 audit", "R. Tester", "Works Ltd", "Harbour Board", {"Night shift, controller 3"}};
        return s;
    });
    form.setFileChooser([&](const ReportFileQuestion &) { return QString::fromStdString(target); });
    form.setPreviewPages(3);
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    // A plain desktop behind the window: without a window manager the bare root window
    // keeps the pixels of whatever stood there before.
    QWidget desktop;
    desktop.setGeometry(screen);
    desktop.setAutoFillBackground(true);
    desktop.show();
    int failures = 0;
    auto shoot = [&](QWidget &window, const std::string &name) {
        test::Pump(200);
        const QPixmap picture = window.grab();
        const QPixmap whole = QGuiApplication::primaryScreen()->grabWindow(0);
        const std::string path = (out / ("report-" + name + ".png")).string();
        const std::string screenPath = (out / ("report-" + name + "-screen.png")).string();
        const bool fits = screen.contains(window.frameGeometry());
        if (!picture.save(QString::fromStdString(path)) || !whole.save(QString::fromStdString(screenPath)) ||
            !test::LooksDrawn(picture.toImage(), 200, 200, 8, 5) || !fits) {
            std::fprintf(stderr, "screenshot %s is missing or blank, or the window (%dx%d) leaves the screen\n",
                         path.c_str(), window.frameGeometry().width(), window.frameGeometry().height());
            ++failures;
        } else {
            std::printf("saved %s\n", path.c_str());
        }
    };

    for (auto [lang, offset] : {std::pair{"de", kLangGerman}, {"en", kLangEnglish}}) {
        SetGlobalLang(offset);
        form.InitialLoads();
        form.findChild<QRadioButton *>("rbtMPAll")->setChecked(true);
        form.findChild<QRadioButton *>("rbVertical")->setChecked(true);
        form.show();
        form.raise();
        form.move(screen.center() - form.rect().center());
        shoot(form, std::string(lang) + "-start");

        form.findChild<QRadioButton *>("rbtMPRange")->setChecked(true);
        form.findChild<QRadioButton *>("rbDump")->setChecked(true);
        form.findChild<QRadioButton *>("rbLandscape")->setChecked(true);
        auto *start = form.findChild<QLineEdit *>("edtMPStart");
        start->setText("1200x");
        emit start->editingFinished(); // put back, with a note under the fields
        shoot(form, std::string(lang) + "-range");

        // While a PDF is made: the progress bar on its way and Stop the only live button.
        form.findChild<QRadioButton *>("rbtMPAll")->setChecked(true);
        form.btnSavePdfClick();
        auto *bar = form.findChild<QProgressBar *>("ProgressBar1");
        if (!test::SpinUntil([bar] { return bar->value() >= 5; }, 60000))
            ++failures;
        shoot(form, std::string(lang) + "-running");
        form.btnStopClick();
        if (!test::SpinUntil([&form] { return !form.isRunning(); }, 5000))
            ++failures;
        shoot(form, std::string(lang) + "-stopped");

        form.btnPreviewClick();
        ReportPreview *preview = form.preview();
        if (preview == nullptr || !test::SpinUntil([preview] { return !preview->isRendering(); }, 60000)) {
            ++failures;
        } else {
            preview->move(screen.topLeft());
            preview->resize(std::min(900, screen.width()), std::min(1000, screen.height()) - 40);
            shoot(*preview, std::string(lang) + "-preview");
            preview->close();
        }
        form.hide();
    }
    std::filesystem::remove(recording);
    std::filesystem::remove(target);
    return failures == 0 ? 0 : 1;
}
