#include <gtest/gtest.h>

#include <string>

#include "present/byte_render.h"
#include "present/byte_text.h"
#include "present/char_tables.h"

using namespace kestrel;

namespace {
// The lookup as written down: the first index whose glyph equals the low 8 bits.
std::uint8_t NaiveReverse(unsigned c, const GlyphTable &g)
{
    for (int i = 0; i < 256; ++i)
        if (g[i] == (c & 0xFF))
            return static_cast<std::uint8_t>(i);
    return 0;
}

std::string HexToBinDigits(const std::string &hex)
{
    std::string bin;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
        bin += ByteToBin(static_cast<std::uint8_t>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    return bin;
}

const GlyphTable *const kSets[] = {&OemGlyphs, &AnsiGlyphs};
} // namespace

TEST(EscapedText, TheDocumentedExamplesAndAsymmetries)
{
    const GlyphTable &oem = OemGlyphs;
    EXPECT_EQ(StrToHexWithControl("A^M\\\\\\^", oem), "410D5C5E");
    EXPECT_EQ(StrToHexWithControl("A^", oem), "41");  // a lone final caret encodes nothing
    EXPECT_EQ(StrToHexWithControl("^aB", oem), "42"); // no caret name "^a": both dropped
    EXPECT_EQ(StrToHexWithControl("^^", oem), "1E");
    // "^\" never gives 0x1C: the backslash escapes the next character and the
    // caret waits for the one after it.
    EXPECT_EQ(HexToStrWithControl("1C", oem), "^\\");
    EXPECT_EQ(StrToHexWithControl("^\\", oem), "");
    EXPECT_EQ(StrToHexWithControl("^\\AB", oem), "4102");
    // With the ANSI set a space is found first at index 0.
    EXPECT_EQ(StrToHexWithControl(" ", AnsiGlyphs), "00");
    EXPECT_EQ(StrToHexWithControl(" ", oem), "20");

    EXPECT_EQ(HexToStrWithControl("0d5e5c4", oem), "^M\\^\\\\");
    EXPECT_EQ(BinToStrWithControl("0100000101", oem), "A");
    EXPECT_EQ(BinToStrWithControl("0100000", oem), "");
    // A digit that is not hex keeps the previous pair's nibble.
    EXPECT_EQ(HexToStrWithControl("4142G3", oem), "ABC");
    EXPECT_EQ(HexToStrWithControl("1G", oem), "^P");
    // Other characters of a binary group count as 0.
    EXPECT_EQ(BinToStrWithControl("01x0000x", oem), "@");
    // Decoded bytes carry the low byte of their glyph.
    EXPECT_EQ(HexToStrWithControl("80B0", oem), "\xC7\x91");
    EXPECT_EQ(HexToStrWithControl("2091", AnsiGlyphs), " \x91");
}

TEST(EscapedText, ReverseLookupMatchesTheLinearSearchForEveryCharacter)
{
    for (const GlyphTable *g : kSets)
        for (unsigned c = 0; c < 0x10000; c += 1)
            ASSERT_EQ(ReverseGlyphLookup(static_cast<char16_t>(c), *g), NaiveReverse(c, *g)) << c;
    // Any other table goes the slow way with the same rule.
    for (unsigned c = 0; c < 256; ++c)
        EXPECT_EQ(ReverseGlyphLookup(static_cast<char16_t>(c), EbcdicGlyphs), NaiveReverse(c, EbcdicGlyphs));
}

TEST(EscapedText, EveryByteRoundTripsExceptWhereTheGlyphIsAmbiguous)
{
    for (const GlyphTable *g : kSets) {
        int lost = 0;
        for (int v = 0; v < 256; ++v) {
            const auto byte = static_cast<std::uint8_t>(v);
            const std::string hex = ByteToHex(byte);
            const std::string text = HexToStrWithControl(hex, *g);
            EXPECT_EQ(BinToStrWithControl(ByteToBin(byte), *g), text) << v;
            // 0x1C decodes as "^\" which the encoder reads as an escape.
            const bool survives =
                (v < 32 && v != 0x1C) || v == 0x5C || v == 0x5E || NaiveReverse((*g)[v] & 0xFF, *g) == v;
            const std::string back = StrToHexWithControl(text, *g);
            EXPECT_EQ(back == hex, survives) << "byte " << v << " text " << text << " back " << back;
            EXPECT_EQ(StrToBinWithControl(text, *g), HexToBinDigits(back));
            lost += survives ? 0 : 1;
        }
        EXPECT_GT(lost, 0);
        EXPECT_LT(lost, 128);
    }
}

TEST(PlainHex, UsesTheGlyphForwardAndTheByteBackward)
{
    EXPECT_EQ(StrToHex("A", OemGlyphs), "41");
    EXPECT_EQ(StrToHex("\x01", OemGlyphs), "3A"); // U+263A, last two digits
    EXPECT_EQ(StrToHex("^\\", OemGlyphs), "5E5C"); // no escapes in the plain form
    EXPECT_EQ(HexToStr("41G2"), "AB");
    for (int v = 0; v < 256; ++v)
        EXPECT_EQ(HexToStr(ByteToHex(static_cast<std::uint8_t>(v))), std::string(1, static_cast<char>(v)));
}

TEST(Validate, DropsInvalidCharactersButKeepsTheSecondOfAPair)
{
    struct Case {
        const char *in, *hex, *bin;
    } cases[] = {
        {"xy1A", "y1A", "y1"},
        {"0G1", "01", "01"},
        {"", "", ""},
        {"0D0A", "0D0A", "00"},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(ValidateHexString(c.in), c.hex) << c.in;
        EXPECT_EQ(ValidateBinString(c.in), c.bin) << c.in;
    }
}

TEST(TriggerText, CaretPairsBecomeBytesAndUnknownPairsVanish)
{
    EXPECT_EQ(ConvertTrigStrToRealStr("^M^J"), "\r\n");
    EXPECT_EQ(ConvertTrigStrToRealStr("a^ab"), "ab");
    EXPECT_EQ(ConvertTrigStrToRealStr("^^"), "\x1E");
    EXPECT_EQ(ConvertTrigStrToRealStr("^\\"), "\x1C"); // no escapes here
    EXPECT_EQ(ConvertTrigStrToRealStr("\\^"), "\\"); // the caret pair "^" + nothing
    for (int v = 0; v < 32; ++v)
        EXPECT_EQ(ConvertTrigStrToRealStr(CaretNames[v]), std::string(1, static_cast<char>(v)));
}

TEST(TriggerText, HexPatternsBecomeBytes)
{
    EXPECT_EQ(HexToBytes("0D0A"), std::optional<std::string>("\r\n"));
    EXPECT_EQ(HexToBytes("0D0"), std::optional<std::string>("\r"));
    EXPECT_EQ(HexToBytes("0G"), std::nullopt);
    EXPECT_EQ(HexToBytes("0D 0A"), std::nullopt);
}

TEST(TriggerText, CaretTextOfBytesReadsBackExceptTheCaretByte)
{
    EXPECT_EQ(RealStrToTrigStr(std::string("A\r\n\0\x1F \x7F\xE4", 8)), "A^M^J^@^_ \x7F\xE4");
    for (int v = 0; v < 256; ++v) {
        const std::string one(1, static_cast<char>(v));
        if (v != '^') {
            EXPECT_EQ(ConvertTrigStrToRealStr(RealStrToTrigStr(one)), one) << v;
        }
    }
    // A lone caret byte reads back as an unfinished caret name: nothing.
    EXPECT_EQ(ConvertTrigStrToRealStr(RealStrToTrigStr("^")), "");
}

TEST(TriggerText, BinaryGroupsBecomeBytes)
{
    EXPECT_EQ(BinToBytes("0000110100001010"), std::optional<std::string>("\r\n"));
    EXPECT_EQ(BinToBytes("10000000011"), std::optional<std::string>("\x80")); // a partial byte is dropped
    EXPECT_EQ(BinToBytes("1111111"), std::optional<std::string>(""));
    EXPECT_EQ(BinToBytes("00001101 00001010"), std::nullopt);
    EXPECT_EQ(BinToBytes("0000110x"), std::nullopt);
}

TEST(ByteStrings, EditTextAndUtf8ReduceToLowBytes)
{
    EXPECT_EQ(Utf16ToByteString(u"A\u263A\u00C7"), "A\x3A\xC7");
    EXPECT_EQ(Utf8ToByteString("\xF0\x9F\x98\x80"), std::string(1, '\0')); // U+1F600
    EXPECT_EQ(Utf8ToByteString("\xFF\xC3"), "\xFF\xC3"); // not UTF-8: taken as it is
    for (int v = 0; v < 256; ++v) {
        const std::string one(1, static_cast<char>(v));
        EXPECT_EQ(Utf8ToByteString(ByteStringToUtf8(one)), one) << v;
    }
}
