#pragma once
// A percent gauge of the control centre (line load, peak load, line quality):
// a bar that fills from the left, with the value written on it.

#include <QWidget>

namespace kestrel {

class LineGauge final : public QWidget {
    Q_OBJECT
public:
    LineGauge(const QString &name, QColor barColor, QWidget *parent = nullptr);

    // Values above 100 (the load byte is not clamped) draw a full bar with the true number.
    void setValue(int percent);
    [[nodiscard]] int value() const { return value_; }
    [[nodiscard]] QSize sizeHint() const override { return {150, 18}; }

protected:
    void paintEvent(QPaintEvent *) override;

private:
    QColor barColor_;
    int value_ = 0;
};

} // namespace kestrel
