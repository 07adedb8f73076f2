#include "base/locale_language.h"

#include <cstdlib>
#include <string_view>

#include "base/string_table.h"

namespace kestrel {

int LanguageFromEnvironment()
{
    for (const char *name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char *value = std::getenv(name);
        if (value && *value)
            return std::string_view(value).starts_with("de") ? kLangGerman : kLangEnglish;
    }
    return kLangEnglish;
}

} // namespace kestrel
