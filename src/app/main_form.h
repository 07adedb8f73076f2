#pragma once
// The main window: owns the two monitored ports, the record store, the
// recorder, the record grid and the control centre. Its handlers keep the
// names of the commands they serve (btnRecordClick, FormCloseQuery, ...) and
// stay thin: the work is done by the capture, presentation and configuration
// libraries underneath.

#include <QMainWindow>
#include <QPointer>
#include <memory>
#include <string>

#include "app/close_query.h"
#include "app/control_lock.h"
#include "app/startup_args.h"

class QComboBox;
class QFrame;
class QLabel;
class QMenu;
class QScrollBar;
class QSplitter;
class QTimer;
class QToolBar;
class QToolButton;
class QWidget;

namespace kestrel {

class ActionManager;
class Clock;
class LineGauge;
class Prompter;
class SignalLight;
class TFormConfirmRecordMode;
class TMessageForm;

struct MainFormOptions {
    StartupArgs args;
    std::string dataFolder;        // ends with '/'
    Prompter *prompter = nullptr;  // nullptr: the window's own message box
    Clock *clock = nullptr;        // nullptr: the system clock
    bool skipUnloadDelay = false;  // tests: no 500 ms wait when a recording is unloaded
};

class TFormMain final : public QMainWindow, private CloseSteps {
    Q_OBJECT
public:
    explicit TFormMain(MainFormOptions options, QWidget *parent = nullptr);
    ~TFormMain() override;

    // Loads configuration, environment and record file behind the progress
    // window; begins recording when asked to. Runs once, on the first show.
    void FormShow();

    [[nodiscard]] ActionManager &actions() const { return *ActionManager1; }
    [[nodiscard]] Prompter &prompter() const { return *prompter_; }
    [[nodiscard]] const std::string &dataFolder() const { return dataFolder_; }
    [[nodiscard]] const std::string &environmentFile() const { return environmentFile_; }
    [[nodiscard]] const std::string &recordFile() const { return recordFile_; }
    [[nodiscard]] bool isRecording() const override;
    [[nodiscard]] bool isPaused() const;
    [[nodiscard]] bool viewHold() const { return viewHold_; }
    [[nodiscard]] int portLostMessages() const { return portLostMessages_; }

    // Stops a recording and closes without questions (SIGTERM, --quit-after).
    void quitCleanly();

public slots:
    // recorder
    void btnRecordClick();
    void btnPauseClick();
    void btnStopClick();
    void btnRecAppendClick();
    void btnRecReplaceClick();
    void btnViewHoldClick();
    void LEDToggleTimerTimer();
    // display
    void btnSwitchPinClick();
    void SetLifePortLabels();
    // language
    void actLangGermanExecute();
    void actLangEnglishExecute();
    void actAboutExecute();

protected:
    void closeEvent(QCloseEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    // start-up and shutdown
    void FormCreate();
    void StartupPrepare();
    void ScanPortsAndApplySettings();
    void ApplyLanguage(); // InitialLoads of the window and its dialogs
    void FormDestroy();
    // CloseSteps
    void closeRecordHandles() override;
    [[nodiscard]] bool environmentChanged() const override;
    void saveEnvironmentDialog() override;
    void saveConfiguration() override;

    // recorder wiring (window side)
    void SetRecordOnControls();
    void SetRecordOffControls();
    void DisableCtrlsBeforeRec();
    void EnableCtrlsAfterRec();
    void EnableComSetup();
    void DisableComSetup();
    void SetModeText(int textNumber);

    // layout
    void buildMenu();
    QWidget *buildToolBars();
    QWidget *buildMonitor();
    QWidget *buildControlCentre();
    QWidget *buildRecorderPanel();
    QWidget *buildPortPanel();
    QWidget *buildLinePanel();
    QWidget *buildGaugePanel();
    void buildStatusBar();
    void connectActions();
    QToolButton *speedButton(const QString &name, const QString &actionName, QWidget *parent, bool textOnly);
    void fillPortCombos();

    std::string dataFolder_;
    std::string environmentFile_;
    std::string recordFile_;
    StartupArgs args_;
    bool skipUnloadDelay_ = false;

    std::unique_ptr<TMessageForm> messageForm_;
    Prompter *prompter_ = nullptr;
    std::unique_ptr<Clock> ownClock_;
    Clock *clock_ = nullptr;
    TFormConfirmRecordMode *confirmRecordMode_ = nullptr;

    // components (names kept as objectName)
    ActionManager *ActionManager1 = nullptr;
    QWidget *ControlBar1 = nullptr;
    QList<QToolBar *> actionToolBars_;
    QSplitter *HSplitter1 = nullptr;
    QFrame *pnlMonitor = nullptr;
    QFrame *pnlDGHeaderAlTop = nullptr;
    QFrame *pnlGridAndVScroll = nullptr;
    QFrame *pnlStatusAndHScroll = nullptr;
    QFrame *pnlAllBottom = nullptr;
    QFrame *pnlCCTrigPanel = nullptr;
    QFrame *pnlCCRecDispControl = nullptr;
    QLabel *lblRecordFileSize = nullptr;
    QLabel *lblTriggerEmpty = nullptr;
    QToolButton *btnREC = nullptr;
    QToolButton *btnPAUSE = nullptr;
    QToolButton *btnSTOP = nullptr;
    QToolButton *btnRECappend = nullptr;
    QToolButton *btnRECreplace = nullptr;
    QToolButton *btnViewHold = nullptr;
    QToolButton *btnSwitchPin = nullptr;
    QToolButton *btnScrollTop = nullptr;
    QToolButton *btnScrollEnd = nullptr;
    QComboBox *cbPortBaudRate = nullptr;
    QComboBox *cbPortDataBits = nullptr;
    QComboBox *cbPortParity = nullptr;
    QComboBox *cbPortStopBits = nullptr;
    QLabel *lblPortA = nullptr;
    QLabel *lblPortB = nullptr;
    SignalLight *apdLEDRecorder = nullptr;
    SignalLight *apdLEDViewHold = nullptr;
    SignalLight *lineLights_[8] = {};   // LedD1, LedD2, LedS1, LedS2, LedM1, LedM2, LedM5, LedM3
    QLabel *lineLabels_[8] = {};
    LineGauge *showLineLoadActual = nullptr;
    LineGauge *showLineLoadPeek = nullptr;
    LineGauge *showLineQuality = nullptr;
    QLabel *statusPanels_[6] = {};       // pnlStatusBarPanel1 .. pnlStatusBarPanel6
    QTimer *LEDToggleTimer = nullptr;
    QTimer *TriggerTimer = nullptr;
    QTimer *SoundTimer = nullptr;
    QList<QLabel *> captionLabels_;      // labels whose text number is in their "textNo" property
    QList<QWidget *> captionGroups_;     // group boxes likewise
    QList<QPair<QMenu *, int>> menuTitles_;

    ControlLock recordLock_;
    bool viewHold_ = false;
    bool shown_ = false;
    bool quitting_ = false;
    int pinNaming_ = 0; // 0 circuit names, 1 pin names
    int portLostMessages_ = 0;
};

} // namespace kestrel
