#include "app/flow_layout.h"

#include <QWidget>
#include <algorithm>

namespace kestrel {

FlowLayout::FlowLayout(QWidget *parent, int spacing) : QLayout(parent) { setSpacing(spacing); }

FlowLayout::~FlowLayout()
{
    while (QLayoutItem *item = takeAt(0))
        delete item;
}

void FlowLayout::addItem(QLayoutItem *item) { items_.append(item); }

QLayoutItem *FlowLayout::takeAt(int index)
{
    return index >= 0 && index < items_.size() ? items_.takeAt(index) : nullptr;
}

QSize FlowLayout::sizeHint() const
{
    // Everything on one row.
    const QMargins m = contentsMargins();
    int width = 0, height = 0;
    for (const QLayoutItem *item : items_) {
        if (item->isEmpty())
            continue;
        width += item->sizeHint().width() + (width > 0 ? spacing() : 0);
        height = std::max(height, item->sizeHint().height());
    }
    return {width + m.left() + m.right(), height + m.top() + m.bottom()};
}

QSize FlowLayout::minimumSize() const
{
    // As narrow as the widest single item.
    QSize size;
    for (const QLayoutItem *item : items_)
        if (!item->isEmpty())
            size = size.expandedTo(item->minimumSize()).expandedTo(item->sizeHint());
    const QMargins m = contentsMargins();
    return size + QSize(m.left() + m.right(), m.top() + m.bottom());
}

void FlowLayout::setGeometry(const QRect &rect)
{
    QLayout::setGeometry(rect);
    arrange(rect, true);
}

int FlowLayout::arrange(const QRect &rect, bool place) const
{
    const QRect area = rect.marginsRemoved(contentsMargins());
    int x = area.x(), y = area.y(), rowHeight = 0;
    for (QLayoutItem *item : items_) {
        if (item->isEmpty())
            continue;
        const QSize size = item->sizeHint();
        if (x > area.x() && x + size.width() > area.right() + 1) { // next row
            x = area.x();
            y += rowHeight + spacing();
            rowHeight = 0;
        }
        if (place)
            item->setGeometry(QRect(QPoint(x, y), size));
        x += size.width() + spacing();
        rowHeight = std::max(rowHeight, size.height());
    }
    const QMargins m = contentsMargins();
    return y + rowHeight - rect.y() + m.bottom();
}

} // namespace kestrel
