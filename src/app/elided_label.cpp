#include "app/elided_label.h"

#include <QPainter>
#include <QStyle>

namespace kestrel {

ElidedLabel::ElidedLabel(QWidget *parent) : QLabel(parent)
{
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
}

void ElidedLabel::setFullText(const QString &text)
{
    setText(text);
    setToolTip(text);
}

QSize ElidedLabel::minimumSizeHint() const
{
    // Room for a few characters and the ellipsis; the rest is elided.
    return {fontMetrics().horizontalAdvance(QStringLiteral("M…M")) + 2 * margin(), QLabel::minimumSizeHint().height()};
}

void ElidedLabel::paintEvent(QPaintEvent *)
{
    QPainter p(this);
    const QRect r = contentsRect().adjusted(margin(), margin(), -margin(), -margin());
    const QString shown = fontMetrics().elidedText(text(), Qt::ElideMiddle, r.width());
    style()->drawItemText(&p, r, static_cast<int>(alignment()), palette(), isEnabled(), shown, foregroundRole());
}

} // namespace kestrel
