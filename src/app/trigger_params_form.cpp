#include "app/trigger_params_form.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include "app/help_request.h"
#include "base/string_table.h"
#include "trigger_engine/command_params.h"

namespace kestrel {

namespace {
QString S(int n) { return QString::fromStdString(Str(n)); }
constexpr int kTitle = 7451;
constexpr int kPlaceholderHeading = 7817;
constexpr int kDescriptionHeading = 7818;
} // namespace

TFormTrigParams::TFormTrigParams(QWidget *parent) : QDialog(parent)
{
    setObjectName("TFormTrigParams");
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    const auto &pool = ParameterPool();
    sgParamPool = new QTableWidget(static_cast<int>(pool.size()), 2, this);
    sgParamPool->setObjectName("sgParamPool");
    sgParamPool->setSelectionBehavior(QAbstractItemView::SelectRows);
    sgParamPool->setSelectionMode(QAbstractItemView::SingleSelection);
    sgParamPool->setEditTriggers(QAbstractItemView::NoEditTriggers);
    sgParamPool->verticalHeader()->hide();
    sgParamPool->horizontalHeader()->setStretchLastSection(true);
    sgParamPool->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    sgParamPool->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    for (int row = 0; row < static_cast<int>(pool.size()); ++row) {
        sgParamPool->setItem(row, 0, new QTableWidgetItem(QString::fromLatin1(pool[static_cast<std::size_t>(row)].placeholder)));
        sgParamPool->setItem(row, 1, new QTableWidgetItem);
    }
    connect(sgParamPool, &QTableWidget::cellDoubleClicked, this, &TFormTrigParams::btnOKClick);

    btnOK = new QPushButton(this);
    btnOK->setObjectName("btnOK");
    btnOK->setDefault(true);
    btnCancel = new QPushButton(this);
    btnCancel->setObjectName("btnCancel");
    connect(btnOK, &QPushButton::clicked, this, &TFormTrigParams::btnOKClick);
    connect(btnCancel, &QPushButton::clicked, this, &TFormTrigParams::btnCancelClick);

    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(btnOK);
    buttons->addWidget(btnCancel);
    auto *box = new QVBoxLayout(this);
    box->addWidget(sgParamPool);
    box->addLayout(buttons);
    box->setSizeConstraint(QLayout::SetFixedSize);
    InstallHelpKey(this); // the editor's page: the placeholders are described there
    sgParamPool->selectRow(0);
    InitialLoads();
}

void TFormTrigParams::InitialLoads()
{
    setWindowTitle(S(kTitle));
    sgParamPool->setHorizontalHeaderLabels({S(kPlaceholderHeading), S(kDescriptionHeading)});
    const auto &pool = ParameterPool();
    for (int row = 0; row < static_cast<int>(pool.size()); ++row) {
        const int text = pool[static_cast<std::size_t>(row)].description;
        sgParamPool->item(row, 1)->setText(text == 0 ? QString() : S(text));
    }
    btnOK->setText(S(6006));
    btnCancel->setText(S(7485));
    // Every row and both columns whole, without scrolling.
    sgParamPool->resizeColumnsToContents();
    sgParamPool->resizeRowsToContents();
    const int padding = 24;
    sgParamPool->setColumnWidth(0, sgParamPool->columnWidth(0) + padding);
    sgParamPool->setColumnWidth(1, sgParamPool->columnWidth(1) + padding);
    const int frame = 2 * sgParamPool->frameWidth();
    int height = sgParamPool->horizontalHeader()->sizeHint().height() + frame;
    for (int row = 0; row < sgParamPool->rowCount(); ++row)
        height += sgParamPool->rowHeight(row);
    sgParamPool->setFixedSize(sgParamPool->columnWidth(0) + sgParamPool->columnWidth(1) + frame, height);
}

QString TFormTrigParams::selectedPlaceholder() const
{
    const QList<QTableWidgetItem *> chosen = sgParamPool->selectedItems();
    for (const QTableWidgetItem *item : chosen)
        if (item->column() == 0)
            return item->text();
    return {};
}

void TFormTrigParams::btnOKClick()
{
    if (target_ != nullptr)
        target_->insert(selectedPlaceholder());
    accept();
}

void TFormTrigParams::btnCancelClick() { reject(); }

} // namespace kestrel
