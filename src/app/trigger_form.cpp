#include "app/trigger_form.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpressionValidator>
#include <QTabWidget>
#include <QTimeEdit>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

#include "app/dialog_buttons.h"
#include "app/pattern_fields.h"
#include "app/trigger_params_form.h"
#include "base/prompt.h"
#include "base/string_table.h"
#include "trigger_engine/trigger_launcher.h"

namespace kestrel {

namespace {

QString S(int n) { return QString::fromStdString(Str(n)); }

// Texts of the editor (German numbers; English under n + 10000).
constexpr int kTypeTexts = 7400;   // 7400-7402, the condition box
constexpr int kEventTexts = 7403;  // 7403-7407, the event box and the page tabs
constexpr int kEdgeTexts = 7408;   // 7408-7410, "Egal", "Fällt", "Steigt"
constexpr int kNameLabel = 7460, kDescrLabel = 7461, kConditionLabel = 7462, kAtLabel = 7463,
              kDefaultName = 7464, kActiveBox = 7465, kCaption = 7466, kActionPage = 7467, kTxData = 7468,
              kRxData = 7469, kParityError = 7471, kFramingError = 7472, kLineError = 7473, kTimeReached = 7474,
              kNow = 7475, kInactiveIf = 7476, kSeconds = 7477, kInactiveEvents = 7478, kDataLines = 7479,
              kControlLines = 7480, kErrorsBox = 7481, kParity = 7482, kFraming = 7483, kLine = 7484,
              kCancel = 7485, kOk = 6006, kHelp = 7524;
constexpr int kPlaySound = 7803, kSoundFile = 7804, kPlayContinuously = 7805, kSoundCheck = 7806,
              kStartCommand = 7807, kCommandFile = 7808, kCommandParams = 7809, kParamPool = 7810,
              kCommandCheck = 7811, kOpenSoundFile = 7812, kOpenFile = 7813, kOpenParamFile = 7814,
              kChooseSound = 7815, kChooseCommand = 7816, kParamPoolHint = 7819;

constexpr int kTitleBarButtons = 140; // icon, close, minimize and maximize of a title bar

// The signal page's rows, top to bottom.
struct SignalRow {
    const char *name;  // object names rb<name>Ignore, rb<name>Falls, rb<name>Rises
    const char *label;
    std::int32_t TriggerDef::*field;
};
constexpr SignalRow kSignalRows[] = {
    {"M1", "M1/DSR", &TriggerDef::M1}, {"M2", "M2/CTS", &TriggerDef::M2}, {"M5", "M5/DCD", &TriggerDef::M5},
    {"M3", "M3/RNG", &TriggerDef::M3}, {"S1", "S1/DTR", &TriggerDef::S1}, {"S2", "S2/RTS", &TriggerDef::S2},
};

// Labels of the inactivity page's boxes, in the order of kInactivityEventKeys;
// the error boxes take their words from the string table.
constexpr const char *kEventLineLabels[] = {"D1/Tx",  "D2/Rx",  "S1/DTR", "M1/DSR",
                                            "S2/RTS", "M2/CTS", "M5/DCD", "M3/RNG"};

const QDate kDayZero(1899, 12, 30);

QDate DateOfDay(std::int64_t day) { return kDayZero.addDays(day); }

QTime TimeOfFraction(double fraction)
{
    const auto ms = std::min<long long>(std::llround(fraction * 86400000.0), 86399999);
    return QTime(0, 0).addMSecs(static_cast<int>(ms));
}

QLabel *NewLabel(QWidget *parent, const char *name)
{
    auto *l = new QLabel(parent);
    l->setObjectName(name);
    return l;
}

QCheckBox *NewCheck(QWidget *parent, const char *name)
{
    auto *c = new QCheckBox(parent);
    c->setObjectName(name);
    return c;
}

QLineEdit *NewEdit(QWidget *parent, const char *name)
{
    auto *e = new QLineEdit(parent);
    e->setObjectName(name);
    return e;
}

QPushButton *NewButton(QWidget *parent, const char *name)
{
    auto *b = new QPushButton(parent);
    b->setObjectName(name);
    b->setAutoDefault(false);
    return b;
}

QToolButton *NewBrowseButton(QWidget *parent, const char *name)
{
    auto *b = new QToolButton(parent);
    b->setObjectName(name);
    b->setText(QStringLiteral("..."));
    return b;
}

bool LeavesForOtherWindow(const QEvent *event)
{
    const Qt::FocusReason why = static_cast<const QFocusEvent *>(event)->reason();
    return why == Qt::ActiveWindowFocusReason || why == Qt::PopupFocusReason;
}

} // namespace

TFormTrig::TFormTrig(Prompter &prompter, TriggerLauncher *launcher, QWidget *parent)
    : QDialog(parent), prompter_(prompter), launcher_(launcher)
{
    setObjectName("TFormTrig");
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    setWindowFlag(Qt::WindowStaysOnTopHint, true);

    auto *box = new QVBoxLayout(this);
    box->setSizeConstraint(QLayout::SetFixedSize); // a fixed dialog, as large as its largest page
    buildTopPart();
    auto *top = new QGridLayout;
    top->addWidget(lblTrigName, 0, 0);
    top->addWidget(edTrigName, 0, 1);
    top->addWidget(ckTrigActive, 0, 2);
    top->addWidget(lblTrigDescr, 1, 0);
    top->addWidget(edTrigDescr, 1, 1, 1, 2);
    top->addWidget(lblTrigRec, 2, 0);
    auto *condition = new QHBoxLayout;
    condition->addWidget(cbTrigRec);
    condition->addWidget(lblTrigEvent);
    condition->addWidget(cbTrigEvent);
    condition->addStretch(1);
    top->addLayout(condition, 2, 1, 1, 2);
    top->setColumnStretch(1, 1);
    box->addLayout(top);

    pcTrigger = new QTabWidget(this);
    pcTrigger->setObjectName("pcTrigger");
    pcTrigger->addTab(buildDataPage(), QString());
    pcTrigger->addTab(buildSignalPage(), QString());
    pcTrigger->addTab(buildErrorPage(), QString());
    pcTrigger->addTab(buildTimePage(), QString());
    pcTrigger->addTab(buildInactivityPage(), QString());
    pcTrigger->addTab(buildActionPage(), QString());
    box->addWidget(pcTrigger);

    const DialogButtons buttons = MakeDialogButtons(this);
    btnOK = buttons.ok;
    btnCancel = buttons.cancel;
    btnCancel->setAutoDefault(false); // Enter on any field accepts, even after Cancel had the focus
    btnHelp = buttons.help;
    connect(btnOK, &QPushButton::clicked, this, &TFormTrig::btnOKClick);
    connect(btnCancel, &QPushButton::clicked, this, &TFormTrig::btnCancelClick);
    box->addLayout(buttons.row);

    connect(cbTrigRec, &QComboBox::currentIndexChanged, this, &TFormTrig::cbTrigRecChange);
    connect(cbTrigEvent, &QComboBox::currentIndexChanged, this, &TFormTrig::cbTrigEventChange);
    watchForChanges();
    InitialLoads();
    OpenNew();
}

TFormTrig::~TFormTrig() = default;

void TFormTrig::buildTopPart()
{
    lblTrigName = NewLabel(this, "lblTrigName");
    edTrigName = NewEdit(this, "edTrigName");
    lblTrigName->setBuddy(edTrigName);
    ckTrigActive = NewCheck(this, "ckTrigActive");
    lblTrigDescr = NewLabel(this, "lblTrigDescr");
    edTrigDescr = NewEdit(this, "edTrigDescr");
    lblTrigDescr->setBuddy(edTrigDescr);
    lblTrigRec = NewLabel(this, "lblTrigRec");
    cbTrigRec = new QComboBox(this);
    cbTrigRec->setObjectName("cbTrigRec");
    lblTrigRec->setBuddy(cbTrigRec);
    lblTrigEvent = NewLabel(this, "lblTrigEvent");
    cbTrigEvent = new QComboBox(this);
    cbTrigEvent->setObjectName("cbTrigEvent");
    lblTrigEvent->setBuddy(cbTrigEvent);
    for (int i = 0; i < 3; ++i)
        cbTrigRec->addItem(QString());
    for (int i = 0; i < 4; ++i)
        cbTrigEvent->addItem(QString());
}

QWidget *TFormTrig::buildDataPage()
{
    auto *page = new QWidget;
    page->setObjectName("tsData");
    rbTxData = new QRadioButton(page);
    rbTxData->setObjectName("rbTxData");
    rbRxData = new QRadioButton(page);
    rbRxData->setObjectName("rbRxData");
    DataFields = new PatternFields(page);
    auto *lines = new QHBoxLayout;
    lines->addWidget(rbTxData);
    lines->addWidget(rbRxData);
    lines->addStretch(1);
    auto *box = new QVBoxLayout(page);
    box->addLayout(lines);
    box->addWidget(DataFields);
    box->addStretch(1);
    return page;
}

QWidget *TFormTrig::buildSignalPage()
{
    auto *page = new QWidget;
    page->setObjectName("tsSignal");
    auto *grid = new QGridLayout;
    grid->setHorizontalSpacing(24);
    lblSigIgnore = NewLabel(page, "lblSigIgnore");
    lblSigFalls = NewLabel(page, "lblSigFalls");
    lblSigRises = NewLabel(page, "lblSigRises");
    grid->addWidget(lblSigIgnore, 0, 1, Qt::AlignHCenter);
    grid->addWidget(lblSigFalls, 0, 2, Qt::AlignHCenter);
    grid->addWidget(lblSigRises, 0, 3, Qt::AlignHCenter);
    constexpr const char *kChoices[] = {"Ignore", "Falls", "Rises"}; // = SignalEdge values 0, 1, 2
    for (std::size_t row = 0; row < std::size(kSignalRows); ++row) {
        auto *label = new QLabel(QString::fromLatin1(kSignalRows[row].label), page);
        grid->addWidget(label, static_cast<int>(row) + 1, 0);
        auto *group = new QButtonGroup(page);
        for (int edge = 0; edge < 3; ++edge) {
            auto *rb = new QRadioButton(page);
            rb->setObjectName(QStringLiteral("rb%1%2").arg(QLatin1String(kSignalRows[row].name),
                                                          QLatin1String(kChoices[edge])));
            group->addButton(rb, edge);
            grid->addWidget(rb, static_cast<int>(row) + 1, edge + 1, Qt::AlignHCenter);
        }
        SignalRows[row] = group;
    }
    auto *row = new QHBoxLayout;
    row->addLayout(grid);
    row->addStretch(1);
    auto *box = new QVBoxLayout(page);
    box->addLayout(row);
    box->addStretch(1);
    return page;
}

QWidget *TFormTrig::buildErrorPage()
{
    auto *page = new QWidget;
    page->setObjectName("tsError");
    ckTrigPE = NewCheck(page, "ckTrigPE");
    ckTrigFE = NewCheck(page, "ckTrigFE");
    ckTrigLE = NewCheck(page, "ckTrigLE");
    auto *box = new QVBoxLayout(page);
    box->addWidget(ckTrigPE);
    box->addWidget(ckTrigFE);
    box->addWidget(ckTrigLE);
    box->addStretch(1);
    return page;
}

QWidget *TFormTrig::buildTimePage()
{
    auto *page = new QWidget;
    page->setObjectName("tsTime");
    lblTimeReached = NewLabel(page, "lblTimeReached");
    pkTrigDate = new QDateEdit(page);
    pkTrigDate->setObjectName("pkTrigDate");
    pkTrigDate->setCalendarPopup(true);
    pkTrigDate->setDateRange(QDate(1900, 1, 1), QDate(9999, 12, 31));
    pkTrigTime = new QTimeEdit(page);
    pkTrigTime->setObjectName("pkTrigTime");
    pkTrigTime->setDisplayFormat(QStringLiteral("HH:mm:ss"));
    lblTimeReached->setBuddy(pkTrigDate);
    btnGetTimeNow = NewButton(page, "btnGetTimeNow");
    connect(btnGetTimeNow, &QPushButton::clicked, this, &TFormTrig::btnGetTimeNowClick);
    auto *row = new QHBoxLayout;
    row->addWidget(lblTimeReached);
    row->addWidget(pkTrigDate);
    row->addWidget(pkTrigTime);
    row->addWidget(btnGetTimeNow);
    row->addStretch(1);
    auto *box = new QVBoxLayout(page);
    box->addLayout(row);
    box->addStretch(1);
    return page;
}

QWidget *TFormTrig::buildInactivityPage()
{
    auto *page = new QWidget;
    page->setObjectName("tsInactivity");
    lblInActivityIf = NewLabel(page, "lblInActivityIf");
    csInActivityTime = NewEdit(page, "csInActivityTime");
    csInActivityTime->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]*")), csInActivityTime));
    csInActivityTime->setMaxLength(9);
    csInActivityTime->setAlignment(Qt::AlignRight);
    csInActivityTime->setFixedWidth(csInActivityTime->fontMetrics().horizontalAdvance(QStringLiteral("0000000")) + 12);
    csInActivityTime->installEventFilter(this);
    connect(csInActivityTime, &QLineEdit::returnPressed, this, &TFormTrig::clampSeconds);
    lblInActivityIf->setBuddy(csInActivityTime);
    UpDownSeconds = new UpDown(page);
    UpDownSeconds->setObjectName("UpDownSeconds");
    UpDownSeconds->setRange(kMinInActivitySeconds, kMaxInActivitySeconds);
    UpDownSeconds->setAssociate(csInActivityTime);
    UpDownSeconds->setFixedHeight(csInActivityTime->sizeHint().height());
    lblInActivitySeconds = NewLabel(page, "lblInActivitySeconds");
    lblInActivityEvents = NewLabel(page, "lblInActivityEvents");
    auto *sentence = new QHBoxLayout;
    sentence->setSpacing(4);
    sentence->addWidget(lblInActivityIf);
    sentence->addWidget(csInActivityTime);
    sentence->addWidget(UpDownSeconds);
    sentence->addWidget(lblInActivitySeconds);
    sentence->addWidget(lblInActivityEvents);
    sentence->addStretch(1);

    gbDataLines = new QGroupBox(page);
    gbDataLines->setObjectName("gbDataLines");
    gbControlLines = new QGroupBox(page);
    gbControlLines->setObjectName("gbControlLines");
    gbErrors = new QGroupBox(page);
    gbErrors->setObjectName("gbErrors");
    auto *dataBox = new QVBoxLayout(gbDataLines);
    auto *controlBox = new QGridLayout(gbControlLines);
    auto *errorBox = new QVBoxLayout(gbErrors);
    for (std::size_t i = 0; i < EventChecks.size(); ++i) {
        const std::string name = std::string("ck") + kInactivityEventKeys[i].key; // ckEventD1 ...
        QWidget *owner = i < 2 ? gbDataLines : i < 8 ? gbControlLines : gbErrors;
        QCheckBox *check = NewCheck(owner, name.c_str());
        EventChecks[i] = check;
        if (i < 8)
            check->setText(QString::fromLatin1(kEventLineLabels[i]));
        if (i < 2) {
            dataBox->addWidget(check);
        } else if (i < 8) {
            const int k = static_cast<int>(i) - 2; // S1 M1 / S2 M2 / M5 M3 in pairs
            controlBox->addWidget(check, k / 2, k % 2);
        } else {
            errorBox->addWidget(check);
        }
    }
    dataBox->addStretch(1);
    errorBox->addStretch(1);
    auto *groups = new QHBoxLayout;
    groups->addWidget(gbDataLines);
    groups->addWidget(gbControlLines);
    groups->addWidget(gbErrors);
    groups->addStretch(1);

    auto *box = new QVBoxLayout(page);
    box->addLayout(sentence);
    box->addLayout(groups);
    box->addStretch(1);
    return page;
}

QWidget *TFormTrig::buildActionPage()
{
    auto *page = new QWidget;
    page->setObjectName("tsAction");
    cbPlaySound = NewCheck(page, "cbPlaySound");
    lblSoundFilePath = NewLabel(page, "lblSoundFilePath");
    edtSoundFilePath = NewEdit(page, "edtSoundFilePath");
    lblSoundFilePath->setBuddy(edtSoundFilePath);
    btnBrowseSoundFile = NewBrowseButton(page, "btnBrowseSoundFile");
    btnSoundCheck = NewButton(page, "btnSoundCheck");
    cbPlayContinuously = NewCheck(page, "cbPlayContinuously");

    cbStartExtCommand = NewCheck(page, "cbStartExtCommand");
    lblExtCommandFilePath = NewLabel(page, "lblExtCommandFilePath");
    edtExtCommandFilePath = NewEdit(page, "edtExtCommandFilePath");
    lblExtCommandFilePath->setBuddy(edtExtCommandFilePath);
    btnBrowseExtCommand = NewBrowseButton(page, "btnBrowseExtCommand");
    lblExtCommandParams = NewLabel(page, "lblExtCommandParams");
    edtExtCommandParams = NewEdit(page, "edtExtCommandParams");
    lblExtCommandParams->setBuddy(edtExtCommandParams);
    btnBrowseParamFile = NewBrowseButton(page, "btnBrowseParamFile");
    btnBrowseParamFile->hide(); // kept for a parameter file the command may one day read
    btnOpenParamPool = NewButton(page, "btnOpenParamPool");
    btnCommandCheck = NewButton(page, "btnCommandCheck");

    connect(cbPlaySound, &QCheckBox::toggled, this, &TFormTrig::SetPlaySoundControls);
    connect(cbStartExtCommand, &QCheckBox::toggled, this, &TFormTrig::SetStartExtCommandControls);
    connect(btnBrowseSoundFile, &QToolButton::clicked, this, &TFormTrig::btnBrowseSoundFileClick);
    connect(btnBrowseExtCommand, &QToolButton::clicked, this, &TFormTrig::btnBrowseExtCommandClick);
    connect(btnSoundCheck, &QPushButton::clicked, this, &TFormTrig::btnSoundCheckClick);
    connect(btnCommandCheck, &QPushButton::clicked, this, &TFormTrig::btnCommandCheckClick);
    connect(btnOpenParamPool, &QPushButton::clicked, this, &TFormTrig::btnOpenParamPoolClick);

    auto *grid = new QGridLayout(page);
    grid->setColumnMinimumWidth(0, 16);
    grid->addWidget(cbPlaySound, 0, 0, 1, 4);
    grid->addWidget(lblSoundFilePath, 1, 1);
    grid->addWidget(edtSoundFilePath, 1, 2);
    grid->addWidget(btnBrowseSoundFile, 1, 3);
    auto *soundRow = new QHBoxLayout;
    soundRow->addWidget(cbPlayContinuously);
    soundRow->addStretch(1);
    soundRow->addWidget(btnSoundCheck);
    grid->addLayout(soundRow, 2, 2);
    grid->setRowMinimumHeight(3, 12);
    grid->addWidget(cbStartExtCommand, 4, 0, 1, 4);
    grid->addWidget(lblExtCommandFilePath, 5, 1);
    grid->addWidget(edtExtCommandFilePath, 5, 2);
    grid->addWidget(btnBrowseExtCommand, 5, 3);
    grid->addWidget(lblExtCommandParams, 6, 1);
    grid->addWidget(edtExtCommandParams, 6, 2);
    grid->addWidget(btnBrowseParamFile, 6, 3);
    auto *commandRow = new QHBoxLayout;
    commandRow->addWidget(btnOpenParamPool);
    commandRow->addStretch(1);
    commandRow->addWidget(btnCommandCheck);
    grid->addLayout(commandRow, 7, 2);
    grid->setColumnStretch(2, 1);
    grid->setRowStretch(8, 1);
    return page;
}

void TFormTrig::watchForChanges()
{
    for (QLineEdit *e : {edTrigName, edTrigDescr, csInActivityTime, edtSoundFilePath, edtExtCommandFilePath,
                         edtExtCommandParams})
        connect(e, &QLineEdit::textChanged, this, &TFormTrig::MarkChanged);
    std::vector<QCheckBox *> checks{ckTrigActive, ckTrigPE, ckTrigFE, ckTrigLE, cbPlaySound, cbPlayContinuously,
                                    cbStartExtCommand};
    checks.insert(checks.end(), EventChecks.begin(), EventChecks.end());
    for (QCheckBox *c : checks)
        connect(c, &QCheckBox::toggled, this, &TFormTrig::MarkChanged);
    for (QComboBox *c : {cbTrigRec, cbTrigEvent})
        connect(c, &QComboBox::currentIndexChanged, this, &TFormTrig::MarkChanged);
    connect(rbTxData, &QRadioButton::toggled, this, &TFormTrig::MarkChanged);
    for (QButtonGroup *g : SignalRows)
        connect(g, &QButtonGroup::idToggled, this, &TFormTrig::MarkChanged);
    connect(pkTrigDate, &QDateEdit::dateChanged, this, &TFormTrig::MarkChanged);
    connect(pkTrigTime, &QTimeEdit::timeChanged, this, &TFormTrig::MarkChanged);
    connect(DataFields, &PatternFields::patternEdited, this, &TFormTrig::MarkChanged);
}

void TFormTrig::InitialLoads()
{
    const bool was = loading_;
    loading_ = true;
    setWindowTitle(S(kCaption));
    lblTrigName->setText(S(kNameLabel));
    ckTrigActive->setText(S(kActiveBox));
    lblTrigDescr->setText(S(kDescrLabel));
    lblTrigRec->setText(S(kConditionLabel));
    lblTrigEvent->setText(S(kAtLabel));
    for (int i = 0; i < cbTrigRec->count(); ++i)
        cbTrigRec->setItemText(i, S(kTypeTexts + i));
    for (int i = 0; i < cbTrigEvent->count(); ++i)
        cbTrigEvent->setItemText(i, S(kEventTexts + i));
    for (int page = TrigPage::Data; page <= TrigPage::Inactivity; ++page)
        pcTrigger->setTabText(page, S(kEventTexts + page));
    pcTrigger->setTabText(TrigPage::Action, S(kActionPage));

    rbTxData->setText(S(kTxData));
    rbRxData->setText(S(kRxData));
    DataFields->InitialLoads();
    lblSigIgnore->setText(S(kEdgeTexts + SignalEdge::Ignore));
    lblSigFalls->setText(S(kEdgeTexts + SignalEdge::Falls));
    lblSigRises->setText(S(kEdgeTexts + SignalEdge::Rises));
    ckTrigPE->setText(S(kParityError));
    ckTrigFE->setText(S(kFramingError));
    ckTrigLE->setText(S(kLineError));
    lblTimeReached->setText(S(kTimeReached));
    btnGetTimeNow->setText(S(kNow));
    // The date as people of the language write it, always with the whole year.
    pkTrigDate->setDisplayFormat(GlobalLang() == kLangEnglish ? QStringLiteral("yyyy-MM-dd")
                                                              : QStringLiteral("dd.MM.yyyy"));
    lblInActivityIf->setText(S(kInactiveIf));
    lblInActivitySeconds->setText(S(kSeconds));
    lblInActivityEvents->setText(S(kInactiveEvents).trimmed());
    gbDataLines->setTitle(S(kDataLines));
    gbControlLines->setTitle(S(kControlLines));
    gbErrors->setTitle(S(kErrorsBox));
    EventChecks[8]->setText(S(kParity));
    EventChecks[9]->setText(S(kFraming));
    EventChecks[10]->setText(S(kLine));

    cbPlaySound->setText(S(kPlaySound));
    lblSoundFilePath->setText(S(kSoundFile));
    btnBrowseSoundFile->setToolTip(S(kChooseSound));
    btnSoundCheck->setText(S(kSoundCheck));
    cbPlayContinuously->setText(S(kPlayContinuously));
    cbStartExtCommand->setText(S(kStartCommand));
    lblExtCommandFilePath->setText(S(kCommandFile));
    btnBrowseExtCommand->setToolTip(S(kChooseCommand));
    lblExtCommandParams->setText(S(kCommandParams));
    btnBrowseParamFile->setToolTip(S(kOpenParamFile));
    btnOpenParamPool->setText(S(kParamPool));
    btnOpenParamPool->setToolTip(S(kParamPoolHint));
    btnCommandCheck->setText(S(kCommandCheck));

    btnOK->setText(S(kOk));
    btnCancel->setText(S(kCancel));
    btnHelp->setText(S(kHelp));
    if (paramPool_ != nullptr)
        paramPool_->InitialLoads();
    setMinimumWidth(fontMetrics().horizontalAdvance(windowTitle()) + kTitleBarButtons);
    loading_ = was;
}

void TFormTrig::OpenNew()
{
    TriggerDef t;
    t.Name = Str(kDefaultName);
    t.D1 = true;
    t.InActivityTime = kMinInActivitySeconds;
    const QDateTime now = QDateTime::currentDateTime();
    t.TimeReached = static_cast<double>(kDayZero.daysTo(now.date())) + now.time().msecsSinceStartOfDay() / 86400000.0;
    editing_ = t;
    editExisting_ = false;
    SetTriggerToFormValues(t);
    pcTrigger->setCurrentIndex(TrigPage::Data);
}

void TFormTrig::OpenExisting(const TriggerDef &trigger)
{
    editing_ = trigger;
    editExisting_ = true;
    SetTriggerToFormValues(trigger);
}

std::optional<TriggerDef> TFormTrig::ExecNew()
{
    OpenNew();
    if (exec() == QDialog::Accepted)
        return accepted_;
    return std::nullopt;
}

std::optional<TriggerDef> TFormTrig::ExecEdit(const TriggerDef &trigger)
{
    OpenExisting(trigger);
    if (exec() == QDialog::Accepted)
        return accepted_;
    return std::nullopt;
}

void TFormTrig::SetTriggerToFormValues(const TriggerDef &t)
{
    const bool was = loading_;
    loading_ = true;
    edTrigName->setText(QString::fromStdString(t.Name));
    ckTrigActive->setChecked(t.Active);
    edTrigDescr->setText(QString::fromStdString(t.Description));
    cbTrigEvent->setCurrentIndex(EventBoxIndexOf(t.Event));
    cbTrigRec->setCurrentIndex(ConditionBoxIndexOf(t.Type));

    // One of the two lines; a trigger that watches both (from a hand-made file) shows D1.
    rbTxData->setChecked(t.D1 || !t.D2);
    rbRxData->setChecked(!t.D1 && t.D2);
    DataFields->setHexText(QString::fromStdString(t.Data));

    for (std::size_t row = 0; row < std::size(kSignalRows); ++row) {
        const std::int32_t edge = t.*kSignalRows[row].field;
        QAbstractButton *b = SignalRows[row]->button(edge >= SignalEdge::Ignore && edge <= SignalEdge::Rises
                                                         ? edge
                                                         : SignalEdge::Ignore);
        b->setChecked(true);
    }
    ckTrigPE->setChecked(t.PE);
    ckTrigFE->setChecked(t.FE);
    ckTrigLE->setChecked(t.LE);

    const DateTimeParts when = SplitDateTime(t.TimeReached);
    pkTrigDate->setDate(DateOfDay(when.day));
    pkTrigTime->setTime(TimeOfFraction(when.time));

    csInActivityTime->setText(QString::number(ClampInActivitySeconds(t.InActivityTime)));
    for (std::size_t i = 0; i < EventChecks.size(); ++i)
        EventChecks[i]->setChecked(t.*kInactivityEventKeys[i].field);

    cbPlaySound->setChecked(t.PlaySound);
    edtSoundFilePath->setText(QString::fromStdString(t.SoundFilePath));
    cbPlayContinuously->setChecked(t.PlaySoundRepeat);
    cbStartExtCommand->setChecked(t.ExecCommand);
    edtExtCommandFilePath->setText(QString::fromStdString(t.CommandFilePath));
    edtExtCommandParams->setText(QString::fromStdString(t.CommandParams));
    SetPlaySoundControls();
    SetStartExtCommandControls();
    cbTrigRecChange();
    loading_ = was;
    ChangesMade = false;
}

TriggerDef TFormTrig::FormValues() const
{
    TriggerDef t;
    t.number = editing_.number;
    t.portHandle = editing_.portHandle;
    t.Name = edTrigName->text().toStdString();
    t.Active = ckTrigActive->isChecked();
    t.Description = edTrigDescr->text().toStdString();
    t.Type = ConditionBoxIndexOf(cbTrigRec->currentIndex());
    t.Event = EventOfCondition(t.Type, cbTrigEvent->currentIndex());

    t.D1 = rbTxData->isChecked();
    t.D2 = rbRxData->isChecked();
    t.Data = DataFields->hexText().toStdString();

    for (std::size_t row = 0; row < std::size(kSignalRows); ++row) {
        const int edge = SignalRows[row]->checkedId();
        t.*kSignalRows[row].field = edge < 0 ? SignalEdge::Ignore : edge;
    }
    t.PE = ckTrigPE->isChecked();
    t.FE = ckTrigFE->isChecked();
    t.LE = ckTrigLE->isChecked();

    const double date = static_cast<double>(kDayZero.daysTo(pkTrigDate->date()));
    const double time = pkTrigTime->time().msecsSinceStartOfDay() / 86400000.0;
    t.TimeReached = ComposeTimeReached(date, time);

    t.InActivityTime = InActivitySecondsFromText(csInActivityTime->text().toStdString());
    for (std::size_t i = 0; i < EventChecks.size(); ++i)
        t.*kInactivityEventKeys[i].field = EventChecks[i]->isChecked();

    t.PlaySound = cbPlaySound->isChecked();
    t.SoundFilePath = edtSoundFilePath->text().toStdString();
    t.PlaySoundRepeat = cbPlayContinuously->isChecked();
    t.ExecCommand = cbStartExtCommand->isChecked();
    t.CommandFilePath = edtExtCommandFilePath->text().toStdString();
    t.CommandParams = edtExtCommandParams->text().toStdString();
    return t;
}

void TFormTrig::TrigTabVisible()
{
    const int event = EventOfCondition(cbTrigRec->currentIndex(), cbTrigEvent->currentIndex());
    // Show the new page before hiding the old one, so the tab bar never has to pick one itself.
    pcTrigger->setTabVisible(event, true);
    pcTrigger->setCurrentIndex(event);
    for (int page = TrigPage::Data; page <= TrigPage::Inactivity; ++page)
        pcTrigger->setTabVisible(page, page == event);
    pcTrigger->setTabVisible(TrigPage::Action, true);
}

void TFormTrig::cbTrigRecChange()
{
    const bool shown = EventBoxShown(cbTrigRec->currentIndex());
    lblTrigEvent->setVisible(shown);
    cbTrigEvent->setVisible(shown);
    TrigTabVisible();
}

void TFormTrig::cbTrigEventChange() { TrigTabVisible(); }

void TFormTrig::SetPlaySoundControls()
{
    const bool on = cbPlaySound->isChecked();
    for (QWidget *w : std::initializer_list<QWidget *>{lblSoundFilePath, edtSoundFilePath, btnBrowseSoundFile,
                                                       cbPlayContinuously})
        w->setEnabled(on);
    btnSoundCheck->setEnabled(on && launcher_ != nullptr);
}

void TFormTrig::SetStartExtCommandControls()
{
    const bool on = cbStartExtCommand->isChecked();
    for (QWidget *w : std::initializer_list<QWidget *>{lblExtCommandFilePath, edtExtCommandFilePath,
                                                       lblExtCommandParams, edtExtCommandParams,
                                                       btnBrowseExtCommand, btnOpenParamPool})
        w->setEnabled(on);
    btnCommandCheck->setEnabled(on && launcher_ != nullptr);
}

void TFormTrig::MarkChanged()
{
    if (!loading_)
        ChangesMade = true;
}

void TFormTrig::clampSeconds()
{
    const QString clamped = QString::number(InActivitySecondsFromText(csInActivityTime->text().toStdString()));
    if (csInActivityTime->text() != clamped)
        csInActivityTime->setText(clamped);
}

bool TFormTrig::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == csInActivityTime) {
        if (event->type() == QEvent::FocusOut && !LeavesForOtherWindow(event)) {
            clampSeconds();
        } else if (event->type() == QEvent::KeyPress) {
            const int key = static_cast<QKeyEvent *>(event)->key();
            if (key == Qt::Key_Up || key == Qt::Key_Down) {
                UpDownSeconds->step(key == Qt::Key_Up ? 1 : -1);
                return true;
            }
        }
    }
    return QDialog::eventFilter(watched, event);
}

void TFormTrig::btnGetTimeNowClick()
{
    const QDateTime now = QDateTime::currentDateTime();
    pkTrigDate->setDate(now.date());
    pkTrigTime->setTime(now.time());
}

void TFormTrig::btnBrowseSoundFileClick()
{
    QString start = QFileInfo(edtSoundFilePath->text()).absolutePath();
    if (edtSoundFilePath->text().isEmpty() || !QDir(start).exists())
        start = !soundFolder_.isEmpty() && QDir(soundFolder_).exists() ? soundFolder_ : QDir::homePath();
    const QString file = QFileDialog::getOpenFileName(this, S(kOpenSoundFile), start,
                                                      QStringLiteral("Sounds (*.wav *.WAV *.mp3 *.MP3)"));
    if (!file.isEmpty())
        edtSoundFilePath->setText(file);
}

void TFormTrig::btnBrowseExtCommandClick()
{
    const QString now = edtExtCommandFilePath->text();
    const QString start = now.contains(QLatin1Char('/')) && QFileInfo(now).dir().exists()
                              ? QFileInfo(now).absolutePath()
                              : QDir::homePath();
    const QString file = QFileDialog::getOpenFileName(this, S(kOpenFile), start);
    if (!file.isEmpty())
        edtExtCommandFilePath->setText(file);
}

void TFormTrig::btnSoundCheckClick()
{
    if (launcher_ != nullptr)
        (void)launcher_->testSound(edtSoundFilePath->text().toStdString(), cbPlayContinuously->isChecked());
}

void TFormTrig::btnCommandCheckClick()
{
    if (launcher_ != nullptr)
        (void)launcher_->testCommand(FormValues());
}

void TFormTrig::btnOpenParamPoolClick()
{
    if (paramPool_ == nullptr)
        paramPool_ = new TFormTrigParams(this);
    paramPool_->InitialLoads();
    paramPool_->setTarget(edtExtCommandParams);
    paramPool_->exec();
    edtExtCommandParams->setFocus(Qt::OtherFocusReason);
}

void TFormTrig::btnOKClick()
{
    const TriggerDef t = FormValues();
    if (const std::optional<int> refusal = CheckTriggerForOk(t, files_)) {
        prompter_.ShowMessage(Str(TrigFormMsg::Title), Str(*refusal), Buttons::Ok, Icon::Warning);
        return;
    }
    if (editExisting_ && prompter_.ShowMessage(Str(TrigFormMsg::Title), Str(TrigFormMsg::Overwrite),
                                               Buttons::YesNo, Icon::Confirmation) != MsgResult::Yes)
        return;
    accepted_ = t;
    accept();
}

void TFormTrig::btnCancelClick()
{
    if (!ChangesMade) {
        QDialog::reject();
        return;
    }
    switch (prompter_.ShowMessage(Str(TrigFormMsg::Title), Str(TrigFormMsg::SaveChanges), Buttons::YesNoCancel,
                                  Icon::Confirmation)) {
    case MsgResult::Yes:
        btnOKClick(); // may refuse and stay open
        return;
    case MsgResult::No:
        QDialog::reject();
        return;
    default:
        return; // stay
    }
}

void TFormTrig::reject() { btnCancelClick(); }

} // namespace kestrel
