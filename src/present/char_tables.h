#pragma once
// The character tables behind every byte shown or typed in Kestrel.
//
// API overview
//   TextTable / GlyphTable        256 entries indexed by the byte value.
//   CaretNames                    "^@" .. "^_" for 0x00-0x1F, empty above.
//   AsciiMnemonics                "NUL" .. "US" for 0x00-0x1F (0x09 is "TAB", 0x19 is "EN").
//   AsciiControlNames             long names for 0x00-0x1F.
//   EbcdicMnemonics               66 mnemonics (0x00-0x2F, 0x32-0x40, 0xCA, 0xE1, 0xFF).
//   EbcdicControlNames            the long names at the same 66 places.
//   EbcdicGlyphs                  code page 037 graphics, 0x60 a soft hyphen, space elsewhere.
//   OemGlyphs / AnsiGlyphs        the two candidate display glyph sets.
//   DisplayTable                  the (empty) override table of HexToStr.
//   ActiveGlyphs()                the glyph set chosen for this run (see below).
//
// Glyphs are stored as UTF-16 code units (char16_t); every glyph lies in the
// Basic Multilingual Plane, so one unit is one character. Qt takes them as
// QChar directly; GlyphToUtf8 gives the text for terminal and file output.
//
// The tables are fixed on purpose, including their oddities ("TAB" and "EN"
// in the ASCII mnemonics, the EBCDIC control placements one place lower than
// the usual chart from 0x3E on, 0x16 and 0xFF in the OEM set): recordings are
// read by people who compare them with earlier printouts, so they must not
// "improve".

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <iterator>

namespace kestrel {

using TextTable = std::array<std::string_view, 256>;
using GlyphTable = std::array<char16_t, 256>;

namespace detail {
struct IndexedText {
    std::uint8_t index;
    std::string_view text;
};

template <std::size_t N>
constexpr TextTable MakeTextTable(const IndexedText (&entries)[N])
{
    TextTable t{};
    for (const auto &e : entries)
        t[e.index] = e.text;
    return t;
}

constexpr TextTable MakeCaretNames()
{
    // "^" followed by the character 0x40 + value; the strings live in one
    // static buffer so that the table can hand out views.
    TextTable t{};
    constexpr std::string_view all = "^@^A^B^C^D^E^F^G^H^I^J^K^L^M^N^O^P^Q^R^S^T^U^V^W^X^Y^Z^[^\\^]^^^_";
    for (std::size_t i = 0; i < 32; ++i)
        t[i] = all.substr(i * 2, 2);
    return t;
}
} // namespace detail

inline constexpr TextTable CaretNames = detail::MakeCaretNames();

inline constexpr TextTable AsciiMnemonics = detail::MakeTextTable({
    {0x00, "NUL"}, {0x01, "SOH"}, {0x02, "STX"}, {0x03, "ETX"}, {0x04, "EOT"}, {0x05, "ENQ"},
    {0x06, "ACK"}, {0x07, "BEL"}, {0x08, "BS"},  {0x09, "TAB"}, {0x0A, "LF"},  {0x0B, "VT"},
    {0x0C, "FF"},  {0x0D, "CR"},  {0x0E, "SO"},  {0x0F, "SI"},  {0x10, "DLE"}, {0x11, "DC1"},
    {0x12, "DC2"}, {0x13, "DC3"}, {0x14, "DC4"}, {0x15, "NAK"}, {0x16, "SYN"}, {0x17, "ETB"},
    {0x18, "CAN"}, {0x19, "EN"},  {0x1A, "SUB"}, {0x1B, "ESC"}, {0x1C, "FS"},  {0x1D, "GS"},
    {0x1E, "RS"},  {0x1F, "US"},
});

inline constexpr TextTable AsciiControlNames = detail::MakeTextTable({
    {0x00, "null"},
    {0x01, "start of heading"},
    {0x02, "start of text"},
    {0x03, "end of text"},
    {0x04, "end of transmission"},
    {0x05, "enquiry"},
    {0x06, "acknowledge"},
    {0x07, "bell"},
    {0x08, "backspace"},
    {0x09, "horizontal tab"},
    {0x0A, "line feed"},
    {0x0B, "vertical tab"},
    {0x0C, "form feed"},
    {0x0D, "carriage return"},
    {0x0E, "shift out"},
    {0x0F, "shift in"},
    {0x10, "data line escape"},
    {0x11, "device control 1 (X-ON)"},
    {0x12, "device control 2"},
    {0x13, "device control 3 (X-OFF)"},
    {0x14, "device control 4"},
    {0x15, "negative acknowledge"},
    {0x16, "synchronous idle"},
    {0x17, "end transmission block"},
    {0x18, "cancel"},
    {0x19, "end of medium"},
    {0x1A, "substitute (end of text file)"},
    {0x1B, "escape"},
    {0x1C, "file separator"},
    {0x1D, "group separator"},
    {0x1E, "record separator"},
    {0x1F, "unit separator"},
});

namespace detail {
struct EbcdicControl {
    std::uint8_t index;
    std::string_view mnemonic;
    std::string_view name;
};

// 0x30 and 0x31 have no entry, 0x33 is "IRS" (index return), and SUB, SP and
// RSP sit at 0x3E-0x40: kept exactly as the product has always shown them.
inline constexpr EbcdicControl kEbcdicControls[] = {
    {0x00, "NUL", "null"},
    {0x01, "SOH", "start of heading"},
    {0x02, "STX", "start of text"},
    {0x03, "ETX", "end of text"},
    {0x04, "SEL", "select"},
    {0x05, "HT", "horizontal tab"},
    {0x06, "RNL", "required new line"},
    {0x07, "DEL", "delete"},
    {0x08, "GE", "graphic escape"},
    {0x09, "SPS", "superscript"},
    {0x0A, "RPT", "repeat"},
    {0x0B, "VT", "vertical tab"},
    {0x0C, "FF", "form feed"},
    {0x0D, "CR", "carriage return"},
    {0x0E, "SO", "shift out"},
    {0x0F, "SI", "shift in"},
    {0x10, "DLE", "data length escape"},
    {0x11, "DC1", "device control 1"},
    {0x12, "DC2", "device control 2"},
    {0x13, "DC3", "device control 3"},
    {0x14, "RES/ENP", "restore/enable presentation"},
    {0x15, "NL", "new line"},
    {0x16, "BS", "backspace"},
    {0x17, "POC", "program-operator communication"},
    {0x18, "CAN", "cancel"},
    {0x19, "EM", "end of medium"},
    {0x1A, "UBS", "unit backspace"},
    {0x1B, "CU1", "customer use 1"},
    {0x1C, "IFS", "interchange file separator"},
    {0x1D, "IGS", "interchange group separator"},
    {0x1E, "IRS", "interchange record separator"},
    {0x1F, "IUS/ITB", "interchange unit separator/intermediate transmission block"},
    {0x20, "DS", "digit select"},
    {0x21, "SOS", "start of significance"},
    {0x22, "FS", "field separator"},
    {0x23, "WUS", "word underscore"},
    {0x24, "BYP/INP", "bypass/inhibit presentation"},
    {0x25, "LF", "line feed"},
    {0x26, "ETB", "end of transmission block"},
    {0x27, "ESC", "escape"},
    {0x28, "SA", "set attribute"},
    {0x29, "SFE", "start field extended"},
    {0x2A, "SM/SW", "set mode/set switch"},
    {0x2B, "CSP", "control sequence prefix"},
    {0x2C, "MFA", "modify field attribute"},
    {0x2D, "ENQ", "enquiry"},
    {0x2E, "ACK", "acknowledge"},
    {0x2F, "BEL", "bell"},
    {0x32, "SYN", "synchronous idle"},
    {0x33, "IRS", "index return"},
    {0x34, "PP", "presentation position"},
    {0x35, "TRN", "transparent"},
    {0x36, "NBS", "numeric backspace"},
    {0x37, "EOT", "end of transmission"},
    {0x38, "SBS", "subscript"},
    {0x39, "IT", "indent tab"},
    {0x3A, "RFF", "required form feed"},
    {0x3B, "CU3", "customer use 3"},
    {0x3C, "DC4", "device control 4"},
    {0x3D, "NAK", "negative acknowledge"},
    {0x3E, "SUB", "substitute"},
    {0x3F, "SP", "space"},
    {0x40, "RSP", "required space"},
    {0xCA, "SHY", "syllable hyphen (shy)"},
    {0xE1, "NSP", "numeric space"},
    {0xFF, "EO", "eight ones"},
};
static_assert(std::size(kEbcdicControls) == 66);

constexpr TextTable MakeEbcdicTable(bool names)
{
    TextTable t{};
    for (const auto &e : kEbcdicControls)
        t[e.index] = names ? e.name : e.mnemonic;
    return t;
}

constexpr GlyphTable MakeAnsiGlyphs()
{
    GlyphTable g{};
    for (int i = 0; i < 256; ++i)
        g[i] = (i < 0x20 || (i >= 0x7F && i <= 0x9F)) ? u' ' : static_cast<char16_t>(i);
    // Two C1 positions keep their own code; the rest of 0x7F-0x9F shows blank.
    g[0x91] = 0x0091;
    g[0x92] = 0x0092;
    return g;
}
} // namespace detail

inline constexpr TextTable EbcdicMnemonics = detail::MakeEbcdicTable(false);
inline constexpr TextTable EbcdicControlNames = detail::MakeEbcdicTable(true);

// Code page 037 graphics at their 94 positions; 0x60 is a soft hyphen (not the
// hyphen-minus) and every other byte, 0x40 and the accented letters included,
// shows as a space.
inline constexpr GlyphTable EbcdicGlyphs = {
    0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020,  // 00
    0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020,  // 08
    0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020,  // 10
    0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020,  // 18
    0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020,  // 20
    0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020,  // 28
    0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020,  // 30
    0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020,  // 38
    0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020,  // 40
    0x0020, 0x0020, 0x00A2, 0x002E, 0x003C, 0x0028, 0x002B, 0x007C,  // 48
    0x0026, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020,  // 50
    0x0020, 0x0020, 0x0021, 0x0024, 0x002A, 0x0029, 0x003B, 0x00AC,  // 58
    0x00AD, 0x002F, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020,  // 60
    0x0020, 0x0020, 0x00A6, 0x002C, 0x0025, 0x005F, 0x003E, 0x003F,  // 68
    0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020,  // 70
    0x0020, 0x0060, 0x003A, 0x0023, 0x0040, 0x0027, 0x003D, 0x0022,  // 78
    0x0020, 0x0061, 0x0062, 0x0063, 0x0064, 0x0065, 0x0066, 0x0067,  // 80
    0x0068, 0x0069, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020,  // 88
    0x0020, 0x006A, 0x006B, 0x006C, 0x006D, 0x006E, 0x006F, 0x0070,  // 90
    0x0071, 0x0072, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020,  // 98
    0x0020, 0x007E, 0x0073, 0x0074, 0x0075, 0x0076, 0x0077, 0x0078,  // A0
    0x0079, 0x007A, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020,  // A8
    0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020,  // B0
    0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020,  // B8
    0x007B, 0x0041, 0x0042, 0x0043, 0x0044, 0x0045, 0x0046, 0x0047,  // C0
    0x0048, 0x0049, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020,  // C8
    0x007D, 0x004A, 0x004B, 0x004C, 0x004D, 0x004E, 0x004F, 0x0050,  // D0
    0x0051, 0x0052, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020,  // D8
    0x005C, 0x0020, 0x0053, 0x0054, 0x0055, 0x0056, 0x0057, 0x0058,  // E0
    0x0059, 0x005A, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020,  // E8
    0x0030, 0x0031, 0x0032, 0x0033, 0x0034, 0x0035, 0x0036, 0x0037,  // F0
    0x0038, 0x0039, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020, 0x0020,  // F8
};

// Code page 437 with its pictographs for 0x01-0x1F. 0x00 stays U+0000, 0x16 is
// a soft hyphen, 0x7F the house sign, 0xFF y with diaeresis (not the no-break
// space of the code page).
inline constexpr GlyphTable OemGlyphs = {
    0x0000, 0x263A, 0x263B, 0x2665, 0x2666, 0x2663, 0x2660, 0x2022,  // 00
    0x25D8, 0x25CB, 0x25D9, 0x2642, 0x2640, 0x266A, 0x266B, 0x263C,  // 08
    0x25BA, 0x25C4, 0x2195, 0x203C, 0x00B6, 0x00A7, 0x00AD, 0x21A8,  // 10
    0x2191, 0x2193, 0x2192, 0x2190, 0x221F, 0x2194, 0x25B2, 0x25BC,  // 18
    0x0020, 0x0021, 0x0022, 0x0023, 0x0024, 0x0025, 0x0026, 0x0027,  // 20
    0x0028, 0x0029, 0x002A, 0x002B, 0x002C, 0x002D, 0x002E, 0x002F,  // 28
    0x0030, 0x0031, 0x0032, 0x0033, 0x0034, 0x0035, 0x0036, 0x0037,  // 30
    0x0038, 0x0039, 0x003A, 0x003B, 0x003C, 0x003D, 0x003E, 0x003F,  // 38
    0x0040, 0x0041, 0x0042, 0x0043, 0x0044, 0x0045, 0x0046, 0x0047,  // 40
    0x0048, 0x0049, 0x004A, 0x004B, 0x004C, 0x004D, 0x004E, 0x004F,  // 48
    0x0050, 0x0051, 0x0052, 0x0053, 0x0054, 0x0055, 0x0056, 0x0057,  // 50
    0x0058, 0x0059, 0x005A, 0x005B, 0x005C, 0x005D, 0x005E, 0x005F,  // 58
    0x0060, 0x0061, 0x0062, 0x0063, 0x0064, 0x0065, 0x0066, 0x0067,  // 60
    0x0068, 0x0069, 0x006A, 0x006B, 0x006C, 0x006D, 0x006E, 0x006F,  // 68
    0x0070, 0x0071, 0x0072, 0x0073, 0x0074, 0x0075, 0x0076, 0x0077,  // 70
    0x0078, 0x0079, 0x007A, 0x007B, 0x007C, 0x007D, 0x007E, 0x2302,  // 78
    0x00C7, 0x00FC, 0x00E9, 0x00E2, 0x00E4, 0x00E0, 0x00E5, 0x00E7,  // 80
    0x00EA, 0x00EB, 0x00E8, 0x00EF, 0x00EE, 0x00EC, 0x00C4, 0x00C5,  // 88
    0x00C9, 0x00E6, 0x00C6, 0x00F4, 0x00F6, 0x00F2, 0x00FB, 0x00F9,  // 90
    0x00FF, 0x00D6, 0x00DC, 0x00A2, 0x00A3, 0x00A5, 0x20A7, 0x0192,  // 98
    0x00E1, 0x00ED, 0x00F3, 0x00FA, 0x00F1, 0x00D1, 0x00AA, 0x00BA,  // A0
    0x00BF, 0x2310, 0x00AC, 0x00BD, 0x00BC, 0x00A1, 0x00AB, 0x00BB,  // A8
    0x2591, 0x2592, 0x2593, 0x2502, 0x2524, 0x2561, 0x2562, 0x2556,  // B0
    0x2555, 0x2563, 0x2551, 0x2557, 0x255D, 0x255C, 0x255B, 0x2510,  // B8
    0x2514, 0x2534, 0x252C, 0x251C, 0x2500, 0x253C, 0x255E, 0x255F,  // C0
    0x255A, 0x2554, 0x2569, 0x2566, 0x2560, 0x2550, 0x256C, 0x2567,  // C8
    0x2568, 0x2564, 0x2565, 0x2559, 0x2558, 0x2552, 0x2553, 0x256B,  // D0
    0x256A, 0x2518, 0x250C, 0x2588, 0x2584, 0x258C, 0x2590, 0x2580,  // D8
    0x03B1, 0x00DF, 0x0393, 0x03C0, 0x03A3, 0x03C3, 0x00B5, 0x03C4,  // E0
    0x03A6, 0x0398, 0x03A9, 0x03B4, 0x221E, 0x03C6, 0x03B5, 0x2229,  // E8
    0x2261, 0x00B1, 0x2265, 0x2264, 0x2320, 0x2321, 0x00F7, 0x2248,  // F0
    0x00B0, 0x2219, 0x00B7, 0x221A, 0x207F, 0x00B2, 0x25A0, 0x00FF,  // F8
};

// ISO 8859-1 above 0x9F, ASCII in the middle, blanks for the control ranges.
inline constexpr GlyphTable AnsiGlyphs = detail::MakeAnsiGlyphs();

// The override table of HexToStr: created empty and left empty.
inline constexpr TextTable DisplayTable{};

// Which glyph set byte cells use. Kestrel on Linux always takes the OEM set;
// the ANSI set stays selectable so the conversions behave as they always did
// on systems that used it (tests pin either).
enum class GlyphSet : int { Ansi = 0, Oem = 1 };

// The glyph table of this run; chosen once at start-up before any record is
// shown (SelectActiveGlyphs). Defaults to the OEM set.
[[nodiscard]] const GlyphTable &ActiveGlyphs();
// 1 when the OEM set is active, 0 for the ANSI set.
[[nodiscard]] int ActiveGlyphsFlag();
void SelectActiveGlyphs(GlyphSet set);
// The platform's choice: the OEM set.
void SelectPlatformGlyphs();
[[nodiscard]] const GlyphTable &GlyphTableOf(GlyphSet set);

// UTF-8 text of one glyph; U+0000 gives an empty text (nothing to print).
[[nodiscard]] std::string GlyphToUtf8(char16_t glyph);
// Appends the UTF-8 form of a code point below 0x10000.
void AppendUtf8(std::string &out, char16_t glyph);

} // namespace kestrel
