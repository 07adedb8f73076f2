#pragma once
// The parameter pool: a list of the placeholders a trigger's command line may
// hold, one row per slot of the pool with its description in the current
// language. OK puts the chosen placeholder into the command's parameter field
// at its cursor (in place of a selection there); Cancel changes nothing.

#include <QDialog>

class QLineEdit;
class QPushButton;
class QTableWidget;

namespace kestrel {

class TFormTrigParams final : public QDialog {
    Q_OBJECT
public:
    explicit TFormTrigParams(QWidget *parent = nullptr);
    // Fixed texts and the descriptions in the current language.
    void InitialLoads();

    // The field OK inserts into.
    void setTarget(QLineEdit *target) { target_ = target; }
    // The placeholder of the selected row; empty for the empty slot or no selection.
    [[nodiscard]] QString selectedPlaceholder() const;

public slots:
    void btnOKClick();
    void btnCancelClick();

private:
    QTableWidget *sgParamPool;
    QPushButton *btnOK;
    QPushButton *btnCancel;
    QLineEdit *target_ = nullptr;
};

} // namespace kestrel
