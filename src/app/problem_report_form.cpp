#include "app/problem_report_form.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QFileDialog>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "base/prompt.h"
#include "base/string_table.h"
#include "support/problem_report.h"
#include "support/support_texts.h"

namespace kestrel {

namespace {

QString S(int n) { return QString::fromStdString(Str(n)); }

constexpr int kFileTitle = 3000; // file operations
// Room for the report's longest usual lines (a by-id device name) and most of its text.
constexpr int kReportColumns = 96;
constexpr int kReportRows = 24;

} // namespace

TFormProblemReport::TFormProblemReport(Prompter &prompter, QWidget *parent) : QDialog(parent), prompter_(prompter)
{
    setObjectName("TFormProblemReport");
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    openUrl_ = [](const QUrl &url) { return QDesktopServices::openUrl(url); };
    chooseSavePath_ = [this] {
        // The replace question is ours (through the prompter), not the file dialog's.
        return QFileDialog::getSaveFileName(this, S(support_txt::kSave).remove("..."), QString(),
                                            S(support_txt::kTextFilter), nullptr,
                                            QFileDialog::DontConfirmOverwrite);
    };

    lblIntro = new QLabel(this);
    lblIntro->setObjectName("lblIntro");
    lblIntro->setWordWrap(true);
    lblRecipient = new QLabel(this);
    lblRecipient->setObjectName("lblRecipient");
    lblRecipient->setTextInteractionFlags(Qt::TextSelectableByMouse);
    memReport = new QPlainTextEdit(this);
    memReport->setObjectName("memReport");
    memReport->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    memReport->setLineWrapMode(QPlainTextEdit::WidgetWidth);
    const QFontMetrics fm(memReport->font());
    memReport->setMinimumSize(std::min(fm.averageCharWidth() * kReportColumns, 860),
                              std::min(fm.lineSpacing() * kReportRows, 440));
    lblStatus = new QLabel(this);
    lblStatus->setObjectName("lblStatus");
    lblStatus->setWordWrap(true);
    lblStatus->setTextInteractionFlags(Qt::TextSelectableByMouse);

    btnSendMail = new QPushButton(this);
    btnSendMail->setObjectName("btnSendMail");
    btnSendMail->setDefault(true);
    btnCopy = new QPushButton(this);
    btnCopy->setObjectName("btnCopy");
    btnCopy->setAutoDefault(false);
    btnSave = new QPushButton(this);
    btnSave->setObjectName("btnSave");
    btnSave->setAutoDefault(false);
    btnClose = new QPushButton(this);
    btnClose->setObjectName("btnClose");
    btnClose->setAutoDefault(false);
    connect(btnSendMail, &QPushButton::clicked, this, &TFormProblemReport::btnSendMailClick);
    connect(btnCopy, &QPushButton::clicked, this, &TFormProblemReport::btnCopyClick);
    connect(btnSave, &QPushButton::clicked, this, &TFormProblemReport::btnSaveClick);
    connect(btnClose, &QPushButton::clicked, this, &QDialog::close);

    auto *buttons = new QHBoxLayout;
    buttons->addWidget(btnSendMail);
    buttons->addWidget(btnCopy);
    buttons->addWidget(btnSave);
    buttons->addStretch(1);
    buttons->addWidget(btnClose);
    auto *box = new QVBoxLayout(this);
    box->addWidget(lblIntro);
    box->addWidget(lblRecipient);
    box->addWidget(memReport, 1);
    box->addSpacing(4);
    box->addWidget(lblStatus);
    box->addSpacing(4);
    box->addLayout(buttons);
    InitialLoads();
}

void TFormProblemReport::InitialLoads()
{
    using namespace support_txt;
    setWindowTitle(S(kReportTitle));
    lblIntro->setText(S(kReportIntro));
    lblRecipient->setText(S(kRecipient).arg(QString::fromStdString(recipient_)));
    btnSendMail->setText(S(kSendMail));
    btnCopy->setText(S(kCopy));
    btnSave->setText(S(kSave));
    btnClose->setText(S(kClose));
    if (lastSaid_ != 0)
        lblStatus->setText(lastArg_.isNull() ? S(lastSaid_) : S(lastSaid_).arg(lastArg_));
}

void TFormProblemReport::setReport(const std::string &text, const std::string &recipient)
{
    recipient_ = recipient;
    memReport->setPlainText(QString::fromStdString(text));
    lastSaid_ = 0;
    lblStatus->clear();
    InitialLoads();
}

std::string TFormProblemReport::reportText() const { return memReport->toPlainText().toStdString(); }

void TFormProblemReport::say(const QString &text) { lblStatus->setText(text); }

void TFormProblemReport::btnSendMailClick()
{
    using namespace support_txt;
    const MailtoLink link = ReportMailto(recipient_, Str(kReportHeading), reportText());
    if (!link.problem.ok()) {
        // The settings name no usable recipient: said once in a box; copying and saving still work.
        prompter_.ShowMessage(Str(205), Str(link.problem.code) + link.problem.detail, Buttons::Ok, Icon::Warning);
        lastSaid_ = 0;
        lblStatus->clear();
        return;
    }
    if (openUrl_(link.url)) {
        lastSaid_ = kMailOpened;
        lastArg_ = QString();
    } else {
        lastSaid_ = kNoMailHandler;
        lastArg_ = QString::fromStdString(recipient_);
        btnCopy->setFocus();
    }
    say(lastArg_.isNull() ? S(lastSaid_) : S(lastSaid_).arg(lastArg_));
}

void TFormProblemReport::btnCopyClick()
{
    QGuiApplication::clipboard()->setText(memReport->toPlainText());
    lastSaid_ = support_txt::kCopied;
    lastArg_ = QString();
    say(S(lastSaid_));
}

void TFormProblemReport::btnSaveClick()
{
    QString path = chooseSavePath_();
    if (path.isEmpty())
        return;
    const SaveReportOutcome out = SaveReportText(path.toStdString(), reportText(), prompter_);
    if (!out.problem.ok()) {
        prompter_.ShowMessage(Str(kFileTitle), Str(out.problem.code) + out.problem.detail, Buttons::Ok, Icon::Error);
        return;
    }
    if (out.saved) {
        lastSaid_ = support_txt::kSaved;
        lastArg_ = path;
        say(S(lastSaid_).arg(path));
    }
}

} // namespace kestrel
