#include "app/app_style.h"

#include <QApplication>
#include <QStyle>
#include <QWidget>

#include "base/string_table.h"
#include "config/data_folder.h"
#include "config/program_config.h"
#include "config/styles.h"
#include "present/grid/record_grid.h"

namespace kestrel {

namespace {

int g_applied = 0;

// The palette the program started with: the platform look comes back to it.
const QPalette &PlatformPalette()
{
    static const QPalette platform = QApplication::palette();
    return platform;
}

// Qt says what it cannot parse only as a warning; it is caught while a sheet is tried.
QStringList *g_parseProblems = nullptr;
void CatchParseProblems(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (g_parseProblems != nullptr && type == QtWarningMsg && message.startsWith(QLatin1String("Could not parse")))
        g_parseProblems->append(message);
}

// Runs step and reports whether Qt could not parse a style sheet meanwhile.
template <class Step>
bool ParsesCleanly(Step step)
{
    QStringList problems;
    g_parseProblems = &problems;
    const QtMessageHandler previous = qInstallMessageHandler(CatchParseProblems);
    step();
    qInstallMessageHandler(previous);
    g_parseProblems = nullptr;
    return problems.isEmpty();
}

void ResetGridColours()
{
    for (QWidget *w : QApplication::allWidgets())
        if (auto *grid = qobject_cast<grid::RecordGrid *>(w))
            grid->ResetColours();
}

void SetLook(const QPalette &palette, const QString &sheet)
{
    ResetGridColours();
    QApplication::setPalette(palette);
    qApp->setStyleSheet(sheet);
}

Result Unusable(const std::string &name, int reason, const std::string &detail)
{
    std::string text = QString::fromStdString(Str(kMsgStyleUnusable)).arg(QString::fromStdString(name)).toStdString();
    return Result::Fail(kMsgStyleUnusable, text + "\n\n" + Str(reason) + " " + detail);
}

} // namespace

QPalette StylePalette(bool dark)
{
    struct Roles {
        QColor window, windowText, base, alternateBase, text, button, buttonText, highlight, highlightedText, light,
            midlight, mid, darkShade, shadow, toolTipBase, toolTipText, link, placeholder, disabledText;
    };
    const Roles r = dark ? Roles{"#22262c", "#dce1e8", "#1a1d22", "#23272e", "#dce1e8", "#2c3139", "#dce1e8",
                                 "#3d79c2", "#ffffff", "#3a404a", "#30353d", "#8d96a3", "#15181c", "#0d0f12",
                                 "#2c3139", "#dce1e8", "#7fb0ff", "#7d8693", "#6b7380"}
                         : Roles{"#eceff3", "#1d2430", "#ffffff", "#f4f6f9", "#1d2430", "#e4e8ee", "#1d2430",
                                 "#2f6db5", "#ffffff", "#ffffff", "#d5dbe3", "#6e7785", "#9aa3b0", "#5c6570",
                                 "#fffbe6", "#1d2430", "#1f5fae", "#7b8594", "#9aa1ab"};
    QPalette p;
    p.setColor(QPalette::Window, r.window);
    p.setColor(QPalette::WindowText, r.windowText);
    p.setColor(QPalette::Base, r.base);
    p.setColor(QPalette::AlternateBase, r.alternateBase);
    p.setColor(QPalette::Text, r.text);
    p.setColor(QPalette::Button, r.button);
    p.setColor(QPalette::ButtonText, r.buttonText);
    p.setColor(QPalette::BrightText, QColor("#ff6b6b"));
    p.setColor(QPalette::Highlight, r.highlight);
    p.setColor(QPalette::HighlightedText, r.highlightedText);
    p.setColor(QPalette::Light, r.light);
    p.setColor(QPalette::Midlight, r.midlight);
    p.setColor(QPalette::Mid, r.mid);
    p.setColor(QPalette::Dark, r.darkShade);
    p.setColor(QPalette::Shadow, r.shadow);
    p.setColor(QPalette::ToolTipBase, r.toolTipBase);
    p.setColor(QPalette::ToolTipText, r.toolTipText);
    p.setColor(QPalette::Link, r.link);
    p.setColor(QPalette::PlaceholderText, r.placeholder);
    for (QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        p.setColor(QPalette::Disabled, role, r.disabledText);
    p.setColor(QPalette::Disabled, QPalette::Highlight, r.mid);
    return p;
}

Result ApplyStyle(const ProgramConfig &cfg, const std::filesystem::path &dataFolder, int slot)
{
    (void)PlatformPalette(); // taken before the first style changes it
    slot = StyleSlotInUse(cfg, slot);
    if (slot == 0) {
        SetLook(PlatformPalette(), QString());
        g_applied = 0;
        return {};
    }
    const SkinSlot &style = cfg.skins[static_cast<std::size_t>(slot)];
    const auto file = FindStyleFile(dataFolder, style.Name);
    if (!file)
        return Unusable(style.Name, kMsgStyleFileMissing,
                        "'" + (dataFolder / kThemesFolder / (style.Name + kStyleExtension)).string() + "'");
    const Expected<std::string> sheet = ReadStyleSheet(*file);
    if (!sheet)
        return Unusable(style.Name, sheet.result.code, sheet.result.detail);
    const QString text = QString::fromStdString(sheet.value);

    // Tried on a widget of its own first, so that a broken sheet never reaches the windows.
    if (!ParsesCleanly([&] {
            QWidget probe;
            probe.setStyleSheet(text);
            probe.ensurePolished();
        }))
        return Unusable(style.Name, kMsgStyleSheetInvalid, "'" + file->string() + "'");
    const QPalette previousPalette = QApplication::palette();
    const QString previousSheet = qApp->styleSheet();
    if (!ParsesCleanly([&] { SetLook(StylePalette(style.Dark), text); })) {
        SetLook(previousPalette, previousSheet);
        return Unusable(style.Name, kMsgStyleSheetInvalid, "'" + file->string() + "'");
    }
    g_applied = slot;
    return {};
}

int AppliedStyle() { return g_applied; }

} // namespace kestrel
