#include <gtest/gtest.h>

#include "base/build_info.h"
#include "base/string_table.h"

using namespace kestrel;

TEST(StringTable, LanguageOffsetEscapesAndMissingNumbers)
{
    SetGlobalLang(kLangEnglish);
    EXPECT_EQ(Str(3001), "Error opening record file!");
    EXPECT_EQ(*FindStr(13001), "Error opening record file!");
    SetGlobalLang(5000); // any other offset falls back to German rather than reading a foreign range
    EXPECT_EQ(GlobalLang(), kLangGerman);
    EXPECT_EQ(Str(3001), "Fehler beim Öffnen der Aufzeichnungsdatei!");

    EXPECT_EQ(StrIn(4276, kLangEnglish), "ERROR:\t: ");
    const std::string s = StrIn(2053, kLangGerman);
    EXPECT_NE(s.find("Kestrel. \n\nEine"), std::string::npos);
    EXPECT_EQ(s.back(), '\n');
    EXPECT_EQ(StrIn(9999, kLangGerman), "[#9999]");
    EXPECT_EQ(StrIn(9999, kLangEnglish), "[#19999]");
    EXPECT_FALSE(FindStr(-5).has_value());
}

TEST(StringTable, EveryEntryExistsInBothLanguages)
{
    int pairs = 0;
    for (int n = 0; n < kLangEnglish; ++n) {
        const bool de = FindStr(n).has_value();
        EXPECT_EQ(de, FindStr(n + kLangEnglish).has_value()) << n;
        if (de) {
            EXPECT_FALSE(FindStr(n)->empty()) << n;
            ++pairs;
        }
    }
    EXPECT_GT(pairs, 40);
}

TEST(StringTable, LineParserRejectsMalformedLines)
{
    StringTableEntry e;
    // English numbers are derived, never stored.
    for (const char *bad : {"# comment", "", "12x\tA\tB", "10000\tA\tB", "no tab here"})
        EXPECT_FALSE(ParseStringTableLine(bad, e)) << bad;
    ASSERT_TRUE(ParseStringTableLine("7\tEins\\\\Zwei\tOne\r", e));
    EXPECT_EQ(e.number, 7);
    EXPECT_EQ(e.german, "Eins\\Zwei");
    EXPECT_EQ(e.english, "One");
}

// The about text names the build's version and date, the Qt it runs with and the
// licences, in the active language.
TEST(AboutText, NamesVersionQtAndLicencesInTheActiveLanguage)
{
    kestrel::SetGlobalLang(kestrel::kLangEnglish);
    const std::string about = kestrel::AboutText("6.4.2");
    EXPECT_NE(about.find("Version " + kestrel::BuildVersion() + ", built on " + kestrel::BuildDate()), std::string::npos)
        << about;
    EXPECT_NE(about.find("Qt 6.4.2"), std::string::npos);
    EXPECT_NE(about.find("LGPL-3.0"), std::string::npos);
    EXPECT_FALSE(kestrel::BuildVersion().empty());
    EXPECT_EQ(kestrel::BuildDate().size(), 10u); // YYYY-MM-DD
    kestrel::SetGlobalLang(kestrel::kLangGerman);
    EXPECT_NE(kestrel::AboutText("6.4.2").find("gebaut am"), std::string::npos);
}
