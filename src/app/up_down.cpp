#include "app/up_down.h"

#include <QLineEdit>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace kestrel {

UpDown::UpDown(QWidget *parent) : QWidget(parent)
{
    btnUp = new QToolButton(this);
    btnUp->setObjectName("btnUp");
    btnUp->setArrowType(Qt::UpArrow);
    btnDown = new QToolButton(this);
    btnDown->setObjectName("btnDown");
    btnDown->setArrowType(Qt::DownArrow);
    for (QToolButton *b : {btnUp, btnDown}) {
        b->setAutoRepeat(true);
        b->setFocusPolicy(Qt::NoFocus);
        b->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
        b->setFixedWidth(18);
    }
    auto *box = new QVBoxLayout(this);
    box->setContentsMargins(0, 0, 0, 0);
    box->setSpacing(0);
    box->addWidget(btnUp);
    box->addWidget(btnDown);
    connect(btnUp, &QToolButton::clicked, this, [this] { step(1); });
    connect(btnDown, &QToolButton::clicked, this, [this] { step(-1); });
}

void UpDown::step(int by)
{
    if (associate_ == nullptr)
        return;
    bool ok = false;
    const std::int64_t now = associate_->text().toLongLong(&ok);
    const std::int64_t next = std::clamp<std::int64_t>(ok ? now + by : min_, min_, max_);
    associate_->setText(QString::number(next));
    emit stepped();
}

} // namespace kestrel
