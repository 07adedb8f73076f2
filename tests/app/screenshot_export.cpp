// Photographs the export window in German and English on a 1024 x 768 screen:
// as it comes up (CSV), in raw mode, as pcapng with its frame options, with a range and a field that was put
// back, and during an export. Saves the window and the whole screen into the
// folder given as the first argument. Run under Xvfb by the screenshot test;
// fails when a picture is missing or blank, or the window does not fit the
// screen.

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QPixmap>
#include <QProgressBar>
#include <QRadioButton>
#include <QScreen>
#include <QWidget>
#include <cstdio>
#include <filesystem>

#include "app/export_form.h"
#include "base/prompt.h"
#include "base/string_table.h"
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
        std::fprintf(stderr, "usage: kestrel_export_screenshots OUTPUT_FOLDER\n");
        return 2;
    }
    const std::filesystem::path out = argv[1];
    std::filesystem::create_directories(out);
    const std::string recording = (out / "export-shot.ksr").string();
    const std::string target = (out / "export-shot.csv").string();
    test::RecordingBuilder b(45000.5, 0.0001);
    for (int i = 0; i < 300000; ++i)
        b.both(static_cast<std::uint8_t>(i), static_cast<std::uint8_t>(i * 3));
    b.write(recording);

    YesPrompter prompter;
    TFormExport form(prompter);
    form.setSourceProvider([&] { return ExportSource{recording, 0, 0}; });
    form.setFileChooser([&](const ExportFileQuestion &) { return QString::fromStdString(target); });
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    // A plain desktop behind the window: without a window manager the bare root window
    // keeps the pixels of whatever stood there before.
    QWidget desktop;
    desktop.setGeometry(screen);
    desktop.setAutoFillBackground(true);
    desktop.show();
    int failures = 0;
    auto shoot = [&](const std::string &name) {
        test::Pump(200);
        const QPixmap window = form.grab();
        const QPixmap whole = QGuiApplication::primaryScreen()->grabWindow(0);
        const std::string path = (out / ("export-" + name + ".png")).string();
        const std::string screenPath = (out / ("export-" + name + "-screen.png")).string();
        const bool fits = screen.contains(form.frameGeometry());
        if (!window.save(QString::fromStdString(path)) || !whole.save(QString::fromStdString(screenPath)) ||
            !test::LooksDrawn(window.toImage(), 200, 200, 8, 5) || !fits) {
            std::fprintf(stderr, "screenshot %s is missing or blank, or the window (%dx%d) leaves the screen\n",
                         path.c_str(), form.frameGeometry().width(), form.frameGeometry().height());
            ++failures;
        } else {
            std::printf("saved %s\n", path.c_str());
        }
    };

    for (auto [lang, offset] : {std::pair{"de", kLangGerman}, {"en", kLangEnglish}}) {
        SetGlobalLang(offset);
        form.InitialLoads();
        form.findChild<QComboBox *>("cbExportFormat")->setCurrentIndex(1);
        form.findChild<QRadioButton *>("rbtMPAll")->setChecked(true);
        form.show();
        form.raise();
        form.move(screen.center() - form.rect().center());
        shoot(std::string(lang) + "-csv");

        form.findChild<QComboBox *>("cbExportFormat")->setCurrentIndex(0);
        shoot(std::string(lang) + "-raw");

        // pcapng: the frame options live, the CSV ones resting.
        form.findChild<QComboBox *>("cbExportFormat")->setCurrentIndex(2);
        form.findChild<QComboBox *>("cbBaudRate")->setCurrentText("115200");
        form.findChild<QLineEdit *>("edtEndByte")->setText("<ETX>");
        form.findChild<QComboBox *>("cbDissector")->setCurrentText("mbrtu");
        shoot(std::string(lang) + "-pcapng");
        form.findChild<QComboBox *>("cbDissector")->setCurrentIndex(0);
        shoot(std::string(lang) + "-pcapng-none");

        form.findChild<QComboBox *>("cbExportFormat")->setCurrentIndex(1);
        form.findChild<QRadioButton *>("rbtMPRange")->setChecked(true);
        form.findChild<QLineEdit *>("edtMPStop")->setText("250000");
        emit form.findChild<QLineEdit *>("edtMPStop")->editingFinished();
        auto *start = form.findChild<QLineEdit *>("edtMPStart");
        start->setText("12x");
        emit start->editingFinished(); // put back, with a note under the fields
        shoot(std::string(lang) + "-range");

        // During an export: the progress bar half-way and Stop the only live button.
        bool shot = false;
        auto *bar = form.findChild<QProgressBar *>("ProgressBar1");
        const auto conn = QObject::connect(bar, &QProgressBar::valueChanged, [&](int v) {
            if (v >= 50 && !shot) {
                shot = true;
                shoot(std::string(lang) + "-running");
                form.btnStopClick();
            }
        });
        form.btnExportClick();
        QObject::disconnect(conn);
        if (!shot)
            ++failures;
        shoot(std::string(lang) + "-stopped");
        form.hide();
    }
    std::filesystem::remove(recording);
    std::filesystem::remove(target);
    return failures == 0 ? 0 : 1;
}
