#pragma once
// The trigger editor: one trigger's name, condition and event, the page of
// that event, and the actions on the "Aktion" page. It fills a TriggerDef and
// hands it back; the caller (the trigger panel) puts it into the list and
// renumbers. Questions and refusals go through the Prompter it is given.
//
// OK refuses in the order of CheckTriggerForOk (trigger_form_rules.h) and
// stays open after a refusal. When an existing trigger is edited it asks
// whether to overwrite it; "no" leaves the record as it was and the dialog
// open, so the user can change more or cancel. Cancel after any change asks
// whether to save: yes acts as OK, no closes without saving, cancel stays.
// Escape and the window's close box are Cancel.

#include <QDialog>
#include <array>
#include <optional>

#include "app/up_down.h"
#include "trigger_engine/trigger_form_rules.h"
#include "triggers/trigger_def.h"

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QDateEdit;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QTabWidget;
class QTimeEdit;
class QToolButton;

namespace kestrel {

class PatternFields;
class Prompter;
class TriggerLauncher;
class TFormTrigParams;

// The pages of the editor, in the order of the event box; the action page last.
namespace TrigPage {
inline constexpr int Data = 0;
inline constexpr int Signal = 1;
inline constexpr int Error = 2;
inline constexpr int Time = 3;
inline constexpr int Inactivity = 4;
inline constexpr int Action = 5;
} // namespace TrigPage

class TFormTrig final : public QDialog {
    Q_OBJECT
public:
    // launcher runs the two test buttons; without one they are disabled.
    TFormTrig(Prompter &prompter, TriggerLauncher *launcher, QWidget *parent = nullptr);
    ~TFormTrig() override;

    // Fixed texts in the current language.
    void InitialLoads();

    // Fills the controls for a new trigger (defaults, pickers at now, data page).
    void OpenNew();
    // Fills the controls from an existing trigger; OK will ask before overwriting.
    void OpenExisting(const TriggerDef &trigger);
    // Modal editing; the trigger to insert or to put in place of the old one, or nothing.
    std::optional<TriggerDef> ExecNew();
    std::optional<TriggerDef> ExecEdit(const TriggerDef &trigger);
    // ExecEdit for a trigger, ExecNew for none: the trigger panel's editor.
    std::optional<TriggerDef> Exec(const TriggerDef *current) { return current ? ExecEdit(*current) : ExecNew(); }

    // The record OK accepted (valid once the dialog was accepted).
    [[nodiscard]] const TriggerDef &acceptedTrigger() const { return accepted_; }
    // The controls copied into a record (SetFormValuesToTrigger); number and
    // port handle are those of the trigger being edited.
    [[nodiscard]] TriggerDef FormValues() const;

    // Any field changed since the dialog was filled.
    bool ChangesMade = false;

    // Where the sound file dialog starts when no sound file is set yet.
    void setSoundFolder(const QString &folder) { soundFolder_ = folder; }
    // Where the OK checks look for the sound file and the command (tests hand in their own).
    void setFileLookup(FileLookup files) { files_ = std::move(files); }

public slots:
    void btnOKClick();
    void btnCancelClick();
    void reject() override; // Escape and the close box

private slots:
    void btnGetTimeNowClick();
    void cbTrigRecChange();
    void cbTrigEventChange();
    void SetPlaySoundControls();
    void SetStartExtCommandControls();
    void btnBrowseSoundFileClick();
    void btnBrowseExtCommandClick();
    void btnSoundCheckClick();
    void btnCommandCheckClick();
    void btnOpenParamPoolClick();
    void MarkChanged();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void buildTopPart();
    QWidget *buildDataPage();
    QWidget *buildSignalPage();
    QWidget *buildErrorPage();
    QWidget *buildTimePage();
    QWidget *buildInactivityPage();
    QWidget *buildActionPage();
    void watchForChanges();
    void SetTriggerToFormValues(const TriggerDef &t);
    // Only the page of the current event and the action page are there.
    void TrigTabVisible();
    void clampSeconds();

    Prompter &prompter_;
    TriggerLauncher *launcher_;
    FileLookup files_ = FileLookup::System();
    QString soundFolder_;

    QLabel *lblTrigName;
    QLineEdit *edTrigName;
    QCheckBox *ckTrigActive;
    QLabel *lblTrigDescr;
    QLineEdit *edTrigDescr;
    QLabel *lblTrigRec;
    QComboBox *cbTrigRec;
    QLabel *lblTrigEvent;
    QComboBox *cbTrigEvent;
    QTabWidget *pcTrigger;

    // Data page.
    QRadioButton *rbTxData;
    QRadioButton *rbRxData;
    PatternFields *DataFields;

    // Signal page: one row per line, three choices each.
    QLabel *lblSigIgnore;
    QLabel *lblSigFalls;
    QLabel *lblSigRises;
    std::array<QButtonGroup *, 6> SignalRows{}; // M1, M2, M5, M3, S1, S2, as shown

    // Error page.
    QCheckBox *ckTrigPE;
    QCheckBox *ckTrigFE;
    QCheckBox *ckTrigLE;

    // Time page.
    QLabel *lblTimeReached;
    QDateEdit *pkTrigDate;
    QTimeEdit *pkTrigTime;
    QPushButton *btnGetTimeNow;

    // Inactivity page.
    QLabel *lblInActivityIf;
    QLineEdit *csInActivityTime;
    UpDown *UpDownSeconds;
    QLabel *lblInActivitySeconds;
    QLabel *lblInActivityEvents;
    QGroupBox *gbDataLines;
    QGroupBox *gbControlLines;
    QGroupBox *gbErrors;
    std::array<QCheckBox *, 11> EventChecks{}; // in the order of kInactivityEventKeys

    // Action page.
    QCheckBox *cbPlaySound;
    QLabel *lblSoundFilePath;
    QLineEdit *edtSoundFilePath;
    QToolButton *btnBrowseSoundFile;
    QPushButton *btnSoundCheck;
    QCheckBox *cbPlayContinuously;
    QCheckBox *cbStartExtCommand;
    QLabel *lblExtCommandFilePath;
    QLineEdit *edtExtCommandFilePath;
    QToolButton *btnBrowseExtCommand;
    QLabel *lblExtCommandParams;
    QLineEdit *edtExtCommandParams;
    QToolButton *btnBrowseParamFile; // hidden
    QPushButton *btnOpenParamPool;
    QPushButton *btnCommandCheck;

    QPushButton *btnOK;
    QPushButton *btnCancel;
    QPushButton *btnHelp;

    TFormTrigParams *paramPool_ = nullptr;
    TriggerDef editing_;  // the trigger the form was filled from (defaults for a new one)
    bool editExisting_ = false;
    TriggerDef accepted_;
    bool loading_ = false; // the controls are being filled, not edited
};

} // namespace kestrel
