#include "app/trigger_panel.h"

#include <QAction>
#include <QApplication>
#include <QEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionButton>
#include <QTableWidget>
#include <QToolButton>
#include <QVBoxLayout>

#include "base/prompt.h"
#include "base/string_table.h"
#include "config/program_config.h"
#include "triggers/trigger_texts.h"

namespace kestrel {

namespace {

QString S(int n) { return QString::fromStdString(Str(n)); }

constexpr int kStateClickWidth = 16; // a click this far into a row switches the trigger
constexpr std::uint32_t kNotRecognised = UINT32_MAX;

// The check mark of an active trigger, as the style draws a check box.
QIcon StateImage(QWidget *w, bool on)
{
    const qreal ratio = w->devicePixelRatioF();
    QPixmap pm(QSize(14, 14) * ratio);
    pm.setDevicePixelRatio(ratio);
    pm.fill(Qt::transparent);
    QPainter p(&pm);
    QStyleOptionButton opt;
    opt.rect = QRect(0, 0, 14, 14);
    opt.state = QStyle::State_Enabled | (on ? QStyle::State_On : QStyle::State_Off);
    opt.palette = w->palette();
    w->style()->drawPrimitive(QStyle::PE_IndicatorCheckBox, &opt, &p, w);
    return QIcon(pm);
}

// Button glyphs, in button order (insert ... reset); the font has them all.
constexpr const char16_t *kGlyphs[] = {u"+", u"\u2212", u"\u25B2", u"\u25BC", u"\u270E",
                                       u"\u2611", u"\u2610", u"\u21C4", u"\u2194"};

} // namespace

TriggerPanel::TriggerPanel(Prompter &prompter, QWidget *parent) : QFrame(parent), prompter_(prompter)
{
    setObjectName("pnlTriggerList");
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(2);

    auto *buttonRow = new QHBoxLayout;
    buttonRow->setSpacing(1);
    static const char *names[] = {"btnInsertTrigger",     "btnRemoveTrigger",      "btnMoveTriggerUp",
                                  "btnMoveTriggerDown",   "btnEditTrigger",        "btnEnableAllTriggers",
                                  "btnDisableAllTriggers", "btnReverseAllTriggers", "btnResetTrigGrid"};
    using Slot = void (TriggerPanel::*)();
    static const Slot handlers[] = {&TriggerPanel::btnInsertTriggerClick,      &TriggerPanel::btnRemoveTriggerClick,
                                 &TriggerPanel::btnMoveTriggerUpClick,      &TriggerPanel::btnMoveTriggerDownClick,
                                 &TriggerPanel::btnEditTriggerClick,        &TriggerPanel::btnEnableAllTriggersClick,
                                 &TriggerPanel::btnDisableAllTriggersClick, &TriggerPanel::btnReverseAllTriggersClick,
                                 &TriggerPanel::btnResetTrigGridClick};
    for (std::size_t i = 0; i < std::size(names); ++i) {
        auto *b = new QToolButton(this);
        b->setObjectName(names[i]);
        b->setText(QString::fromUtf16(kGlyphs[i]));
        b->setAutoRaise(true);
        connect(b, &QToolButton::clicked, this, handlers[i]);
        buttonRow->addWidget(b);
        buttons_.push_back(b);
    }
    buttonRow->addStretch(1);
    btnTrigListMinMax = new QToolButton(this);
    btnTrigListMinMax->setObjectName("btnTrigListMinMax");
    btnTrigListMinMax->setText(QString::fromUtf16(u"\u25BE"));
    btnTrigListMinMax->setAutoRaise(true);
    connect(btnTrigListMinMax, &QToolButton::clicked, this, &TriggerPanel::minMaxToggled);
    buttonRow->addWidget(btnTrigListMinMax);
    column->addLayout(buttonRow);

    TriggerList_ = new QTableWidget(0, kTriggerListColumns, this);
    TriggerList_->setObjectName("TriggerList");
    TriggerList_->setSelectionBehavior(QAbstractItemView::SelectRows);
    TriggerList_->setSelectionMode(QAbstractItemView::SingleSelection);
    TriggerList_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    TriggerList_->setShowGrid(true);
    TriggerList_->setWordWrap(false);
    TriggerList_->verticalHeader()->hide();
    TriggerList_->verticalHeader()->setDefaultSectionSize(TriggerList_->fontMetrics().height() + 6);
    TriggerList_->horizontalHeader()->setHighlightSections(false);
    TriggerList_->horizontalHeader()->setStretchLastSection(false);
    TriggerList_->viewport()->installEventFilter(this);
    connect(TriggerList_, &QTableWidget::cellDoubleClicked, this, [this] { btnEditTriggerClick(); });
    column->addWidget(TriggerList_, 1);
    setColumnWidths({});
    InitialLoads();
}

void TriggerPanel::bindActions(const std::vector<QAction *> &actions)
{
    for (std::size_t i = 0; i < actions.size() && i < buttons_.size(); ++i) {
        QAction *a = actions[i];
        QToolButton *b = buttons_[i];
        if (a == nullptr)
            continue;
        disconnect(b, &QToolButton::clicked, this, nullptr);
        connect(b, &QToolButton::clicked, a, &QAction::trigger);
        auto follow = [a, b] { b->setEnabled(a->isEnabled()); };
        connect(a, &QAction::changed, b, follow);
        follow();
    }
}

void TriggerPanel::InitialLoads()
{
    for (std::size_t i = 0; i < buttons_.size(); ++i)
        buttons_[i]->setToolTip(S(TriggerPanelMsg::FirstHint + static_cast<int>(i)));
    btnTrigListMinMax->setToolTip(S(TriggerPanelMsg::FirstHint + 9));
    QStringList headers;
    for (int c = 0; c < kTriggerListColumns; ++c)
        headers << S(TriggerPanelMsg::FirstColumn + c);
    TriggerList_->setHorizontalHeaderLabels(headers);
    if (triggers_ != nullptr) {
        for (std::size_t i = 0; i < triggers_->size(); ++i)
            fillRow(static_cast<int>(i), (*triggers_)[i]); // condition and event texts change language
    }
}

void TriggerPanel::setTriggers(TriggerList *list)
{
    triggers_ = list;
    refill();
}

void TriggerPanel::refill()
{
    const int count = triggers_ != nullptr ? static_cast<int>(triggers_->size()) : 0;
    TriggerList_->setRowCount(count);
    recognised_.resize(static_cast<std::size_t>(count), kNotRecognised);
    for (int row = 0; row < count; ++row)
        fillRow(row, (*triggers_)[static_cast<std::size_t>(row)]);
}

void TriggerPanel::fillRow(int row, const TriggerDef &t)
{
    const std::size_t index = static_cast<std::size_t>(t.number - 1);
    const std::uint32_t mp = index < recognised_.size() ? recognised_[index] : kNotRecognised;
    const QString texts[kTriggerListColumns] = {
        QString::fromStdString(t.Name),
        QString::number(t.number),
        QString::fromStdString(TriggerTypeText(t.Type)),
        QString::fromStdString(TriggerEventText(t.Event)),
        QString::fromStdString(t.Description).simplified(), // one line per row
        mp == kNotRecognised ? QString() : QString::number(mp),
    };
    for (int c = 0; c < kTriggerListColumns; ++c) {
        QTableWidgetItem *item = TriggerList_->item(row, c);
        if (item == nullptr) {
            item = new QTableWidgetItem;
            TriggerList_->setItem(row, c, item);
        }
        item->setText(texts[c]);
        if (c == 1 || c == 5)
            item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    }
    TriggerList_->item(row, 0)->setIcon(StateImage(TriggerList_, t.Active));
    TriggerList_->item(row, 0)->setData(Qt::UserRole, t.Active);
}

std::optional<std::size_t> TriggerPanel::selectedIndex() const
{
    const int row = TriggerList_->currentRow();
    if (row < 0 || triggers_ == nullptr || static_cast<std::size_t>(row) >= triggers_->size() ||
        TriggerList_->selectedItems().isEmpty())
        return std::nullopt;
    return static_cast<std::size_t>(row);
}

void TriggerPanel::select(std::size_t index)
{
    TriggerList_->setCurrentCell(static_cast<int>(index), 0);
    TriggerList_->selectRow(static_cast<int>(index));
}

void TriggerPanel::afterChange(std::optional<std::size_t> index)
{
    // Numbers move with the rows; what fired in this recording stays with the trigger that fired.
    refill();
    if (index)
        select(*index);
    emit changed();
}

void TriggerPanel::btnInsertTriggerClick()
{
    if (recording_ || triggers_ == nullptr || !editor_)
        return;
    std::optional<TriggerDef> made = editor_(nullptr);
    if (!made)
        return;
    const std::size_t at = triggers_->Insert(std::move(*made), selectedIndex());
    recognised_.insert(recognised_.begin() + static_cast<std::ptrdiff_t>(std::min(at, recognised_.size())),
                       kNotRecognised);
    afterChange(at);
}

void TriggerPanel::btnEditTriggerClick()
{
    const auto index = selectedIndex();
    if (recording_ || !index || !editor_)
        return;
    std::optional<TriggerDef> edited = editor_(&(*triggers_)[*index]);
    if (!edited)
        return;
    triggers_->Replace(*index, std::move(*edited));
    afterChange(index);
}

void TriggerPanel::btnRemoveTriggerClick()
{
    const auto index = selectedIndex();
    if (recording_ || !index)
        return;
    if (prompter_.ShowMessage(Str(7433), Str(TriggerPanelMsg::ConfirmRemove), Buttons::YesNo, Icon::Confirmation) !=
        MsgResult::Yes)
        return;
    triggers_->Remove(*index);
    if (*index < recognised_.size())
        recognised_.erase(recognised_.begin() + static_cast<std::ptrdiff_t>(*index));
    std::optional<std::size_t> next;
    if (!triggers_->empty())
        next = std::min(*index, triggers_->size() - 1);
    afterChange(next);
}

void TriggerPanel::btnMoveTriggerUpClick()
{
    const auto index = selectedIndex();
    if (recording_ || !index || *index == 0)
        return; // the first cannot move up
    const std::size_t to = triggers_->MoveUp(*index);
    std::swap(recognised_[*index], recognised_[to]);
    afterChange(to);
}

void TriggerPanel::btnMoveTriggerDownClick()
{
    const auto index = selectedIndex();
    if (recording_ || !index || *index + 1 >= triggers_->size())
        return; // the last cannot move down
    const std::size_t to = triggers_->MoveDown(*index);
    std::swap(recognised_[*index], recognised_[to]);
    afterChange(to);
}

void TriggerPanel::btnEnableAllTriggersClick()
{
    if (recording_ || triggers_ == nullptr)
        return;
    triggers_->EnableAll();
    afterChange(selectedIndex());
}

void TriggerPanel::btnDisableAllTriggersClick()
{
    if (recording_ || triggers_ == nullptr)
        return;
    triggers_->DisableAll();
    afterChange(selectedIndex());
}

void TriggerPanel::btnReverseAllTriggersClick()
{
    if (recording_ || triggers_ == nullptr)
        return;
    triggers_->ReverseAll();
    afterChange(selectedIndex());
}

std::vector<int> TriggerPanel::columnWidths() const
{
    std::vector<int> widths;
    for (int c = 0; c < kTriggerListColumns; ++c)
        widths.push_back(TriggerList_->columnWidth(c));
    return widths;
}

void TriggerPanel::setColumnWidths(const std::vector<int> &widths)
{
    for (int c = 0; c < kTriggerListColumns; ++c) {
        const int w = static_cast<std::size_t>(c) < widths.size() ? widths[static_cast<std::size_t>(c)] : 0;
        TriggerList_->setColumnWidth(c, w > 0 ? w : kDefaultTriggerListWidths[static_cast<std::size_t>(c)]);
    }
}

void TriggerPanel::btnResetTrigGridClick()
{
    int used = 0;
    for (int c = 0; c < kTriggerListColumns - 1; ++c) {
        TriggerList_->setColumnWidth(c, kDefaultTriggerListWidths[static_cast<std::size_t>(c)]);
        used += kDefaultTriggerListWidths[static_cast<std::size_t>(c)];
    }
    const int rest = TriggerList_->viewport()->width() - used - 4;
    TriggerList_->setColumnWidth(kTriggerListColumns - 1,
                                 std::max(rest, kDefaultTriggerListWidths[kTriggerListColumns - 1]));
}

void TriggerPanel::clearRecognised()
{
    std::fill(recognised_.begin(), recognised_.end(), kNotRecognised);
    for (int row = 0; row < TriggerList_->rowCount(); ++row) {
        if (QTableWidgetItem *item = TriggerList_->item(row, kTriggerListColumns - 1))
            item->setText({});
    }
}

void TriggerPanel::setRecognised(int number, std::uint32_t mp)
{
    const std::size_t index = static_cast<std::size_t>(number - 1);
    if (number < 1 || index >= recognised_.size())
        return;
    recognised_[index] = mp;
    if (QTableWidgetItem *item = TriggerList_->item(static_cast<int>(index), kTriggerListColumns - 1))
        item->setText(QString::number(mp));
}

bool TriggerPanel::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == TriggerList_->viewport() && event->type() == QEvent::MouseButtonPress) {
        const auto *mouse = static_cast<QMouseEvent *>(event);
        const QPoint at = mouse->position().toPoint();
        const int row = TriggerList_->rowAt(at.y());
        const int rowStart = TriggerList_->columnViewportPosition(0);
        if (mouse->button() == Qt::LeftButton && row >= 0 && at.x() - rowStart < kStateClickWidth && !recording_ &&
            triggers_ != nullptr && static_cast<std::size_t>(row) < triggers_->size()) {
            TriggerDef &t = (*triggers_)[static_cast<std::size_t>(row)];
            triggers_->SetActive(static_cast<std::size_t>(row), !t.Active);
            fillRow(row, t);
            emit changed();
        }
    }
    return QFrame::eventFilter(watched, event);
}

} // namespace kestrel
