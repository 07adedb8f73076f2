#include "present/byte_text.h"

#include "present/byte_render.h"

namespace kestrel {

namespace {
constexpr std::string_view kHexDigits = "0123456789ABCDEF";

using ReverseTable = std::array<std::uint8_t, 256>;

constexpr ReverseTable MakeReverse(const GlyphTable &glyphs)
{
    ReverseTable r{};
    std::array<bool, 256> seen{};
    for (int i = 0; i < 256; ++i) {
        const unsigned g = glyphs[static_cast<std::size_t>(i)];
        if (g < 256 && !seen[g]) {
            seen[g] = true;
            r[g] = static_cast<std::uint8_t>(i);
        }
    }
    return r;
}

constexpr ReverseTable kReverseOem = MakeReverse(OemGlyphs);
constexpr ReverseTable kReverseAnsi = MakeReverse(AnsiGlyphs);

int CaretIndex(char c)
{
    for (int i = 0; i < 256; ++i) {
        const std::string_view n = CaretNames[static_cast<std::size_t>(i)];
        if (n.size() == 2 && n[1] == c)
            return i;
    }
    return -1;
}

char Upper(char c)
{
    return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
}

int HexValue(char c)
{
    const auto p = kHexDigits.find(Upper(c));
    return p == std::string_view::npos ? -1 : static_cast<int>(p);
}

// One decoded byte in the escape syntax of the typed text.
void AppendWithControl(std::string &out, std::uint8_t v, const GlyphTable &glyphs)
{
    if (v < 32) {
        out += CaretNames[v];
    } else if (v == 0x5E) {
        out += "\\^";
    } else if (v == 0x5C) {
        out += "\\\\";
    } else {
        out.push_back(static_cast<char>(glyphs[v] & 0xFF));
    }
}

template <typename EmitByte>
void WalkEscapedText(std::string_view text, const GlyphTable &glyphs, EmitByte emit)
{
    bool escape = false;
    bool caret = false;
    for (const char ch : text) {
        const auto c = static_cast<unsigned char>(ch);
        if (escape) {
            emit(ReverseGlyphLookup(c, glyphs));
            escape = false;
        } else if (ch == '\\') {
            // Tested before the caret pair: "^\" starts an escape, the caret waits.
            escape = true;
        } else if (ch == '^' && !caret) {
            caret = true;
        } else if (caret) {
            caret = false;
            const int i = CaretIndex(ch);
            if (i >= 0)
                emit(static_cast<std::uint8_t>(i));
        } else {
            emit(ReverseGlyphLookup(c, glyphs));
        }
    }
}

// Decodes hex pairs; a digit that is not hex keeps that nibble's previous value.
template <typename EmitByte>
void WalkHexPairs(std::string_view hex, EmitByte emit)
{
    int hi = 0, lo = 0;
    for (std::size_t p = 0; p + 1 < hex.size(); p += 2) {
        const int h = HexValue(hex[p]);
        const int l = HexValue(hex[p + 1]);
        if (h >= 0)
            hi = h;
        if (l >= 0)
            lo = l;
        emit(static_cast<std::uint8_t>(hi * 16 + lo));
    }
}

template <typename EmitByte>
void WalkBinGroups(std::string_view bin, EmitByte emit)
{
    const std::size_t count = bin.size() / 8;
    for (std::size_t k = 0; k < count; ++k) {
        unsigned v = 0;
        for (std::size_t j = 0; j < 8; ++j)
            if (bin[k * 8 + j] == '1')
                v |= 1u << (7 - j);
        emit(static_cast<std::uint8_t>(v));
    }
}

std::string Validate(std::string_view s, std::string_view allowed)
{
    std::string out(s);
    for (std::size_t i = 0; i < out.size(); ++i) {
        if (allowed.find(out[i]) == std::string_view::npos)
            out.erase(i, 1); // the character that moves into place i is not looked at
    }
    return out;
}
} // namespace

std::uint8_t ReverseGlyphLookup(char16_t c, const GlyphTable &glyphs)
{
    const unsigned low = static_cast<unsigned>(c) & 0xFF;
    if (&glyphs == &OemGlyphs)
        return kReverseOem[low];
    if (&glyphs == &AnsiGlyphs)
        return kReverseAnsi[low];
    for (int i = 0; i < 256; ++i)
        if (glyphs[static_cast<std::size_t>(i)] == low)
            return static_cast<std::uint8_t>(i);
    return 0;
}

std::string StrToHexWithControl(std::string_view text, const GlyphTable &glyphs)
{
    std::string out;
    out.reserve(text.size() * 2);
    WalkEscapedText(text, glyphs, [&](std::uint8_t b) { out += ByteToHex(b); });
    return out;
}

std::string StrToBinWithControl(std::string_view text, const GlyphTable &glyphs)
{
    std::string out;
    out.reserve(text.size() * 8);
    WalkEscapedText(text, glyphs, [&](std::uint8_t b) { out += ByteToBin(b); });
    return out;
}

std::string HexToStrWithControl(std::string_view hex, const GlyphTable &glyphs)
{
    std::string out;
    WalkHexPairs(hex, [&](std::uint8_t v) { AppendWithControl(out, v, glyphs); });
    return out;
}

std::string BinToStrWithControl(std::string_view bin, const GlyphTable &glyphs)
{
    std::string out;
    WalkBinGroups(bin, [&](std::uint8_t v) { AppendWithControl(out, v, glyphs); });
    return out;
}

std::string StrToHex(std::string_view text, const GlyphTable &glyphs)
{
    std::string out;
    out.reserve(text.size() * 2);
    for (const char ch : text) {
        const std::string h = IntToHex(glyphs[static_cast<unsigned char>(ch)], 2);
        out += h.substr(h.size() - 2);
    }
    return out;
}

std::string HexToStr(std::string_view hex)
{
    std::string out;
    WalkHexPairs(hex, [&](std::uint8_t v) {
        if (!DisplayTable[v].empty())
            out += DisplayTable[v];
        else
            out.push_back(static_cast<char>(v));
    });
    return out;
}

std::string ValidateHexString(std::string_view s) { return Validate(s, kHexDigits); }
std::string ValidateBinString(std::string_view s) { return Validate(s, "01"); }

std::string ConvertTrigStrToRealStr(std::string_view text)
{
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '^') {
            out.push_back(text[i]);
            continue;
        }
        if (i + 1 < text.size()) {
            const int b = CaretIndex(text[i + 1]);
            if (b >= 0)
                out.push_back(static_cast<char>(b));
        }
        ++i; // the token is two characters, matched or not
    }
    return out;
}

std::string RealStrToTrigStr(std::string_view bytes)
{
    std::string out;
    out.reserve(bytes.size());
    for (const char ch : bytes) {
        const auto v = static_cast<unsigned char>(ch);
        if (v < 32)
            out += CaretNames[v];
        else
            out.push_back(ch);
    }
    return out;
}

std::optional<std::string> HexToBytes(std::string_view hex)
{
    std::string out;
    out.reserve(hex.size() / 2);
    for (std::size_t p = 0; p < hex.size(); ++p)
        if (HexValue(hex[p]) < 0)
            return std::nullopt;
    for (std::size_t p = 0; p + 1 < hex.size(); p += 2)
        out.push_back(static_cast<char>(HexValue(hex[p]) * 16 + HexValue(hex[p + 1])));
    return out;
}

std::optional<std::string> BinToBytes(std::string_view bin)
{
    if (bin.find_first_not_of("01") != std::string_view::npos)
        return std::nullopt;
    std::string out;
    out.reserve(bin.size() / 8);
    WalkBinGroups(bin, [&](std::uint8_t v) { out.push_back(static_cast<char>(v)); });
    return out;
}

std::string Utf16ToByteString(std::u16string_view text)
{
    std::string out;
    out.reserve(text.size());
    for (const char16_t c : text)
        out.push_back(static_cast<char>(c & 0xFF));
    return out;
}

std::string Utf8ToByteString(std::string_view text)
{
    std::string out;
    out.reserve(text.size());
    const auto at = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const auto cont = [&](std::size_t i) { return i < text.size() && (at(i) & 0xC0) == 0x80; };
    for (std::size_t i = 0; i < text.size();) {
        const unsigned c = at(i);
        unsigned cp = c;
        std::size_t len = 1;
        if (c >= 0xC2 && c <= 0xDF && cont(i + 1)) {
            cp = ((c & 0x1F) << 6) | (at(i + 1) & 0x3F);
            len = 2;
        } else if (c >= 0xE0 && c <= 0xEF && cont(i + 1) && cont(i + 2)) {
            cp = ((c & 0x0F) << 12) | ((at(i + 1) & 0x3FU) << 6) | (at(i + 2) & 0x3F);
            len = 3;
        } else if (c >= 0xF0 && c <= 0xF4 && cont(i + 1) && cont(i + 2) && cont(i + 3)) {
            cp = ((c & 0x07) << 18) | ((at(i + 1) & 0x3FU) << 12) | ((at(i + 2) & 0x3FU) << 6) | (at(i + 3) & 0x3F);
            len = 4;
        }
        out.push_back(static_cast<char>(cp & 0xFF));
        i += len;
    }
    return out;
}

std::string ByteStringToUtf8(std::string_view bytes)
{
    std::string out;
    out.reserve(bytes.size() * 2);
    for (const char ch : bytes)
        AppendUtf8(out, static_cast<unsigned char>(ch)); // U+0000 stays a NUL character
    return out;
}

} // namespace kestrel
