// libFuzzer target: the conversions of typed byte strings and the parsers of
// search criteria must take any input without crashing and keep their
// invariants (digits only in digit strings, the binary form following the
// hex form, a parsed pattern never holding 00, a parsed time reading back).

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "present/byte_render.h"
#include "present/byte_text.h"
#include "present/time_text.h"
#include "search/search_args.h"
#include "search/search_time.h"

using namespace kestrel;

namespace {

void check(bool ok)
{
    if (!ok)
        std::abort();
}

bool onlyOf(std::string_view s, std::string_view allowed)
{
    return s.find_first_not_of(allowed) == std::string_view::npos;
}

void conversions(std::string_view text, const GlyphTable &glyphs)
{
    const std::string hex = StrToHexWithControl(text, glyphs);
    check(hex.size() % 2 == 0 && onlyOf(hex, "0123456789ABCDEF"));
    const std::string bin = StrToBinWithControl(text, glyphs);
    check(bin.size() == hex.size() * 4 && onlyOf(bin, "01"));
    for (std::size_t i = 0; i < hex.size(); i += 2)
        check(bin.substr(i * 4, 8) == ByteToBin(static_cast<std::uint8_t>(std::stoi(hex.substr(i, 2), nullptr, 16))));

    // Any digit string decodes; its hex and binary readings agree when both are clean.
    const std::string fromHex = HexToStrWithControl(text, glyphs);
    (void)BinToStrWithControl(text, glyphs);
    (void)HexToStr(text);
    (void)StrToHex(text, glyphs);
    (void)ConvertTrigStrToRealStr(text);
    if (const auto bytes = HexToBytes(text)) {
        check(bytes->size() == text.size() / 2);
        std::string digits;
        for (char b : *bytes)
            digits += ByteToBin(static_cast<std::uint8_t>(b));
        check(BinToStrWithControl(digits, glyphs) == fromHex);
    }

    // Repeated validation converges to the digits of the input, in order.
    std::string v(text);
    for (std::size_t pass = 0; pass <= text.size(); ++pass) {
        const std::string next = ValidateHexString(v);
        if (next == v)
            break;
        v = next;
    }
    std::string digitsOnly;
    for (char c : text)
        if (std::string_view("0123456789ABCDEF").find(c) != std::string_view::npos)
            digitsOnly += c;
    check(v == digitsOnly);
}

void parsers(std::string_view text)
{
    if (const auto pattern = ParseHexPattern(text)) {
        check(!pattern.value.empty());
        for (std::uint8_t b : pattern.value)
            check(b != 0);
    } else {
        check(!pattern.result.detail.empty());
    }
    if (const auto s = ParseSignalCriteria(text))
        for (int l : s.value.level)
            check(l >= 0 && l <= 2);
    if (const auto e = ParseErrorCriteria(text))
        for (int f : e.value.flag)
            check(f >= 0 && f <= 2);
    if (const auto t = ParseSearchDateTime(text)) {
        // A time that parses reads back through the absolute text to the second.
        const std::string shown = FormatAbsoluteTime(*t, TimeLocale::Iso());
        std::string_view in = text;
        while (!in.empty() && (in.front() == ' ' || in.front() == '\t' || in.front() == '\n' || in.front() == '\v' ||
                               in.front() == '\f' || in.front() == '\r'))
            in.remove_prefix(1);
        check(in.size() >= 19);
        // strftime writes years before 1000 without leading zeros, and from
        // 65536 days or more from 1899 (before 1720, from 2079 on) a stamp no
        // longer holds every microsecond.
        if (in[0] == '0' || std::fabs(*t) >= 65536.0)
            return;
        check(shown.size() >= 19);
        check(shown.compare(0, 10, in.substr(0, 10)) == 0 && shown.compare(11, 8, in.substr(11, 8)) == 0);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char *>(data), size);
    conversions(text, OemGlyphs);
    conversions(text, AnsiGlyphs);
    parsers(text);
    return 0;
}
