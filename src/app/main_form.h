#pragma once
// The main window: holds the widgets, the record grid and the control centre,
// and one recording session (ports, capture, store, record file, recorder).
// Its handlers keep the names of the commands they serve (btnRecordClick,
// FormCloseQuery, ...) and stay thin: the work is done by the capture,
// presentation and configuration libraries underneath.

#include <QMainWindow>
#include <QPointer>
#include <memory>
#include <string>
#include <vector>

#include "base/result.h"

#include "app/close_query.h"
#include "capture/recorder_view.h"
#include "trigger_engine/trigger_engine.h"

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

namespace kestrel::grid {
class RecordGrid;
class StoreLiveSource;
} // namespace kestrel::grid

namespace kestrel {

class ActionManager;
class Clock;
class ComPort;
class LineGauge;
class Prompter;
class RecordStore;
class Recorder;
class RecordingSession;
struct PortComboTexts;
class Reporter;
struct Environment;
struct ProgramConfig;
class SignalLight;
class SignalLightController;
class TFormConfirmRecordMode;
class TFormExport;
class TFormReport;
class TMessageForm;
class ActionConsent;
class TriggerLauncher;
class TriggerPanel;
class TFormTrig;
class TFormGoto;
class TFormOptions;
class TFormProblemReport;
struct OptionsChoice;
class ErrorHistory;
class RememberingPrompter;
class UpdateCheck;
struct UpdateCheckResult;

struct MainFormOptions {
    StartupArgs args;
    std::string dataFolder;        // ends with '/'
    Prompter *prompter = nullptr;  // nullptr: the window's own message box
    Clock *clock = nullptr;        // nullptr: the system clock
    bool skipUnloadDelay = false;  // tests: no 500 ms wait when a recording is unloaded
    // Tests: the two monitored ports (both or neither), kept alive longer than the window.
    ComPort *portA = nullptr;
    ComPort *portB = nullptr;
};

class TFormMain final : public QMainWindow, private CloseSteps, private RecorderView, private TriggerEngineView {
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
    [[nodiscard]] const std::string &recordFile() const;
    [[nodiscard]] RecordingSession &session() const { return *session_; }
    [[nodiscard]] RecordStore &store() const;
    [[nodiscard]] Recorder &recorder() const;
    [[nodiscard]] grid::RecordGrid &grid() const { return *DrawGrid1; }
    [[nodiscard]] const ProgramConfig &config() const { return *config_; }
    [[nodiscard]] bool isEnvironmentChanged() const { return envChanged_; }
    [[nodiscard]] bool isRecording() const override;
    [[nodiscard]] bool isPaused() const;
    [[nodiscard]] bool viewHold() const { return viewHold_; }
    [[nodiscard]] TriggerPanel &triggerPanel() const { return *TrigPanel; }
    [[nodiscard]] TriggerLauncher &triggerLauncher() const { return *launcher_; }
    [[nodiscard]] TFormTrig &triggerEditor();
    // The goto, search and measure window, made when first needed (main_form_goto.cpp).
    [[nodiscard]] TFormGoto &gotoForm();

    // Stops a recording and closes without questions (SIGTERM, --quit-after).
    void quitCleanly();
    // Opens the session's record file in the grid (after New, Open or an environment
    // changed it); a file that is no recording is shown, and said so once.
    void ShowChangedRecordFile();

public slots:
    // recorder
    void btnRecordClick();
    void btnPauseClick();
    void btnStopClick();
    void btnRecAppendClick();
    void btnRecReplaceClick();
    void btnViewHoldClick();
    void LEDToggleTimerTimer();
    void LineLightsTimer();
    // display
    void btnSwitchPinClick();
    void SetLifePortLabels();
    // language
    void actLangGermanExecute();
    void actLangEnglishExecute();
    void actAboutExecute();
    // support (main_form_support.cpp)
    void actWebSupportExecute();
    void actWebUpdateExecute();
    // options (main_form_options.cpp)
    void actOptionsExecute();
    void actPortOptionsExecute();

protected:
    void closeEvent(QCloseEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    // start-up and shutdown
    void FormCreate();
    void StartupPrepare();
    void ScanPortsAndApplySettings();
    void ApplyLanguage(); // InitialLoads of the window and its dialogs
    void updateWindowTitle();
    void FormDestroy();
    // CloseSteps
    void closeRecordHandles() override;
    [[nodiscard]] bool environmentChanged() const override { return envChanged_; }
    void saveEnvironmentDialog() override;
    void saveConfiguration() override;

    // recorder wiring (window side, RecorderView)
    void SetRecordOnControls() override;
    void SetRecordOffControls() override;
    void setModeText(const std::string &text) override;
    void setStatusText(const std::string &text) override;
    void setRecordButtons(bool recordDown) override;
    void setPauseButton(bool down) override;
    void setLightsMonitoring(bool on) override;
    void startBlinkTimer() override;
    void refreshSizeLabel(const std::string &label) override;
    void resetViewToStart() override;
    void clearGrid() override;
    void redrawGrid() override;
    void scrollGridToEnd() override;
    void clearGauges() override;
    void environmentChanged() override;
    void startRedrawThread() override;
    void stopRedrawThread() override;
    void createSession(const MainFormOptions &options);
    // support (main_form_support.cpp): the error history behind the message box, the update check
    void createSupport(Prompter &shown);
    void startUpdateCheckAtStart();
    void updateCheckFinished(const UpdateCheckResult &result);
    // export window (main_form_export.cpp)
    void createExportWindow();
    void actExportToFileExecute();
    // report window (main_form_report.cpp)
    void createReportWindow();
    void actPrintReportExecute();
    // triggers (main_form_triggers.cpp)
    void createTriggerEngine();
    void connectTriggerPanel();
    void confirmTriggerActions(); // an environment from a file: may its actions run?
    void toggleTriggerPanelHeight();
    void triggerStatusText(const std::string &text) override;
    void triggerFired(const TriggerDef &trigger, std::uint32_t mp) override;
    void reportPortResults(const std::vector<Result> &results);
    [[nodiscard]] int chooseRecordMode();
    void applyConfiguration();
    // options, styles and the grid's option set (main_form_options.cpp)
    void prepareOptionsBeforeLoad();
    void applyOptionsAfterLoad();
    bool applyStyleSlot(int slot); // false when the style could not be used (said in a box)
    void OpenOptions(int page);
    void optionsConfirmed(const OptionsChoice &choice);
    void buildStyleMenu();
    void chooseStyle(int slot); // from the style menu: applied, and kept as the options keep it
    void syncStyleMenu();
    void optionsLanguageLoads();
    void placeOnMonitor(int savedMonitor);
    [[nodiscard]] int monitorIndex() const;
    void applyEnvironment(const Environment &env);
    void btnNewRecordFileClick();
    void btnOpenRecordFileClick();
    void btnSaveRecordFileClick();
    void LoadEnvDialog();
    void SaveEnvDialog();
    void btnEnvConfClick(); // the environment information dialog (main_form_env.cpp)
    void portSettingChanged();
    [[nodiscard]] PortComboTexts comboTexts() const;
    void updateSizeLabel();
    void showPortDevices();
    [[nodiscard]] std::string configPath() const;
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
    [[nodiscard]] static int statusTextWidth(const QLabel *panel, const QString &text);
    void fitStatusPanel(QLabel *panel, const QString &text);
    void connectActions();
    void connectGrid();
    void syncModeButtons();
    QToolButton *speedButton(const QString &name, const QString &actionName, QWidget *parent, bool textOnly);
    void fillPortCombos();

    std::string dataFolder_;
    std::string environmentFile_;
    std::unique_ptr<ProgramConfig> config_;
    std::unique_ptr<Environment> env_;
    bool envChanged_ = false; // the settings differ from the environment file
    StartupArgs args_;
    bool skipUnloadDelay_ = false;

    std::unique_ptr<TMessageForm> messageForm_;
    std::unique_ptr<ErrorHistory> errorHistory_;               // the last errors shown, for problem reports
    std::unique_ptr<RememberingPrompter> rememberingPrompter_; // the message box (or the tests' prompter), remembering
    Prompter *prompter_ = nullptr;
    UpdateCheck *updateCheck_ = nullptr;
    bool updateCheckAsked_ = false; // from the Help menu: the answer in a box; at start-up: a status line
    TFormProblemReport *FormProblemReport = nullptr;
    std::unique_ptr<Reporter> reporter_; // failures of the session, shown through prompter_
    std::unique_ptr<RecordingSession> session_;
    TFormConfirmRecordMode *confirmRecordMode_ = nullptr;
    TFormExport *FormExport = nullptr;
    TFormReport *FormReport = nullptr;

    // components (names kept as objectName)
    ActionManager *ActionManager1 = nullptr;
    QWidget *ControlBar1 = nullptr;
    QList<QToolBar *> actionToolBars_;
    QSplitter *HSplitter1 = nullptr;
    QFrame *pnlMonitor = nullptr;
    QFrame *pnlDGHeaderAlTop = nullptr;
    QFrame *pnlGridAndVScroll = nullptr;
    QFrame *pnlStatusAndHScroll = nullptr;
    grid::RecordGrid *DrawGrid1 = nullptr;
    std::unique_ptr<grid::StoreLiveSource> liveSource_;
    QFrame *pnlAllBottom = nullptr;
    QFrame *pnlCCTrigPanel = nullptr;
    QFrame *pnlCCRecDispControl = nullptr;
    class ElidedLabel *lblRecordFileSize = nullptr;
    TriggerPanel *TrigPanel = nullptr;
    TFormTrig *FormTrig = nullptr; // the trigger editor, made when first needed
    TFormGoto *FormGoto = nullptr;
    void connectGotoForm();
    void saveGotoForm();
    TFormOptions *FormOptions = nullptr; // the options dialog, made when first needed
    QMenu *mnuStyles = nullptr;          // the style slots, in the options menu
    std::unique_ptr<TriggerLauncher> launcher_;
    std::unique_ptr<ActionConsent> consent_;
    int bottomHeightBeforeMin_ = 0; // the control centre's height before btnTrigListMinMax shrank it
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
    QTimer *SoundTimer = nullptr;
    QTimer *lineLightTimer_ = nullptr;
    SignalLightController *SlcA = nullptr; // port A: D2, M2, M1, M5, M3
    SignalLightController *SlcB = nullptr; // port B: D1, S2, S1
    QList<QLabel *> captionLabels_;      // labels whose text number is in their "textNo" property
    QList<QWidget *> captionGroups_;     // group boxes likewise
    QList<QPair<QMenu *, int>> menuTitles_;

    ControlLock recordLock_;
    bool viewHold_ = false;
    bool hadConfigFile_ = false;
    bool shown_ = false;
    bool quitting_ = false;
    void lockScrollBarWhileFollowing();
    void keepStatusBarWhole();

    bool startupDone_ = false;
    Result scenarioWarning_; // a scenario that could not be read, reported after the language is set
    long scenarioBaud_ = 0;  // the simulated line's own rate (its "baud" line); 0: the port settings' rate // FormShow has loaded the configuration and the environment
    int pinNaming_ = 0; // 0 circuit names, 1 pin names
};

} // namespace kestrel
