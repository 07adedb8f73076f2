#include <gtest/gtest.h>

#include <fstream>

#include "config/environment.h"
#include "config/settings_encoding.h"
#include "support/temp_dir.h"

using namespace kestrel;

// Files made by the Windows program or a Windows editor: the ANSI code page or
// UTF-16 with its byte-order mark. Their texts must arrive as UTF-8.
TEST(SettingsEncoding, WindowsCodePagesBecomeUtf8)
{
    const std::pair<std::string, std::string> cases[] = {
        {"Pr\xFC" "fstand S\xFC" "d", "Prüfstand Süd"},          // Windows-1252 umlauts
        {"\x80 5 \x96 \x84x\x93", "€ 5 – „x“"},                  // its 0x80..0x9F block
        {"Prüfstand Süd", "Prüfstand Süd"},                      // valid UTF-8 stays as it is
        {std::string("\xFF\xFE[\0A\0]\0\r\0\n\0\xFC\0", 14), "[A]\r\nü"}, // UTF-16 LE
        {std::string("\xFE\xFF\0[\xD8\x3D\xDE\x00", 8), "[😀"},    // UTF-16 BE with a surrogate pair
        {std::string("\xFF\xFE\x00\xD8x", 5), "\xEF\xBF\xBD"},     // a lone surrogate, an odd last byte
        {"\xC0\xAF", "\xC3\x80\xC2\xAF"},                         // an overlong form is not UTF-8
        {"\xED\xA0\x80", "\xC3\xAD\xC2\xA0\xE2\x82\xAC"},          // nor is an encoded surrogate
    };
    for (const auto &[in, out] : cases)
        EXPECT_EQ(SettingsTextToUtf8(in), out) << in;
}

TEST(SettingsEncoding, AnEnvironmentSavedByTheWindowsProgramLoadsItsUmlauts)
{
    test::TempDir dir;
    const auto path = dir.path() / "alt.kef";
    std::ofstream(path, std::ios::binary) << "[General]\r\nTitle=Pr\xFC" "fstand\r\n[Description]\r\nLine0=Gr\xFC\xDF" "e\r\n";
    const EnvLoadResult r = LoadEnvironment(path, EnvLoadContext{dir.path(), std::nullopt, 0.0});
    EXPECT_EQ(r.env.general.Title, "Prüfstand");
    EXPECT_EQ(r.env.description, (std::vector<std::string>{"Grüße"}));

    // Saved again it is UTF-8 throughout, and loads the same.
    ASSERT_TRUE(SaveEnvironment(r.env, path).ok());
    EXPECT_EQ(LoadEnvironment(path, EnvLoadContext{dir.path(), std::nullopt, 0.0}).env, r.env);
    const std::string text = test::ReadWholeFile(path);
    EXPECT_NE(text.find("Title=Prüfstand"), std::string::npos);
}
