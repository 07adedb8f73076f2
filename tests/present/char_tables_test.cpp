#include <gtest/gtest.h>

#include <iconv.h>
#include <string>

#include "present/char_tables.h"

using namespace kestrel;

namespace {
// The code point the C library's converter gives for one byte of a code page;
// -1 when the converter is missing or the byte has no character.
long Reference(const char *codePage, int byte)
{
    iconv_t cd = iconv_open("UTF-32LE", codePage);
    if (cd == reinterpret_cast<iconv_t>(-1))
        return -1;
    char in = static_cast<char>(byte);
    unsigned char out[8] = {};
    char *ip = &in, *op = reinterpret_cast<char *>(out);
    std::size_t il = 1, ol = sizeof out;
    const std::size_t r = iconv(cd, &ip, &il, &op, &ol);
    iconv_close(cd);
    if (r == static_cast<std::size_t>(-1) || ol != 4)
        return -1;
    return out[0] | (out[1] << 8) | (out[2] << 16) | (static_cast<long>(out[3]) << 24);
}

int CountNonEmpty(const TextTable &t)
{
    int n = 0;
    for (auto s : t)
        n += s.empty() ? 0 : 1;
    return n;
}
} // namespace

TEST(CharTables, ControlTablesCoverExactlyTheControlRange)
{
    for (int b = 0; b < 256; ++b) {
        const bool control = b < 0x20;
        EXPECT_EQ(!CaretNames[b].empty(), control) << b;
        EXPECT_EQ(!AsciiMnemonics[b].empty(), control) << b;
        EXPECT_EQ(!AsciiControlNames[b].empty(), control) << b;
        if (control) {
            ASSERT_EQ(CaretNames[b].size(), 2u);
            EXPECT_EQ(CaretNames[b][0], '^');
            EXPECT_EQ(CaretNames[b][1], static_cast<char>(0x40 + b));
        }
    }
    EXPECT_EQ(CaretNames[0x1C], "^\\");
    EXPECT_EQ(CaretNames[0x1F], "^_");
}

TEST(CharTables, AsciiMnemonicsKeepTheirOwnSpellings)
{
    EXPECT_EQ(AsciiMnemonics[0x09], "TAB");
    EXPECT_EQ(AsciiMnemonics[0x19], "EN");
    EXPECT_EQ(AsciiMnemonics[0x0A], "LF");
    EXPECT_EQ(AsciiMnemonics[0x1F], "US");
    EXPECT_EQ(AsciiControlNames[0x11], "device control 1 (X-ON)");
    EXPECT_EQ(AsciiControlNames[0x1A], "substitute (end of text file)");
    EXPECT_EQ(AsciiControlNames[0x10], "data line escape");
}

TEST(CharTables, EbcdicControlsSitAtTheirShiftedPlaces)
{
    EXPECT_EQ(CountNonEmpty(EbcdicMnemonics), 66);
    EXPECT_EQ(CountNonEmpty(EbcdicControlNames), 66);
    for (int b = 0; b < 256; ++b)
        EXPECT_EQ(EbcdicMnemonics[b].empty(), EbcdicControlNames[b].empty()) << b;
    EXPECT_TRUE(EbcdicMnemonics[0x30].empty());
    EXPECT_TRUE(EbcdicMnemonics[0x31].empty());
    EXPECT_TRUE(EbcdicMnemonics[0x41].empty());
    EXPECT_EQ(EbcdicMnemonics[0x33], "IRS");
    EXPECT_EQ(EbcdicControlNames[0x33], "index return");
    EXPECT_EQ(EbcdicMnemonics[0x1E], "IRS");
    EXPECT_EQ(EbcdicMnemonics[0x3E], "SUB");
    EXPECT_EQ(EbcdicMnemonics[0x3F], "SP");
    EXPECT_EQ(EbcdicMnemonics[0x40], "RSP");
    EXPECT_EQ(EbcdicMnemonics[0xCA], "SHY");
    EXPECT_EQ(EbcdicMnemonics[0xE1], "NSP");
    EXPECT_EQ(EbcdicMnemonics[0xFF], "EO");
    EXPECT_EQ(EbcdicMnemonics[0x14], "RES/ENP");
    EXPECT_EQ(EbcdicControlNames[0x1F], "interchange unit separator/intermediate transmission block");
}

TEST(CharTables, EbcdicGlyphsFollowCodePage037WithASoftHyphen)
{
    int graphics = 0;
    for (int b = 0; b < 256; ++b)
        graphics += EbcdicGlyphs[b] != u' ' ? 1 : 0;
    EXPECT_EQ(graphics, 94);
    EXPECT_EQ(EbcdicGlyphs[0x40], u' ');
    EXPECT_EQ(EbcdicGlyphs[0x42], u' '); // accented letter: blank on purpose
    EXPECT_EQ(EbcdicGlyphs[0x60], u'\u00AD');
    EXPECT_EQ(EbcdicGlyphs[0x4A], u'\u00A2');
    EXPECT_EQ(EbcdicGlyphs[0x5F], u'\u00AC');
    EXPECT_EQ(EbcdicGlyphs[0x6A], u'\u00A6');
    EXPECT_EQ(EbcdicGlyphs[0x7F], u'"');
    EXPECT_EQ(EbcdicGlyphs[0xA1], u'~');
    EXPECT_EQ(EbcdicGlyphs[0xC0], u'{');
    EXPECT_EQ(EbcdicGlyphs[0xD0], u'}');
    EXPECT_EQ(EbcdicGlyphs[0xE0], u'\\');
    EXPECT_EQ(EbcdicGlyphs[0xE1], u' ');
    for (int i = 0; i < 9; ++i) {
        EXPECT_EQ(EbcdicGlyphs[0x81 + i], u'a' + i);
        EXPECT_EQ(EbcdicGlyphs[0xC1 + i], u'A' + i);
        EXPECT_EQ(EbcdicGlyphs[0xD1 + i], u'J' + i);
    }
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(EbcdicGlyphs[0xE2 + i], u'S' + i);
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(EbcdicGlyphs[0xF0 + i], u'0' + i);
}

TEST(CharTables, OemGlyphsAreCodePage437WithTheTwoChangedPlaces)
{
    EXPECT_EQ(OemGlyphs[0x00], 0);
    EXPECT_EQ(OemGlyphs[0x01], u'\u263A');
    EXPECT_EQ(OemGlyphs[0x0A], u'\u25D9');
    EXPECT_EQ(OemGlyphs[0x16], u'\u00AD');
    EXPECT_EQ(OemGlyphs[0x1F], u'\u25BC');
    for (int b = 0x20; b < 0x7F; ++b)
        EXPECT_EQ(OemGlyphs[b], b);
    EXPECT_EQ(OemGlyphs[0x7F], u'\u2302');
    EXPECT_EQ(OemGlyphs[0x80], u'\u00C7');
    EXPECT_EQ(OemGlyphs[0xB0], u'\u2591');
    EXPECT_EQ(OemGlyphs[0xE1], u'\u00DF');
    EXPECT_EQ(OemGlyphs[0xFE], u'\u25A0');
    EXPECT_EQ(OemGlyphs[0xFF], u'\u00FF');
}

TEST(CharTables, AnsiGlyphsBlankTheControlRangesExceptTwo)
{
    for (int b = 0; b < 256; ++b) {
        char16_t want = static_cast<char16_t>(b);
        if (b < 0x20 || (b >= 0x7F && b <= 0x9F && b != 0x91 && b != 0x92))
            want = u' ';
        EXPECT_EQ(AnsiGlyphs[b], want) << b;
    }
}

TEST(CharTables, ActiveGlyphsFollowTheSelection)
{
    SelectPlatformGlyphs();
    EXPECT_EQ(ActiveGlyphsFlag(), 1);
    EXPECT_EQ(&ActiveGlyphs(), &OemGlyphs);
    SelectActiveGlyphs(GlyphSet::Ansi);
    EXPECT_EQ(ActiveGlyphsFlag(), 0);
    EXPECT_EQ(ActiveGlyphs()[0x0A], u' ');
    SelectPlatformGlyphs();
    EXPECT_EQ(ActiveGlyphs()[0x0A], u'\u25D9');
    for (auto s : DisplayTable)
        EXPECT_TRUE(s.empty());
}

TEST(CharTables, GlyphUtf8CoversOneTwoAndThreeByteForms)
{
    EXPECT_EQ(GlyphToUtf8(u'A'), "A");
    EXPECT_EQ(GlyphToUtf8(u'\u00AD'), "\xC2\xAD");
    EXPECT_EQ(GlyphToUtf8(u'\u25D9'), "\xE2\x97\x99");
    EXPECT_EQ(GlyphToUtf8(0), "");
    // Every glyph of every table decodes back to itself.
    for (const GlyphTable *t : {&OemGlyphs, &AnsiGlyphs, &EbcdicGlyphs})
        for (char16_t g : *t) {
            if (g == 0)
                continue;
            const std::string s = GlyphToUtf8(g);
            const auto u = [&](std::size_t i) { return static_cast<unsigned>(static_cast<unsigned char>(s[i])); };
            unsigned back = 0;
            if (s.size() == 1)
                back = u(0);
            else if (s.size() == 2)
                back = ((u(0) & 0x1F) << 6) | (u(1) & 0x3F);
            else if (s.size() == 3)
                back = ((u(0) & 0x0F) << 12) | ((u(1) & 0x3F) << 6) | (u(2) & 0x3F);
            EXPECT_EQ(back, static_cast<unsigned>(g)) << s.size();
        }
}

TEST(CharTables, GlyphSetsAgreeWithTheCodePagesOutsideTheirDeliberateChanges)
{
    if (Reference("CP437", 0x80) < 0 || Reference("IBM037", 0xC1) < 0)
        GTEST_SKIP() << "the C library has no CP437 / IBM037 converter";
    // Code page 437 from 0x20 on (below that the converter gives control codes,
    // the table its pictographs); 0xFF stays y with diaeresis on purpose.
    for (int b = 0x20; b < 0xFF; ++b)
        EXPECT_EQ(OemGlyphs[b], b == 0x7F ? 0x2302 : Reference("CP437", b)) << std::hex << b;
    EXPECT_EQ(Reference("CP437", 0xFF), 0xA0);

    // Code page 037 at exactly these 94 places, a soft hyphen at 0x60, blanks elsewhere.
    const std::pair<int, int> graphic[] = {{0x4A, 0x50}, {0x5A, 0x61}, {0x6A, 0x6F}, {0x79, 0x7F},
                                           {0x81, 0x89}, {0x91, 0x99}, {0xA1, 0xA9}, {0xC0, 0xC9},
                                           {0xD0, 0xD9}, {0xE0, 0xE0}, {0xE2, 0xE9}, {0xF0, 0xF9}};
    int places = 0;
    for (int b = 0; b < 256; ++b) {
        bool shown = false;
        for (const auto &[lo, hi] : graphic)
            shown = shown || (b >= lo && b <= hi);
        places += shown ? 1 : 0;
        const long want = !shown ? 0x20 : b == 0x60 ? 0xAD : Reference("IBM037", b);
        EXPECT_EQ(EbcdicGlyphs[b], want) << std::hex << b;
    }
    EXPECT_EQ(places, 94);
    EXPECT_EQ(Reference("IBM037", 0x60), '-');
}
