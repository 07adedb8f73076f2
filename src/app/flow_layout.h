#pragma once
// Lays its widgets out in rows, left to right, starting a new row when the
// next one would not fit: the tool bars wrap onto a second row on a narrow
// screen instead of widening the window past it.

#include <QLayout>
#include <QList>

namespace kestrel {

class FlowLayout final : public QLayout {
public:
    explicit FlowLayout(QWidget *parent, int spacing = 2);
    ~FlowLayout() override;

    void addItem(QLayoutItem *item) override;
    [[nodiscard]] int count() const override { return static_cast<int>(items_.size()); }
    [[nodiscard]] QLayoutItem *itemAt(int index) const override { return items_.value(index); }
    QLayoutItem *takeAt(int index) override;

    [[nodiscard]] Qt::Orientations expandingDirections() const override { return {}; }
    [[nodiscard]] bool hasHeightForWidth() const override { return true; }
    [[nodiscard]] int heightForWidth(int width) const override { return arrange(QRect(0, 0, width, 0), false); }
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSize() const override;
    void setGeometry(const QRect &rect) override;

private:
    // Places the items in rect (or only measures); returns the height used.
    int arrange(const QRect &rect, bool place) const;

    QList<QLayoutItem *> items_;
};

} // namespace kestrel
