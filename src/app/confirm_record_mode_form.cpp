#include "app/confirm_record_mode_form.h"

#include <QGroupBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QRadioButton>
#include <QToolTip>
#include <QVBoxLayout>

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

    btnOK = new QPushButton(this);
    btnOK->setObjectName("btnOK");
    btnOK->setDefault(true);
    btnCancel = new QPushButton(this);
    btnCancel->setObjectName("btnCancel");
    btnHelp = new QPushButton(this);
    btnHelp->setObjectName("btnHelp");
    connect(btnOK, &QPushButton::clicked, this, &TFormConfirmRecordMode::btnOKClick);
    connect(btnCancel, &QPushButton::clicked, this, &TFormConfirmRecordMode::btnCancelClick);
    connect(btnHelp, &QPushButton::clicked, this, &TFormConfirmRecordMode::btnHelpClick);

    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(btnOK);
    buttons->addWidget(btnCancel);
    buttons->addWidget(btnHelp);
    auto *box = new QVBoxLayout(this);
    box->addWidget(gbExistingData);
    box->addLayout(buttons);
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

void TFormConfirmRecordMode::btnHelpClick()
{
    QToolTip::showText(btnHelp->mapToGlobal(QPoint(0, btnHelp->height())), S(7525), btnHelp);
}

} // namespace kestrel
