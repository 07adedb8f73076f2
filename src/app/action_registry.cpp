#include "app/action_registry.h"

#include <QAction>
#include <QActionGroup>
#include <QIcon>
#include <array>
#include <string_view>

#include "base/string_table.h"

namespace kestrel {

namespace {

constexpr int kLaterHint = 7625;

// Menus carry words; the mode buttons keep their short captions ("VERT", "ASC", "┼"),
// which the menu shows beside the words.
struct MenuWords {
    const char *action;
    int words;
};
constexpr MenuWords kMenuWords[] = {
    {"actViewVertical", 7780},
    {"actViewHorizontal", 7781},
    {"actViewDataOnly", 7782},
    {"actViewDataDump", 7783},
    {"actCharAscii", 7784},
    {"actCharEbcdic", 7785},
    {"actCharHex", 7786},
    {"actCharDec", 7787},
    {"actCharOct", 7788},
    {"actCharBin", 7789},
    {"actChar01FReset", 7790},
    {"actCharCtl", 7791},
    {"actCharCmd", 7792},
    {"actTimeAbsolute", 7793},
    {"actTimeRelative", 7794},
    {"actTimeDelta", 7795},
    {"actShowAllGridLines", 7796},
    {"actShowHorizontalGridLines", 7797},
    {"actShowVerticalGridLines", 7798},
    {"actShowNoGridLines", 7799},
};

int MenuWordsOf(const char *action)
{
    for (const MenuWords &m : kMenuWords)
        if (std::string_view(m.action) == action)
            return m.words;
    return 0;
}

// clang-format off
constexpr std::array kActions = {
    // file and environment
    ActionDef{"actNewRecordFile",      7530, 7531, ":/images/new.svg",    false, false, "Ctrl+N", nullptr},
    ActionDef{"actOpenRecordFile",     7532, 7533, ":/images/open.svg",   false, false, "Ctrl+O", nullptr},
    ActionDef{"actSaveRecordFile",     7534, 7535, ":/images/save.svg",   false, false, "Ctrl+S", nullptr},
    ActionDef{"actLoadEnvironment",    7536, 7537, nullptr,               false, false, nullptr,  nullptr},
    ActionDef{"actSaveEnvironment",    7538, 7539, nullptr,               false, false, nullptr,  nullptr},
    ActionDef{"actEnvConfig",          7540, 7541, nullptr,               false, false, nullptr,  nullptr},
    ActionDef{"actExportToFile",       7542, 7543, ":/images/export.svg", false, false, "Ctrl+E", nullptr},
    ActionDef{"actPrintReport",        7544, 7545, ":/images/print.svg",  false, false, "Ctrl+P", nullptr},
    ActionDef{"actExit",               7546, 7547, ":/images/exit.svg",   false, false, "Ctrl+Q", nullptr},
    // recorder
    ActionDef{"actStart",              7548, 7549, ":/images/record.svg",   false, false, "F5",  nullptr},
    ActionDef{"actPause",              7550, 7551, ":/images/pause.svg",    true,  false, "F6",  nullptr},
    ActionDef{"actStop",               7552, 7553, ":/images/stop.svg",     false, false, "F7",  nullptr},
    ActionDef{"actAppend",             7554, 7555, ":/images/append.svg",   true,  false, nullptr, "recordMode"},
    ActionDef{"actReplace",            7556, 7557, ":/images/replace.svg",  true,  false, nullptr, "recordMode"},
    ActionDef{"actFreezeDisplay",      7558, 7559, ":/images/viewhold.svg", true,  false, "F8",  nullptr},
    // triggers
    ActionDef{"actTrigInsert",         7560, 7861, nullptr, false, false, nullptr, nullptr},
    ActionDef{"actTrigRemove",         7561, 7862, nullptr, false, false, nullptr, nullptr},
    ActionDef{"actTrigEdit",           7562, 7865, nullptr, false, false, nullptr, nullptr},
    ActionDef{"actTrigMoveUp",         7563, 7863, nullptr, false, false, nullptr, nullptr},
    ActionDef{"actTrigMoveDown",       7564, 7864, nullptr, false, false, nullptr, nullptr},
    ActionDef{"actTrigEnableAll",      7565, 7866, nullptr, false, false, nullptr, nullptr},
    ActionDef{"actTrigDisableAll",     7566, 7867, nullptr, false, false, nullptr, nullptr},
    ActionDef{"actTrigReverseAll",     7567, 7868, nullptr, false, false, nullptr, nullptr},
    ActionDef{"actTrigMarkAll",        7568, 7866, nullptr, false, false, nullptr, nullptr},
    ActionDef{"actTrigMarkNone",       7569, 7867, nullptr, false, false, nullptr, nullptr},
    ActionDef{"actTrigGridReset",      7869, 0, nullptr, false, false, nullptr, nullptr},
    ActionDef{"actTrigMarkReverse",    7570, 7868, nullptr, false, false, nullptr, nullptr},
    // search
    ActionDef{"actGotoMP",             7571, 0, nullptr, false, false, "Ctrl+G", nullptr},
    ActionDef{"actGotoTriggerPoint",   7572, 0, nullptr, false, false, nullptr,  nullptr},
    ActionDef{"actSearch",             7573, 0, nullptr, false, false, "Ctrl+F", nullptr},
    ActionDef{"actDeltaTime",          7574, 0, nullptr, false, false, nullptr,  nullptr},
    // display: views
    ActionDef{"actViewVertical",       7575, 7576, nullptr, true,  false, nullptr, "view"},
    ActionDef{"actViewHorizontal",     7577, 7578, nullptr, true,  false, nullptr, "view"},
    ActionDef{"actViewDataOnly",       7579, 7580, nullptr, true,  false, nullptr, "view"},
    ActionDef{"actViewDataDump",       7581, 7582, nullptr, true,  false, nullptr, "view"},
    // display: characters and overlay
    ActionDef{"actCharAscii",          7583, 7584, nullptr, true,  false, nullptr, "charMode"},
    ActionDef{"actCharEbcdic",         7585, 7586, nullptr, true,  false, nullptr, "charMode"},
    ActionDef{"actCharHex",            7587, 7588, nullptr, true,  false, nullptr, "charMode"},
    ActionDef{"actCharDec",            7589, 7590, nullptr, true,  false, nullptr, "charMode"},
    ActionDef{"actCharOct",            7591, 7592, nullptr, true,  false, nullptr, "charMode"},
    ActionDef{"actCharBin",            7593, 7594, nullptr, true,  false, nullptr, "charMode"},
    ActionDef{"actChar01FReset",       7595, 7596, nullptr, false, false, nullptr, nullptr},
    ActionDef{"actCharCtl",            7597, 7598, nullptr, true,  false, nullptr, "overlay"},
    ActionDef{"actCharCmd",            7599, 7600, nullptr, true,  false, nullptr, "overlay"},
    // display: time
    ActionDef{"actTimeAbsolute",       7601, 7602, nullptr, true,  false, nullptr, "time"},
    ActionDef{"actTimeRelative",       7603, 7604, nullptr, true,  false, nullptr, "time"},
    ActionDef{"actTimeDelta",          7605, 7606, nullptr, true,  false, nullptr, "time"},
    // display: grid
    ActionDef{"actShowAllGridLines",        7607, 7608, nullptr, true, false, nullptr, "gridLines"},
    ActionDef{"actShowHorizontalGridLines", 7609, 7610, nullptr, true, false, nullptr, "gridLines"},
    ActionDef{"actShowVerticalGridLines",   7611, 7612, nullptr, true, false, nullptr, "gridLines"},
    ActionDef{"actShowNoGridLines",         7613, 7614, nullptr, true, false, nullptr, "gridLines"},
    ActionDef{"actScrollTop",          7615, 0, ":/images/scroll_top.svg", false, false, "Ctrl+Home", nullptr},
    ActionDef{"actScrollEnd",          7616, 0, ":/images/scroll_end.svg", false, false, "Ctrl+End",  nullptr},
    ActionDef{"actResetGrid",          7617, 0, nullptr, false, false, nullptr, nullptr},
    ActionDef{"actShowCCITTV24Pin",    7618, 0, nullptr, false, false, nullptr, nullptr},
    ActionDef{"actZoomIn",             7800, 0, nullptr, false, false, "Ctrl++", nullptr},
    ActionDef{"actZoomOut",            7801, 0, nullptr, false, false, "Ctrl+-", nullptr},
    ActionDef{"actZoomReset",          7802, 0, nullptr, false, false, "Ctrl+0", nullptr},
    // options and language
    ActionDef{"actOptions",            7620, 0, nullptr, false, false, nullptr, nullptr},
    ActionDef{"actPortOptions",        7621, 0, nullptr, false, false, nullptr, nullptr},
    ActionDef{"actLangGerman",         7622, 0, nullptr, true,  false, nullptr, "language"},
    ActionDef{"actLangEnglish",        7623, 0, nullptr, true,  false, nullptr, "language"},
    // help and web
    ActionDef{"actHelp",               7626, 0, nullptr, false, false, "F1",    nullptr},
    ActionDef{"actWebUpdate",          7627, 0, nullptr, false, false, nullptr, nullptr},
    ActionDef{"actWebSupport",         7628, 0, nullptr, false, false, nullptr, nullptr},
    ActionDef{"actAbout",              7629, 0, ":/images/kestrel.svg", false, false, nullptr, nullptr},
};
// clang-format on

const ActionDef *findDef(const QString &name)
{
    for (const ActionDef &d : kActions)
        if (name == QLatin1String(d.name))
            return &d;
    return nullptr;
}

} // namespace

ActionManager::ActionManager(QObject *parent) : QObject(parent)
{
    setObjectName("ActionManager1");
    for (const ActionDef &d : kActions) {
        auto *a = new QAction(this);
        a->setObjectName(QString::fromLatin1(d.name));
        a->setCheckable(d.checkable);
        if (d.icon != nullptr)
            a->setIcon(QIcon(QString::fromLatin1(d.icon)));
        if (d.shortcut != nullptr)
            a->setShortcut(QKeySequence(QString::fromLatin1(d.shortcut)));
        if (d.later)
            a->setEnabled(false);
        if (d.group != nullptr) {
            const QString g = QString::fromLatin1(d.group);
            QActionGroup *ag = groups_.value(g);
            if (ag == nullptr) {
                ag = new QActionGroup(this);
                ag->setObjectName(g);
                // The overlay and the record mode may have no button down at all.
                const bool optional = g == "overlay" || g == "recordMode";
                ag->setExclusionPolicy(optional ? QActionGroup::ExclusionPolicy::ExclusiveOptional
                                                : QActionGroup::ExclusionPolicy::Exclusive);
                groups_.insert(g, ag);
            }
            ag->addAction(a);
        }
        byName_.insert(a->objectName(), a);
        ordered_.append(a);
    }
    InitialLoads();
}

QAction *ActionManager::action(const QString &name) const { return byName_.value(name, nullptr); }
QActionGroup *ActionManager::group(const QString &name) const { return groups_.value(name, nullptr); }
bool ActionManager::isLater(const QString &name)
{
    const ActionDef *d = findDef(name);
    return d != nullptr && d->later;
}

void ActionManager::InitialLoads()
{
    for (const ActionDef &d : kActions) {
        QAction *a = byName_.value(QString::fromLatin1(d.name));
        const QString caption = QString::fromStdString(Str(d.caption));
        if (const int words = MenuWordsOf(d.name)) {
            a->setText(QString::fromStdString(Str(words)) + "   [" + caption + "]");
            a->setIconText(caption); // what the buttons show
        } else {
            a->setText(caption);
        }
        QString tip = d.hint != 0 ? QString::fromStdString(Str(d.hint)) : QString(caption).remove('&');
        if (d.later)
            tip += " \u2014 " + QString::fromStdString(Str(kLaterHint));
        a->setToolTip(tip);
        a->setStatusTip(tip);
    }
}

} // namespace kestrel
