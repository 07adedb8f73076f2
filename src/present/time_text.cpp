#include "present/time_text.h"

#include <clocale>
#include <cmath>
#include <ctime>
#include <langinfo.h>
#include <locale.h>

#include "base/string_table.h"

namespace kestrel {

namespace {
constexpr std::int64_t kMicrosPerDay = 86'400'000'000LL;
constexpr double kMaxDurationDays = 1e12;
// Calendar limits of the absolute display: 0001-01-01 .. 9999-12-31.
constexpr std::int64_t kFirstDay = -693'593;
constexpr std::int64_t kLastDay = 2'958'465;
// 1899-12-30 counted from 1970-01-01.
constexpr std::int64_t kEpochOffset = 25'569;

struct SplitValue {
    std::int64_t days;
    std::int64_t micros; // of the day, 0 .. kMicrosPerDay - 1
};

// Whole days toward zero and the magnitude of the remaining fraction, rounded
// to the microsecond (a carry moves one day on).
SplitValue Split(double v)
{
    const double w = std::trunc(v);
    const double f = std::fabs(v - w);
    SplitValue s{static_cast<std::int64_t>(w), std::llround(f * static_cast<double>(kMicrosPerDay))};
    if (s.micros >= kMicrosPerDay) {
        s.micros -= kMicrosPerDay;
        s.days += 1;
    }
    return s;
}

void AppendDigits(std::string &out, std::uint64_t value, int width)
{
    char buf[24];
    int n = 0;
    do {
        buf[n++] = static_cast<char>('0' + value % 10);
        value /= 10;
    } while (value != 0);
    for (int i = n; i < width; ++i)
        out.push_back('0');
    while (n > 0)
        out.push_back(buf[--n]);
}

// Days since 1970-01-01 to year, month, day (proleptic Gregorian calendar).
void CivilFromDays(std::int64_t z, int &year, int &month, int &day)
{
    z += 719468;
    const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const std::int64_t doe = z - era * 146097;
    const std::int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const std::int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const std::int64_t mp = (5 * doy + 2) / 153;
    day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
    month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
    year = static_cast<int>(yoe + era * 400 + (month <= 2 ? 1 : 0));
}

std::string FormatDateTimeSecond(std::int64_t days, std::int64_t secondOfDay, const TimeLocale &locale)
{
    int year = 0, month = 0, day = 0;
    const std::int64_t unixDays = days - kEpochOffset;
    CivilFromDays(unixDays, year, month, day);
    std::tm tm{};
    tm.tm_year = year - 1900;
    tm.tm_mon = month - 1;
    tm.tm_mday = day;
    tm.tm_hour = static_cast<int>(secondOfDay / 3600);
    tm.tm_min = static_cast<int>(secondOfDay / 60 % 60);
    tm.tm_sec = static_cast<int>(secondOfDay % 60);
    tm.tm_wday = static_cast<int>(((unixDays % 7) + 7 + 4) % 7); // 1970-01-01 was a Thursday
    tm.tm_isdst = -1;
    const std::string pattern = locale.dateFormat + " " + locale.timeFormat;
    char buf[256];
    const std::size_t n = std::strftime(buf, sizeof buf, pattern.c_str(), &tm);
    if (n > 0 || pattern.empty())
        return std::string(buf, n);
    // A pattern that overflows the buffer: fall back to ISO rather than show nothing.
    std::string s;
    AppendDigits(s, static_cast<std::uint64_t>(year), 4);
    s += '-';
    AppendDigits(s, static_cast<std::uint64_t>(month), 2);
    s += '-';
    AppendDigits(s, static_cast<std::uint64_t>(day), 2);
    s += ' ';
    AppendDigits(s, static_cast<std::uint64_t>(tm.tm_hour), 2);
    s += ':';
    AppendDigits(s, static_cast<std::uint64_t>(tm.tm_min), 2);
    s += ':';
    AppendDigits(s, static_cast<std::uint64_t>(tm.tm_sec), 2);
    return s;
}

bool IsCalendarTime(double t)
{
    if (!std::isfinite(t) || std::fabs(t) > 3e6)
        return false;
    const std::int64_t w = Split(t).days;
    return w >= kFirstDay && w <= kLastDay;
}
} // namespace

bool IsDisplayableTime(double t)
{
    return std::isfinite(t) && std::fabs(t) <= kMaxDurationDays;
}

namespace {
TimeParts PartsOf(bool negative, std::int64_t days, std::int64_t microsOfDay)
{
    TimeParts p;
    p.negative = negative && (days != 0 || microsOfDay != 0);
    p.days = days;
    const std::int64_t secs = microsOfDay / 1'000'000;
    p.hours = static_cast<std::uint16_t>(secs / 3600);
    p.minutes = static_cast<std::uint16_t>(secs / 60 % 60);
    p.seconds = static_cast<std::uint16_t>(secs % 60);
    p.microseconds = static_cast<std::uint64_t>(microsOfDay % 1'000'000);
    return p;
}

// Whole microseconds of a value, rounded exactly as its absolute text rounds
// it; only for values whose microseconds fit into 64 bits.
constexpr double kMaxExactDays = 1e8;
bool HasExactMicros(double v) { return std::isfinite(v) && std::fabs(v) <= kMaxExactDays; }
std::int64_t TotalMicros(double v)
{
    const SplitValue s = Split(std::fabs(v));
    const std::int64_t total = s.days * kMicrosPerDay + s.micros;
    return v < 0 ? -total : total;
}
} // namespace

TimeParts FormatTimeParts(double t)
{
    if (!IsDisplayableTime(t))
        return {};
    // Split the magnitude so that a carry into the next day moves away from zero.
    const SplitValue s = Split(std::fabs(t));
    return PartsOf(t < 0, s.days, s.micros);
}

TimeParts TimeDifferenceParts(double t, double from)
{
    if (!HasExactMicros(t) || !HasExactMicros(from))
        return FormatTimeParts(t - from);
    const std::int64_t d = TotalMicros(t) - TotalMicros(from);
    const std::int64_t a = d < 0 ? -d : d;
    return PartsOf(d < 0, a / kMicrosPerDay, a % kMicrosPerDay);
}

std::string StripZoneFields(std::string_view pattern)
{
    std::string out;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        if (pattern[i] == '%' && i + 1 < pattern.size()) {
            const char c = pattern[i + 1];
            if (c == 'Z' || c == 'z') {
                while (!out.empty() && out.back() == ' ')
                    out.pop_back();
                ++i;
                continue;
            }
            out += pattern[i];
            out += c;
            ++i;
            continue;
        }
        out += pattern[i];
    }
    return out;
}

TimeLocale TimeLocale::Fixed()
{
    return TimeLocale{"%d.%m.%Y", "%H:%M:%S"};
}

TimeLocale TimeLocale::Iso()
{
    return TimeLocale{"%Y-%m-%d", "%H:%M:%S"};
}

TimeLocale TimeLocale::System()
{
    // newlocale leaves the process-wide locale alone; an unknown locale name in
    // the environment falls back to ISO.
    locale_t loc = newlocale(LC_TIME_MASK, "", static_cast<locale_t>(nullptr));
    if (loc == static_cast<locale_t>(nullptr))
        return Iso();
    const std::string name = nl_langinfo_l(_NL_LOCALE_NAME(LC_TIME), loc);
    TimeLocale result;
    if (name.empty() || name == "C" || name == "POSIX" || name.rfind("C.", 0) == 0) {
        result = Iso();
    } else {
        result.dateFormat = StripZoneFields(nl_langinfo_l(D_FMT, loc));
        result.timeFormat = StripZoneFields(nl_langinfo_l(T_FMT, loc));
        if (result.dateFormat.empty() || result.timeFormat.empty())
            result = Iso();
    }
    freelocale(loc);
    return result;
}

std::string FormatAbsoluteTime(double t, const TimeLocale &locale)
{
    TimeTextFormatter f(locale);
    std::string s;
    f.AppendAbsolute(s, t);
    return s;
}

namespace {
void AppendParts(std::string &s, const TimeParts &p, std::string_view dayWord)
{
    if (p.negative)
        s += '-';
    AppendDigits(s, static_cast<std::uint64_t>(p.days), 1);
    s += dayWord;
    s += "  ";
    AppendDigits(s, p.hours, 2);
    s += ':';
    AppendDigits(s, p.minutes, 2);
    s += ':';
    AppendDigits(s, p.seconds, 2);
    s += ',';
    AppendDigits(s, p.microseconds, 6);
    s += ' ';
}
} // namespace

std::string FormatDurationText(double d, std::string_view dayWord)
{
    if (!IsDisplayableTime(d))
        return Str(kInvalidTimeText) + " ";
    std::string s;
    AppendParts(s, FormatTimeParts(d), dayWord);
    return s;
}

std::string FormatTimeDifference(double t, double from, std::string_view dayWord)
{
    if (!IsDisplayableTime(t - from))
        return Str(kInvalidTimeText) + " ";
    std::string s;
    AppendParts(s, TimeDifferenceParts(t, from), dayWord);
    return s;
}

std::string DayWord(int lang)
{
    return lang < 0 ? Str(kDayWordText) : StrIn(kDayWordText, lang);
}

TimeTextFormatter::TimeTextFormatter(TimeLocale locale, int lang) : locale_(std::move(locale)), lang_(lang) {}

const std::string &TimeTextFormatter::dayWord()
{
    const int lang = lang_ < 0 ? GlobalLang() : lang_;
    if (lang != cachedLang_) {
        dayWord_ = DayWord(lang);
        cachedLang_ = lang;
    }
    return dayWord_;
}

void TimeTextFormatter::AppendAbsolute(std::string &out, double t)
{
    if (!IsCalendarTime(t)) {
        out += lang_ < 0 ? Str(kInvalidTimeText) : StrIn(kInvalidTimeText, lang_);
        out += ' ';
        return;
    }
    const SplitValue s = Split(t);
    const std::int64_t second = s.micros / 1'000'000;
    const std::int64_t key = s.days * 86'400 + second;
    if (!haveSecond_ || key != lastSecond_) {
        lastSecondText_ = FormatDateTimeSecond(s.days, second, locale_);
        lastSecond_ = key;
        haveSecond_ = true;
    }
    out += lastSecondText_;
    out += ',';
    AppendDigits(out, static_cast<std::uint64_t>(s.micros % 1'000'000), 6);
    out += ' ';
}

void TimeTextFormatter::AppendDifference(std::string &out, double t, double from)
{
    if (!IsDisplayableTime(t - from)) {
        out += lang_ < 0 ? Str(kInvalidTimeText) : StrIn(kInvalidTimeText, lang_);
        out += ' ';
        return;
    }
    AppendParts(out, TimeDifferenceParts(t, from), dayWord());
}

void TimeTextFormatter::AppendText(std::string &out, int mode, double t, double relativeBase,
                                   std::optional<double> previous)
{
    switch (mode) {
    case TimeMode::Relative:
        AppendDifference(out, t, relativeBase);
        break;
    case TimeMode::Delta:
        AppendDifference(out, t, previous ? *previous : t);
        break;
    default:
        AppendAbsolute(out, t);
        break;
    }
}

std::string TimeTextFormatter::Text(int mode, double t, double relativeBase, std::optional<double> previous)
{
    std::string s;
    AppendText(s, mode, t, relativeBase, previous);
    return s;
}

} // namespace kestrel
