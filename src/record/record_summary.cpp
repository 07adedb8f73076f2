#include "record/record_summary.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>

#include "record/recording_check.h"

namespace kestrel {
namespace {

constexpr std::uint64_t kScanBlock = 8192; // records per read

} // namespace

RecordingSummary SummarizeRecording(const RecordReader &reader)
{
    RecordingSummary s;
    s.fileSize = reader.fileSize();
    s.mpCount = s.fileSize / kMpSize;
    s.tornBytes = s.fileSize % kMpSize;

    std::vector<std::uint8_t> block(kScanBlock * kMpSize);
    std::uint64_t recount[5] = {};
    double lastTime = 0.0;
    std::uint64_t index = 0;
    while (index < s.mpCount) {
        const std::uint64_t got = reader.readRaw(index, std::min(kScanBlock, s.mpCount - index), block.data());
        if (got == 0)
            break;
        for (std::uint64_t i = 0; i < got; ++i, ++index) {
            const MpRecord mp = DecodeMp(block.data() + i * kMpSize);
            if (index == 0)
                s.first = mp;
            s.last = mp;
            if (mp.number != MpNumberAt(index))
                ++s.numberGaps;
            if (index > 0 && mp.time < lastTime)
                ++s.timeBackwards;
            lastTime = mp.time;
            if (mp.isSystemMark() && mp.markCode == SystemMark::NewFile)
                std::fill(std::begin(recount), std::end(recount), 0);
            recount[0] += mp.d1Valid ? 1 : 0;
            recount[1] += mp.d2Valid ? 1 : 0;
            recount[2] += (mp.peD1 || mp.peD2) ? 1 : 0;
            recount[3] += (mp.feD1 || mp.feD2) ? 1 : 0;
            recount[4] += (mp.leD1 || mp.leD2) ? 1 : 0;
            if (!std::equal(std::begin(recount), std::end(recount), std::begin(mp.counts))) {
                ++s.counterMismatches;
                std::copy(std::begin(mp.counts), std::end(mp.counts), recount); // count each fault once
            }
            if (mp.isSystemMark() || mp.isTriggerMark())
                s.marks.push_back({index, mp.time, mp.markCode, mp.markKind, mp.markExtra});
        }
    }
    s.mpCount = std::min(s.mpCount, index);
    return s;
}

std::string FormatDateTimeIso(double dateTime)
{
    if (!std::isfinite(dateTime) || dateTime < -657434.0 || dateTime > 2958466.0)
        return "(invalid)";
    // Round to microseconds first so 23:59:59.9999996 does not print as second 60.
    const auto micros = static_cast<std::int64_t>(std::llround(dateTime * 86400.0 * 1e6));
    std::int64_t days = micros / 86'400'000'000LL;
    std::int64_t rest = micros % 86'400'000'000LL;
    if (rest < 0) {
        rest += 86'400'000'000LL;
        --days;
    }
    const std::chrono::sys_days epoch = std::chrono::sys_days(std::chrono::year{1899} / 12 / 30);
    const std::chrono::year_month_day ymd{epoch + std::chrono::days(days)};
    const std::int64_t secs = rest / 1'000'000;
    char buf[64];
    std::snprintf(buf, sizeof buf, "%04d-%02u-%02u %02lld:%02lld:%02lld.%06lld", static_cast<int>(ymd.year()),
                  static_cast<unsigned>(ymd.month()), static_cast<unsigned>(ymd.day()),
                  static_cast<long long>(secs / 3600), static_cast<long long>(secs / 60 % 60),
                  static_cast<long long>(secs % 60), static_cast<long long>(rest % 1'000'000));
    return buf;
}

const char *SystemMarkName(std::uint8_t code)
{
    switch (code) {
    case SystemMark::NewFile:
        return "new file";
    case SystemMark::Started:
        return "started";
    case SystemMark::Appended:
        return "appended";
    case SystemMark::Stopped:
        return "stopped";
    default:
        return "unknown";
    }
}

} // namespace kestrel
