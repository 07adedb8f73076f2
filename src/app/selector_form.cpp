#include "app/selector_form.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/help_request.h"
#include "base/prompt.h"
#include "base/string_table.h"
#include "config/options_fields.h"

namespace kestrel {

namespace {

QString S(int n) { return QString::fromStdString(Str(n)); }

constexpr int kTitle = 9250;
constexpr int kAvailable = 9251;
constexpr int kSelected = 9252;
constexpr int kSave = 9253;
constexpr int kCancel = 6003;
constexpr int kHelp = 7524;
constexpr int kNotAValue = 9248;
constexpr int kWarningTitle = 205;

std::string Chosen(const QListWidget *list)
{
    const QListWidgetItem *item = list->currentItem();
    return item != nullptr && item->isSelected() ? item->text().toStdString() : std::string();
}

void Fill(QListWidget *list, const std::vector<std::string> &values, const std::string &choose)
{
    list->clear();
    for (const std::string &v : values) {
        list->addItem(QString::fromStdString(v));
        if (v == choose)
            list->setCurrentRow(list->count() - 1);
    }
}

std::vector<std::string> Items(const QListWidget *list)
{
    std::vector<std::string> values;
    for (int i = 0; i < list->count(); ++i)
        values.push_back(list->item(i)->text().toStdString());
    return values;
}

} // namespace

TFormSelector::TFormSelector(Prompter &prompter, QWidget *parent) : QDialog(parent), prompter_(prompter)
{
    setObjectName("TFormSelector");
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);

    lblAvailable = new QLabel(this);
    lblAvailable->setObjectName("lblAvailable");
    lblSelected = new QLabel(this);
    lblSelected->setObjectName("lblSelected");
    edAvailableValues = new QLineEdit(this);
    edAvailableValues->setObjectName("edAvailableValues");
    edAvailableValues->setMaxLength(16); // no list value is longer
    lbAvailable = new QListWidget(this);
    lbAvailable->setObjectName("lbAvailable");
    lbSelected = new QListWidget(this);
    lbSelected->setObjectName("lbSelected");
    for (QListWidget *l : {lbAvailable, lbSelected}) {
        l->setMinimumSize(130, 230);
        l->setSelectionMode(QAbstractItemView::SingleSelection);
        connect(l, &QListWidget::itemSelectionChanged, this, &TFormSelector::UpdateButtons);
    }

    auto button = [this](QPushButton *&b, const char *name, const QString &caption, void (TFormSelector::*slot)()) {
        b = new QPushButton(caption, this);
        b->setObjectName(name);
        b->setAutoDefault(false);
        connect(b, &QPushButton::clicked, this, slot);
    };
    button(btnAddValue, "btnAddValue", "+", &TFormSelector::btnAddValueClick);
    button(btnDelValue, "btnDelValue", "-", &TFormSelector::btnDelValueClick);
    button(btnToSelected, "btnToSelected", ">", &TFormSelector::btnToSelectedClick);
    button(ToAvailable, "ToAvailable", "<", &TFormSelector::ToAvailableClick);
    button(btnResetValues, "btnResetValues", "RES", &TFormSelector::btnResetValuesClick);
    button(btnSave, "btnSave", QString(), &TFormSelector::btnSaveClick);
    button(btnCancel, "btnCancel", QString(), &TFormSelector::btnCancelClick);
    btnHelp = new QPushButton(this);
    btnHelp->setObjectName("btnHelp");
    btnHelp->setAutoDefault(false);
    connect(btnHelp, &QPushButton::clicked, this, [this] { ShowHelpFor(this); });
    InstallHelpKey(this);
    for (QPushButton *b : {btnAddValue, btnDelValue})
        b->setFixedWidth(32);
    for (QPushButton *b : {btnToSelected, ToAvailable, btnResetValues})
        b->setFixedWidth(48);
    // Enter in the field adds the value; elsewhere it changes nothing by accident.
    connect(edAvailableValues, &QLineEdit::returnPressed, this, &TFormSelector::btnAddValueClick);
    connect(lbAvailable, &QListWidget::itemDoubleClicked, this, &TFormSelector::btnToSelectedClick);
    connect(lbSelected, &QListWidget::itemDoubleClicked, this, &TFormSelector::ToAvailableClick);

    auto *typed = new QHBoxLayout;
    typed->addWidget(edAvailableValues, 1);
    typed->addWidget(btnAddValue);
    typed->addWidget(btnDelValue);
    auto *moves = new QVBoxLayout;
    moves->addStretch(1);
    moves->addWidget(btnToSelected);
    moves->addWidget(ToAvailable);
    moves->addSpacing(12);
    moves->addWidget(btnResetValues);
    moves->addStretch(1);
    auto *lists = new QGridLayout;
    lists->addWidget(lblAvailable, 0, 0);
    lists->addWidget(lblSelected, 0, 2);
    lists->addLayout(typed, 1, 0);
    lists->addWidget(lbAvailable, 2, 0);
    lists->addLayout(moves, 2, 1);
    lists->addWidget(lbSelected, 1, 2, 2, 1);
    lists->setColumnStretch(0, 1);
    lists->setColumnStretch(2, 1);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(btnSave);
    buttons->addWidget(btnCancel);
    buttons->addWidget(btnHelp);
    auto *box = new QVBoxLayout(this);
    box->addLayout(lists, 1);
    box->addLayout(buttons);

    Open(PortValueKind::BaudRates, {});
    InitialLoads();
}

void TFormSelector::InitialLoads()
{
    const QString kindName = selector_ ? S(ValueListName(selector_->kind())) : QString();
    setWindowTitle(kindName.isEmpty() ? S(kTitle) : S(kTitle) + " \u2013 " + kindName);
    lblAvailable->setText(S(kAvailable));
    lblSelected->setText(S(kSelected));
    edAvailableValues->setPlaceholderText(S(9259));
    btnAddValue->setToolTip(S(9254));
    btnDelValue->setToolTip(S(9255));
    btnToSelected->setToolTip(S(9256));
    ToAvailable->setToolTip(S(9257));
    btnResetValues->setToolTip(S(9258));
    btnSave->setText(S(kSave));
    btnCancel->setText(S(kCancel));
    btnHelp->setText(S(kHelp));
}

void TFormSelector::Open(PortValueKind kind, const std::vector<std::string> &current)
{
    selector_.emplace(kind, current);
    edAvailableValues->clear();
    Refill();
    InitialLoads();
}

std::optional<std::vector<std::string>> TFormSelector::Exec(PortValueKind kind, const std::vector<std::string> &current)
{
    Open(kind, current);
    if (exec() != QDialog::Accepted)
        return std::nullopt;
    return selectedValues();
}

std::vector<std::string> TFormSelector::selectedValues() const { return Items(lbSelected); }
std::vector<std::string> TFormSelector::availableValues() const { return Items(lbAvailable); }

void TFormSelector::Refill(const std::string &chooseAvailable, const std::string &chooseSelected)
{
    Fill(lbAvailable, selector_->available(), chooseAvailable);
    Fill(lbSelected, selector_->selected(), chooseSelected);
    UpdateButtons();
}

void TFormSelector::UpdateButtons()
{
    const bool available = !Chosen(lbAvailable).empty();
    btnDelValue->setEnabled(available);
    btnToSelected->setEnabled(available);
    ToAvailable->setEnabled(!Chosen(lbSelected).empty());
}

void TFormSelector::btnAddValueClick()
{
    const QString typed = edAvailableValues->text().trimmed();
    if (typed.isEmpty())
        return;
    switch (selector_->AddValue(typed.toStdString())) {
    case ValueSelector::AddOutcome::Invalid:
        // The text stays in the field, to be put right.
        prompter_.ShowMessage(Str(kWarningTitle), S(kNotAValue).arg(typed).toStdString(), Buttons::Ok, Icon::Warning);
        edAvailableValues->selectAll();
        edAvailableValues->setFocus();
        return;
    case ValueSelector::AddOutcome::AlreadyListed:
    case ValueSelector::AddOutcome::Added: {
        // Show where the value is, in whichever list holds it.
        const std::string value = *OfferableValue(selector_->kind(), typed.toStdString());
        Refill(value, value);
        edAvailableValues->clear();
        return;
    }
    }
}

void TFormSelector::btnDelValueClick()
{
    if (selector_->DeleteAvailable(Chosen(lbAvailable)))
        Refill();
}

void TFormSelector::btnToSelectedClick()
{
    const std::string value = Chosen(lbAvailable);
    if (selector_->ToSelected(value))
        Refill({}, value);
}

void TFormSelector::ToAvailableClick()
{
    const std::string value = Chosen(lbSelected);
    if (selector_->ToAvailable(value))
        Refill(value, {});
}

void TFormSelector::btnResetValuesClick()
{
    selector_->ResetAvailable();
    Refill();
}

void TFormSelector::btnSaveClick() { accept(); }

void TFormSelector::btnCancelClick() { reject(); }

} // namespace kestrel
