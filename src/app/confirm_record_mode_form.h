#pragma once
// Asks how to record into a record file that already holds data: keep it and
// append (preselected) or replace it. Shown when recording starts on a
// non-empty file while neither the append nor the replace button is down.

#include <QDialog>

class QGroupBox;
class QPushButton;
class QRadioButton;

namespace kestrel {

class TFormConfirmRecordMode final : public QDialog {
    Q_OBJECT
public:
    explicit TFormConfirmRecordMode(QWidget *parent = nullptr);
    void InitialLoads();
    // 1 append, 2 replace, 0 cancelled; the value the mode buttons would give.
    [[nodiscard]] int recordMode() const { return recordMode_; }
    // Shows the dialog modally and returns recordMode().
    int ask();

private slots:
    void btnOKClick();
    void btnCancelClick();

private:
    QGroupBox *gbExistingData;
    QRadioButton *rbRecReplace;
    QRadioButton *rbRecAppend;
    QPushButton *btnOK;
    QPushButton *btnCancel;
    QPushButton *btnHelp;
    int recordMode_ = 0;
};

} // namespace kestrel
