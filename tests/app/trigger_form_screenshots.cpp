// Photographs the trigger editor on each of its pages (data, signal, error,
// time, inactivity, action) and the parameter pool, in German and English,
// into the folder given as the first argument. Run under Xvfb by the
// trigger_form_screenshots test; fails when a picture is missing or blank, or
// when the dialog would not fit a 1024 x 768 screen.

#include <QApplication>
#include <QTabWidget>
#include <QTableWidget>
#include <filesystem>
#include <string>

#include "app/trigger_form.h"
#include "app/trigger_params_form.h"
#include "base/console_prompter.h"
#include "base/reporter.h"
#include "base/string_table.h"
#include "support/screenshot_style.h"
#include "support/screenshots.h"
#include "trigger_engine/trigger_launcher.h"

namespace {

// A trigger that fills the page of its event with something to look at.
kestrel::TriggerDef Sample(std::int32_t event)
{
    using namespace kestrel;
    TriggerDef t;
    t.number = 3;
    t.Name = "Modem: CONNECT";
    t.Description = "Recording starts when the modem answers";
    t.Active = true;
    t.Type = event == TriggerEvent::Inactivity ? TriggerType::Inactivity : TriggerType::StartRecording;
    t.Event = event;
    t.D2 = true;
    t.Data = "434F4E4E4543540D0A";
    t.M5 = SignalEdge::Rises;
    t.S1 = SignalEdge::Falls;
    t.PE = t.FE = true;
    t.InActivityTime = 30;
    t.EventD1 = t.EventD2 = t.EventM5 = t.EventPE = true;
    t.TimeReached = 45352.0 + (13 * 3600 + 14 * 60 + 15) / 86400.0;
    t.PlaySound = true;
    t.SoundFilePath = "/home/user/.local/share/kestrel/sounds/connect.wav";
    t.ExecCommand = true;
    t.CommandFilePath = "/usr/bin/logger";
    t.CommandParams = "-t kestrel \"%TRIG_NAME% at %TIMESTAMP%\"";
    return t;
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    kestrel::test::ApplyShotStyle();
    const std::filesystem::path out = kestrel::test::ShotFolder(argc, argv);
    if (out.empty())
        return 2;
    kestrel::ConsolePrompter prompter(kestrel::MsgResult::Yes);
    kestrel::PromptReporter reporter(prompter);
    kestrel::TriggerLauncher launcher(reporter); // the test buttons as they look when they can run
    int failures = 0;
    // Room for a title bar and a panel of the desktop on a 1024 x 768 screen.
    const kestrel::test::ShotCheck check{.room = QSize(1024, 768 - 60)};
    auto save = [&](QWidget &w, const std::string &name) {
        failures += kestrel::test::SaveShot(w, out / name, check) ? 0 : 1;
    };

    struct Page {
        const char *name;
        std::int32_t event;
        bool action = false;
    };
    const Page pages[] = {{"data", kestrel::TriggerEvent::Data},
                          {"signal", kestrel::TriggerEvent::Signal},
                          {"error", kestrel::TriggerEvent::Error},
                          {"time", kestrel::TriggerEvent::TimeReached},
                          {"inactivity", kestrel::TriggerEvent::Inactivity},
                          {"action", kestrel::TriggerEvent::Data, true}};
    for (const auto &[lang, offset] : {std::pair{"de", kestrel::kLangGerman}, {"en", kestrel::kLangEnglish}}) {
        kestrel::SetGlobalLang(offset);
        kestrel::TFormTrig form(prompter, &launcher);
        form.show();
        for (const Page &page : pages) {
            form.OpenExisting(Sample(page.event));
            if (page.action)
                form.findChild<QTabWidget *>("pcTrigger")->setCurrentIndex(kestrel::TrigPage::Action);
            save(form, "trigger-form-" + std::string(lang) + "-" + page.name + ".png");
        }
        kestrel::TFormTrigParams pool(&form);
        pool.show();
        pool.findChild<QTableWidget *>("sgParamPool")->selectRow(2);
        save(pool, "trigger-params-" + std::string(lang) + ".png");
    }
    return failures == 0 ? 0 : 1;
}
