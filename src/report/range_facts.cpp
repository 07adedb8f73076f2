#include "report/range_facts.h"

#include <cmath>

namespace kestrel::report {

namespace {
constexpr std::uint64_t kBlock = 4096;

std::array<std::uint8_t, 6> Levels(const MpRecord &mp) { return {mp.s1, mp.m1, mp.s2, mp.m2, mp.m5, mp.m3}; }
} // namespace

RangeFacts GatherRangeFacts(const RecordReader &reader, std::uint64_t first, std::uint64_t last,
                            const std::function<bool(std::uint64_t)> &keepGoing)
{
    RangeFacts f;
    std::vector<MpRecord> block;
    std::array<std::uint8_t, 6> before{};
    bool haveBefore = false;
    // The current run of one second: time stamps never go back in a sound
    // recording, so the seconds come one after another.
    std::int64_t second = 0;
    std::uint64_t inSecond = 0;
    bool haveSecond = false;
    for (std::uint64_t i = first; i <= last;) {
        const std::uint64_t want = std::min(kBlock, last - i + 1);
        const std::uint64_t got = reader.readBlock(i, want, block);
        for (std::uint64_t k = 0; k < got; ++k) {
            const MpRecord &mp = block[k];
            f.d1 += mp.d1Valid ? 1 : 0;
            f.d2 += mp.d2Valid ? 1 : 0;
            f.pe += (mp.peD1 ? 1 : 0) + (mp.peD2 ? 1 : 0);
            f.fe += (mp.feD1 ? 1 : 0) + (mp.feD2 ? 1 : 0);
            f.le += (mp.leD1 ? 1 : 0) + (mp.leD2 ? 1 : 0);
            const auto levels = Levels(mp);
            if (haveBefore)
                for (std::size_t s = 0; s < levels.size(); ++s)
                    f.signalChanges[s] += (levels[s] != 0) != (before[s] != 0) ? 1 : 0;
            before = levels;
            haveBefore = true;
            const int chars = (mp.d1Valid ? 1 : 0) + (mp.d2Valid ? 1 : 0);
            if (chars > 0 && std::isfinite(mp.time)) {
                const auto s = static_cast<std::int64_t>(std::floor(mp.time * 86400.0 + 1e-6));
                if (!haveSecond || s != second) {
                    second = s;
                    inSecond = 0;
                    haveSecond = true;
                }
                inSecond += static_cast<std::uint64_t>(chars);
                if (inSecond > f.busiestCount) {
                    f.busiestCount = inSecond;
                    f.busiestSecond = static_cast<double>(second) / 86400.0;
                }
            }
            if (mp.markCode != 0) {
                ++f.markCount;
                if (f.marks.size() < kMarksListed)
                    f.marks.push_back({i + k, mp.time, mp.markCode, mp.markKind, mp.markExtra});
            }
        }
        f.read += got;
        i += got;
        if (got < want || (keepGoing && !keepGoing(f.read)))
            break;
    }
    return f;
}

} // namespace kestrel::report
