// Construction, start-up, language and shutdown of the main window.

#include "app/main_form.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QMenu>
#include <QGuiApplication>
#include <QRegularExpression>
#include <QScreen>
#include <QSignalBlocker>
#include <QSplitter>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>
#include <filesystem>

#include "app/action_registry.h"
#include "app/confirm_record_mode_form.h"
#include "app/export_form.h"
#include "app/help_window.h"
#include "app/line_gauge.h"
#include "app/message_form.h"
#include "app/options_form.h"
#include "app/problem_report_form.h"
#include "app/progress_form.h"
#include "app/report_form.h"
#include "present/grid/grid_layout.h"
#include "present/grid/record_grid.h"
#include "present/grid/store_live_source.h"
#include "app/signal_light.h"
#include "app/goto_form.h"
#include "app/trigger_form.h"
#include "app/trigger_panel.h"
#include "trigger_engine/action_consent.h"
#include "trigger_engine/trigger_launcher.h"
#include "base/reporter.h"
#include "capture/recording_session.h"
#include "record/clock.h"
#include "record/record_store.h"
#include "config/environment.h"
#include "config/hardware_profile.h"
#include "config/program_config.h"
#include "config/startup_settings.h"
#include "base/build_info.h"
#include "base/string_table.h"
#include "support/error_history.h"
#include "support/update_check.h"

namespace kestrel {

namespace {

QString S(int n) { return QString::fromStdString(Str(n)); }

// Line names of the control centre in both naming schemes, order D1, D2, S1, S2, M1, M2, M5, M3.
constexpr const char *kCircuitNames[8] = {"D1", "D2", "S1", "S2", "M1", "M2", "M5", "M3"};
constexpr const char *kPinNames[8] = {"Tx", "Rx", "DTR", "RTS", "DSR", "CTS", "DCD", "RNG"};

// The grid's own widths for every kept column of a view, so that a first start
// writes what the grid shows and not a placeholder; the description column of
// the vertical view gets what a window of the default size leaves it.
std::vector<int> BuiltInColumnWidths(int view, std::size_t columns)
{
    constexpr int kDefaultClientWidth = 1016;
    constexpr int kDefaultSecondaryMode = 3;
    grid::ViewShape shape = grid::ShapeForView(view, kDefaultClientWidth);
    shape.columns = static_cast<int>(columns);
    std::vector<int> widths(columns);
    for (std::size_t c = 0; c < columns; ++c)
        widths[c] = std::max(0, grid::ColumnWidth(shape, static_cast<int>(c), kDefaultClientWidth, kDefaultSecondaryMode));
    return widths;
}

} // namespace

TFormMain::TFormMain(MainFormOptions options, QWidget *parent)
    : QMainWindow(parent), dataFolder_(std::move(options.dataFolder)), args_(std::move(options.args)),
      skipUnloadDelay_(options.skipUnloadDelay)
{
    setObjectName("TFormMain");
    setWindowIcon(QIcon(":/images/kestrel.svg"));

    config_ = std::make_unique<ProgramConfig>();
    env_ = std::make_unique<Environment>();
    messageForm_ = std::make_unique<TMessageForm>(this);
    // Every box passes the error history on its way, so a problem report can name the last errors.
    createSupport(options.prompter != nullptr ? *options.prompter : *messageForm_);
    prompter_ = rememberingPrompter_.get();

    ActionManager1 = new ActionManager(this);
    addActions(ActionManager1->actions()); // shortcuts work with the menu closed
    buildMenu();

    auto *central = new QWidget(this);
    central->setObjectName("pnlCentral");
    auto *box = new QVBoxLayout(central);
    box->setContentsMargins(4, 0, 4, 0);
    box->setSpacing(2);
    box->addWidget(buildToolBars());
    HSplitter1 = new QSplitter(Qt::Vertical, central);
    HSplitter1->setObjectName("HSplitter1");
    HSplitter1->setChildrenCollapsible(false);
    HSplitter1->addWidget(buildMonitor());
    HSplitter1->addWidget(buildControlCentre());
    HSplitter1->setStretchFactor(0, 1);
    HSplitter1->setStretchFactor(1, 0);
    box->addWidget(HSplitter1, 1);
    setCentralWidget(central);
    buildStatusBar();

    confirmRecordMode_ = new TFormConfirmRecordMode(this);

    LEDToggleTimer = new QTimer(this);
    LEDToggleTimer->setObjectName("LEDToggleTimer");
    LEDToggleTimer->setInterval(500);
    connect(LEDToggleTimer, &QTimer::timeout, this, &TFormMain::LEDToggleTimerTimer);
    SoundTimer = new QTimer(this);
    SoundTimer->setObjectName("SoundTimer");
    lineLightTimer_ = new QTimer(this);
    lineLightTimer_->setInterval(60);
    connect(lineLightTimer_, &QTimer::timeout, this, &TFormMain::LineLightsTimer);

    // Armed before anything can show a message box (a scenario that cannot be read, fewer
    // than two ports), so that no such box can hold off the end of a demo.
    if (args_.quitAfterSeconds)
        QTimer::singleShot(static_cast<int>(*args_.quitAfterSeconds * 1000), this, &TFormMain::quitCleanly);
    createSession(options);
    resize(1180, 860); // first start; a saved placement replaces it
    connectActions();
    createExportWindow();
    createReportWindow();
    FormCreate();
    StartupPrepare();
    if (!scenarioWarning_)
        reporter_->report(205, scenarioWarning_, {}, Severity::Warning);
    ScanPortsAndApplySettings();
    SetLifePortLabels();
    ApplyLanguage();
}

TFormMain::~TFormMain() { FormDestroy(); }

void TFormMain::FormCreate()
{
    QApplication::setApplicationName(S(1));
    setWindowTitle(S(1));
}

std::string TFormMain::configPath() const { return dataFolder_ + kConfigFileName; }

void TFormMain::StartupPrepare()
{
    // The hardware profile first; the [Port Standards] lists of Kestrel.ini win over its lists.
    std::error_code ec;
    hadConfigFile_ = std::filesystem::exists(configPath(), ec);
    // Keys the file lacks keep these; keys it has come back as they were written.
    for (auto [view, settings] : {std::pair{1, &config_->dispMode1}, {3, &config_->dispMode3}, {4, &config_->dispMode4}})
        settings->columnWidths = BuiltInColumnWidths(view, settings->columnWidths.size());
    config_->GlobalLang = GlobalLang(); // an unknown installer hint keeps the language we run in
    prepareOptionsBeforeLoad();
    (void)LoadMainConfiguration(std::filesystem::path(dataFolder_), *config_);
    applyConfiguration();
    applyOptionsAfterLoad();

    // Files named on the command line win over the ones the configuration and environment name.
    environmentFile_ = args_.environmentFile.empty() ? EnvironmentFilePath(config_->EnvironmentFilename, dataFolder_)
                                                     : args_.environmentFile;
    if (std::filesystem::path(environmentFile_).parent_path().empty())
        environmentFile_ = dataFolder_ + environmentFile_;
    session_->file().setPath(args_.recordFile.empty() ? DefaultRecordFile(dataFolder_) : args_.recordFile);

    if (!session_->clock().highResolution())
        prompter_->ShowMessage(Str(203), Str(70), Buttons::Ok, Icon::Warning);

    SetModeText(4274);
    statusPanels_[0]->setText(S(7651));
    if (viewHold_)
        LEDToggleTimer->start();
}

void TFormMain::placeOnMonitor(int savedMonitor)
{
    // Back on the monitor it stood on, or on the primary one when that monitor is gone.
    const QList<QScreen *> screens = QGuiApplication::screens();
    const int index = MonitorForForm(savedMonitor, static_cast<int>(screens.size()));
    QScreen *screen = index < screens.size() ? screens[index] : QGuiApplication::primaryScreen();
    if (screen == nullptr)
        return;
    const QRect area = screen->availableGeometry();
    QRect frame = geometry();
    frame.setSize(frame.size().boundedTo(area.size()));
    if (!area.contains(frame))
        frame.moveTopLeft(area.topLeft() + QPoint(std::max(0, (area.width() - frame.width()) / 2),
                                                  std::max(0, (area.height() - frame.height()) / 2)));
    setGeometry(frame);
}

int TFormMain::monitorIndex() const
{
    const QList<QScreen *> screens = QGuiApplication::screens();
    const int i = static_cast<int>(screens.indexOf(screen()));
    return i < 0 ? 0 : i;
}

void TFormMain::applyConfiguration()
{
    SetGlobalLang(config_->GlobalLang == kLangEnglish ? kLangEnglish : kLangGerman);
    pinNaming_ = config_->DefLang == 1 ? 1 : 0;
    DrawGrid1->setZoom(config_->GridZoom); // before the widths, which are kept at this size
    for (auto [view, settings] : {std::pair{1, &config_->dispMode1}, {3, &config_->dispMode3}, {4, &config_->dispMode4}})
        DrawGrid1->SetColumnWidths(view, settings->columnWidths); // as the user last dragged them
    TrigPanel->setColumnWidths(config_->triggerListColumns);
    ActionManager1->action("actAppend")->setChecked(config_->Append);
    ActionManager1->action("actReplace")->setChecked(!config_->Append && config_->Replace);
    if (config_->DisplayHoldOnProgStart && !viewHold_)
        btnViewHoldClick();
    if (config_->BeginRecordOnProgStart)
        args_.recordAtStart = true;
    // The grid's modes: naming, view, time, overlay and each view's character pair.
    grid::GridModes &modes = DrawGrid1->modes();
    modes.SetNaming(pinNaming_);
    const std::pair<int, const GridViewSettings *> views[] = {
        {1, &config_->dispMode1}, {3, &config_->dispMode3}, {4, &config_->dispMode4}};
    for (auto [view, settings] : views) {
        modes.panel.perView[static_cast<std::size_t>(view)].charMode = settings->CharacterMode1;
        modes.panel.perView[static_cast<std::size_t>(view)].secondaryMode = settings->CharacterMode2;
    }
    modes.SelectView(config_->DisplayMode);
    modes.SetTimeMode(config_->TimeControl);
    if (config_->CharacterControl == 7 || config_->CharacterControl == 8)
        modes.panel.overlay = config_->CharacterControl;
    DrawGrid1->ApplyModes();
    syncModeButtons();
    const WindowPlacement &w = config_->window;
    if (hadConfigFile_ && w.Width >= 400 && w.Height >= 300)
        setGeometry(w.Left, w.Top, w.Width, w.Height);
    if (w.WindowState == 2)
        setWindowState(Qt::WindowMaximized);
    // The control centre keeps its height; the monitor takes the rest.
    const int natural = pnlAllBottom->sizeHint().height();
    const int bottom = hadConfigFile_ ? std::clamp(config_->allBottomPanels.Height, 180, 600) : natural;
    HSplitter1->setSizes({std::max(200, height() - bottom), bottom});
}

void TFormMain::fillPortCombos()
{
    auto fill = [](QComboBox *c, const std::vector<std::string> &values, const std::vector<std::string> &fallback) {
        const QSignalBlocker quiet(c);
        c->clear();
        for (const std::string &v : values.empty() ? fallback : values)
            c->addItem(QString::fromStdString(v));
        c->setCurrentIndex(0);
    };
    const PortValueLists &lists = config_->portStandards;
    fill(cbPortBaudRate, lists.baudRates, StandardBaudRates());
    fill(cbPortDataBits, lists.dataBits, StandardDataBits());
    fill(cbPortParity, lists.parities, StandardParities());
    fill(cbPortStopBits, lists.stopBits, StandardStopBits());
}

void TFormMain::SetLifePortLabels()
{
    const char *const *names = pinNaming_ == 0 ? kCircuitNames : kPinNames;
    for (int i = 0; i < 8; ++i)
        lineLabels_[i]->setText(QString::fromLatin1(names[i]));
}

void TFormMain::btnSwitchPinClick()
{
    pinNaming_ = 1 - pinNaming_;
    SetLifePortLabels();
}

void TFormMain::SetModeText(int textNumber)
{
    statusPanels_[5]->setProperty("textNo", textNumber);
    statusPanels_[5]->setText(S(textNumber));
}

void TFormMain::ApplyLanguage()
{
    ActionManager1->InitialLoads();
    for (auto [button, action] : {std::pair{btnREC, "actStart"}, {btnSTOP, "actStop"}}) {
        button->setText(ActionManager1->action(action)->text());
        button->setToolTip(ActionManager1->action(action)->toolTip());
    }
    for (auto &[menu, textNo] : menuTitles_)
        menu->setTitle(S(textNo));
    for (QLabel *l : captionLabels_)
        l->setText(S(l->property("textNo").toInt()));
    for (QWidget *w : captionGroups_)
        if (auto *g = qobject_cast<QGroupBox *>(w))
            g->setTitle(S(g->property("textNo").toInt()));
    const QVariant mode = statusPanels_[5]->property("textNo");
    if (mode.isValid())
        statusPanels_[5]->setText(S(mode.toInt()));
    const bool german = GlobalLang() == kLangGerman;
    ActionManager1->action("actLangGerman")->setChecked(german);
    ActionManager1->action("actLangEnglish")->setChecked(!german);
    messageForm_->InitialLoads();
    confirmRecordMode_->InitialLoads();
    TrigPanel->InitialLoads();
    if (FormTrig != nullptr)
        FormTrig->InitialLoads();
    if (FormGoto != nullptr)
        FormGoto->InitialLoads();
    FormExport->InitialLoads();
    if (FormProblemReport != nullptr)
        FormProblemReport->InitialLoads();
    FormReport->InitialLoads();
    optionsLanguageLoads();
    if (auto *help = findChild<THelpWindow *>(QString(), Qt::FindDirectChildrenOnly))
        help->InitialLoads(); // the page shown reopens in the new language
    DrawGrid1->InitialLoads(); // its status line ("day(s)", the copy item) in the new language at once
    showPortDevices(); // "(simulated line)" beside the devices
    // "Ready" in the free status panel follows the language; other texts there last only a moment.
    const QString free = statusPanels_[0]->text();
    if (free == QString::fromStdString(StrIn(7651, kLangGerman)) || free == QString::fromStdString(StrIn(7651, kLangEnglish)))
        statusPanels_[0]->setText(S(7651));
    updateWindowTitle();
}

void TFormMain::updateWindowTitle()
{
    // Program name and the environment in use, as the title bar always showed them.
    setWindowTitle(S(1) + " - " + QString::fromStdString(std::filesystem::path(environmentFile_).filename().string()));
}

void TFormMain::actLangGermanExecute()
{
    config_->keepStoredLanguage = false; // the user's own choice is stored from now on
    SetGlobalLang(kLangGerman);
    ApplyLanguage();
    saveConfiguration();
}

void TFormMain::actLangEnglishExecute()
{
    config_->keepStoredLanguage = false;
    SetGlobalLang(kLangEnglish);
    ApplyLanguage();
    saveConfiguration();
}

void TFormMain::actAboutExecute()
{
    std::string title = Str(7629);
    title.erase(std::remove(title.begin(), title.end(), '&'), title.end());
    if (title.size() > 3 && title.compare(title.size() - 3, 3, "...") == 0)
        title.resize(title.size() - 3); // "About Kestrel...": the menu's dots are not the box's
    prompter_->ShowMessage(title, AboutText(qVersion()), Buttons::Ok, Icon::Information);
}

void TFormMain::showEvent(QShowEvent *event)
{
    QMainWindow::showEvent(event);
    if (quitting_) { // ended while it was being made: it goes as soon as it shows
        QTimer::singleShot(0, this, &QWidget::close);
        return;
    }
    if (!shown_) {
        shown_ = true;

        // After the window has painted once, so the progress window stands in front of it.
        QTimer::singleShot(0, this, &TFormMain::FormShow);
    }
}

void TFormMain::FormShow()
{
    if (quitting_)
        return; // ended before it was ever shown: nothing to load, nothing to record
    TFormProgress progress(this);
    progress.show();
    progress.step(S(28), 10);
    config_->monitors = {{"TFormMain", 0}};
    LoadConfiguration(std::filesystem::path(configPath()), "TFormMonitors", *config_);
    placeOnMonitor(config_->monitors.front().monitor);
    progress.step(S(30), 30);
    // The display code page is a fixed table here; nothing to choose at run time.
    progress.step(S(26), 70);
    // The steps let events through: an end asked for meanwhile (SIGTERM, --quit-after)
    // must not be followed by a question that nobody will answer.
    if (quitting_)
        return;
    EnvLoadContext ctx;
    ctx.dataFolder = dataFolder_;
    if (!args_.recordFile.empty())
        ctx.commandLineRecord = args_.recordFile;
    ctx.now = session_->clock().nowDateTime();
    EnvLoadResult loaded = LoadEnvironment(std::filesystem::path(environmentFile_), ctx);
    if (!loaded.status.ok())
        prompter_->ShowMessage(Str(205), Str(7652) + "\n\n" + environmentFile_ + "\n" + loaded.status.detail,
                               Buttons::Ok, Icon::Warning);
    applyEnvironment(loaded.env);
    progress.step(S(902), 80);
    if (quitting_)
        return;
    ShowChangedRecordFile();
    envChanged_ = false;
    progress.close();
    // A message box of the start-up may have waited while the program was ended.
    startupDone_ = true;
    DrawGrid1->setFocus(); // Home, End and the page keys work without a click first
    if (config_->exWindow.Visible)
        FormExport->show(); // open at the last save: open again
    startUpdateCheckAtStart(); // in the background; its answer is one status line at most
    if (config_->reWindow.Visible)
        FormReport->show();
    if (args_.recordAtStart && !quitting_)
        btnRecordClick();
}

void TFormMain::closeEvent(QCloseEvent *event)
{
    if (quitting_) {
        event->accept();
        return;
    }
    const CloseAnswer answer = FormCloseQuery(*prompter_, *this);
    if (answer == CloseAnswer::Close) {
        event->accept();
        return;
    }
    event->ignore();
    if (answer == CloseAnswer::RefusedRecording) // in the status bar, not in a box: nothing to answer
        statusPanels_[0]->setText(S(60).replace(QRegularExpression("\\s*\\n+\\s*"), " "));
}

void TFormMain::quitCleanly()
{
    bool answered = false;
    for (TMessageForm *box : findChildren<TMessageForm *>()) {
        if (box->isWaiting()) {
            // A question is open (a start-up error, say): answer it "no", let its
            // caller finish, and end once it has.
            box->reject();
            answered = true;
        }
    }
    if (answered) {
        QTimer::singleShot(0, this, &TFormMain::quitCleanly);
        return;
    }
    if (isRecording() || isPaused())
        btnStopClick();
    if (startupDone_) // before that the window holds defaults, not the user's settings
        saveConfiguration();
    quitting_ = true;
    close();
}

void TFormMain::FormDestroy()
{
    // Never leave a recording without its stop mark, however the window goes.
    if (session_ && (session_->recording() || session_->loaded()))
        session_->stop();
    if (DrawGrid1 != nullptr)
        DrawGrid1->StopRedraw();
    LEDToggleTimer->stop();
    SoundTimer->stop();
}

void TFormMain::closeRecordHandles()
{
    session_->file().close(RecordHandle::View);
    session_->file().close(RecordHandle::Record);
}

void TFormMain::saveEnvironmentDialog() { SaveEnvDialog(); }

void TFormMain::saveConfiguration()
{
    config_->GlobalLang = GlobalLang();
    const grid::GridModes &modes = DrawGrid1->modes();
    config_->DisplayMode = modes.view();
    config_->TimeControl = modes.timeMode();
    config_->CharacterControl = modes.overlay();
    const std::pair<int, GridViewSettings *> views[] = {
        {1, &config_->dispMode1}, {3, &config_->dispMode3}, {4, &config_->dispMode4}};
    for (auto [view, settings] : views) {
        settings->CharacterMode1 = modes.panel.perView[static_cast<std::size_t>(view)].charMode;
        settings->CharacterMode2 = modes.panel.perView[static_cast<std::size_t>(view)].secondaryMode;
    }
    config_->DefLang = pinNaming_;
    config_->GridZoom = DrawGrid1->zoom();
    config_->GridOptions = DrawGrid1->GridOptions();
    config_->triggerListColumns = TrigPanel->columnWidths();
    saveGotoForm();
    for (auto [view, settings] : {std::pair{1, &config_->dispMode1}, {3, &config_->dispMode3}, {4, &config_->dispMode4}}) {
        // Widths the user gave are written; every other kept width comes back as it was read.
        const std::vector<int> shown = DrawGrid1->ColumnWidthsOf(view, settings->columnWidths.size());
        for (std::size_t c = 0; c < shown.size(); ++c)
            if (DrawGrid1->HasUserWidth(view, static_cast<int>(c)))
                settings->columnWidths[c] = shown[c];
    }
    config_->Append = ActionManager1->action("actAppend")->isChecked();
    config_->Replace = ActionManager1->action("actReplace")->isChecked();
    config_->RecordMode = config_->Replace ? 2 : config_->Append ? 1 : 0;
    config_->ViewHold = viewHold_;
    config_->EnvironmentFilename = environmentFile_;
    const QRect g = normalGeometry();
    config_->window = {g.left(), g.top(), g.width(), g.height(), isMaximized() ? 2 : isMinimized() ? 1 : 0};
    config_->monitors = {{"TFormMain", monitorIndex()}};
    config_->exWindow = FormExport->placement();
    config_->reWindow = FormReport->placement();
    const QRect bottom = pnlAllBottom->geometry();
    config_->allBottomPanels = {bottom.left(), bottom.top(), bottom.width(), bottom.height()};
    const QRect centre = pnlCCRecDispControl->geometry();
    config_->cCenterPanel = {centre.left(), centre.top(), centre.width(), 0};
    // A failed save is not the user's problem at close; the next save tries again.
    (void)SaveConfiguration(*config_, std::filesystem::path(configPath()));
}

} // namespace kestrel
