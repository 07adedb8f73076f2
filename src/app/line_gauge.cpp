#include "app/line_gauge.h"

#include <QPainter>

namespace kestrel {

LineGauge::LineGauge(const QString &name, QColor barColor, QWidget *parent) : QWidget(parent), barColor_(barColor)
{
    setObjectName(name);
    setMinimumSize(90, 16);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void LineGauge::setValue(int percent)
{
    percent = std::max(percent, 0);
    if (percent == value_)
        return;
    value_ = percent;
    update();
}

void LineGauge::paintEvent(QPaintEvent *)
{
    QPainter p(this);
    const QRect r = rect().adjusted(0, 0, -1, -1);
    p.setPen(palette().color(QPalette::Mid));
    p.setBrush(palette().color(QPalette::Base));
    p.drawRect(r);
    const int filled = (r.width() - 1) * std::min(value_, 100) / 100;
    if (filled > 0)
        p.fillRect(QRect(r.left() + 1, r.top() + 1, filled, r.height() - 1), barColor_);
    p.setPen(palette().color(QPalette::Text));
    p.drawText(r, Qt::AlignCenter, QString::number(value_) + " %");
}

} // namespace kestrel
