// Photographs the help window in German and English into the folder given as the
// first argument: at its own size on a 1024x768 screen (contents, and search with
// hits) and at 1800x1000 for a large screen. Fails when the window does not fit
// the screen, a tab or button text is cut, or a picture is missing or blank.

#include <QApplication>
#include <QLineEdit>
#include <QPixmap>
#include <QScreen>
#include <QTabBar>
#include <QTabWidget>
#include <QToolButton>
#include <cstdio>
#include <filesystem>

#include "app/help_window.h"
#include "base/string_table.h"
#include "support/screenshot_style.h"
#include "support/screenshots.h"

namespace {

bool Save(QWidget &w, const std::filesystem::path &path)
{
    kestrel::test::Pump(200);
    const QPixmap shot = w.grab();
    const bool ok = shot.save(QString::fromStdString(path.string())) && kestrel::test::LooksDrawn(shot.toImage(), 600, 400);
    std::printf("%s (%dx%d)%s\n", path.c_str(), shot.width(), shot.height(), ok ? "" : " NOT USABLE");
    return ok;
}

bool Fits(const QWidget &w, const QString &text, int available, const char *what)
{
    const int need = w.fontMetrics().horizontalAdvance(text);
    if (need <= available)
        return true;
    std::fprintf(stderr, "%s \"%s\" is cut: %d of %d pixels\n", what, qPrintable(text), available, need);
    return false;
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    kestrel::test::ApplyShotStyle();
    if (argc < 2) {
        std::fprintf(stderr, "usage: kestrel_help_screenshots OUTPUT_FOLDER\n");
        return 2;
    }
    const std::filesystem::path out = argv[1];
    std::filesystem::create_directories(out);
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    bool ok = true;
    for (const auto &[lang, tag] : {std::pair{kestrel::kLangGerman, "de"}, {kestrel::kLangEnglish, "en"}}) {
        kestrel::SetGlobalLang(lang);
        kestrel::THelpWindow help;
        help.showPage("main-window");
        ok = Save(help, out / ("help-" + std::string(tag) + "-contents.png")) && ok;
        if (help.frameGeometry().width() > screen.width() || help.frameGeometry().height() > screen.height()) {
            std::fprintf(stderr, "%s: the window (%dx%d) does not fit the screen\n", tag, help.width(), help.height());
            ok = false;
        }
        const QTabBar *bar = help.findChild<QTabWidget *>("pcNavigation")->tabBar();
        for (int i = 0; i < bar->count(); ++i)
            ok = Fits(*bar, bar->tabText(i), bar->tabRect(i).width() - 8, "tab") && ok;
        for (const char *name : {"btnBack", "btnForward"}) {
            const auto *b = help.findChild<QToolButton *>(name);
            ok = Fits(*b, b->text(), b->width() - b->iconSize().width() - 8, "button") && ok;
        }

        auto *tabs = help.findChild<QTabWidget *>("pcNavigation");
        tabs->setCurrentIndex(1);
        help.findChild<QLineEdit *>("edSearch")->setText(lang == kestrel::kLangGerman ? "Trigger Aufzeichnung" : "trigger recording");
        help.showPage("trigger-editor");
        ok = Save(help, out / ("help-" + std::string(tag) + "-search.png")) && ok;

        tabs->setCurrentIndex(0);
        help.showPage("command-line");
        help.resize(1800, 1000);
        ok = Save(help, out / ("help-" + std::string(tag) + "-large.png")) && ok;
    }
    return ok ? 0 : 1;
}
