#pragma once
// A one-line label that gives up width gracefully: a long text (a record file's
// path) is shortened in the middle with "…" instead of widening the window or
// being cut off at its end. text() and the tool tip keep the whole text.

#include <QLabel>

namespace kestrel {

class ElidedLabel final : public QLabel {
    Q_OBJECT
public:
    explicit ElidedLabel(QWidget *parent = nullptr);
    void setFullText(const QString &text);

    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace kestrel
