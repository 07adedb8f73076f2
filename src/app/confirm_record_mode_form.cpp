#include "app/confirm_record_mode_form.h"

#include <QGroupBox>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "app/dialog_buttons.h"
#include "base/string_table.h"

namespace kestrel {

namespace {
QString S(int n) { return QString::fromStdString(Str(n)); }
constexpr int kTitleBarButtons = 140; // icon, close, minimize and maximize of a title bar
} // namespace

TFormConfirmRecordMode::TFormConfirmRecordMode(QWidget *parent) : QDialog(parent)
{
    setObjectName("TFormConfirmRecordMode");
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    gbExistingData = new QGroupBox(this);
    gbExistingData->setObjectName("gbExistingData");
    rbRecReplace = new QRadioButton(gbExistingData);
    rbRecReplace->setObjectName("rbRecReplace");
    rbRecAppend = new QRadioButton(gbExistingData);
    rbRecAppend->setObjectName("rbRecAppend");
    auto *gl = new QVBoxLayout(gbExistingData);
    gl->addWidget(rbRecReplace);
    gl->addWidget(rbRecAppend);

    const DialogButtons buttons = MakeDialogButtons(this);
    btnOK = buttons.ok;
    btnCancel = buttons.cancel;
    btnHelp = buttons.help;
    connect(btnOK, &QPushButton::clicked, this, &TFormConfirmRecordMode::btnOKClick);
    connect(btnCancel, &QPushButton::clicked, this, &TFormConfirmRecordMode::btnCancelClick);
    auto *box = new QVBoxLayout(this);
    box->addWidget(gbExistingData);
    box->addLayout(buttons.row);
    InitialLoads();
}

void TFormConfirmRecordMode::InitialLoads()
{
    setWindowTitle(S(7520));
    gbExistingData->setTitle(S(7521));
    rbRecReplace->setText(S(7522));
    rbRecAppend->setText(S(7523));
    btnOK->setText(S(6006));
    btnCancel->setText(S(6003));
    btnHelp->setText(S(7524));
    // Wide enough for its title beside the title bar's own buttons, so the window manager
    // need not shorten "Confirm the recording method" to "Confirm the r…".
    setMinimumWidth(fontMetrics().horizontalAdvance(windowTitle()) + kTitleBarButtons);
}

int TFormConfirmRecordMode::ask()
{
    rbRecAppend->setChecked(true); // keeping the data is the safe choice
    recordMode_ = 0;
    exec();
    return recordMode_;
}

void TFormConfirmRecordMode::btnOKClick()
{
    recordMode_ = rbRecReplace->isChecked() ? 2 : 1;
    accept();
}

void TFormConfirmRecordMode::btnCancelClick()
{
    recordMode_ = 0;
    reject();
}

} // namespace kestrel
