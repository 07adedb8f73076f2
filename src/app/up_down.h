#pragma once
// Two small arrow buttons that step a number field by one within a range
// (64-bit: an MP number of a long recording fits).

#include <QWidget>

#include <cstdint>

class QLineEdit;
class QToolButton;

namespace kestrel {

class UpDown final : public QWidget {
    Q_OBJECT
public:
    explicit UpDown(QWidget *parent = nullptr);
    void setRange(std::int64_t min, std::int64_t max) { min_ = min, max_ = max; }
    // The field it steps; its text is read and written as a number.
    void setAssociate(QLineEdit *field) { associate_ = field; }
    void step(int by);

signals:
    void stepped(); // the field holds the new number

private:
    QToolButton *btnUp;
    QToolButton *btnDown;
    QLineEdit *associate_ = nullptr;
    std::int64_t min_ = 0;
    std::int64_t max_ = 100;
};

} // namespace kestrel
