#pragma once
// Time texts of an MP: absolute local time, time relative to the recording
// start, and delta time to the preceding MP. The grid's time column, the
// export, the report and kestrel-cli all use these, so a time reads the same
// everywhere.
//
// API overview
//   TimeMode::                     0 absolute, 1 relative, 2 delta; TimeModeAfterButton.
//   FormatTimeParts(t)             -> TimeParts {negative, days, hours, minutes, seconds, microseconds}.
//   TimeLocale                     date and time patterns (strftime syntax); System() once, Fixed() for tests.
//   FormatAbsoluteTime(t, locale)  "21.11.2026 13:05:09,500000 " (short date, long time, ",", µs, blank).
//   FormatDurationText(d, dayWord) "0 Tag(e)  01:02:03,000004 ".
//   FormatTimeDifference(t, from, dayWord)  the same for t - from, in whole microseconds.
//   DayWord(lang)                  " Tag(e)" / " day(s)" from the string table (text 4242).
//   RelativeTimeBase               the start of relative time: Reset(now), NoteRecord(index, time).
//   TimeTextFormatter              cached formatter for long loops: Text(mode, t, base, previous).
//
// Time values are days since 1899-12-30 00:00 with the local time of day as
// the fraction (the MP's time field).

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kestrel {

namespace TimeMode {
inline constexpr int Absolute = 0;
inline constexpr int Relative = 1;
inline constexpr int Delta = 2;
} // namespace TimeMode

// The three time buttons form an exclusive group whose buttons cannot all be
// up: absolute always gives 0, relative and delta their mode while their
// button is down and 0 otherwise. Choosing the same mode twice changes nothing.
[[nodiscard]] constexpr int TimeModeAfterButton(int buttonMode, bool buttonDown)
{
    if (buttonMode != TimeMode::Relative && buttonMode != TimeMode::Delta)
        return TimeMode::Absolute;
    return buttonDown ? buttonMode : TimeMode::Absolute;
}

// String-table number of the day word (" Tag(e)" / " day(s)", leading blank).
inline constexpr int kDayWordText = 4242;
// Shown instead of a time that cannot be a date (NaN, infinite, beyond year 9999).
inline constexpr int kInvalidTimeText = 7200;

struct TimeParts {
    bool negative = false;      // the value was below zero; the parts are its magnitude
    std::int64_t days = 0;      // whole days
    std::uint16_t hours = 0;    // 0..23
    std::uint16_t minutes = 0;  // 0..59
    std::uint16_t seconds = 0;  // 0..59
    std::uint64_t microseconds = 0; // 0..999999
    friend bool operator==(const TimeParts &, const TimeParts &) = default;
};

// Splits a time value or a difference of two. The part of a day is rounded to
// the nearest microsecond before it is split: a time stamp is a binary
// fraction of a day, and cutting it off would show 01:00:00 as 00:59:59,999999.
// A value that rounds up to a whole day carries into `days`. Negative values
// are split by their magnitude with `negative` set. Values that are not
// finite or beyond ±1e12 days give all-zero parts with `negative` clear;
// IsDisplayableTime tells them apart.
[[nodiscard]] TimeParts FormatTimeParts(double t);
[[nodiscard]] bool IsDisplayableTime(double t);

// The parts of t - from for relative and delta texts. Each value is rounded
// to the microsecond first, as its absolute text shows it, and the difference
// taken in whole microseconds: stamps a quarter second apart read ",250000",
// not ",250001" from the last bit of the double, and the delta of two rows is
// exactly the difference of their absolute texts.
[[nodiscard]] TimeParts TimeDifferenceParts(double t, double from);

// The date and time patterns of the absolute display, in strftime syntax.
struct TimeLocale {
    std::string dateFormat = "%d.%m.%Y"; // the short date
    std::string timeFormat = "%H:%M:%S"; // the long time, without a time-zone name

    // The user's locale (LC_ALL / LC_TIME / LANG) read once: its date and time
    // formats, with any time-zone field removed. The C and POSIX locales give
    // ISO 8601 ("%Y-%m-%d", "%H:%M:%S"), which Linux users expect there.
    [[nodiscard]] static TimeLocale System();
    // A pinned pattern for tests and reproducible output: "%d.%m.%Y %H:%M:%S".
    [[nodiscard]] static TimeLocale Fixed();
    // ISO 8601: "%Y-%m-%d %H:%M:%S".
    [[nodiscard]] static TimeLocale Iso();
};

// Removes "%Z" and "%z" (with a blank in front of them) from a strftime pattern.
[[nodiscard]] std::string StripZoneFields(std::string_view pattern);

// Absolute text: date, " ", time, ",", six microsecond digits, " ".
// Whole days are calendar days; a value below zero counts back from
// 1899-12-30 with the fraction still read as a time of day.
// Not a valid date: the invalid-time text of the active language.
[[nodiscard]] std::string FormatAbsoluteTime(double t, const TimeLocale &locale);

// Duration text: days, day word, two blanks, "hh:mm:ss,uuuuuu", one blank.
// A negative difference (a clock that went back across an appended
// recording) keeps the same layout with a minus sign in front of the days:
// "-0 day(s)  00:00:01,500000 ". The magnitude stays readable and the sign
// cannot be missed.
[[nodiscard]] std::string FormatDurationText(double d, std::string_view dayWord);
// The same layout for t - from, taken by TimeDifferenceParts.
[[nodiscard]] std::string FormatTimeDifference(double t, double from, std::string_view dayWord);

// The day word in a language offset (0 German, 10000 English); -1: the active one.
[[nodiscard]] std::string DayWord(int lang = -1);

// The start of relative time. Reset when the recorder resets its counters,
// and overwritten with MP 1's time stamp whenever a read sees MP 1 (MP 0 is
// the file's opening mark, so relative time 0 is the first real event).
struct RelativeTimeBase {
    double value = 0.0;
    void Reset(double now) { value = now; }
    // index: the MP's place in the file (its 32-bit number wraps; the place does not).
    void NoteRecord(std::uint64_t index, double time)
    {
        if (index == 1)
            value = time;
    }
};

// Time texts for views and long loops: keeps the day word of its language and
// the last formatted second, so an export of millions of MPs does not format
// the same date again for every MP. Not thread-safe; one per user.
class TimeTextFormatter {
public:
    // lang: 0 German, 10000 English, -1 follow the active language.
    explicit TimeTextFormatter(TimeLocale locale = TimeLocale::System(), int lang = -1);

    // The text of an MP with time stamp t in the given mode. `previous` is the
    // time stamp of MP n - 1; without one (MP 0) the delta is zero. Unknown
    // modes show absolute time.
    [[nodiscard]] std::string Text(int mode, double t, double relativeBase, std::optional<double> previous);
    void AppendText(std::string &out, int mode, double t, double relativeBase, std::optional<double> previous);

    void AppendAbsolute(std::string &out, double t);
    // The duration text of t - from (TimeDifferenceParts).
    void AppendDifference(std::string &out, double t, double from);

    [[nodiscard]] const TimeLocale &locale() const { return locale_; }

private:
    const std::string &dayWord();

    TimeLocale locale_;
    int lang_;
    int cachedLang_ = -2;
    std::string dayWord_;
    // Last absolute second formatted: its whole-second count and text.
    bool haveSecond_ = false;
    std::int64_t lastSecond_ = 0;
    std::string lastSecondText_;
};

} // namespace kestrel
