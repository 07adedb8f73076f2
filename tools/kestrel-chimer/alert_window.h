#pragma once
// The small window of a playing alert: which file plays, a line for trouble, and Stop.

#include <QString>
#include <QWidget>

class QLabel;
class QPushButton;

namespace kestrel::chimer {

class AlertWindow : public QWidget {
    Q_OBJECT
public:
    // langOffset is kLangGerman or kLangEnglish.
    AlertWindow(const QString &filePath, int langOffset, QWidget *parent = nullptr);

    // Shows why the file does not play; the window stays until the user stops it.
    void showError(const QString &reason);
    // The machine has no sound output: the alert is silent, but still there to be stopped.
    void showNoSoundOutput();

signals:
    // Stop pressed or the window closed: the alert is over.
    void stopRequested();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    int lang_;
    QLabel *message_;
};

} // namespace kestrel::chimer
