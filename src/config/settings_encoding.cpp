#include "config/settings_encoding.h"

#include <array>
#include <cstdint>

namespace kestrel {

namespace {

// Windows-1252 at 0x80..0x9F; the five unassigned bytes keep their C1 code points.
constexpr std::array<char32_t, 32> kCp1252High{
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

constexpr char32_t kReplacement = 0xFFFD;

void AppendUtf8(std::string &out, char32_t cp)
{
    if (cp < 0x80) {
        out += static_cast<char>(cp);
    } else if (cp < 0x800) {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        out += static_cast<char>(0xE0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (cp >> 18));
        out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
}

// Well-formed UTF-8: no overlong forms, no surrogates, nothing beyond U+10FFFF.
bool IsValidUtf8(const std::string &s)
{
    std::size_t i = 0;
    const std::size_t n = s.size();
    while (i < n) {
        const auto b = static_cast<unsigned char>(s[i]);
        if (b < 0x80) {
            ++i;
            continue;
        }
        std::size_t len = 0;
        unsigned char lo = 0x80, hi = 0xBF; // allowed range of the second byte
        if (b >= 0xC2 && b <= 0xDF) {
            len = 2;
        } else if (b >= 0xE0 && b <= 0xEF) {
            len = 3;
            if (b == 0xE0)
                lo = 0xA0;
            if (b == 0xED)
                hi = 0x9F;
        } else if (b >= 0xF0 && b <= 0xF4) {
            len = 4;
            if (b == 0xF0)
                lo = 0x90;
            if (b == 0xF4)
                hi = 0x8F;
        } else {
            return false;
        }
        if (i + len > n)
            return false;
        const auto second = static_cast<unsigned char>(s[i + 1]);
        if (second < lo || second > hi)
            return false;
        for (std::size_t k = 2; k < len; ++k) {
            const auto c = static_cast<unsigned char>(s[i + k]);
            if (c < 0x80 || c > 0xBF)
                return false;
        }
        i += len;
    }
    return true;
}

std::string FromUtf16(const std::string &raw, bool bigEndian)
{
    std::string out;
    out.reserve(raw.size());
    auto unit = [&](std::size_t i) -> char32_t {
        const auto a = static_cast<unsigned char>(raw[i]);
        const auto b = static_cast<unsigned char>(raw[i + 1]);
        return bigEndian ? static_cast<char32_t>(a << 8 | b) : static_cast<char32_t>(b << 8 | a);
    };
    for (std::size_t i = 2; i + 1 < raw.size(); i += 2) {
        const char32_t u = unit(i);
        if (u >= 0xD800 && u <= 0xDBFF && i + 3 < raw.size()) {
            const char32_t next = unit(i + 2);
            if (next >= 0xDC00 && next <= 0xDFFF) {
                AppendUtf8(out, 0x10000 + ((u - 0xD800) << 10) + (next - 0xDC00));
                i += 2;
                continue;
            }
        }
        AppendUtf8(out, u >= 0xD800 && u <= 0xDFFF ? kReplacement : u);
    }
    return out;
}

std::string FromCp1252(const std::string &raw)
{
    std::string out;
    out.reserve(raw.size() + raw.size() / 4);
    for (const char c : raw) {
        const auto b = static_cast<unsigned char>(c);
        if (b < 0x80)
            out += c;
        else if (b < 0xA0)
            AppendUtf8(out, kCp1252High[b - 0x80]);
        else
            AppendUtf8(out, b);
    }
    return out;
}

} // namespace

std::string SettingsTextToUtf8(std::string raw)
{
    if (raw.size() >= 2 && raw[0] == '\xFF' && raw[1] == '\xFE')
        return FromUtf16(raw, false);
    if (raw.size() >= 2 && raw[0] == '\xFE' && raw[1] == '\xFF')
        return FromUtf16(raw, true);
    if (IsValidUtf8(raw))
        return raw;
    return FromCp1252(raw);
}

} // namespace kestrel
