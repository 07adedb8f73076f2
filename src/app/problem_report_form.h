#pragma once
// "Report a problem": shows the composed report in an editable field. Send by
// e-mail hands a mailto: link with the text to the desktop's mail program,
// where the user sends it (or not); when no mail program opens, the window says
// so and the text can be copied or saved. Nothing leaves the machine from here.

#include <QDialog>
#include <QString>
#include <QUrl>
#include <functional>
#include <string>

class QLabel;
class QPlainTextEdit;
class QPushButton;

namespace kestrel {

class Prompter;

class TFormProblemReport final : public QDialog {
    Q_OBJECT
public:
    // Opens a URL with the desktop (true when a program took it); tests record instead.
    using UrlOpener = std::function<bool(const QUrl &)>;
    // The file to save to; empty when the user cancelled.
    using SavePathChooser = std::function<QString()>;

    explicit TFormProblemReport(Prompter &prompter, QWidget *parent = nullptr);

    void setReport(const std::string &text, const std::string &recipient);
    void setUrlOpener(UrlOpener opener) { openUrl_ = std::move(opener); }
    void setSavePathChooser(SavePathChooser chooser) { chooseSavePath_ = std::move(chooser); }
    [[nodiscard]] std::string reportText() const;
    void InitialLoads();

private slots:
    void btnSendMailClick();
    void btnCopyClick();
    void btnSaveClick();

private:
    void say(const QString &text);

    Prompter &prompter_;
    std::string recipient_;
    UrlOpener openUrl_;
    SavePathChooser chooseSavePath_;
    int lastSaid_ = 0; // text number of the status line, for a change of language
    QString lastArg_;

    QLabel *lblIntro;
    QLabel *lblRecipient;
    QPlainTextEdit *memReport;
    QLabel *lblStatus;
    QPushButton *btnSendMail;
    QPushButton *btnCopy;
    QPushButton *btnSave;
    QPushButton *btnClose;
};

} // namespace kestrel
