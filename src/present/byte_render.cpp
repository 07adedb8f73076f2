#include "present/byte_render.h"

#include "present/char_tables.h"

namespace kestrel {

namespace {
constexpr char kHexDigits[] = "0123456789ABCDEF";

CellContent Glyph(char16_t g)
{
    return CellContent{CellKind::Glyph, g, GlyphToUtf8(g)};
}

CellContent Mnemonic(std::string_view m)
{
    // Only two and three letters can be stacked in a cell; longer ones are left empty.
    const CellKind kind = (m.size() == 2 || m.size() == 3) ? CellKind::Mnemonic : CellKind::Nothing;
    return CellContent{kind, 0, std::string(m)};
}
} // namespace

CellContent RenderByte(std::uint8_t byte, int charMode, int overlay)
{
    if (charMode == CharMode::Ebcdic) {
        // The caret overlay has no meaning for EBCDIC.
        if (overlay == Overlay::Mnemonic && !EbcdicMnemonics[byte].empty())
            return Mnemonic(EbcdicMnemonics[byte]);
        return Glyph(EbcdicGlyphs[byte]);
    }
    if (IsNumberMode(charMode))
        return CellContent{CellKind::Number, 0, FormatByteNumber(byte, charMode)};
    if (overlay == Overlay::Caret && !CaretNames[byte].empty())
        return CellContent{CellKind::Caret, 0, std::string(CaretNames[byte])};
    if (overlay == Overlay::Mnemonic && !AsciiMnemonics[byte].empty())
        return Mnemonic(AsciiMnemonics[byte]);
    return Glyph(ActiveGlyphs()[byte]);
}

std::string RenderByteText(std::uint8_t byte, int charMode, int overlay)
{
    return RenderByte(byte, charMode, overlay).text;
}

std::string IntToHex(std::uint64_t value, int digits)
{
    char buf[17];
    int n = 0;
    do {
        buf[n++] = kHexDigits[value & 0xF];
        value >>= 4;
    } while (value != 0);
    std::string s;
    s.reserve(static_cast<std::size_t>(digits > n ? digits : n));
    for (int i = n; i < digits; ++i)
        s.push_back('0');
    while (n > 0)
        s.push_back(buf[--n]);
    return s;
}

std::string FormatDecimal(std::int64_t value)
{
    return std::to_string(value);
}

std::string FormatOctal(std::uint64_t value, int digits)
{
    char buf[23];
    int n = 0;
    do {
        buf[n++] = static_cast<char>('0' + (value & 7));
        value >>= 3;
    } while (value != 0);
    std::string s;
    for (int i = n; i < digits; ++i)
        s.push_back('0');
    while (n > 0)
        s.push_back(buf[--n]);
    return s;
}

std::string FormatBinary(std::uint64_t value, int digits)
{
    std::string s;
    if (digits <= 0)
        return s;
    if (digits > 64)
        digits = 64;
    s.reserve(static_cast<std::size_t>(digits));
    for (int bit = digits - 1; bit >= 0; --bit)
        s.push_back(((value >> bit) & 1) ? '1' : '0');
    return s;
}

std::string ByteToHex(std::uint8_t byte) { return IntToHex(byte, 2); }
std::string ByteToDec(std::uint8_t byte) { return FormatDecimal(byte); }
std::string ByteToOct(std::uint8_t byte) { return FormatOctal(byte, 3); }
std::string ByteToBin(std::uint8_t byte) { return FormatBinary(byte, 8); }

std::string FormatByteNumber(std::uint8_t byte, int charMode)
{
    switch (charMode) {
    case CharMode::Hex: return ByteToHex(byte);
    case CharMode::Dec: return ByteToDec(byte);
    case CharMode::Oct: return ByteToOct(byte);
    case CharMode::Bin: return ByteToBin(byte);
    default: return {};
    }
}

std::string_view ControlDescription(std::uint8_t byte, int charMode)
{
    if (IsNumberMode(charMode))
        return {};
    if (charMode == CharMode::Ebcdic)
        return EbcdicMnemonics[byte].empty() ? std::string_view{} : EbcdicControlNames[byte];
    return AsciiMnemonics[byte].empty() ? std::string_view{} : AsciiControlNames[byte];
}

std::string JoinDescriptions(std::optional<std::uint8_t> d1, std::optional<std::uint8_t> d2, int charMode)
{
    const std::string_view a = d1 ? ControlDescription(*d1, charMode) : std::string_view{};
    const std::string_view b = d2 ? ControlDescription(*d2, charMode) : std::string_view{};
    std::string s(a);
    if (!a.empty() && !b.empty())
        s += kDescriptionJoiner;
    s += b;
    return s;
}

LetterDrawing CaretDrawing(std::string_view caretText, double hScale, double vScale)
{
    LetterDrawing d;
    if (caretText.size() < 2 || caretText[0] != '^')
        return d;
    // The caret in the upper left corner, the letter below it and a step to the right,
    // so that the two never touch and the pair does not read as an accented letter.
    d.letters[0] = {'^', 5, 0, 0};
    d.letters[1] = {caretText[1], 8, 4 * hScale, 6 * vScale};
    d.count = 2;
    return d;
}

LetterDrawing MnemonicDrawing(std::string_view mnemonic, double hScale, double vScale)
{
    LetterDrawing d;
    int size = 0, stepX = 0, stepY = 0;
    if (mnemonic.size() == 2) {
        size = 8, stepX = 5, stepY = 9;
    } else if (mnemonic.size() == 3) {
        // Five pixels a step: with four the letters of NAK or ETX touched and read as one.
        size = 6, stepX = 5, stepY = 7;
    } else {
        return d;
    }
    for (std::size_t i = 0; i < mnemonic.size(); ++i) {
        const double k = static_cast<double>(i);
        d.letters[i] = {mnemonic[i], size, k * stepX * hScale, k * stepY * vScale};
    }
    d.count = static_cast<int>(mnemonic.size());
    return d;
}

} // namespace kestrel
