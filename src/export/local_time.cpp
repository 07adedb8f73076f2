#include "export/local_time.h"

#include <cmath>
#include <ctime>

namespace kestrel {
namespace {

constexpr std::int64_t kBucketSeconds = 900;
constexpr double kDaysTo1970 = 25569.0; // 1899-12-30 to 1970-01-01

// local - UTC in seconds at a UTC instant.
std::int64_t offsetAt(std::int64_t utc)
{
    const std::time_t t = static_cast<std::time_t>(utc);
    std::tm tm{};
    if (!localtime_r(&t, &tm))
        return 0;
    return tm.tm_gmtoff;
}

struct Reading {
    std::int64_t utc = 0;
    bool unique = true; // the local time has exactly this one reading
};

Reading read(std::int64_t local)
{
    // Offsets change at most once in a day: the ones half a day either side are
    // the only ones a local time can have.
    const std::int64_t before = offsetAt(local - 43200);
    const std::int64_t after = offsetAt(local + 43200);
    const bool firstFits = offsetAt(local - before) == before;
    const bool secondFits = offsetAt(local - after) == after;
    if (before == after)
        return {local - before, true};
    if (firstFits && secondFits) // repeated: the earlier instant
        return {std::min(local - before, local - after), false};
    if (secondFits)
        return {local - after, true};
    // The first offset alone fits, or the time was skipped: the offset before the change.
    return {local - before, firstFits};
}

} // namespace

std::int64_t LocalSecondsToUtc(std::int64_t localSeconds) { return read(localSeconds).utc; }

std::optional<std::int64_t> LocalToUtc::micros(double dateTime)
{
    // 1600 to 9999: beyond it the day count is no time a recorder wrote.
    if (!std::isfinite(dateTime) || dateTime < -109205.0 || dateTime > 2958466.0)
        return std::nullopt;
    const auto localMicros = static_cast<std::int64_t>(std::llround((dateTime - kDaysTo1970) * 86400e6));
    std::int64_t local = localMicros / 1'000'000;
    if (localMicros % 1'000'000 < 0)
        --local;
    const std::int64_t bucket = local >= 0 ? local / kBucketSeconds : (local - kBucketSeconds + 1) / kBucketSeconds;
    if (bucket != bucket_) {
        const Reading start = read(bucket * kBucketSeconds);
        const Reading end = read(bucket * kBucketSeconds + kBucketSeconds - 1);
        const std::int64_t startOffset = bucket * kBucketSeconds - start.utc;
        const std::int64_t endOffset = bucket * kBucketSeconds + kBucketSeconds - 1 - end.utc;
        if (!(start.unique && end.unique && startOffset == endOffset)) {
            // A change of offset falls into this quarter hour: no shortcut.
            bucket_ = INT64_MIN;
            return localMicros - (local - read(local).utc) * 1'000'000;
        }
        bucket_ = bucket;
        offset_ = startOffset;
    }
    return localMicros - offset_ * 1'000'000;
}

} // namespace kestrel
