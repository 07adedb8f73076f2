#pragma once
// The small progress window of the start-up: one line of text and a bar.

#include <QDialog>

class QLabel;
class QProgressBar;

namespace kestrel {

class TFormProgress final : public QDialog {
    Q_OBJECT
public:
    explicit TFormProgress(QWidget *parent = nullptr);
    // Sets the text and the percentage and lets the window paint.
    void step(const QString &text, int percent);
    [[nodiscard]] QString text() const;
    [[nodiscard]] int percent() const;

private:
    QLabel *lblProgress;
    QProgressBar *pbProgress;
};

} // namespace kestrel
