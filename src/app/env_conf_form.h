#pragma once
// The environment information dialog: the descriptive header of an environment
// (who made the set-up, for which customer, free description lines) on three
// pages. It edits the header of an Environment that the main window owns, field
// by field as the user types; OK keeps it (it goes to the file at the next save),
// Cancel after changes offers to take the header from the file again.

#include <QDialog>
#include <functional>
#include <string>
#include <vector>

#include "config/environment.h"

class QGroupBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QTabWidget;
class QWidget;

namespace kestrel {

class ElidedLabel;
class Prompter;

class TFormEnvConf final : public QDialog {
    Q_OBJECT
public:
    explicit TFormEnvConf(Prompter &prompter, QWidget *parent = nullptr);

    // The environment whose header the fields show and edit (kept by the caller, it must
    // outlive the dialog) and the file it was loaded from or is saved to.
    void setEnvironment(Environment *env, const std::string &fileName);
    // Called on every change a field makes: the main window's SetEnvironmentChanged.
    void setChangeHandler(std::function<void()> SetEnvironmentChanged);

    // Shows the dialog modally on its first page.
    void ShowFirstPage();
    // Takes the General, Customer and Description sections of the environment file into
    // the fields (and the environment). A missing file gives an empty header; a file that
    // cannot be read keeps the header as it was when the dialog was shown, and says so.
    void ReloadEnvSettings();
    void InitialLoads();

    // The dialog was cancelled and the header taken from the file again.
    [[nodiscard]] bool wasReloaded() const { return reloaded_; }

public slots:
    // The title bar's close button and Escape cancel too.
    void reject() override;

private slots:
    void btnOKClick();
    void btnCancelClick();

private:
    struct Field {
        QLabel *label;
        QLineEdit *edit;
        int textNo;
    };
    QWidget *newPage(const char *name);
    Field newField(QWidget *page, const QString &prefix, const char *key);
    void showHeader();
    void fieldChanged();

    Prompter &prompter_;
    Environment *env_ = nullptr;
    std::string fileName_;
    std::function<void()> setChanged_;
    bool edited_ = false;
    bool reloaded_ = false;
    // The header as the dialog was shown, for a file that cannot be read again.
    EnvGeneral shownGeneral_;
    EnvCustomer shownCustomer_;
    std::vector<std::string> shownDescription_;

    QGroupBox *gbEnvFile;
    ElidedLabel *lblEnvFileName;
    QTabWidget *PageControl1;
    QWidget *tabEnvGeneral;
    QWidget *tabEnvCustomer;
    QWidget *tabEnvDescription;
    QPlainTextEdit *memEnvDescription;
    std::vector<Field> generalFields_;  // edtGenTitle ... edtGenEmail, in the order of the file
    std::vector<Field> customerFields_; // edtCustCompany ... edtCustEmail
    QPushButton *btnOK;
    QPushButton *btnCancel;
    QPushButton *btnHelp;
};

} // namespace kestrel
