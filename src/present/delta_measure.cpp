#include "present/delta_measure.h"

namespace kestrel {

namespace {

// n / d rounded half away from zero.
std::int64_t RoundedQuotient(std::int64_t n, std::int64_t d)
{
    return n >= 0 ? (n + d / 2) / d : -((-n + d / 2) / d);
}

std::int64_t TotalMicroseconds(const TimeParts &p)
{
    const std::int64_t us = ((p.days * 24 + p.hours) * 60 + p.minutes) * 60'000'000LL + p.seconds * 1'000'000LL +
                            static_cast<std::int64_t>(p.microseconds);
    return p.negative ? -us : us;
}

} // namespace

DeltaMeasure MeasureDelta(double start, double stop, const TimeLocale &locale, const std::string &dayWord)
{
    DeltaMeasure m;
    m.startText = FormatAbsoluteTime(start, locale);
    m.stopText = FormatAbsoluteTime(stop, locale);
    m.valid = IsDisplayableTime(start) && IsDisplayableTime(stop);
    if (!m.valid)
        return m;
    const TimeParts parts = TimeDifferenceParts(stop, start);
    m.deltaText = (parts.negative ? "-" : "") + FormatTimeDifference(parts.negative ? start : stop,
                                                                     parts.negative ? stop : start, dayWord);
    m.microseconds = TotalMicroseconds(parts);
    m.milliseconds = RoundedQuotient(m.microseconds, 1000);
    m.seconds = RoundedQuotient(m.microseconds, 1'000'000);
    return m;
}

} // namespace kestrel
