// The language follows the first locale variable that is set and not empty, the way
// the C library reads them, so a German LANG under LC_ALL=C is English.

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "base/locale_language.h"
#include "base/string_table.h"

using namespace kestrel;

namespace {

int languageWith(const char *lcAll, const char *lcMessages, const char *lang)
{
    const auto put = [](const char *name, const char *value) {
        if (value)
            ::setenv(name, value, 1);
        else
            ::unsetenv(name);
    };
    put("LC_ALL", lcAll);
    put("LC_MESSAGES", lcMessages);
    put("LANG", lang);
    return LanguageFromEnvironment();
}

} // namespace

TEST(LocaleLanguage, FirstSetVariableDecidesInPosixOrder)
{
    EXPECT_EQ(languageWith(nullptr, nullptr, "de_DE.UTF-8"), kLangGerman);
    EXPECT_EQ(languageWith(nullptr, nullptr, "de"), kLangGerman);
    EXPECT_EQ(languageWith(nullptr, nullptr, "en_GB.UTF-8"), kLangEnglish);
    EXPECT_EQ(languageWith(nullptr, nullptr, nullptr), kLangEnglish);
    // A more specific variable wins over LANG, in both directions.
    EXPECT_EQ(languageWith(nullptr, "de_AT", "en_US"), kLangGerman);
    EXPECT_EQ(languageWith("C", nullptr, "de_DE"), kLangEnglish);
    EXPECT_EQ(languageWith("de_CH", "C", "C"), kLangGerman);
    // Empty counts as not set.
    EXPECT_EQ(languageWith("", "", "de_DE"), kLangGerman);
    // Only the start names the language: "Deutsch" or a region "_DE" is not German.
    EXPECT_EQ(languageWith(nullptr, nullptr, "en_DE.UTF-8"), kLangEnglish);
    EXPECT_EQ(languageWith(nullptr, nullptr, "DE"), kLangEnglish);
}
