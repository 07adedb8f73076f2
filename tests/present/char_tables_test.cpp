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
    }
    EXPECT_EQ(CaretNames[0x0A], "^J");
    EXPECT_EQ(CaretNames[0x1C], "^\\");
    // Our own spellings, not the usual ones.
    EXPECT_EQ(AsciiMnemonics[0x09], "TAB");
    EXPECT_EQ(AsciiMnemonics[0x19], "EN");
    EXPECT_EQ(AsciiControlNames[0x11], "device control 1 (X-ON)");
}

TEST(CharTables, EbcdicControlsSitAtTheirShiftedPlaces)
{
    EXPECT_EQ(CountNonEmpty(EbcdicMnemonics), 66);
    for (int b = 0; b < 256; ++b)
        EXPECT_EQ(EbcdicMnemonics[b].empty(), EbcdicControlNames[b].empty()) << b;
    EXPECT_TRUE(EbcdicMnemonics[0x30].empty());
    EXPECT_EQ(EbcdicMnemonics[0x33], "IRS");
    EXPECT_EQ(EbcdicMnemonics[0x40], "RSP");
    EXPECT_EQ(EbcdicMnemonics[0x14], "RES/ENP");
}

// Above 0x20 both glyph sets are checked against the C library's code pages
// below; here only what no converter gives: the pictographs under 0x20, the
// kept 0xFF and the deliberate blanks of the EBCDIC set.
TEST(CharTables, GlyphsWhereTheyLeaveTheCodePages)
{
    const std::pair<int, char16_t> oem[] = {{0x00, 0}, {0x01, u'\u263A'}, {0x0A, u'\u25D9'}, {0x16, u'\u00AD'}};
    for (const auto &[b, g] : oem)
        EXPECT_EQ(OemGlyphs[b], g) << b;
    for (int b : {0x40, 0x42, 0xE1}) // a space and accented letters: blank on purpose
        EXPECT_EQ(EbcdicGlyphs[b], u' ') << b;
    EXPECT_EQ(EbcdicGlyphs[0x60], u'\u00AD');
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

TEST(CharTables, GlyphSetsAgreeWithTheCodePagesOutsideTheirDeliberateChanges)
{
    // glibc ships both converters (libc6 gconv); without them the glyph sets would go unchecked.
    ASSERT_GE(Reference("CP437", 0x80), 0) << "the C library has no CP437 converter";
    ASSERT_GE(Reference("IBM037", 0xC1), 0) << "the C library has no IBM037 converter";
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
