#include "app/signal_light.h"

#include <QPainter>
#include <QRadialGradient>

namespace kestrel {

SignalLight::SignalLight(const QString &name, QColor litColor, QWidget *parent)
    : QWidget(parent), litColor_(litColor)
{
    setObjectName(name);
    setMinimumSize(14, 14);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void SignalLight::setLit(bool on)
{
    if (on == lit_)
        return;
    lit_ = on;
    update();
}

void SignalLight::paintEvent(QPaintEvent *)
{
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    const qreal d = std::min(width(), height()) - 2.0;
    const QRectF r((width() - d) / 2.0, (height() - d) / 2.0, d, d);
    const QColor base = lit_ ? litColor_ : litColor_.darker(420);
    QRadialGradient g(r.center() - QPointF(d / 5, d / 5), d * 0.75);
    g.setColorAt(0.0, lit_ ? base.lighter(170) : base.lighter(160));
    g.setColorAt(1.0, base);
    p.setBrush(g);
    p.setPen(QPen(QColor(40, 40, 40), 1.0));
    p.drawEllipse(r);
}

} // namespace kestrel
