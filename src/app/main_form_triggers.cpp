// The window side of the triggers: the panel in the control centre, the
// evaluation the session runs, the actions and the user's agreement to the
// actions of an environment from a file.

#include <QAction>
#include <QLabel>
#include <QSplitter>

#include "app/action_registry.h"
#include "app/main_form.h"
#include "app/trigger_form.h"
#include "app/trigger_panel.h"
#include "base/prompt.h"
#include "base/string_table.h"
#include "capture/recording_session.h"
#include "config/environment.h"
#include "trigger_engine/action_consent.h"
#include "trigger_engine/trigger_engine.h"
#include "trigger_engine/trigger_launcher.h"

namespace kestrel {

namespace {
constexpr int kMsgAllowActions = 7880;
constexpr const char *kConsentFile = "agreed-trigger-actions.txt";
} // namespace

void TFormMain::createTriggerEngine()
{
    consent_ = std::make_unique<ActionConsent>(std::filesystem::path(dataFolder_) / kConsentFile);
    launcher_ = std::make_unique<TriggerLauncher>(*reporter_);
    launcher_->setStatusSink([this](const std::string &text) { setStatusText(text); });
    launcher_->setPermission(
        [this](const TriggerDef &t) { return consent_->agreed(environmentFile_, t); });
    auto engine = std::make_unique<TriggerEngine>();
    engine->setTriggers(&env_->triggers);
    engine->setActions(launcher_.get());
    engine->setView(this);
    session_->setTriggerHooks(std::move(engine));
    connectTriggerPanel();
}

TFormTrig &TFormMain::triggerEditor()
{
    if (FormTrig == nullptr) {
        FormTrig = new TFormTrig(*prompter_, launcher_.get(), this);
        FormTrig->setSoundFolder(QString::fromStdString(dataFolder_ + "sounds"));
    }
    return *FormTrig;
}

void TFormMain::connectTriggerPanel()
{
    TrigPanel->setTriggers(&env_->triggers);
    TrigPanel->setEditor([this](const TriggerDef *current) {
        std::optional<TriggerDef> made = triggerEditor().Exec(current);
        // What the user typed in the editor is theirs: its action needs no further agreement.
        if (made && made->HasExternalAction())
            (void)consent_->agree(environmentFile_, {&*made});
        return made;
    });
    std::vector<QAction *> actions;
    for (const char *name : {"actTrigInsert", "actTrigRemove", "actTrigMoveUp", "actTrigMoveDown", "actTrigEdit",
                             "actTrigEnableAll", "actTrigDisableAll", "actTrigReverseAll", "actTrigGridReset"})
        actions.push_back(ActionManager1->action(QString::fromLatin1(name)));
    TrigPanel->bindActions(actions);
    auto on = [this](const char *name, auto slot) {
        connect(ActionManager1->action(QString::fromLatin1(name)), &QAction::triggered, TrigPanel, slot);
    };
    on("actTrigInsert", &TriggerPanel::btnInsertTriggerClick);
    on("actTrigRemove", &TriggerPanel::btnRemoveTriggerClick);
    on("actTrigEdit", &TriggerPanel::btnEditTriggerClick);
    on("actTrigMoveUp", &TriggerPanel::btnMoveTriggerUpClick);
    on("actTrigMoveDown", &TriggerPanel::btnMoveTriggerDownClick);
    on("actTrigGridReset", &TriggerPanel::btnResetTrigGridClick);
    for (const char *name : {"actTrigEnableAll", "actTrigMarkAll"})
        on(name, &TriggerPanel::btnEnableAllTriggersClick);
    for (const char *name : {"actTrigDisableAll", "actTrigMarkNone"})
        on(name, &TriggerPanel::btnDisableAllTriggersClick);
    for (const char *name : {"actTrigReverseAll", "actTrigMarkReverse"})
        on(name, &TriggerPanel::btnReverseAllTriggersClick);
    connect(TrigPanel, &TriggerPanel::changed, this, [this] { envChanged_ = true; });
    connect(TrigPanel, &TriggerPanel::minMaxToggled, this, &TFormMain::toggleTriggerPanelHeight);
}

void TFormMain::confirmTriggerActions()
{
    const std::vector<const TriggerDef *> pending = consent_->pending(environmentFile_, env_->triggers);
    if (pending.empty())
        return;
    std::string list;
    for (const std::string &line : DescribeActions(pending))
        list += "  " + line + "\n";
    const QString text = QString::fromStdString(Str(kMsgAllowActions))
                             .arg(QString::fromStdString(environmentFile_), QString::fromStdString(list));
    if (prompter_->ShowMessage(Str(TriggerEngineMsg::Title), text.toStdString(), Buttons::YesNoDefaultNo,
                               Icon::Warning) != MsgResult::Yes)
        return; // the marks are written, the actions are not run
    if (const Result kept = consent_->agree(environmentFile_, pending); !kept)
        setStatusText(Str(kept.code) + " " + kept.detail); // agreed for this run only
}

void TFormMain::toggleTriggerPanelHeight()
{
    QList<int> sizes = HSplitter1->sizes();
    if (sizes.size() != 2)
        return;
    const int total = sizes[0] + sizes[1];
    const int minimised = pnlAllBottom->minimumSizeHint().height();
    if (bottomHeightBeforeMin_ == 0) {
        bottomHeightBeforeMin_ = sizes[1];
        sizes = {total - minimised, minimised};
    } else {
        sizes = {total - bottomHeightBeforeMin_, bottomHeightBeforeMin_};
        bottomHeightBeforeMin_ = 0;
    }
    HSplitter1->setSizes(sizes);
}

void TFormMain::triggerStatusText(const std::string &text) { setStatusText(text); }

void TFormMain::triggerFired(const TriggerDef &trigger, std::uint32_t mp) { TrigPanel->setRecognised(trigger.number, mp); }

} // namespace kestrel
