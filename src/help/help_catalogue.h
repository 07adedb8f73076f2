#pragma once
// The manual's pages: their ids in contents order (the tree), where each page
// lies in the resource, its title, and which window opens which page.

#include <QString>
#include <string_view>
#include <vector>

#include "base/result.h"

namespace kestrel::help {

struct HelpPage {
    std::string_view id;
    std::string_view parent; // empty: a top-level entry of the contents
};

// Every page, in the order the contents list them (a child follows its parent).
[[nodiscard]] const std::vector<HelpPage> &HelpPages();
[[nodiscard]] bool IsHelpPage(std::string_view id);

// The page a window belongs to, by the window's object name; empty when it has none.
[[nodiscard]] std::string_view PageForForm(std::string_view objectName);
// The page that opens when nothing more particular is asked for.
inline constexpr std::string_view kMainPage = "main-window";

// "de" or "en" for a language offset of the string table.
[[nodiscard]] QString LanguageFolder(int lang);
// The page's resource path (":/help/en/goto.md"), and back: the page id of such a path or URL path.
[[nodiscard]] QString PagePath(std::string_view id, int lang);
[[nodiscard]] QString PageIdOfPath(const QString &path);

// The page's markdown text; a page missing from the resource is reported with its path.
[[nodiscard]] Expected<QString> PageText(std::string_view id, int lang);
// The page's first heading; the id when the page has none.
[[nodiscard]] QString PageTitle(std::string_view id, int lang);

} // namespace kestrel::help
