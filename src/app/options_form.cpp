#include "app/options_form.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTabWidget>
#include <QVBoxLayout>
#include <algorithm>

#include "app/dialog_buttons.h"
#include "app/selector_form.h"
#include "base/prompt.h"
#include "base/string_table.h"
#include "config/options_confirm.h"
#include "config/options_fields.h"
#include "config/styles.h"
#include "ports/port_scan.h"

namespace kestrel {

namespace {

QString S(int n) { return QString::fromStdString(Str(n)); }
QString Q(const std::string &s) { return QString::fromStdString(s); }

constexpr int kTitle = 9210;
constexpr int kNoPortFound = 7646;
constexpr int kPlatformLook = 9219;
constexpr int kWarningTitle = 205;
constexpr int kErrorTitle = 206;

QLabel *NamedLabel(const char *name, QWidget *parent)
{
    auto *l = new QLabel(parent);
    l->setObjectName(name);
    return l;
}

QPushButton *EditButton(const char *name, QWidget *parent)
{
    auto *b = new QPushButton(parent);
    b->setObjectName(name);
    b->setAutoDefault(false);
    return b;
}

} // namespace

TFormOptions::TFormOptions(Prompter &prompter, QWidget *parent) : QDialog(parent), prompter_(prompter)
{
    setObjectName("TFormOptions");
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);

    pcOptions = new QTabWidget(this);
    pcOptions->setObjectName("pcOptions");

    // --- Programmstart ---
    tabProgStart = new QWidget;
    tabProgStart->setObjectName("tabProgStart");
    cbBeginRecAtProgStart = new QCheckBox(tabProgStart);
    cbBeginRecAtProgStart->setObjectName("cbBeginRecAtProgStart");
    lblBeginRecordHint = NamedLabel("lblBeginRecordHint", tabProgStart);
    lblBeginRecordHint->setWordWrap(true);
    cbDispHoldAtProgStart = new QCheckBox(tabProgStart);
    cbDispHoldAtProgStart->setObjectName("cbDispHoldAtProgStart");
    {
        auto *box = new QVBoxLayout(tabProgStart);
        box->setContentsMargins(16, 16, 16, 16);
        box->addWidget(cbBeginRecAtProgStart);
        auto *hint = new QHBoxLayout;
        hint->addSpacing(24);
        hint->addWidget(lblBeginRecordHint, 1);
        box->addLayout(hint);
        box->addSpacing(12);
        box->addWidget(cbDispHoldAtProgStart);
        box->addStretch(1);
    }

    // --- Display ---
    tabDisplay = new QWidget;
    tabDisplay->setObjectName("tabDisplay");
    lblTheme = NamedLabel("lblTheme", tabDisplay);
    cbTheme = new QComboBox(tabDisplay);
    cbTheme->setObjectName("cbTheme");
    cbTheme->setMinimumWidth(220);
    lblTheme->setBuddy(cbTheme);
    lblThemeHint = NamedLabel("lblThemeHint", tabDisplay);
    lblThemeHint->setWordWrap(true);
    connect(cbTheme, &QComboBox::currentIndexChanged, this, &TFormOptions::cbThemeChange);
    {
        auto *box = new QVBoxLayout(tabDisplay);
        box->setContentsMargins(16, 16, 16, 16);
        auto *row = new QHBoxLayout;
        row->addWidget(lblTheme);
        row->addWidget(cbTheme);
        row->addStretch(1);
        box->addLayout(row);
        box->addSpacing(8);
        box->addWidget(lblThemeHint);
        box->addStretch(1);
    }

    // --- Interface ---
    tabInterface = new QWidget;
    tabInterface->setObjectName("tabInterface");
    gbPorts = new QGroupBox(tabInterface);
    gbPorts->setObjectName("gbPorts");
    lblComA = NamedLabel("lblComA", gbPorts);
    cbComA = new QComboBox(gbPorts);
    cbComA->setObjectName("cbComA");
    lblComB = NamedLabel("lblComB", gbPorts);
    cbComB = new QComboBox(gbPorts);
    cbComB->setObjectName("cbComB");
    for (QComboBox *c : {cbComA, cbComB}) {
        c->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        c->setMinimumContentsLength(36);
    }
    lblComA->setBuddy(cbComA);
    lblComB->setBuddy(cbComB);
    {
        auto *form = new QFormLayout(gbPorts);
        form->addRow(lblComA, cbComA);
        form->addRow(lblComB, cbComB);
    }

    gbHwProfile = new QGroupBox(tabInterface);
    gbHwProfile->setObjectName("gbHwProfile");
    lblSelHwProfile = NamedLabel("lblSelHwProfile", gbHwProfile);
    cbSelHwProfile = new QComboBox(gbHwProfile);
    cbSelHwProfile->setObjectName("cbSelHwProfile");
    cbSelHwProfile->setEditable(true); // a new name creates a new profile
    cbSelHwProfile->setInsertPolicy(QComboBox::NoInsert);
    cbSelHwProfile->lineEdit()->setMaxLength(200);
    lblInterfaceName = NamedLabel("lblInterfaceName", gbHwProfile);
    edInterfaceName = new QLineEdit(gbHwProfile);
    edInterfaceName->setObjectName("edInterfaceName");
    lblManufacturer = NamedLabel("lblManufacturer", gbHwProfile);
    edManufacturer = new QLineEdit(gbHwProfile);
    edManufacturer->setObjectName("edManufacturer");
    for (QLineEdit *e : {edInterfaceName, edManufacturer})
        e->setMaxLength(200);
    lblSelHwProfile->setBuddy(cbSelHwProfile);
    lblInterfaceName->setBuddy(edInterfaceName);
    lblManufacturer->setBuddy(edManufacturer);
    connect(cbSelHwProfile, &QComboBox::activated, this, &TFormOptions::cbSelHwProfileSelect);
    {
        auto *form = new QFormLayout(gbHwProfile);
        form->addRow(lblSelHwProfile, cbSelHwProfile);
        form->addRow(lblInterfaceName, edInterfaceName);
        form->addRow(lblManufacturer, edManufacturer);
    }

    gbPortValues = new QGroupBox(tabInterface);
    gbPortValues->setObjectName("gbPortValues");
    lblBaudrates = NamedLabel("lblBaudrates", gbPortValues);
    edBaudrates = new QPlainTextEdit(gbPortValues);
    edBaudrates->setObjectName("edBaudrates");
    edBaudrates->setTabChangesFocus(true);
    edBaudrates->setFixedHeight(edBaudrates->fontMetrics().lineSpacing() * 3 + 12);
    btnSelectBaudRates = EditButton("btnSelectBaudRates", gbPortValues);
    lblDatabits = NamedLabel("lblDatabits", gbPortValues);
    edDatabits = new QLineEdit(gbPortValues);
    edDatabits->setObjectName("edDatabits");
    btnEditDatabits = EditButton("btnEditDatabits", gbPortValues);
    lblParities = NamedLabel("lblParities", gbPortValues);
    edParities = new QLineEdit(gbPortValues);
    edParities->setObjectName("edParities");
    btnEditParities = EditButton("btnEditParities", gbPortValues);
    btnEditParities->setEnabled(false); // the parities are typed; the selector offers no letters
    lblStopbits = NamedLabel("lblStopbits", gbPortValues);
    edStopbits = new QLineEdit(gbPortValues);
    edStopbits->setObjectName("edStopbits");
    btnEditStopbits = EditButton("btnEditStopbits", gbPortValues);
    for (QLineEdit *e : {edDatabits, edParities, edStopbits})
        e->setMaxLength(200);
    edParities->setText("N,S,M,E,O");
    edStopbits->setText("1,1.5,2");
    edDatabits->setText("5,6,7,8");
    lblBaudrates->setBuddy(edBaudrates);
    lblDatabits->setBuddy(edDatabits);
    lblParities->setBuddy(edParities);
    lblStopbits->setBuddy(edStopbits);
    connect(btnSelectBaudRates, &QPushButton::clicked, this, &TFormOptions::btnSelectBaudRatesClick);
    connect(btnEditDatabits, &QPushButton::clicked, this, &TFormOptions::btnEditDatabitsClick);
    connect(btnEditStopbits, &QPushButton::clicked, this, &TFormOptions::btnEditStopbitsClick);
    {
        auto *grid = new QGridLayout(gbPortValues);
        int row = 0;
        for (auto [label, field, button] : {std::tuple<QLabel *, QWidget *, QPushButton *>{lblBaudrates, edBaudrates, btnSelectBaudRates},
                                            {lblDatabits, edDatabits, btnEditDatabits},
                                            {lblParities, edParities, btnEditParities},
                                            {lblStopbits, edStopbits, btnEditStopbits}}) {
            grid->addWidget(label, row, 0, Qt::AlignLeft | Qt::AlignTop);
            grid->addWidget(field, row, 1);
            grid->addWidget(button, row, 2, Qt::AlignTop);
            ++row;
        }
        grid->setColumnStretch(1, 1);
    }
    {
        auto *box = new QVBoxLayout(tabInterface);
        box->addWidget(gbPorts);
        box->addWidget(gbHwProfile);
        box->addWidget(gbPortValues);
        box->addStretch(1);
    }

    // --- Update ---
    tabUpdate = new QWidget;
    tabUpdate->setObjectName("tabUpdate");
    cbCheckForUpdatesOnStartup = new QCheckBox(tabUpdate);
    cbCheckForUpdatesOnStartup->setObjectName("cbCheckForUpdatesOnStartup");
    cbCheckForUpdatesOnStartup->setChecked(true);
    {
        auto *box = new QVBoxLayout(tabUpdate);
        box->setContentsMargins(16, 16, 16, 16);
        box->addWidget(cbCheckForUpdatesOnStartup);
        box->addStretch(1);
    }

    pcOptions->addTab(tabProgStart, QString());
    pcOptions->addTab(tabDisplay, QString());
    pcOptions->addTab(tabInterface, QString());
    pcOptions->addTab(tabUpdate, QString());

    const DialogButtons buttons = MakeDialogButtons(this, "btnAbort");
    btnOK = buttons.ok;
    btnAbort = buttons.cancel;
    btnAbort->setAutoDefault(false);
    btnHelp = buttons.help;
    connect(btnOK, &QPushButton::clicked, this, &TFormOptions::btnOKClick);
    connect(btnAbort, &QPushButton::clicked, this, &TFormOptions::btnAbortClick);
    auto *box = new QVBoxLayout(this);
    box->addWidget(pcOptions, 1);
    box->addLayout(buttons.row);
    setMinimumWidth(600);
    InitialLoads();
}

void TFormOptions::InitialLoads()
{
    setWindowTitle(S(kTitle));
    pcOptions->setTabText(OptionsPage::ProgStart, S(9211));
    pcOptions->setTabText(OptionsPage::Display, S(9212));
    pcOptions->setTabText(OptionsPage::Interface, S(9213));
    pcOptions->setTabText(OptionsPage::Update, S(9214));
    cbBeginRecAtProgStart->setText(S(9215));
    lblBeginRecordHint->setText(S(9216));
    cbDispHoldAtProgStart->setText(S(9217));
    lblTheme->setText(S(9218));
    if (cbTheme->count() > 0)
        cbTheme->setItemText(0, S(kPlatformLook));
    lblThemeHint->setText(S(9220));
    gbPorts->setTitle(S(9221));
    lblComA->setText(S(9222));
    lblComB->setText(S(9223));
    for (QComboBox *c : {cbComA, cbComB}) {
        if (setup_.ports.empty() && c->count() == 1)
            c->setItemText(0, S(kNoPortFound));
        c->setToolTip(S(9224));
    }
    gbHwProfile->setTitle(S(9225));
    lblSelHwProfile->setText(S(9226));
    cbSelHwProfile->setToolTip(S(9238));
    lblInterfaceName->setText(S(9227));
    lblManufacturer->setText(S(9228));
    gbPortValues->setTitle(S(9229));
    lblBaudrates->setText(S(9230));
    lblDatabits->setText(S(9231));
    lblParities->setText(S(9232));
    lblStopbits->setText(S(9233));
    for (QPushButton *b : {btnSelectBaudRates, btnEditDatabits, btnEditParities, btnEditStopbits})
        b->setText(S(9234));
    btnEditParities->setToolTip(S(9235));
    edParities->setToolTip(S(9235));
    cbCheckForUpdatesOnStartup->setText(S(9236));
    btnOK->setText(S(6006));
    btnAbort->setText(S(6003));
    btnHelp->setText(S(7524));
    if (FormSelector != nullptr)
        FormSelector->InitialLoads();
    // The fields of the three groups line up, whatever the language makes of the labels.
    const QList<QLabel *> labels{lblComA,  lblComB,     lblSelHwProfile, lblInterfaceName, lblManufacturer,
                                 lblBaudrates, lblDatabits, lblParities,     lblStopbits};
    int widest = 0;
    for (QLabel *l : labels) {
        l->setMinimumWidth(0);
        widest = std::max(widest, l->sizeHint().width());
    }
    for (QLabel *l : labels)
        l->setMinimumWidth(widest);
}

void TFormOptions::Open(const OptionsSetup &setup, int page)
{
    setup_ = setup;
    const ProgramConfig &cfg = setup_.config;
    cbBeginRecAtProgStart->setChecked(cfg.BeginRecordOnProgStart);
    cbDispHoldAtProgStart->setChecked(cfg.DisplayHoldOnProgStart);
    cbCheckForUpdatesOnStartup->setChecked(cfg.CheckForUpdatesAtProgStart);

    {
        const QSignalBlocker quiet(cbTheme);
        cbTheme->clear();
        for (int slot : StyleChoices(cfg))
            cbTheme->addItem(slot == 0 ? S(kPlatformLook) : Q(cfg.skins[static_cast<std::size_t>(slot)].Name), slot);
        styleShown_ = StyleSlotInUse(cfg, setup_.style);
        cbTheme->setCurrentIndex(std::max(0, cbTheme->findData(styleShown_)));
    }
    FillPorts();
    FillProfileList(ListHardwareProfiles(setup_.dataFolder), cfg.Profile);
    ShowProfile(ProfileFieldsOnShow(setup_.dataFolder, cfg));
    pcOptions->setCurrentIndex(std::clamp(page, 0, pcOptions->count() - 1));
    InitialLoads();
}

void TFormOptions::FillPorts()
{
    const int count = static_cast<int>(setup_.ports.size());
    for (auto [combo, index] : {std::pair{cbComA, setup_.portA}, {cbComB, setup_.portB}}) {
        const QSignalBlocker quiet(combo);
        combo->clear();
        for (const std::string &device : setup_.ports) {
            combo->addItem(Q(PortDisplayName(device)), Q(device));
            combo->setItemData(combo->count() - 1, Q(device), Qt::ToolTipRole);
        }
        if (count == 0)
            combo->addItem(S(kNoPortFound));
        combo->setEnabled(count > 0);
        combo->setCurrentIndex(index >= 0 && index < count ? index : 0);
    }
}

void TFormOptions::FillProfileList(const std::vector<std::string> &names, const std::string &current)
{
    const QSignalBlocker quiet(cbSelHwProfile);
    cbSelHwProfile->clear();
    for (const std::string &name : names)
        cbSelHwProfile->addItem(Q(name));
    const int at = cbSelHwProfile->findText(Q(current));
    if (at >= 0)
        cbSelHwProfile->setCurrentIndex(at);
    else
        cbSelHwProfile->setEditText(Q(current)); // in use, but not written yet (the first start)
}

void TFormOptions::ShowProfile(const HardwareProfile &profile)
{
    edInterfaceName->setText(Q(profile.Name));
    edManufacturer->setText(Q(profile.Manufacturer));
    for (PortValueKind kind :
         {PortValueKind::BaudRates, PortValueKind::DataBits, PortValueKind::Parities, PortValueKind::StopBits})
        setListText(kind, ValuesOf(profile.lists, kind));
    profilePorts_.assign(profile.ports.begin(), profile.ports.end());
}

QString TFormOptions::listText(PortValueKind kind) const
{
    switch (kind) {
    case PortValueKind::BaudRates: return edBaudrates->toPlainText();
    case PortValueKind::DataBits: return edDatabits->text();
    case PortValueKind::Parities: return edParities->text();
    case PortValueKind::StopBits: break;
    }
    return edStopbits->text();
}

void TFormOptions::setListText(PortValueKind kind, const std::vector<std::string> &values)
{
    const QString text = Q(ValueListFieldText(values));
    switch (kind) {
    case PortValueKind::BaudRates: {
        // A blank after each comma lets the lines break between the rates, not inside one.
        QStringList items;
        for (const std::string &v : values)
            items << Q(ValueListFieldText({v}));
        edBaudrates->setPlainText(items.join(", "));
        return;
    }
    case PortValueKind::DataBits: edDatabits->setText(text); return;
    case PortValueKind::Parities: edParities->setText(text); return;
    case PortValueKind::StopBits: edStopbits->setText(text); return;
    }
}

HardwareProfile TFormOptions::FieldsProfile() const
{
    HardwareProfile p;
    p.Name = edInterfaceName->text().toStdString();
    p.Manufacturer = edManufacturer->text().toStdString();
    p.lists.baudRates = ParseValueListField(listText(PortValueKind::BaudRates).toStdString());
    p.lists.dataBits = ParseValueListField(listText(PortValueKind::DataBits).toStdString());
    p.lists.parities = ParseValueListField(listText(PortValueKind::Parities).toStdString());
    p.lists.stopBits = ParseValueListField(listText(PortValueKind::StopBits).toStdString());
    for (std::size_t i = 0; i < p.ports.size() && i < profilePorts_.size(); ++i)
        p.ports[i] = profilePorts_[i];
    return p;
}

int TFormOptions::chosenStyle() const { return cbTheme->currentData().toInt(); }

void TFormOptions::showProblem(int title, const std::string &text, int icon)
{
    prompter_.ShowMessage(Str(title), text, Buttons::Ok, icon);
}

void TFormOptions::cbThemeChange()
{
    const int slot = chosenStyle();
    if (slot == styleShown_)
        return;
    if (applyStyle && !applyStyle(slot)) {
        // The style could not be used (the window said why): the box shows the look on the screen.
        const QSignalBlocker quiet(cbTheme);
        cbTheme->setCurrentIndex(std::max(0, cbTheme->findData(styleShown_)));
        return;
    }
    styleShown_ = slot;
}

void TFormOptions::cbSelHwProfileSelect()
{
    const ProfileFieldsRead read =
        ProfileFieldsOfFile(setup_.dataFolder, cbSelHwProfile->currentText().toStdString(), FieldsProfile().lists);
    if (!read.status.ok()) {
        // The fields keep what they showed; nothing was read into them.
        showProblem(kWarningTitle, Str(read.status.code) + "\n\n" + read.status.detail, Icon::Warning);
        return;
    }
    ShowProfile(read.profile);
}

void TFormOptions::EditList(PortValueKind kind)
{
    if (FormSelector == nullptr)
        FormSelector = new TFormSelector(prompter_, this);
    const auto chosen = FormSelector->Exec(kind, ParseValueListField(listText(kind).toStdString()));
    if (chosen)
        setListText(kind, *chosen);
}

void TFormOptions::btnSelectBaudRatesClick() { EditList(PortValueKind::BaudRates); }
void TFormOptions::btnEditDatabitsClick() { EditList(PortValueKind::DataBits); }
void TFormOptions::btnEditStopbitsClick() { EditList(PortValueKind::StopBits); }

void TFormOptions::btnOKClick()
{
    const HardwareProfile fields = FieldsProfile();
    // A value no port could use would reach the port boxes: say which, and keep everything as typed.
    if (const OfferedValuesCheck check = CheckOfferedValues(fields.lists); !check.status.ok()) {
        const QString list = S(ValueListName(check.kind));
        const QString text = check.status.code == kMsgEmptyValueList
                                 ? S(kMsgEmptyValueList).arg(list)
                                 : S(kMsgValueNotOffered).arg(Q(check.status.detail), list);
        pcOptions->setCurrentWidget(tabInterface);
        showProblem(kWarningTitle, text.toStdString(), Icon::Warning);
        return;
    }
    if (setup_.ports.size() >= 2 && cbComA->currentIndex() == cbComB->currentIndex()) {
        pcOptions->setCurrentWidget(tabInterface);
        showProblem(kWarningTitle, Str(kMsgSamePortAB), Icon::Warning);
        return;
    }

    const ProfileConfirmResult profileResult =
        ConfirmHardwareProfile(prompter_, setup_.dataFolder, cbSelHwProfile->currentText().trimmed().toStdString(),
                               fields, setup_.config.portStandards);
    switch (profileResult.outcome) {
    case ProfileConfirmOutcome::Failed:
        pcOptions->setCurrentWidget(tabInterface);
        showProblem(kErrorTitle, Str(profileResult.status.code) + "\n\n" + profileResult.status.detail, Icon::Error);
        return;
    case ProfileConfirmOutcome::Declined:
        ShowProfile(profileResult.profile); // the file's values again; the dialog stays open
        return;
    case ProfileConfirmOutcome::Written:
    case ProfileConfirmOutcome::Unchanged:
        FillProfileList(profileResult.profileList, profileResult.profileName);
        break;
    }

    OptionsChoice choice;
    choice.profileName = profileResult.profileName;
    choice.profile = fields;
    choice.beginRecordAtStart = cbBeginRecAtProgStart->isChecked();
    choice.displayHoldAtStart = cbDispHoldAtProgStart->isChecked();
    choice.checkForUpdates = cbCheckForUpdatesOnStartup->isChecked();
    choice.portA = setup_.ports.empty() ? setup_.portA : cbComA->currentIndex();
    choice.portB = setup_.ports.empty() ? setup_.portB : cbComB->currentIndex();
    choice.style = styleShown_;
    // What is confirmed is in use from now on, also for an Abort of the next opening.
    setup_.config.Profile = choice.profileName;
    setup_.config.portStandards = fields.lists;
    setup_.style = styleShown_;
    if (confirmed)
        confirmed(choice);
    accept();
}

void TFormOptions::btnAbortClick() { reject(); }

void TFormOptions::reject()
{
    // The profile in use is read again, so the fields drop every edit; the look on the
    // screen goes back to the style in use.
    ShowProfile(ProfileFieldsOnShow(setup_.dataFolder, setup_.config));
    if (styleShown_ != setup_.style && applyStyle) {
        applyStyle(setup_.style);
        styleShown_ = setup_.style;
        const QSignalBlocker quiet(cbTheme);
        cbTheme->setCurrentIndex(std::max(0, cbTheme->findData(styleShown_)));
    }
    QDialog::reject();
}

} // namespace kestrel
