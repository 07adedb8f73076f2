// The environment of the main window: load and save through the file dialogs,
// and the information dialog for its descriptive header.

#include <QComboBox>
#include <QFileDialog>
#include <filesystem>

#include "app/env_conf_form.h"
#include "app/main_form.h"
#include "base/prompt.h"
#include "base/string_table.h"
#include "capture/recording_session.h"
#include "config/environment.h"
#include "config/environment_target.h"
#include "config/port_combo.h"
#include "record/clock.h"

namespace kestrel {

namespace {

QString S(int n) { return QString::fromStdString(Str(n)); }

constexpr int kTitleWarning = 205;
constexpr int kTitleError = 206;
constexpr int kMsgNotAnEnvironmentKept = 7972;

// The environment file dialogs: *.kef, ".kef" added to a name typed without an extension,
// starting at the environment in use. Saving asks its own questions about the file it
// would replace, so the dialog asks none. An empty text: cancelled.
std::string AskEnvironmentFile(QWidget *parent, QFileDialog::AcceptMode mode, int title, const std::string &current)
{
    QFileDialog dialog(parent, S(title).remove('&'));
    dialog.setAcceptMode(mode);
    dialog.setFileMode(mode == QFileDialog::AcceptOpen ? QFileDialog::ExistingFile : QFileDialog::AnyFile);
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    dialog.setNameFilter(S(7655));
    dialog.setDefaultSuffix("kef");
    const std::filesystem::path start(current);
    dialog.setDirectory(QString::fromStdString(start.parent_path().string()));
    dialog.selectFile(QString::fromStdString(start.filename().string()));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return {};
    return dialog.selectedFiles().front().toStdString();
}

} // namespace

void TFormMain::btnEnvConfClick()
{
    const bool changedBefore = envChanged_;
    TFormEnvConf form(*prompter_, this);
    form.setEnvironment(env_.get(), environmentFile_);
    form.setChangeHandler([this] { envChanged_ = true; });
    form.ShowFirstPage();
    // Cancelled and taken from the file again: the header is the file's, so only what
    // was changed before the dialog opened is still unsaved.
    if (form.wasReloaded())
        envChanged_ = changedBefore;
}

void TFormMain::LoadEnvDialog()
{
    const std::string path = AskEnvironmentFile(this, QFileDialog::AcceptOpen, 7536, environmentFile_);
    if (path.empty())
        return;
    // Another kind of file (a recording, Kestrel.ini, notes) would replace the set-up in use
    // with defaults: it is refused, and the set-up stays.
    const EnvFileCheck found = CheckEnvironmentFile(path);
    if (found.kind == EnvFileKind::Foreign || (found.kind == EnvFileKind::Refused && found.status.ok())) {
        prompter_->ShowMessage(Str(kTitleWarning), StrArg(kMsgNotAnEnvironmentKept, path), Buttons::Ok, Icon::Warning);
        return;
    }
    EnvLoadContext ctx;
    ctx.dataFolder = dataFolder_;
    ctx.now = session_->clock().nowDateTime();
    const EnvLoadResult loaded = LoadEnvironment(std::filesystem::path(path), ctx);
    if (!loaded.status.ok()) {
        prompter_->ShowMessage(Str(kTitleWarning), Str(loaded.status.code) + "\n\n" + path + "\n" + loaded.status.detail,
                               Buttons::Ok, Icon::Warning);
        return;
    }
    environmentFile_ = path;
    applyEnvironment(loaded.env); // the caption names the new file
    ShowChangedRecordFile();
    envChanged_ = false;
}

void TFormMain::SaveEnvDialog()
{
    const std::string chosen = AskEnvironmentFile(this, QFileDialog::AcceptSave, 7538, environmentFile_);
    if (chosen.empty())
        return;
    const std::string path = WithEnvironmentExtension(chosen);
    if (!MaySaveEnvironmentTo(*prompter_, path, environmentFile_))
        return;
    Environment env = *env_;
    const std::string baud = cbPortBaudRate->currentText().toStdString();
    const std::string dataBits = cbPortDataBits->currentText().toStdString();
    const std::string parity = cbPortParity->currentText().toStdString();
    const std::string stopBits = cbPortStopBits->currentText().toStdString();
    env.comA = WithComboTexts(env.comA, baud, dataBits, parity, stopBits);
    env.comB = WithComboTexts(env.comB, baud, dataBits, parity, stopBits); // B always follows A
    env.comA.DevicePath = session_->capture().ComA().device();
    env.comB.DevicePath = session_->capture().ComB().device();
    env.recordFile = recordFile();
    const Result r = SaveEnvironment(env, std::filesystem::path(path));
    if (!r.ok()) {
        prompter_->ShowMessage(Str(kTitleError), Str(r.code) + "\n\n" + path + "\n" + r.detail, Buttons::Ok, Icon::Error);
        return;
    }
    environmentFile_ = path;
    *env_ = env;
    envChanged_ = false;
    updateWindowTitle();
}

} // namespace kestrel
