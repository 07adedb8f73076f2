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
#include <QScreen>
#include <QSplitter>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>
#include <filesystem>

#include "app/action_registry.h"
#include "app/confirm_record_mode_form.h"
#include "app/line_gauge.h"
#include "app/message_form.h"
#include "app/progress_form.h"
#include "app/signal_light.h"
#include "capture/clock.h"
#include "resources/string_table.h"

namespace kestrel {

namespace {

QString S(int n) { return QString::fromStdString(Str(n)); }

// Line names of the control centre in both naming schemes, order D1, D2, S1, S2, M1, M2, M5, M3.
constexpr const char *kCircuitNames[8] = {"D1", "D2", "S1", "S2", "M1", "M2", "M5", "M3"};
constexpr const char *kPinNames[8] = {"Tx", "Rx", "DTR", "RTS", "DSR", "CTS", "DCD", "RNG"};

} // namespace

TFormMain::TFormMain(MainFormOptions options, QWidget *parent)
    : QMainWindow(parent), dataFolder_(std::move(options.dataFolder)), args_(std::move(options.args)),
      skipUnloadDelay_(options.skipUnloadDelay)
{
    setObjectName("TFormMain");
    setWindowIcon(QIcon(":/images/kestrel.svg"));

    messageForm_ = std::make_unique<TMessageForm>(this);
    prompter_ = options.prompter != nullptr ? options.prompter : messageForm_.get();
    if (options.clock != nullptr) {
        clock_ = options.clock;
    } else {
        ownClock_ = std::make_unique<SystemClock>();
        clock_ = ownClock_.get();
    }

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
    TriggerTimer = new QTimer(this);
    TriggerTimer->setObjectName("TriggerTimer");
    TriggerTimer->setInterval(1000);
    SoundTimer = new QTimer(this);
    SoundTimer->setObjectName("SoundTimer");

    connectActions();
    FormCreate();
    StartupPrepare();
    ScanPortsAndApplySettings();
    SetLifePortLabels();
    ApplyLanguage();
    resize(1180, 860);
}

TFormMain::~TFormMain() { FormDestroy(); }

void TFormMain::FormCreate()
{
    QApplication::setApplicationName(S(1));
    setWindowTitle(S(1));
}

void TFormMain::StartupPrepare()
{
    // Files named on the command line win over the ones the configuration and environment name.
    if (!args_.environmentFile.empty())
        environmentFile_ = args_.environmentFile;
    if (environmentFile_.empty())
        environmentFile_ = dataFolder_ + "Default.kef";
    if (!args_.recordFile.empty())
        recordFile_ = args_.recordFile;
    if (recordFile_.empty())
        recordFile_ = dataFolder_ + "recordings/Default.ksr";

    if (!clock_->highResolution())
        prompter_->ShowMessage(Str(203), Str(70), Buttons::Ok, Icon::Warning);

    SetModeText(4274);
    if (viewHold_)
        LEDToggleTimer->start();
}

void TFormMain::ScanPortsAndApplySettings()
{
    fillPortCombos();
}

void TFormMain::fillPortCombos()
{
    static const char *kBauds[] = {"50",    "75",    "150",   "300",   "600",    "1200",   "1800",   "2000",
                                   "2400",  "3600",  "4800",  "7200",  "9600",   "10400",  "14400",  "19200",
                                   "28800", "38400", "56000", "57600", "115200", "230400", "460800", "921600"};
    cbPortBaudRate->clear();
    for (const char *b : kBauds)
        cbPortBaudRate->addItem(b);
    cbPortBaudRate->setCurrentText("9600");
    cbPortDataBits->clear();
    cbPortDataBits->addItems({"5", "6", "7", "8"});
    cbPortDataBits->setCurrentText("8");
    cbPortParity->clear();
    cbPortParity->addItems({"N", "S", "M", "E", "O"});
    cbPortStopBits->clear();
    cbPortStopBits->addItems({"1", "1.5", "2"});
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
    setWindowTitle(S(1) + " - " + QString::fromStdString(std::filesystem::path(environmentFile_).filename().string()));
}

void TFormMain::actLangGermanExecute()
{
    SetGlobalLang(kLangGerman);
    ApplyLanguage();
    saveConfiguration();
}

void TFormMain::actLangEnglishExecute()
{
    SetGlobalLang(kLangEnglish);
    ApplyLanguage();
    saveConfiguration();
}

void TFormMain::actAboutExecute()
{
    prompter_->ShowMessage(Str(7629), Str(7650), Buttons::Ok, Icon::Information);
}

void TFormMain::showEvent(QShowEvent *event)
{
    QMainWindow::showEvent(event);
    if (!shown_) {
        shown_ = true;
        // After the window has painted once, so the progress window stands in front of it.
        QTimer::singleShot(0, this, &TFormMain::FormShow);
    }
}

void TFormMain::FormShow()
{
    static bool once = false;
    (void)once;
    TFormProgress progress(this);
    progress.show();
    progress.step(S(28), 10);
    progress.step(S(30), 30);
    progress.step(S(26), 70);
    progress.step(S(902), 80);
    progress.close();
    if (args_.recordAtStart)
        btnRecordClick();
    if (args_.quitAfterSeconds)
        QTimer::singleShot(static_cast<int>(*args_.quitAfterSeconds * 1000), this, &TFormMain::quitCleanly);
}

void TFormMain::closeEvent(QCloseEvent *event)
{
    if (quitting_ || FormCloseQuery(*prompter_, *this)) {
        event->accept();
        return;
    }
    event->ignore();
}

void TFormMain::quitCleanly()
{
    if (isRecording() || isPaused())
        btnStopClick();
    saveConfiguration();
    quitting_ = true;
    close();
}

void TFormMain::FormDestroy()
{
    LEDToggleTimer->stop();
    TriggerTimer->stop();
    SoundTimer->stop();
}

bool TFormMain::environmentChanged() const { return false; }
void TFormMain::saveEnvironmentDialog() {}
void TFormMain::saveConfiguration() {}
void TFormMain::closeRecordHandles() {}

} // namespace kestrel
