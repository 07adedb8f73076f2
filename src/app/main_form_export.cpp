// The window side of the export: the tool window, what it exports (the
// recording in the grid, with the grid's time mode and circuit names) and
// where it stands ([EXWindow]).

#include <QAction>
#include <filesystem>

#include "app/action_registry.h"
#include "app/export_form.h"
#include "app/main_form.h"
#include "capture/recording_session.h"
#include "config/program_config.h"
#include "present/grid/record_grid.h"

namespace kestrel {

void TFormMain::createExportWindow()
{
    FormExport = new TFormExport(*prompter_, this);
    FormExport->setSourceProvider([this] {
        return ExportSource{recordFile(), DrawGrid1->modes().timeMode(), pinNaming_, comboTexts()};
    });
    // The window's own section, read when the window is made; the save writes it back.
    (void)LoadConfiguration(std::filesystem::path(configPath()), "TFormExport", *config_);
    FormExport->setPlacement(config_->exWindow);
    connect(ActionManager1->action("actExportToFile"), &QAction::triggered, this, &TFormMain::actExportToFileExecute);
}

void TFormMain::actExportToFileExecute() { FormExport->showInFront(); }

} // namespace kestrel
