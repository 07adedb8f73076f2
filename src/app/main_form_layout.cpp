// The main window's regions and components: menu, tool bars, the monitor
// (grid header, grid, scroll bar, status line), the control centre (trigger
// panel, recorder, port settings, line lights, gauges) and the status bar.

#include <QAction>
#include <QActionGroup>
#include <QComboBox>
#include <QFrame>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QMenuBar>
#include <QSplitter>
#include <QStatusBar>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

#include "app/action_registry.h"
#include "app/elided_label.h"
#include "app/flow_layout.h"
#include "app/line_gauge.h"
#include "app/main_form.h"
#include "app/signal_light.h"
#include "app/trigger_panel.h"
#include "app/signal_light_controller.h"
#include "present/grid/record_grid.h"
#include "base/string_table.h"

namespace kestrel {

namespace {

QString S(int n) { return QString::fromStdString(Str(n)); }

QFrame *panel(const QString &name, QWidget *parent)
{
    auto *f = new QFrame(parent);
    f->setObjectName(name);
    return f;
}

// Line lights in the order D1, D2, S1, S2, M1, M2, M5, M3 with their lit colours.
constexpr const char *kLightNames[8] = {"LedD1", "LedD2", "LedS1", "LedS2", "LedM1", "LedM2", "LedM5", "LedM3"};

} // namespace

QToolButton *TFormMain::speedButton(const QString &name, const QString &actionName, QWidget *parent, bool textOnly)
{
    auto *b = new QToolButton(parent);
    b->setObjectName(name);
    b->setDefaultAction(ActionManager1->action(actionName));
    b->setToolButtonStyle(textOnly ? Qt::ToolButtonTextOnly : Qt::ToolButtonTextUnderIcon);
    b->setAutoRaise(false);
    if (!textOnly)
        b->setIconSize(QSize(24, 24));
    return b;
}

void TFormMain::buildMenu()
{
    QMenuBar *bar = menuBar();
    bar->setObjectName("ActionMainMenuBar1");
    auto act = [this](const char *n) { return ActionManager1->action(QString::fromLatin1(n)); };
    struct MenuDef {
        int title;
        std::vector<const char *> items; // nullptr: separator
    };
    const std::vector<MenuDef> menus = {
        {7500, {"actNewRecordFile", "actOpenRecordFile", "actSaveRecordFile", nullptr, "actLoadEnvironment",
                "actSaveEnvironment", "actEnvConfig", nullptr, "actExportToFile", "actPrintReport", nullptr, "actExit"}},
        {7501, {"actStart", "actPause", "actStop", nullptr, "actAppend", "actReplace", nullptr, "actFreezeDisplay"}},
        {7502, {"actTrigInsert", "actTrigEdit", "actTrigRemove", nullptr, "actTrigMoveUp", "actTrigMoveDown", nullptr,
                "actTrigEnableAll", "actTrigDisableAll", "actTrigReverseAll", nullptr, "actTrigGridReset"}},
        {7503, {"actGotoMP", "actGotoTriggerPoint", "actSearch", nullptr, "actDeltaTime"}},
        {7504, {"actViewVertical", "actViewHorizontal", "actViewDataOnly", "actViewDataDump", nullptr, "actCharAscii",
                "actCharEbcdic", "actCharHex", "actCharDec", "actCharOct", "actCharBin", nullptr, "actChar01FReset",
                "actCharCtl", "actCharCmd", nullptr, "actTimeAbsolute", "actTimeRelative", "actTimeDelta", nullptr,
                "actShowAllGridLines", "actShowHorizontalGridLines", "actShowVerticalGridLines",
                "actShowNoGridLines", nullptr, "actScrollTop", "actScrollEnd", "actResetGrid", nullptr,
                "actZoomIn", "actZoomOut", "actZoomReset", nullptr, "actShowCCITTV24Pin"}},
        {7505, {"actOptions", "actPortOptions", nullptr, "actLangGerman", "actLangEnglish"}},
        {7506, {"actHelp", nullptr, "actWebUpdate", "actWebSupport", nullptr, "actAbout"}},
    };
    menuTitles_.clear();
    for (const MenuDef &m : menus) {
        QMenu *menu = bar->addMenu(S(m.title));
        menu->setToolTipsVisible(true);
        menuTitles_.append({menu, m.title});
        for (const char *item : m.items) {
            if (item == nullptr)
                menu->addSeparator();
            else
                menu->addAction(act(item));
        }
    }
}

QWidget *TFormMain::buildToolBars()
{
    ControlBar1 = new QWidget(this);
    ControlBar1->setObjectName("ControlBar1");
    // The bars wrap onto a second row where one row does not fit (1024 pixels wide).
    auto *row = new FlowLayout(ControlBar1, 2);
    row->setContentsMargins(4, 2, 4, 2);
    auto addBar = [&](int n) {
        auto *tb = new QToolBar(ControlBar1);
        tb->setObjectName(QString("ActionToolBar%1").arg(n));
        tb->setIconSize(QSize(20, 20));
        tb->setMovable(false);
        tb->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
        row->addWidget(tb);
        actionToolBars_.append(tb);
        return tb;
    };
    auto a = [this](const char *n) { return ActionManager1->action(QString::fromLatin1(n)); };

    QToolBar *files = addBar(1);
    for (const char *n : {"actNewRecordFile", "actOpenRecordFile", "actSaveRecordFile", "actExportToFile", "actPrintReport"})
        files->addAction(a(n));

    QToolBar *recorder = addBar(2);
    for (const char *n : {"actStart", "actPause", "actStop", "actFreezeDisplay"})
        recorder->addAction(a(n));

    QToolBar *views = addBar(3);
    for (auto [btn, act] : {std::pair{"btnViewVertical", "actViewVertical"}, {"btnViewHorizontal", "actViewHorizontal"},
                            {"btnViewDataOnly", "actViewDataOnly"}, {"btnViewDataDump", "actViewDataDump"}})
        views->addWidget(speedButton(btn, act, views, true));

    QToolBar *chars = addBar(4);
    for (auto [btn, act] : {std::pair{"btnCharAscii", "actCharAscii"}, {"btnCharEbcdic", "actCharEbcdic"},
                            {"btnCharHex", "actCharHex"}, {"btnCharDec", "actCharDec"}, {"btnCharOct", "actCharOct"},
                            {"btnCharBin", "actCharBin"}})
        chars->addWidget(speedButton(btn, act, chars, true));

    QToolBar *overlay = addBar(5);
    for (auto [btn, act] : {std::pair{"btnChar01FReset", "actChar01FReset"}, {"btnCharCtl", "actCharCtl"},
                            {"btnCharCmd", "actCharCmd"}})
        overlay->addWidget(speedButton(btn, act, overlay, true));

    QToolBar *times = addBar(6);
    for (auto [btn, act] : {std::pair{"btnTimeAbsolute", "actTimeAbsolute"}, {"btnTimeRelative", "actTimeRelative"},
                            {"btnTimeDelta", "actTimeDelta"}})
        times->addWidget(speedButton(btn, act, times, true));

    QToolBar *grid = addBar(7);
    for (auto [btn, act] : {std::pair{"btnShowAllGridLines", "actShowAllGridLines"},
                            {"btnShowHorzGridLines", "actShowHorizontalGridLines"},
                            {"btnShowVertGridLines", "actShowVerticalGridLines"},
                            {"btnShowNoGridLines", "actShowNoGridLines"}})
        grid->addWidget(speedButton(btn, act, grid, true));

    return ControlBar1;
}

QWidget *TFormMain::buildMonitor()
{
    pnlMonitor = panel("pnlMonitor", this);
    pnlMonitor->setFrameShape(QFrame::StyledPanel);
    auto *box = new QVBoxLayout(pnlMonitor);
    box->setContentsMargins(0, 0, 0, 0);
    box->setSpacing(0);

    pnlDGHeaderAlTop = panel("pnlDGHeaderAlTop", pnlMonitor);
    auto *head = new QHBoxLayout(pnlDGHeaderAlTop);
    head->setContentsMargins(6, 3, 6, 3);
    lblRecordFileSize = new ElidedLabel(pnlDGHeaderAlTop); // a long path is shortened in the middle
    lblRecordFileSize->setObjectName("lblRecordFileSize");
    head->addWidget(lblRecordFileSize, 1);
    box->addWidget(pnlDGHeaderAlTop);

    pnlGridAndVScroll = panel("pnlGridAndVScroll", pnlMonitor);
    pnlGridAndVScroll->setAutoFillBackground(true);
    pnlGridAndVScroll->setBackgroundRole(QPalette::Base);
    auto *gridRow = new QHBoxLayout(pnlGridAndVScroll);
    gridRow->setContentsMargins(0, 0, 0, 0);
    gridRow->setSpacing(0);
    // The grid brings its own scroll bar (ScrollBar1) and paints its header row.
    DrawGrid1 = new grid::RecordGrid(pnlGridAndVScroll);
    gridRow->addWidget(DrawGrid1);
    box->addWidget(pnlGridAndVScroll, 1);

    pnlStatusAndHScroll = panel("pnlStatusAndHScroll", pnlMonitor);
    auto *statusRow = new QHBoxLayout(pnlStatusAndHScroll);
    statusRow->setContentsMargins(4, 2, 4, 2);
    btnScrollTop = speedButton("btnScrollTop", "actScrollTop", pnlStatusAndHScroll, false);
    btnScrollTop->setToolButtonStyle(Qt::ToolButtonIconOnly);
    btnScrollEnd = speedButton("btnScrollEnd", "actScrollEnd", pnlStatusAndHScroll, false);
    btnScrollEnd->setToolButtonStyle(Qt::ToolButtonIconOnly);
    btnScrollTop->setIconSize(QSize(16, 16));
    btnScrollEnd->setIconSize(QSize(16, 16));
    statusRow->addStretch(1);
    statusRow->addWidget(btnScrollTop);
    statusRow->addWidget(btnScrollEnd);
    box->addWidget(pnlStatusAndHScroll);
    return pnlMonitor;
}

QWidget *TFormMain::buildRecorderPanel()
{
    auto *g = new QGroupBox(pnlCCRecDispControl);
    g->setObjectName("gbRecorder");
    g->setProperty("textNo", 7630);
    captionGroups_.append(g);
    auto *grid = new QGridLayout(g);
    grid->setHorizontalSpacing(4);
    auto plainButton = [&](const char *name, const char *icon) {
        auto *b = new QToolButton(g);
        b->setObjectName(name);
        b->setIcon(QIcon(QString::fromLatin1(icon)));
        b->setIconSize(QSize(24, 24));
        b->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
        b->setCheckable(true);
        return b;
    };
    // The record and stop buttons are two-state buttons: record stays down while recording.
    btnREC = plainButton("btnREC", ":/images/record.svg");
    btnPAUSE = speedButton("btnPAUSE", "actPause", g, false);
    btnSTOP = plainButton("btnSTOP", ":/images/stop.svg");
    btnRECappend = speedButton("btnRECappend", "actAppend", g, false);
    btnRECreplace = speedButton("btnRECreplace", "actReplace", g, false);
    btnViewHold = speedButton("btnViewHold", "actFreezeDisplay", g, false);
    int col = 0;
    for (QToolButton *b : {btnREC, btnPAUSE, btnSTOP, btnRECappend, btnRECreplace, btnViewHold}) {
        b->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Preferred); // never narrower than its caption
        grid->addWidget(b, 0, col++);
    }
    apdLEDRecorder = new SignalLight("apdLEDRecorder", QColor(255, 40, 30), g);
    apdLEDViewHold = new SignalLight("apdLEDViewHold", QColor(0, 255, 0), g); // lime
    // The lights sit under the buttons they belong to.
    grid->addWidget(apdLEDRecorder, 1, 0, Qt::AlignHCenter);
    grid->addWidget(apdLEDViewHold, 1, 5, Qt::AlignHCenter);
    return g;
}

QWidget *TFormMain::buildPortPanel()
{
    auto *g = new QGroupBox(pnlCCRecDispControl);
    g->setObjectName("gbPortSettings");
    g->setProperty("textNo", 7631);
    captionGroups_.append(g);
    auto *grid = new QGridLayout(g);
    auto label = [&](int textNo) {
        auto *l = new QLabel(g);
        l->setProperty("textNo", textNo);
        captionLabels_.append(l);
        return l;
    };
    auto combo = [&](const char *name) {
        auto *c = new QComboBox(g);
        c->setObjectName(name);
        c->setMinimumWidth(64);
        return c;
    };
    cbPortBaudRate = combo("cbPortBaudRate");
    cbPortDataBits = combo("cbPortDataBits");
    cbPortParity = combo("cbPortParity");
    cbPortStopBits = combo("cbPortStopBits");
    grid->addWidget(label(7637), 0, 0);
    grid->addWidget(cbPortBaudRate, 0, 1);
    grid->addWidget(label(7638), 0, 2);
    grid->addWidget(cbPortDataBits, 0, 3);
    grid->addWidget(label(7639), 1, 0);
    grid->addWidget(cbPortParity, 1, 1);
    grid->addWidget(label(7640), 1, 2);
    grid->addWidget(cbPortStopBits, 1, 3);
    lblPortA = new QLabel(g);
    lblPortA->setObjectName("lblPortA");
    lblPortB = new QLabel(g);
    lblPortB->setObjectName("lblPortB");
    grid->addWidget(label(7641), 2, 0);
    grid->addWidget(lblPortA, 2, 1, 1, 3);
    grid->addWidget(label(7642), 3, 0);
    grid->addWidget(lblPortB, 3, 1, 1, 3);
    return g;
}

QWidget *TFormMain::buildLinePanel()
{
    auto *g = new QGroupBox(pnlCCRecDispControl);
    g->setObjectName("gbLines");
    g->setProperty("textNo", 7632);
    captionGroups_.append(g);
    auto *grid = new QGridLayout(g);
    grid->setHorizontalSpacing(4);
    static const QColor colours[8] = {QColor(0, 230, 0), QColor(0, 230, 0), QColor(255, 200, 0), QColor(255, 200, 0),
                                      QColor(255, 200, 0), QColor(255, 200, 0), QColor(255, 200, 0), QColor(255, 60, 40)};
    for (int i = 0; i < 8; ++i) {
        lineLights_[i] = new SignalLight(kLightNames[i], colours[i], g);
        lineLabels_[i] = new QLabel(g);
        lineLabels_[i]->setObjectName(QString("lblLife%1").arg(QString(kLightNames[i]).mid(3)));
        lineLabels_[i]->setAlignment(Qt::AlignCenter);
        lineLabels_[i]->setMinimumWidth(26);
        grid->addWidget(lineLights_[i], 0, i, Qt::AlignHCenter);
        grid->addWidget(lineLabels_[i], 1, i);
    }
    // Order of lineLights_: D1, D2, S1, S2, M1, M2, M5, M3.
    SlcA = new SignalLightController("SlcA", Counter::D2, this);
    SlcA->setDataLight(lineLights_[1]);
    SlcA->addLevelLight(lineLights_[5], &MpRecord::m2);
    SlcA->addLevelLight(lineLights_[4], &MpRecord::m1);
    SlcA->addLevelLight(lineLights_[6], &MpRecord::m5);
    SlcA->addLevelLight(lineLights_[7], &MpRecord::m3);
    SlcB = new SignalLightController("SlcB", Counter::D1, this);
    SlcB->setDataLight(lineLights_[0]);
    SlcB->addLevelLight(lineLights_[3], &MpRecord::s2);
    SlcB->addLevelLight(lineLights_[2], &MpRecord::s1);
    btnSwitchPin = new QToolButton(g);
    btnSwitchPin->setObjectName("btnSwitchPin");
    btnSwitchPin->setDefaultAction(ActionManager1->action("actShowCCITTV24Pin"));
    btnSwitchPin->setToolButtonStyle(Qt::ToolButtonTextOnly);
    grid->addWidget(btnSwitchPin, 2, 0, 1, 8);
    return g;
}

QWidget *TFormMain::buildGaugePanel()
{
    auto *g = new QGroupBox(pnlCCRecDispControl);
    g->setObjectName("gbLineGauges");
    g->setProperty("textNo", 7633);
    captionGroups_.append(g);
    auto *grid = new QGridLayout(g);
    showLineLoadActual = new LineGauge("showLineLoadActual", QColor(70, 140, 220), g);
    showLineLoadPeek = new LineGauge("showLineLoadPeek", QColor(235, 150, 40), g);
    showLineQuality = new LineGauge("showLineQuality", QColor(60, 170, 80), g);
    int row = 0;
    for (auto [gauge, textNo] : {std::pair{showLineLoadActual, 7634}, {showLineLoadPeek, 7635}, {showLineQuality, 7636}}) {
        auto *l = new QLabel(g);
        l->setProperty("textNo", textNo);
        captionLabels_.append(l);
        grid->addWidget(l, row, 0);
        grid->addWidget(gauge, row, 1);
        ++row;
    }
    return g;
}

QWidget *TFormMain::buildControlCentre()
{
    pnlAllBottom = panel("pnlAllBottom", this);
    auto *row = new QHBoxLayout(pnlAllBottom);
    row->setContentsMargins(0, 4, 0, 0);

    pnlCCTrigPanel = panel("pnlCCTrigPanel", pnlAllBottom);
    pnlCCTrigPanel->setFrameShape(QFrame::StyledPanel);
    auto *trig = new QVBoxLayout(pnlCCTrigPanel);
    auto *trigTitle = new QLabel(pnlCCTrigPanel);
    trigTitle->setProperty("textNo", 7643);
    QFont bold = trigTitle->font();
    bold.setBold(true);
    trigTitle->setFont(bold);
    captionLabels_.append(trigTitle);
    TrigPanel = new TriggerPanel(*prompter_, pnlCCTrigPanel);
    auto *titleRow = new QHBoxLayout;
    titleRow->addWidget(trigTitle);
    trig->addLayout(titleRow);
    trig->addWidget(TrigPanel, 1);
    pnlCCTrigPanel->setMinimumWidth(160);

    pnlCCRecDispControl = panel("pnlCCRecDispControl", pnlAllBottom);
    auto *grid = new QGridLayout(pnlCCRecDispControl);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->addWidget(buildRecorderPanel(), 0, 0);
    grid->addWidget(buildLinePanel(), 0, 1);
    grid->addWidget(buildPortPanel(), 1, 0);
    grid->addWidget(buildGaugePanel(), 1, 1);

    row->addWidget(pnlCCTrigPanel, 1);
    row->addWidget(pnlCCRecDispControl, 0);
    return pnlAllBottom;
}

void TFormMain::buildStatusBar()
{
    QStatusBar *bar = statusBar();
    bar->setObjectName("StatusBar");
    // The free text takes what is left; the figures keep room for their widest values,
    // so that a time stamp is never cut off in the middle of its microseconds.
    const int stretch[6] = {1, 0, 0, 0, 0, 0};
    const char *widest[6] = {"", "MP: 4294967295", "Tx: 2088-88-88 88:88:88,888888",
                             "Dx: 8888 Tag(e)  88:88:88,888888", "PE: 888 FE: 888 LE: 888", ""};
    for (int i = 0; i < 6; ++i) {
        statusPanels_[i] = new QLabel(bar);
        statusPanels_[i]->setObjectName(QString("pnlStatusBarPanel%1").arg(i + 1));
        statusPanels_[i]->setMinimumWidth(std::max(40, statusTextWidth(statusPanels_[i], QString::fromLatin1(widest[i]))));
        bar->addPermanentWidget(statusPanels_[i], stretch[i]);
    }
    QFont bold = statusPanels_[5]->font();
    bold.setBold(true);
    statusPanels_[5]->setFont(bold);
    statusPanels_[5]->setMinimumWidth(
        std::max(statusTextWidth(statusPanels_[5], S(4273)), statusTextWidth(statusPanels_[5], S(4274))));
    statusPanels_[5]->setAlignment(Qt::AlignCenter);
    keepStatusBarWhole();
}

void TFormMain::keepStatusBarWhole()
{
    // The window is never narrower than the panels' reserved widths, so that no panel is
    // laid over its neighbour.
    int sum = 0;
    for (const QLabel *p : statusPanels_)
        sum += p->minimumWidth() + 8;
    statusBar()->setMinimumWidth(sum + 20);
}

int TFormMain::statusTextWidth(const QLabel *panel, const QString &text)
{
    return panel->fontMetrics().horizontalAdvance(text) + 2 * panel->margin() + 12;
}

void TFormMain::fitStatusPanel(QLabel *panel, const QString &text)
{
    // Every live pass refreshes the status line; an unchanged text costs no layout.
    if (panel->text() == text)
        return;
    // Grow only: a panel that jumps back and forth with every row would make the bar dance.
    // But never past the window: a long text (a damaged file's 20-digit counts) is cut
    // rather than push the window wider than the screen or over the mode text.
    panel->setText(text);
    panel->setToolTip(text);
    int others = 0;
    for (QLabel *p : statusPanels_)
        if (p != panel)
            others += p->minimumWidth();
    const int room = std::max(panel->minimumWidth(), width() - others - 60);
    const int need = std::min(statusTextWidth(panel, text), room);
    if (need > panel->minimumWidth()) {
        panel->setMinimumWidth(need);
        keepStatusBarWhole();
    }
}

} // namespace kestrel
