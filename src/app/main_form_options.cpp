// The options of the main window: the options dialog and what its OK changes
// (the profile in use, the offered port values in the port settings boxes, the
// ports of A and B, the start-up switches, the style), the styles at start-up
// (installed on the first start, the current one applied) and the grid's option
// set as Kestrel.ini keeps it.

#include <QAction>
#include <QActionGroup>
#include <QComboBox>
#include <QMenu>
#include <QMenuBar>
#include <filesystem>

#include "app/action_registry.h"
#include "app/app_style.h"
#include "app/combo_select.h"
#include "app/main_form.h"
#include "app/options_form.h"
#include "base/reporter.h"
#include "base/string_table.h"
#include "capture/recording_session.h"
#include "config/options_confirm.h"
#include "config/program_config.h"
#include "config/styles.h"
#include "present/grid/grid_options.h"
#include "present/grid/record_grid.h"

namespace kestrel {

void TFormMain::prepareOptionsBeforeLoad()
{
    // A missing [DataGrid] GridOptions keeps the grid's own option set.
    config_->GridOptions = DrawGrid1->GridOptions();
    // As an installer would: the shipped styles and their slots, when Kestrel.ini has none.
    (void)InstallShippedStylesOnFirstStart(std::filesystem::path(dataFolder_));
}

void TFormMain::applyOptionsAfterLoad()
{
    DrawGrid1->SetGridOptions(config_->GridOptions);
    const char *lineActions[] = {"actShowAllGridLines", "actShowHorizontalGridLines", "actShowVerticalGridLines",
                                 "actShowNoGridLines"};
    const grid::GridLines lines = grid::GridLinesOf(DrawGrid1->modes().gridLines());
    ActionManager1->action(lineActions[static_cast<int>(lines)])->setChecked(true);
    (void)applyStyleSlot(config_->SkinCurrent);
    buildStyleMenu();
}

void TFormMain::buildStyleMenu()
{
    // Every named slot gets an entry, after the two option commands.
    QMenu *options = nullptr;
    for (QMenu *m : menuBar()->findChildren<QMenu *>())
        if (m->actions().contains(ActionManager1->action("actOptions")))
            options = m;
    if (options == nullptr || mnuStyles != nullptr)
        return;
    mnuStyles = new QMenu(options);
    mnuStyles->setObjectName("mnuStyles");
    auto *group = new QActionGroup(mnuStyles);
    group->setExclusive(true);
    for (int slot : StyleChoices(*config_)) {
        QString name = QString::fromStdString(config_->skins[static_cast<std::size_t>(slot)].Name);
        QAction *a = mnuStyles->addAction(name.replace('&', QLatin1String("&&"))); // no shortcut letter
        a->setObjectName(QStringLiteral("actStyle%1").arg(slot));
        a->setCheckable(true);
        a->setData(slot);
        group->addAction(a);
    }
    connect(group, &QActionGroup::triggered, this, [this](QAction *a) { chooseStyle(a->data().toInt()); });
    const QList<QAction *> items = options->actions();
    const qsizetype after = items.indexOf(ActionManager1->action("actPortOptions"));
    if (after >= 0 && after + 1 < items.size())
        options->insertMenu(items[after + 1], mnuStyles);
    else
        options->addMenu(mnuStyles);
    syncStyleMenu();
}

void TFormMain::chooseStyle(int slot)
{
    if (applyStyleSlot(slot)) {
        config_->SkinCurrent = AppliedStyle();
        (void)SaveCurrentStyle(std::filesystem::path(configPath()), config_->SkinCurrent);
    }
    syncStyleMenu();
}

void TFormMain::syncStyleMenu()
{
    if (mnuStyles == nullptr)
        return;
    for (QAction *a : mnuStyles->actions())
        a->setChecked(a->data().toInt() == AppliedStyle());
}

void TFormMain::optionsLanguageLoads()
{
    if (FormOptions != nullptr)
        FormOptions->InitialLoads();
    if (mnuStyles != nullptr) {
        mnuStyles->setTitle(QString::fromStdString(Str(9264)));
        if (!mnuStyles->actions().isEmpty()) // slot 0, the platform look
            mnuStyles->actions().front()->setText(QString::fromStdString(Str(9219)));
    }
}

bool TFormMain::applyStyleSlot(int slot)
{
    const Result applied = ApplyStyle(*config_, std::filesystem::path(dataFolder_), slot);
    if (!applied.ok()) {
        prompter_->ShowMessage(Str(205), applied.detail, Buttons::Ok, Icon::Warning);
        return false;
    }
    return true;
}

void TFormMain::OpenOptions(int page)
{
    if (FormOptions == nullptr) {
        FormOptions = new TFormOptions(*prompter_, this);
        FormOptions->applyStyle = [this](int slot) { return applyStyleSlot(slot); };
        FormOptions->confirmed = [this](const OptionsChoice &choice) { optionsConfirmed(choice); };
        connect(FormOptions, &QDialog::finished, this, &TFormMain::syncStyleMenu);
    }
    OptionsSetup setup;
    setup.dataFolder = dataFolder_;
    setup.config = *config_;
    setup.ports = session_->portList();
    setup.portA = session_->capture().storedIndexA();
    setup.portB = session_->capture().storedIndexB();
    setup.style = AppliedStyle();
    FormOptions->Open(setup, page);
    FormOptions->open();
}

void TFormMain::actOptionsExecute() { OpenOptions(OptionsPage::ProgStart); }

void TFormMain::actPortOptionsExecute() { OpenOptions(OptionsPage::Interface); }

void TFormMain::optionsConfirmed(const OptionsChoice &choice)
{
    ApplyConfirmedProfile(*config_, choice.profileName, choice.profile);
    config_->BeginRecordOnProgStart = choice.beginRecordAtStart;
    config_->DisplayHoldOnProgStart = choice.displayHoldAtStart;
    config_->CheckForUpdatesAtProgStart = choice.checkForUpdates;
    config_->SkinCurrent = choice.style;

    Capture &capture = session_->capture();
    if (!session_->portList().empty() &&
        (choice.portA != capture.storedIndexA() || choice.portB != capture.storedIndexB())) {
        capture.setStoredIndexes(choice.portA, choice.portB);
        envChanged_ = true; // the ports are part of the environment
    }
    // The port boxes offer the new lists; the settings in use stay chosen, offered or not.
    const PortComboTexts inUse = comboTexts();
    fillPortCombos();
    SelectComboText(cbPortBaudRate, inUse.baud);
    SelectComboText(cbPortDataBits, inUse.dataBits);
    SelectComboText(cbPortParity, inUse.parity);
    SelectComboText(cbPortStopBits, inUse.stopBits);
    ReportCaptureResult(*reporter_, session_->applySettings(comboTexts()));
    showPortDevices();

    saveConfiguration();
    // Styles are kept by hand or by the installer, but the one chosen here must survive a restart.
    (void)SaveCurrentStyle(std::filesystem::path(configPath()), choice.style);
}

} // namespace kestrel
