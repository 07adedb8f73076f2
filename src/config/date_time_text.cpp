#include "config/date_time_text.h"

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <ctime>

namespace kestrel {

namespace {

// Howard Hinnant's days-from-civil and civil-from-days.
long long DaysFromCivil(long long y, unsigned m, unsigned d)
{
    y -= m <= 2;
    const long long era = (y >= 0 ? y : y - 399) / 400;
    const unsigned yoe = static_cast<unsigned>(y - era * 400);
    const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<long long>(doe) - 719468;
}

void CivilFromDays(long long z, int &y, int &m, int &d)
{
    z += 719468;
    const long long era = (z >= 0 ? z : z - 146096) / 146097;
    const unsigned doe = static_cast<unsigned>(z - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const long long yy = static_cast<long long>(yoe) + era * 400;
    const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const unsigned mp = (5 * doy + 2) / 153;
    d = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
    m = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
    y = static_cast<int>(yy + (m <= 2));
}

const long long kEpoch = DaysFromCivil(1899, 12, 30);
constexpr long long kMinDay = -693593; // 0001-01-01
constexpr long long kMaxDay = 2958465; // 9999-12-31

bool IsLeap(int y) { return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0; }

int DaysInMonth(int y, int m)
{
    static constexpr int kDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return m == 2 && IsLeap(y) ? 29 : kDays[m - 1];
}

long double Pow10(int n)
{
    long double p = 1.0L;
    while (n-- > 0)
        p *= 10.0L;
    return p;
}

std::string FormatWithDigits(double days, int digits)
{
    const long double x = days;
    const long double dayPart = std::trunc(x);
    const long double frac = std::fabs(x - dayPart);
    long double secs = frac * 86400.0L;
    long long whole = static_cast<long long>(std::floor(secs));
    const long double scale = Pow10(digits);
    long long sub = static_cast<long long>(std::llround((secs - static_cast<long double>(whole)) * scale));
    const long long full = static_cast<long long>(scale);
    if (sub >= full) {
        sub = 0;
        ++whole;
    }
    if (whole >= 86400) {
        whole = 86399;
        sub = full - 1;
    }
    int y = 0, m = 0, d = 0;
    CivilFromDays(static_cast<long long>(dayPart) + kEpoch, y, m, d);
    char buf[64];
    std::snprintf(buf, sizeof buf, "%04d-%02d-%02d %02lld:%02lld:%02lld", y, m, d, whole / 3600, whole / 60 % 60, whole % 60);
    std::string out = buf;
    if (digits > 0) {
        const std::string fraction = std::to_string(sub);
        out += '.';
        out.append(fraction.size() < static_cast<std::size_t>(digits) ? digits - fraction.size() : 0, '0');
        out += fraction;
    }
    return out;
}

// Reads 1..maxDigits decimal digits at text[p]; false when there are none.
bool ReadNumber(std::string_view text, std::size_t &p, int maxDigits, int &out)
{
    int n = 0, value = 0;
    while (p < text.size() && n < maxDigits && text[p] >= '0' && text[p] <= '9') {
        value = value * 10 + (text[p] - '0');
        ++p;
        ++n;
    }
    out = value;
    return n > 0;
}

bool Expect(std::string_view text, std::size_t &p, char c)
{
    if (p < text.size() && text[p] == c) {
        ++p;
        return true;
    }
    return false;
}

} // namespace

long long DaysSince18991230(int year, int month, int day)
{
    return DaysFromCivil(year, static_cast<unsigned>(month), static_cast<unsigned>(day)) - kEpoch;
}

std::string FormatSettingsDateTime(double days)
{
    if (!std::isfinite(days))
        days = 0.0;
    if (days < static_cast<double>(kMinDay))
        days = static_cast<double>(kMinDay);
    if (days >= static_cast<double>(kMaxDay + 1))
        days = static_cast<double>(kMaxDay) + 0.99999;
    std::string text;
    for (int digits = 0; digits <= 18; digits += 3) {
        text = FormatWithDigits(days, digits);
        const auto back = ParseSettingsDateTime(text);
        if (back && *back == days)
            return text;
    }
    return text;
}

std::optional<double> ParseSettingsDateTime(std::string_view text)
{
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t'))
        text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t'))
        text.remove_suffix(1);

    std::size_t p = 0;
    int y = 0, m = 0, d = 0;
    int a = 0;
    if (!ReadNumber(text, p, 4, a))
        return std::nullopt;
    if (p < text.size() && text[p] == '-') { // yyyy-mm-dd
        y = a;
        ++p;
        if (!ReadNumber(text, p, 2, m) || !Expect(text, p, '-') || !ReadNumber(text, p, 2, d))
            return std::nullopt;
    } else if (p < text.size() && text[p] == '.') { // dd.mm.yyyy
        d = a;
        ++p;
        if (!ReadNumber(text, p, 2, m) || !Expect(text, p, '.') || !ReadNumber(text, p, 4, y))
            return std::nullopt;
    } else {
        return std::nullopt;
    }
    if (y < 1 || y > 9999 || m < 1 || m > 12 || d < 1 || d > DaysInMonth(y, m))
        return std::nullopt;

    int h = 0, n = 0, s = 0;
    long double fraction = 0.0L;
    if (p < text.size()) {
        if (text[p] != ' ' && text[p] != 'T')
            return std::nullopt;
        while (p < text.size() && (text[p] == ' ' || text[p] == 'T'))
            ++p;
        if (!ReadNumber(text, p, 2, h) || !Expect(text, p, ':') || !ReadNumber(text, p, 2, n))
            return std::nullopt;
        if (Expect(text, p, ':')) {
            if (!ReadNumber(text, p, 2, s))
                return std::nullopt;
            if (Expect(text, p, '.') || Expect(text, p, ',')) {
                std::uint64_t digits = 0;
                int count = 0;
                const std::size_t start = p;
                while (p < text.size() && text[p] >= '0' && text[p] <= '9') {
                    if (count < 18) {
                        digits = digits * 10 + static_cast<std::uint64_t>(text[p] - '0');
                        ++count;
                    }
                    ++p;
                }
                if (p == start)
                    return std::nullopt;
                fraction = static_cast<long double>(digits) / Pow10(count);
            }
        }
        if (p != text.size())
            return std::nullopt;
    }
    if (h > 23 || n > 59 || s > 59)
        return std::nullopt;

    const long long day = DaysSince18991230(y, m, d);
    const long double secs = static_cast<long double>(h * 3600 + n * 60 + s) + fraction;
    const long double timeOfDay = secs / 86400.0L;
    const long double value = day >= 0 ? static_cast<long double>(day) + timeOfDay
                                       : static_cast<long double>(day) - timeOfDay;
    return static_cast<double>(value);
}

double CurrentLocalDateTime()
{
    const auto now = std::chrono::system_clock::now();
    const std::time_t t = std::chrono::system_clock::to_time_t(now);
    std::tm local{};
    localtime_r(&t, &local);
    const auto sinceSecond = now - std::chrono::system_clock::from_time_t(t);
    const double ms = static_cast<double>(std::chrono::duration_cast<std::chrono::milliseconds>(sinceSecond).count());
    const long long day = DaysSince18991230(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday);
    const double secs = local.tm_hour * 3600.0 + local.tm_min * 60.0 + local.tm_sec + std::fmax(0.0, ms) / 1000.0;
    return static_cast<double>(day) + secs / 86400.0;
}

} // namespace kestrel
