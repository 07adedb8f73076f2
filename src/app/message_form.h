#pragma once
// The program's own message box: a title line, the message, an icon and up
// to three buttons, in the language of the user interface. It answers the
// Prompter interface for the whole program. While it waits for an answer the
// event loop keeps running, so capture goes on behind an open question; but
// the box is modal for the whole program, so nothing else can be done (no key,
// no button, no menu of another window) until it is answered, and only one box
// is open at a time.

#include <QDialog>
#include <QPixmap>
#include <array>

#include "base/prompt.h"

class QLabel;
class QPushButton;
class QProgressBar;
class QEventLoop;

namespace kestrel {

class TMessageForm final : public QDialog, public Prompter {
    Q_OBJECT
public:
    explicit TMessageForm(QWidget *parent = nullptr);

    // Blocks the caller (not the event loop) until a button is pressed.
    int ShowMessage(const std::string &title, const std::string &text, int buttons, int icon) override;
    void NormalizeTopMosts() override;
    void RestoreTopMosts() override;

    // Fixed texts in the current language.
    void InitialLoads();

    [[nodiscard]] int result() const { return result_; }
    [[nodiscard]] bool isWaiting() const { return waiting_; }
    // The image shown for an icon kind; null for unknown kinds.
    [[nodiscard]] static QPixmap IconImage(int iconKind);

signals:
    // A button, Escape or the close box gave the answer.
    void answered();

public slots:
    void btnClicked();
    void reject() override; // Escape or the window's close box

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    QLabel *lblMessageTitle;
    QLabel *lblMessageText;
    QPushButton *btn2;
    QPushButton *btn1;
    QPushButton *btn3;
    QLabel *Image1;
    std::array<QPixmap, 4> ImageList1; // information, confirmation, warning, error
    QProgressBar *ProgressBar1;        // part of the form, unused by the box itself

    int buttons_ = 0;
    int result_ = 0;
    bool waiting_ = false;
    QEventLoop *waitLoop_ = nullptr;
    QList<QWidget *> loweredTopMosts_;
};

} // namespace kestrel
