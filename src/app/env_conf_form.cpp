#include "app/env_conf_form.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTabWidget>
#include <QVBoxLayout>
#include <filesystem>
#include <string_view>

#include "app/dialog_buttons.h"
#include "app/elided_label.h"
#include "base/prompt.h"
#include "base/string_table.h"

namespace kestrel {

namespace {

QString S(int n) { return QString::fromStdString(Str(n)); }

constexpr int kCaption = 1500;
constexpr int kCloseWithoutSave = 1501;
constexpr int kTitleConfirmation = 204;
constexpr int kTitleWarning = 205;
constexpr int kButtonOk = 6006;
constexpr int kButtonCancel = 6003;
constexpr int kButtonHelp = 7524;
constexpr int kEnvironmentFile = 7950;
constexpr int kPageGeneral = 7951;
constexpr int kPageCustomer = 7952;
constexpr int kPageDescription = 7953;
constexpr int kFileNotReadAgain = 7969;
constexpr int kTitleBarButtons = 140; // icon, close, minimize and maximize of a title bar
constexpr int kFieldChars = 50;       // a title or an e-mail address shows whole

// The label text of each header key; both pages share the address keys.
struct KeyLabel {
    std::string_view key;
    int textNo;
};
constexpr KeyLabel kKeyLabels[] = {
    {"Title", 7954},    {"Author", 7955}, {"Company", 7956}, {"Contact", 7957}, {"Address1", 7958},
    {"Address2", 7959}, {"City", 7960},   {"ZIP", 7961},     {"State", 7962},   {"Country", 7963},
    {"Phone", 7964},    {"Fax", 7965},    {"Internet", 7966}, {"Email", 7967},
};

int LabelOf(std::string_view key)
{
    for (const KeyLabel &k : kKeyLabels)
        if (k.key == key)
            return k.textNo;
    return 0;
}

QString MemoText(const std::vector<std::string> &lines)
{
    QStringList text;
    for (const std::string &line : lines)
        text << QString::fromStdString(line);
    return text.join('\n');
}

// One description line per memo line; the line end after the last line starts none.
std::vector<std::string> MemoLines(const QString &text)
{
    QStringList lines = text.split('\n');
    if (!lines.isEmpty() && lines.back().isEmpty())
        lines.removeLast();
    std::vector<std::string> out;
    for (const QString &line : lines)
        out.push_back(line.toStdString());
    return out;
}

} // namespace

TFormEnvConf::TFormEnvConf(Prompter &prompter, QWidget *parent) : QDialog(parent), prompter_(prompter)
{
    setObjectName("TFormEnvConf");
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);

    gbEnvFile = new QGroupBox(this);
    gbEnvFile->setObjectName("gbEnvFile");
    lblEnvFileName = new ElidedLabel(gbEnvFile);
    lblEnvFileName->setObjectName("lblEnvFileName");
    lblEnvFileName->setTextInteractionFlags(Qt::TextSelectableByMouse);
    (new QVBoxLayout(gbEnvFile))->addWidget(lblEnvFileName);

    PageControl1 = new QTabWidget(this);
    PageControl1->setObjectName("PageControl1");
    tabEnvGeneral = newPage("tabEnvGeneral");
    for (const auto &k : kGeneralKeys) {
        const Field f = newField(tabEnvGeneral, "Gen", k.key);
        connect(f.edit, &QLineEdit::textChanged, this, [this, member = k.field](const QString &text) {
            if (env_ != nullptr)
                env_->general.*member = text.toStdString();
            fieldChanged();
        });
        generalFields_.push_back(f);
    }
    tabEnvCustomer = newPage("tabEnvCustomer");
    for (const auto &k : kCustomerKeys) {
        const Field f = newField(tabEnvCustomer, "Cust", k.key);
        connect(f.edit, &QLineEdit::textChanged, this, [this, member = k.field](const QString &text) {
            if (env_ != nullptr)
                env_->customer.*member = text.toStdString();
            fieldChanged();
        });
        customerFields_.push_back(f);
    }
    tabEnvDescription = new QWidget(PageControl1);
    tabEnvDescription->setObjectName("tabEnvDescription");
    memEnvDescription = new QPlainTextEdit(tabEnvDescription);
    memEnvDescription->setObjectName("memEnvDescription");
    // Long lines wrap on the screen only: each line typed is still one line in the file.
    memEnvDescription->setLineWrapMode(QPlainTextEdit::WidgetWidth);
    (new QVBoxLayout(tabEnvDescription))->addWidget(memEnvDescription);
    PageControl1->addTab(tabEnvDescription, QString());
    connect(memEnvDescription, &QPlainTextEdit::textChanged, this, [this] {
        if (env_ != nullptr)
            env_->description = MemoLines(memEnvDescription->toPlainText());
        fieldChanged();
    });

    const DialogButtons buttons = MakeDialogButtons(this);
    btnOK = buttons.ok;
    btnCancel = buttons.cancel;
    btnHelp = buttons.help;
    connect(btnOK, &QPushButton::clicked, this, &TFormEnvConf::btnOKClick);
    connect(btnCancel, &QPushButton::clicked, this, &TFormEnvConf::btnCancelClick);
    auto *box = new QVBoxLayout(this);
    box->addWidget(gbEnvFile);
    box->addWidget(PageControl1, 1);
    box->addLayout(buttons.row);
    InitialLoads();
}

QWidget *TFormEnvConf::newPage(const char *name)
{
    auto *page = new QWidget(PageControl1);
    page->setObjectName(name);
    auto *form = new QFormLayout(page);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->setRowWrapPolicy(QFormLayout::DontWrapRows);
    PageControl1->addTab(page, QString());
    return page;
}

TFormEnvConf::Field TFormEnvConf::newField(QWidget *page, const QString &prefix, const char *key)
{
    Field f{new QLabel(page), new QLineEdit(page), LabelOf(key)};
    f.label->setObjectName("lbl" + prefix + key);
    f.edit->setObjectName("edt" + prefix + key);
    f.label->setBuddy(f.edit);
    f.edit->setMinimumWidth(f.edit->fontMetrics().averageCharWidth() * kFieldChars);
    qobject_cast<QFormLayout *>(page->layout())->addRow(f.label, f.edit);
    return f;
}

void TFormEnvConf::InitialLoads()
{
    setWindowTitle(S(kCaption));
    gbEnvFile->setTitle(S(kEnvironmentFile));
    PageControl1->setTabText(PageControl1->indexOf(tabEnvGeneral), S(kPageGeneral));
    PageControl1->setTabText(PageControl1->indexOf(tabEnvCustomer), S(kPageCustomer));
    PageControl1->setTabText(PageControl1->indexOf(tabEnvDescription), S(kPageDescription));
    for (const auto *fields : {&generalFields_, &customerFields_})
        for (const Field &f : *fields)
            f.label->setText(S(f.textNo));
    btnOK->setText(S(kButtonOk));
    btnCancel->setText(S(kButtonCancel));
    btnHelp->setText(S(kButtonHelp));
    setMinimumWidth(fontMetrics().horizontalAdvance(windowTitle()) + kTitleBarButtons);
}

void TFormEnvConf::setEnvironment(Environment *env, const std::string &fileName)
{
    env_ = env;
    fileName_ = fileName;
    showHeader();
}

void TFormEnvConf::setChangeHandler(std::function<void()> SetEnvironmentChanged)
{
    setChanged_ = std::move(SetEnvironmentChanged);
}

void TFormEnvConf::showHeader()
{
    lblEnvFileName->setFullText(QString::fromStdString(fileName_));
    const Environment empty;
    const Environment &env = env_ != nullptr ? *env_ : empty;
    // Showing what the environment holds is no change.
    for (std::size_t i = 0; i < generalFields_.size(); ++i) {
        const QSignalBlocker quiet(generalFields_[i].edit);
        generalFields_[i].edit->setText(QString::fromStdString(env.general.*kGeneralKeys[i].field));
        generalFields_[i].edit->setCursorPosition(0); // the start of a long text shows, not its end
    }
    for (std::size_t i = 0; i < customerFields_.size(); ++i) {
        const QSignalBlocker quiet(customerFields_[i].edit);
        customerFields_[i].edit->setText(QString::fromStdString(env.customer.*kCustomerKeys[i].field));
        customerFields_[i].edit->setCursorPosition(0);
    }
    const QSignalBlocker quiet(memEnvDescription);
    memEnvDescription->setPlainText(MemoText(env.description));
}

void TFormEnvConf::ShowFirstPage()
{
    edited_ = false;
    reloaded_ = false;
    if (env_ != nullptr) {
        shownGeneral_ = env_->general;
        shownCustomer_ = env_->customer;
        shownDescription_ = env_->description;
    }
    showHeader();
    PageControl1->setCurrentIndex(0);
    generalFields_.front().edit->setFocus();
    exec();
}

void TFormEnvConf::fieldChanged()
{
    edited_ = true;
    if (setChanged_)
        setChanged_();
}

void TFormEnvConf::ReloadEnvSettings()
{
    if (env_ == nullptr)
        return;
    const EnvLoadResult loaded = LoadEnvironment(std::filesystem::path(fileName_), EnvLoadContext{});
    if (loaded.status.ok()) {
        env_->general = loaded.env.general;
        env_->customer = loaded.env.customer;
        env_->description = loaded.env.description;
    } else {
        env_->general = shownGeneral_;
        env_->customer = shownCustomer_;
        env_->description = shownDescription_;
        prompter_.ShowMessage(Str(kTitleWarning), Str(kFileNotReadAgain) + "\n\n" + fileName_ + "\n" + loaded.status.detail,
                              Buttons::Ok, Icon::Warning);
    }
    showHeader();
}

void TFormEnvConf::btnOKClick() { accept(); }

void TFormEnvConf::btnCancelClick()
{
    // Only a change made in this window is asked about, as the question says: a port
    // setting changed in the main window stays for the save offered at closing.
    if (edited_) {
        if (prompter_.ShowMessage(Str(kTitleConfirmation), Str(kCloseWithoutSave), Buttons::YesNo, Icon::Confirmation) !=
            MsgResult::Yes)
            return; // stays open with the changes
        ReloadEnvSettings();
        reloaded_ = true;
    }
    QDialog::reject();
}

void TFormEnvConf::reject() { btnCancelClick(); }

} // namespace kestrel
