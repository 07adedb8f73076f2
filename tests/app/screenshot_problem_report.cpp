// Photographs the problem report window in German and in English, after a send
// that found no mail program (so the longest status line shows), into the
// folder given as the first argument. Run under Xvfb at 1024x768 by the
// screenshots_problem_report test; fails when the window does not fit the
// screen, a button or label is cut, or a picture is missing or blank.

#include <QApplication>
#include <QLabel>
#include <QPixmap>
#include <QPushButton>
#include <QScreen>
#include <cstdio>
#include <filesystem>

#include "app/problem_report_form.h"
#include "base/console_prompter.h"
#include "base/string_table.h"
#include "support/problem_report.h"
#include "support/screenshot_style.h"
#include "support/screenshots.h"

namespace {

bool fits(const QWidget &w, const QString &text, int available, const char *what)
{
    const int need = w.fontMetrics().horizontalAdvance(text);
    if (need <= available)
        return true;
    std::fprintf(stderr, "%s \"%s\" is cut: %d of %d pixels\n", what, qPrintable(text), available, need);
    return false;
}

std::string SampleReport()
{
    kestrel::ErrorHistory history;
    history.add({"2026-03-14T03:12:07", kestrel::Str(2000),
                 "Port /dev/ttyUSB0 was lost while recording.\n\nUnit: Capture\nLine: 211"});
    history.add({"2026-03-14T03:12:09", kestrel::Str(3000), "The record file cannot be written: No space left on device"});
    return kestrel::ComposeProblemReport(kestrel::CollectReportFacts(
        {{"Port A", "/dev/serial/by-id/usb-FTDI_FT232R_USB_UART_A50285BI-if00-port0", "19200 8 E 1"},
         {"Port B", "/dev/ttyUSB1", "19200 8 E 1"}},
        history));
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    kestrel::test::ApplyShotStyle();
    if (argc < 2) {
        std::fprintf(stderr, "usage: kestrel_problem_report_screenshots OUTPUT_FOLDER\n");
        return 2;
    }
    const std::filesystem::path out = argv[1];
    std::filesystem::create_directories(out);
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();

    kestrel::ConsolePrompter prompter(kestrel::MsgResult::No);
    bool ok = true;
    for (const auto &[lang, tag] : {std::pair{kestrel::kLangGerman, "de"}, {kestrel::kLangEnglish, "en"}}) {
        kestrel::SetGlobalLang(lang);
        kestrel::TFormProblemReport form(prompter);
        form.setReport(SampleReport(), "support@kestrel.example.org");
        form.setUrlOpener([](const QUrl &) { return false; }); // no mail program here
        form.show();
        kestrel::test::Pump(150);
        form.findChild<QPushButton *>("btnSendMail")->click();
        kestrel::test::Pump(200);
        const std::string path = (out / ("problem-report-" + std::string(tag) + ".png")).string();
        const QPixmap shot = form.grab();
        if (!shot.save(QString::fromStdString(path)) || !kestrel::test::LooksDrawn(shot.toImage(), 400, 300, 4, 5)) {
            std::fprintf(stderr, "no usable picture %s\n", path.c_str());
            ok = false;
        }
        std::printf("%s (%dx%d)\n", path.c_str(), shot.width(), shot.height());
        if (form.frameGeometry().width() > screen.width() || form.frameGeometry().height() > screen.height()) {
            std::fprintf(stderr, "%s: the window (%dx%d) does not fit the screen (%dx%d)\n", tag, form.width(),
                         form.height(), screen.width(), screen.height());
            ok = false;
        }
        for (const QPushButton *button : form.findChildren<QPushButton *>())
            ok = fits(*button, button->text(), button->width() - 8, "button") && ok;
        const auto *recipient = form.findChild<QLabel *>("lblRecipient");
        ok = fits(*recipient, recipient->text(), recipient->contentsRect().width(), "label") && ok;
        for (const char *name : {"lblIntro", "lblStatus"}) {
            const auto *label = form.findChild<QLabel *>(name);
            if (label->text().isEmpty() || label->height() < label->heightForWidth(label->width())) {
                std::fprintf(stderr, "%s: %s is empty or cut\n", tag, name);
                ok = false;
            }
        }
        form.hide();
    }
    return ok ? 0 : 1;
}
