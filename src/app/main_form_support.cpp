// The Help menu's support commands: "Report a problem" and "Check for updates",
// and the quiet update check at start-up.

#include <QAction>
#include <QComboBox>
#include <QLabel>

#include "app/action_registry.h"
#include "app/app_log.h"
#include "app/main_form.h"
#include "app/problem_report_form.h"
#include "base/prompt.h"
#include "base/string_table.h"
#include "config/program_config.h"
#include "support/error_history.h"
#include "support/problem_report.h"
#include "support/support_texts.h"
#include "support/update_check.h"

namespace kestrel {

namespace {

std::string NoColon(const QString &label) { return label.trimmed().remove(QLatin1Char(':')).toStdString(); }

} // namespace

void TFormMain::createSupport(Prompter &shown)
{
    errorHistory_ = std::make_unique<ErrorHistory>();
    rememberingPrompter_ = std::make_unique<RememberingPrompter>(shown, *errorHistory_);
    updateCheck_ = new UpdateCheck(this);
    connect(updateCheck_, &UpdateCheck::finished, this, &TFormMain::updateCheckFinished);
}

void TFormMain::actWebSupportExecute()
{
    // The ports as the window shows them: device and line settings (port B runs A's settings).
    const std::string settings = (cbPortBaudRate->currentText() + " " + cbPortDataBits->currentText() + " " +
                                  cbPortParity->currentText() + " " + cbPortStopBits->currentText())
                                     .toStdString();
    std::vector<ReportPort> ports{{NoColon(QString::fromStdString(Str(7641))), lblPortA->text().toStdString(), settings},
                                  {NoColon(QString::fromStdString(Str(7642))), lblPortB->text().toStdString(), settings}};
    if (FormProblemReport == nullptr)
        FormProblemReport = new TFormProblemReport(*prompter_, this);
    FormProblemReport->setReport(ComposeProblemReport(CollectReportFacts(std::move(ports), *errorHistory_)),
                                 config_->ReportAddress);
    FormProblemReport->show();
    FormProblemReport->raise();
    FormProblemReport->activateWindow();
}

void TFormMain::actWebUpdateExecute()
{
    updateCheckAsked_ = true;
    updateCheck_->start(config_->VersionFileUrl, ThisProgramsVersion());
}

void TFormMain::startUpdateCheckAtStart()
{
    if (!config_->CheckForUpdatesAtProgStart)
        return;
    updateCheckAsked_ = false;
    updateCheck_->start(config_->VersionFileUrl, ThisProgramsVersion());
}

void TFormMain::updateCheckFinished(const UpdateCheckResult &result)
{
    if (updateCheckAsked_) {
        // Asked from the menu: the answer in the message box, whatever it is.
        updateCheckAsked_ = false;
        const bool problem = result.outcome == UpdateOutcome::BadFile || result.outcome == UpdateOutcome::Failed;
        prompter_->ShowMessage(Str(support_txt::kUpdateTitle), UpdateMessageText(result), Buttons::Ok,
                               problem ? Icon::Warning : Icon::Information);
        return;
    }
    // At start-up nobody asked: one quiet line, and nothing when all is well.
    const std::string line = UpdateStatusLine(result);
    qCInfo(lcApp) << "update check at start:" << QString::fromStdString(line);
    if (!line.empty())
        statusPanels_[0]->setText(QString::fromStdString(line));
}

} // namespace kestrel
