#pragma once
// The options dialog: start-up switches, the style (applied at once), the
// interface (ports A and B, the hardware profile with its name, maker and the
// four value lists) and the update switch. OK confirms the profile through
// ConfirmHardwareProfile (an existing file is overwritten only after "yes";
// "no" shows the file's values again and the dialog stays open), then hands the
// choice to the window, which applies it and saves the configuration. Abort
// reads the profile in use again, puts the style back and changes nothing else.
// Escape and the close box are Abort.

#include <QDialog>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "config/hardware_profile.h"
#include "config/program_config.h"
#include "config/value_selector.h"

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QTabWidget;

namespace kestrel {

class Prompter;
class TFormSelector;

// The pages of pcOptions.
namespace OptionsPage {
inline constexpr int ProgStart = 0;
inline constexpr int Display = 1;
inline constexpr int Interface = 2;
inline constexpr int Update = 3;
} // namespace OptionsPage

// What the dialog opens with.
struct OptionsSetup {
    std::filesystem::path dataFolder;
    ProgramConfig config;           // profile in use, offered lists, switches, style slots
    std::vector<std::string> ports; // the devices A and B may use
    int portA = 0;                  // indexes into ports
    int portB = 0;
    int style = 0;                  // the slot in use
};

// What OK hands to the window.
struct OptionsChoice {
    std::string profileName; // the profile in use from now on (file name in profiles/)
    HardwareProfile profile; // its values; its lists are the offered values from now on
    bool beginRecordAtStart = false;
    bool displayHoldAtStart = false;
    bool checkForUpdates = false;
    int portA = 0;
    int portB = 0;
    int style = 0;
};

class TFormOptions final : public QDialog {
    Q_OBJECT
public:
    explicit TFormOptions(Prompter &prompter, QWidget *parent = nullptr);

    // Fixed texts in the current language.
    void InitialLoads();

    // FormShow: the profiles of profiles/, the profile in use with the offered lists,
    // the ports, the style and the switches; the page to show first.
    void Open(const OptionsSetup &setup, int page = OptionsPage::ProgStart);

    // Applies a style at once; false when it could not be used (the window said why).
    std::function<bool(int slot)> applyStyle;
    // OK, after the profile was confirmed: the window applies the choice and saves.
    std::function<void(const OptionsChoice &)> confirmed;

    // The profile fields as they stand (name and maker, the four lists, the port entries kept).
    [[nodiscard]] HardwareProfile FieldsProfile() const;

public slots:
    void btnOKClick();
    void btnAbortClick();
    void reject() override; // Escape and the close box

private slots:
    void cbThemeChange();
    void cbSelHwProfileSelect();
    void btnSelectBaudRatesClick();
    void btnEditDatabitsClick();
    void btnEditStopbitsClick();

private:
    void ShowProfile(const HardwareProfile &profile);
    void FillProfileList(const std::vector<std::string> &names, const std::string &current);
    void FillPorts();
    void EditList(PortValueKind kind);
    [[nodiscard]] int chosenStyle() const;
    [[nodiscard]] QString listText(PortValueKind kind) const;
    void setListText(PortValueKind kind, const std::vector<std::string> &values);
    void showProblem(int title, const std::string &text, int icon);

    Prompter &prompter_;
    OptionsSetup setup_;
    std::vector<std::string> profilePorts_; // Port1 ... Port16 of the profile shown: kept, not shown
    int styleShown_ = 0; // the slot whose look is on the screen now
    TFormSelector *FormSelector = nullptr; // made when first needed

    QTabWidget *pcOptions;
    QWidget *tabProgStart;
    QWidget *tabDisplay;
    QWidget *tabInterface;
    QWidget *tabUpdate;
    // Programmstart
    QCheckBox *cbBeginRecAtProgStart;
    QLabel *lblBeginRecordHint;
    QCheckBox *cbDispHoldAtProgStart;
    // Display
    QLabel *lblTheme;
    QComboBox *cbTheme;
    QLabel *lblThemeHint;
    // Interface
    QGroupBox *gbPorts;
    QLabel *lblComA;
    QComboBox *cbComA;
    QLabel *lblComB;
    QComboBox *cbComB;
    QGroupBox *gbHwProfile;
    QLabel *lblSelHwProfile;
    QComboBox *cbSelHwProfile;
    QLabel *lblInterfaceName;
    QLineEdit *edInterfaceName;
    QLabel *lblManufacturer;
    QLineEdit *edManufacturer;
    QGroupBox *gbPortValues;
    QLabel *lblBaudrates;
    QPlainTextEdit *edBaudrates;
    QPushButton *btnSelectBaudRates;
    QLabel *lblDatabits;
    QLineEdit *edDatabits;
    QPushButton *btnEditDatabits;
    QLabel *lblParities;
    QLineEdit *edParities;
    QPushButton *btnEditParities;
    QLabel *lblStopbits;
    QLineEdit *edStopbits;
    QPushButton *btnEditStopbits;
    // Update
    QCheckBox *cbCheckForUpdatesOnStartup;
    // buttons
    QPushButton *btnOK;
    QPushButton *btnAbort;
    QPushButton *btnHelp;
};

} // namespace kestrel
