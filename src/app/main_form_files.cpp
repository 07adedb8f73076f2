// Files of the main window: the record file (new, open, save as, shown) and the
// port settings an environment carries (its load and save: main_form_env.cpp).

#include <QAction>
#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <filesystem>

#include "app/action_registry.h"
#include "app/combo_select.h"
#include "app/main_form.h"
#include "app/trigger_panel.h"
#include "base/error_report.h"
#include "base/reporter.h"
#include "capture/changed_record_file.h"
#include "capture/recording_session.h"
#include "record/clock.h"
#include "record/record_file.h"
#include "record/recording_check.h"
#include "capture/recorder.h"
#include "config/environment.h"
#include "config/port_combo.h"
#include "config/program_config.h"
#include "config/record_setup.h"
#include "ports/port_texts.h"
#include "base/string_table.h"

namespace kestrel {

namespace {

QString S(int n) { return QString::fromStdString(Str(n)); }

} // namespace

PortComboTexts TFormMain::comboTexts() const
{
    return {cbPortBaudRate->currentText().toStdString(), cbPortDataBits->currentText().toStdString(),
            cbPortParity->currentText().toStdString(), cbPortStopBits->currentText().toStdString()};
}

void TFormMain::ScanPortsAndApplySettings()
{
    fillPortCombos();
    for (QComboBox *c : {cbPortBaudRate, cbPortDataBits, cbPortParity, cbPortStopBits})
        connect(c, &QComboBox::currentIndexChanged, this, &TFormMain::portSettingChanged);
    ReportCaptureResult(*reporter_, session_->applySettings(comboTexts()));
    showPortDevices();
}

void TFormMain::showPortDevices()
{
    Capture &c = session_->capture();
    const QString suffix = session_->simulated() ? "  (" + S(7645) + ")" : QString();
    const bool none = c.portList().empty();
    lblPortA->setText(none ? S(7646) : QString::fromStdString(c.ComA().device()) + suffix);
    lblPortB->setText(none ? S(7646) : QString::fromStdString(c.ComB().device()) + suffix);
}

void TFormMain::portSettingChanged()
{
    envChanged_ = true;
    reportPortResults(session_->tryPorts(comboTexts()));
    showPortDevices();
}

void TFormMain::applyEnvironment(const Environment &env)
{
    *env_ = env;
    RecordSetup setup = RecordSetupFromEnvironment(env, args_.recordFile.empty()
                                                            ? std::optional<std::string>{}
                                                            : std::optional<std::string>{args_.recordFile});
    // A simulated line faster than the port settings: the recorder takes the line's rate
    // (a real UART could not receive faster than it is set), and the window shows it.
    if (scenarioBaud_ > ParseBaudText(setup.portA.baud).value_or(0))
        setup.portA.baud = std::to_string(scenarioBaud_);
    SelectComboText(cbPortBaudRate, setup.portA.baud);
    SelectComboText(cbPortDataBits, setup.portA.dataBits);
    SelectComboText(cbPortParity, setup.portA.parity);
    SelectComboText(cbPortStopBits, setup.portA.stopBits);
    Capture &c = session_->capture();
    // The devices of the environment, where the scan found them.
    const auto &list = c.portList();
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (list[i] == setup.portA.device)
            c.setStoredIndexes(static_cast<int>(i), c.storedIndexB());
        if (list[i] == setup.portB.device)
            c.setStoredIndexes(c.storedIndexA(), static_cast<int>(i));
    }
    ReportCaptureResult(*reporter_, session_->applySettings({setup.portA.baud, setup.portA.dataBits,
                                                             setup.portA.parity, setup.portA.stopBits}));
    if (!setup.recordFile.empty())
        session_->file().setPath(setup.recordFile);
    showPortDevices();
    updateWindowTitle();
    TrigPanel->refill();
    confirmTriggerActions();
}

void TFormMain::ShowChangedRecordFile()
{
    std::error_code ec;
    RecordFile &file = session_->file();
    const auto folder = std::filesystem::path(file.path()).parent_path();
    if (!folder.empty())
        std::filesystem::create_directories(folder, ec); // a failure is reported as 3002 below
    const ChangedRecordFile r = OpenChangedRecordFile(file);
    if (r.result) {
        envChanged_ = true;
        redrawGrid(); // opens the file in the grid, from its first row
        // A file that is not a recording is shown as it is, and said so once.
        const RecordingCheck found = CheckRecording(file.view(), CheckDepth::Writable);
        if (found.kind == RecordingKind::NotRecording)
            prompter_->ShowMessage(Str(3000),
                                   QString::fromStdString(Str(7110))
                                       .arg(QString::fromStdString(file.path()),
                                            QString::fromStdString(NotRecordingText(found)))
                                       .toStdString(),
                                   Buttons::Ok, Icon::Warning);
    } else {
        ReportError(*prompter_, 3000, r.result.code, {"RecordFile", __LINE__}, r.result.detail);
    }
    updateSizeLabel();
}

void TFormMain::btnNewRecordFileClick()
{
    const QString start = QString::fromStdString(dataFolder_ + "recordings/Default.ksr");
    const QString path = QFileDialog::getSaveFileName(this, S(7530).remove('&'), start, S(7654), nullptr,
                                                      QFileDialog::DontConfirmOverwrite);
    if (path.isEmpty())
        return;
    session_->file().setPath(path.endsWith(".ksr") ? path.toStdString() : path.toStdString() + ".ksr");
    ShowChangedRecordFile();
}

void TFormMain::btnOpenRecordFileClick()
{
    const QString path = QFileDialog::getOpenFileName(this, S(7532).remove('&'),
                                                      QString::fromStdString(dataFolder_ + "recordings"), S(7654));
    if (path.isEmpty())
        return;
    session_->file().setPath(path.toStdString());
    ShowChangedRecordFile();
}

} // namespace kestrel
