// Photographs the environment information dialog, each of its three pages in
// German and in English, into the folder given as the first argument. Run under
// Xvfb at 1024x768 by the env_conf_screenshots test; fails when the dialog does
// not fit the screen, a label or tab is cut, or a picture is missing or blank.

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QTabBar>
#include <QTabWidget>
#include <cstdio>
#include <filesystem>

#include "app/env_conf_form.h"
#include "base/console_prompter.h"
#include "base/string_table.h"
#include "config/environment.h"
#include "support/screenshot_style.h"
#include "support/screenshots.h"

namespace {

kestrel::Environment Sample()
{
    kestrel::Environment env;
    env.general = {"Prüfstand Süd – Leitung 7 (Pumpensteuerung)", "Marta Lindqvist", "Feldmesstechnik Brandt GmbH",
                   "Hafenstraße 112", "Gebäude C, 2. Stock", "Bremerhaven", "27568", "Bremen", "Deutschland",
                   "+49 471 555 0142", "+49 471 555 0143", "https://messtechnik-brandt.example",
                   "m.lindqvist@messtechnik-brandt.example"};
    env.customer = {"Harbour Pumps Ltd", "Owen Pritchard", "Unit 4, Quay Industrial Estate", "Dock Road", "Cardiff",
                    "CF10 4GB", "Wales", "United Kingdom", "+44 29 5550 1187", "+44 29 5550 1188",
                    "https://harbourpumps.example", "service@harbourpumps.example"};
    env.description = {"Pump controller (DTE) against the telemetry modem (DCE), 19200 8N1.",
                       "The controller drops DTR about twice a day; trigger 1 marks the moment.",
                       "", "Cable: monitor Y-cable, serial numbers 0412 and 0413."};
    return env;
}

bool fits(const QWidget &w, const QString &text, int available, const char *what)
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
    const std::filesystem::path out = kestrel::test::ShotFolder(argc, argv);
    if (out.empty())
        return 2;
    const QSize screen = QGuiApplication::primaryScreen()->availableGeometry().size();

    kestrel::ConsolePrompter prompter(kestrel::MsgResult::No);
    kestrel::Environment env = Sample();
    bool ok = true;
    const char *const pages[] = {"general", "customer", "description"};
    for (const auto &[lang, tag] : {std::pair{kestrel::kLangGerman, "de"}, {kestrel::kLangEnglish, "en"}}) {
        kestrel::SetGlobalLang(lang);
        kestrel::TFormEnvConf form(prompter);
        form.setEnvironment(&env, "/home/marta/Messungen/Bremerhaven/Prüfstand Süd – Leitung 7.kef");
        form.show();
        kestrel::test::Pump(200);
        auto *tabs = form.findChild<QTabWidget *>("PageControl1");
        for (int page = 0; page < 3; ++page) {
            tabs->setCurrentIndex(page);
            const auto path = out / ("envconf-" + std::string(tag) + "-" + pages[page] + ".png");
            ok = kestrel::test::SaveShot(form, path, {.minWidth = 300, .minHeight = 200, .room = screen}) && ok;
            for (const QLabel *label : tabs->currentWidget()->findChildren<QLabel *>())
                ok = fits(*label, label->text(), label->contentsRect().width(), "label") && ok;
        }
        // lblEnvFileName is shortened in the middle on purpose; its box's title must not be.
        const auto *fileBox = form.findChild<QWidget *>("gbEnvFile");
        ok = fits(*fileBox, fileBox->property("title").toString(), fileBox->width() - 16, "group box") && ok;
        for (const QPushButton *button : form.findChildren<QPushButton *>())
            ok = fits(*button, button->text(), button->width() - 8, "button") && ok;
        const QTabBar *bar = tabs->tabBar();
        for (int i = 0; i < bar->count(); ++i)
            ok = fits(*bar, bar->tabText(i), bar->tabRect(i).width() - 8, "tab") && ok;
        form.hide();
    }
    return ok ? 0 : 1;
}
