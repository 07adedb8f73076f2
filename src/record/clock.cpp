#include "record/clock.h"

#include <chrono>
#include <ctime>

namespace kestrel {

std::int64_t SystemClock::counter()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

double ToDateTime(std::int64_t unixSeconds, std::int64_t nanoseconds)
{
    // Shift by the local UTC offset at that instant, then count days from 1899-12-30
    // (25569 days before the Unix epoch).
    const std::time_t t = static_cast<std::time_t>(unixSeconds);
    std::tm local{};
    localtime_r(&t, &local);
    const double localSeconds = static_cast<double>(unixSeconds + local.tm_gmtoff) + nanoseconds / 1e9;
    return 25569.0 + localSeconds / 86400.0;
}

double SystemClock::nowDateTime()
{
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const auto secs = std::chrono::duration_cast<std::chrono::seconds>(now);
    const auto nanos = std::chrono::duration_cast<std::chrono::nanoseconds>(now - secs);
    return ToDateTime(secs.count(), nanos.count());
}

} // namespace kestrel
