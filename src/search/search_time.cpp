#include "search/search_time.h"

#include <cctype>

namespace kestrel {
namespace {

// Days since 1970-01-01 of a proleptic Gregorian date (Howard Hinnant's algorithm).
std::int64_t daysFromCivil(std::int64_t y, unsigned m, unsigned d)
{
    y -= m <= 2;
    const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
    const auto yoe = static_cast<unsigned>(y - era * 400);
    const unsigned doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<std::int64_t>(doe) - 719468;
}

bool isLeap(int y) { return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0; }

int daysInMonth(int y, int m)
{
    static constexpr int days[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return m == 2 && isLeap(y) ? 29 : days[m - 1];
}

// Reads exactly `digits` decimal digits at pos.
bool number(std::string_view s, std::size_t &pos, int digits, int &out)
{
    out = 0;
    for (int k = 0; k < digits; ++k, ++pos) {
        if (pos >= s.size() || !std::isdigit(static_cast<unsigned char>(s[pos])))
            return false;
        out = out * 10 + (s[pos] - '0');
    }
    return true;
}

bool literal(std::string_view s, std::size_t &pos, char c)
{
    if (pos >= s.size() || s[pos] != c)
        return false;
    ++pos;
    return true;
}

} // namespace

double MakeDateTime(int year, int month, int day, int hour, int minute, int second, std::int64_t microsecond)
{
    const std::int64_t days = daysFromCivil(year, static_cast<unsigned>(month), static_cast<unsigned>(day)) -
                              daysFromCivil(1899, 12, 30);
    const double secs = hour * 3600.0 + minute * 60.0 + second + static_cast<double>(microsecond) / 1e6;
    return static_cast<double>(days) + secs / 86400.0;
}

std::optional<double> ParseSearchDateTime(std::string_view text)
{
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front())))
        text.remove_prefix(1);
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back())))
        text.remove_suffix(1);
    std::size_t p = 0;
    int y, mo, d, h, mi, s;
    if (!number(text, p, 4, y) || !literal(text, p, '-') || !number(text, p, 2, mo) || !literal(text, p, '-') ||
        !number(text, p, 2, d))
        return std::nullopt;
    if (p >= text.size() || (text[p] != ' ' && text[p] != 'T'))
        return std::nullopt;
    ++p;
    if (!number(text, p, 2, h) || !literal(text, p, ':') || !number(text, p, 2, mi) || !literal(text, p, ':') ||
        !number(text, p, 2, s))
        return std::nullopt;
    std::int64_t micro = 0;
    if (p < text.size()) {
        if (text[p] != '.' && text[p] != ',')
            return std::nullopt;
        ++p;
        int digits = 0;
        std::int64_t scale = 100000;
        for (; p < text.size(); ++p, ++digits, scale /= 10) {
            if (digits >= 6 || !std::isdigit(static_cast<unsigned char>(text[p])))
                return std::nullopt;
            micro += (text[p] - '0') * scale;
        }
        if (digits == 0)
            return std::nullopt;
    }
    if (y < 1 || mo < 1 || mo > 12 || d < 1 || d > daysInMonth(y, mo) || h > 23 || mi > 59 || s > 59)
        return std::nullopt;
    return MakeDateTime(y, mo, d, h, mi, s, micro);
}

} // namespace kestrel
