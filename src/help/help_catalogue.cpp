#include "help/help_catalogue.h"

#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <array>
#include <utility>

#include "base/string_table.h"

namespace kestrel::help {
namespace {

constexpr int kPageMissing = 9265;

// The windows and panels that have a page of their own. A window not listed here
// opens the page of the window it belongs to (its parent).
constexpr std::array<std::pair<std::string_view, std::string_view>, 12> kFormPages{{
    {"TFormMain", "main-window"},
    {"pnlTriggerList", "trigger-panel"},
    {"TFormTrig", "trigger-editor"},
    {"TFormTrigParams", "trigger-editor"},
    {"TFormGoto", "goto"},
    {"TFormExport", "export"},
    {"TFormOptions", "options"},
    {"TFormSelector", "options"},
    {"TFormEnvConf", "environment"},
    {"TFormConfirmRecordMode", "record-mode"},
    {"TFormReport", "report"},
    {"THelpWindow", "getting-started"},
}};

} // namespace

const std::vector<HelpPage> &HelpPages()
{
    static const std::vector<HelpPage> pages{
        {"getting-started", ""},
        {"main-window", ""},
        {"trigger-panel", "main-window"},
        {"trigger-editor", "main-window"},
        {"goto", "main-window"},
        {"export", "main-window"},
        {"report", "main-window"},
        {"environment", "main-window"},
        {"record-mode", "main-window"},
        {"options", "main-window"},
        {"scenario-format", ""},
        {"command-line", ""},
        {"wireshark", ""},
    };
    return pages;
}

bool IsHelpPage(std::string_view id)
{
    const auto &pages = HelpPages();
    return std::any_of(pages.begin(), pages.end(), [id](const HelpPage &p) { return p.id == id; });
}

std::string_view PageForForm(std::string_view objectName)
{
    for (const auto &[form, page] : kFormPages)
        if (form == objectName)
            return page;
    return {};
}

QString LanguageFolder(int lang)
{
    return lang == kLangGerman ? QStringLiteral("de") : QStringLiteral("en");
}

QString PagePath(std::string_view id, int lang)
{
    return QStringLiteral(":/help/%1/%2.md").arg(LanguageFolder(lang), QString::fromUtf8(id.data(), qsizetype(id.size())));
}

QString PageIdOfPath(const QString &path)
{
    const QFileInfo info(path);
    return info.suffix() == QLatin1String("md") ? info.completeBaseName() : QString();
}

Expected<QString> PageText(std::string_view id, int lang)
{
    QFile file(PagePath(id, lang));
    if (!file.open(QIODevice::ReadOnly))
        return {{}, Result::Fail(kPageMissing, file.fileName().toStdString())};
    return {QString::fromUtf8(file.readAll()), Result::Ok()};
}

QString PageTitle(std::string_view id, int lang)
{
    const Expected<QString> text = PageText(id, lang);
    if (text.ok())
        for (const QStringView line : QStringView(text.value).split(u'\n'))
            if (line.startsWith(u"# "))
                return line.mid(2).trimmed().toString();
    return QString::fromUtf8(id.data(), qsizetype(id.size()));
}

} // namespace kestrel::help
