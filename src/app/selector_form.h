#pragma once
// The value-list editor of the options dialog: the values a list may take
// ("Available", with a field to type a new one, "+" and "-") and the ones it
// offers ("Selected"). ">" and "<" move the chosen value across, "RES" fills the
// available list with the standard values again, "Speichern" hands back the
// selected list in its order. The list logic is ValueSelector's.

#include <QDialog>
#include <optional>
#include <string>
#include <vector>

#include "config/value_selector.h"

class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;

namespace kestrel {

class Prompter;

class TFormSelector final : public QDialog {
    Q_OBJECT
public:
    explicit TFormSelector(Prompter &prompter, QWidget *parent = nullptr);

    // Fixed texts in the current language.
    void InitialLoads();

    // Fills both lists for a kind from the values of its field.
    void Open(PortValueKind kind, const std::vector<std::string> &current);
    // Modal: the selected list after "Speichern", nothing after "Abbrechen".
    std::optional<std::vector<std::string>> Exec(PortValueKind kind, const std::vector<std::string> &current);

    [[nodiscard]] std::vector<std::string> selectedValues() const;
    [[nodiscard]] std::vector<std::string> availableValues() const;

public slots:
    void btnAddValueClick();
    void btnDelValueClick();
    void btnToSelectedClick();
    void ToAvailableClick();
    void btnResetValuesClick();
    void btnSaveClick();
    void btnCancelClick();

private:
    void Refill(const std::string &chooseAvailable = {}, const std::string &chooseSelected = {});
    void UpdateButtons();

    Prompter &prompter_;
    std::optional<ValueSelector> selector_;
    QLabel *lblAvailable;
    QLabel *lblSelected;
    QLineEdit *edAvailableValues;
    QListWidget *lbAvailable;
    QListWidget *lbSelected;
    QPushButton *btnAddValue;
    QPushButton *btnDelValue;
    QPushButton *btnToSelected;
    QPushButton *ToAvailable;
    QPushButton *btnResetValues;
    QPushButton *btnSave;
    QPushButton *btnCancel;
    QPushButton *btnHelp;
};

} // namespace kestrel
