// The window side of the report: the tool window, what it reports on (the
// recording in the grid, shown as the grid shows it, with the environment's
// descriptive data as its header) and where it stands ([REWindow]).

#include <QAction>
#include <filesystem>

#include "app/action_registry.h"
#include "app/main_form.h"
#include "app/report_form.h"
#include "config/environment.h"
#include "config/program_config.h"
#include "present/grid/record_grid.h"
#include "report/report_printer.h"

namespace kestrel {

void TFormMain::createReportWindow()
{
    FormReport = new TFormReport(*prompter_, this);
    FormReport->setSourceProvider([this] {
        const grid::GridModes &m = DrawGrid1->modes();
        ReportSource src;
        src.recordFile = recordFile();
        src.charMode = m.charMode();
        src.controlMode = m.overlay();
        src.secondaryMode = m.secondaryMode();
        src.timeMode = m.timeMode();
        src.namingSet = pinNaming_;
        if (env_)
            src.header = report::HeaderOfEnvironment(*env_);
        return src;
    });
    // The window's own section, read when the window is made; the save writes it back.
    (void)LoadConfiguration(std::filesystem::path(configPath()), "TFormReport", *config_);
    FormReport->setPlacement(config_->reWindow);
    connect(ActionManager1->action("actPrintReport"), &QAction::triggered, this, &TFormMain::actPrintReportExecute);
}

void TFormMain::actPrintReportExecute() { FormReport->showInFront(); }

} // namespace kestrel
