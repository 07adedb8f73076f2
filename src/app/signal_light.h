#pragma once
// A round status lamp: lit in its colour or dark. Used for the line lights
// (LedD1 ... LedM3) and the recorder / view-hold lights.

#include <QColor>
#include <QWidget>

namespace kestrel {

class SignalLight final : public QWidget {
    Q_OBJECT
public:
    SignalLight(const QString &name, QColor litColor, QWidget *parent = nullptr);

    void setLit(bool on);
    [[nodiscard]] bool isLit() const { return lit_; }
    void toggle() { setLit(!lit_); }
    [[nodiscard]] QColor litColor() const { return litColor_; }
    [[nodiscard]] QSize sizeHint() const override { return {16, 16}; }

protected:
    void paintEvent(QPaintEvent *) override;

private:
    QColor litColor_;
    bool lit_ = false;
};

} // namespace kestrel
