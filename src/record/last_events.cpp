#include "record/last_events.h"

namespace kestrel {

void LastEvents::Note(const MpRecord &mp)
{
    const double t = mp.time;
    if (mp.d1Valid)
        times_[index(EventKind::D1)] = t;
    if (mp.d2Valid)
        times_[index(EventKind::D2)] = t;
    const std::uint8_t levels[6] = {mp.s1, mp.m1, mp.s2, mp.m2, mp.m5, mp.m3};
    for (int i = 0; i < 6; ++i) {
        const int at = index(EventKind::S1) + i;
        // A change, or a line held high, is activity.
        if (levels[i] != 0 || levels[i] != levels_[at]) {
            levels_[at] = levels[i];
            times_[at] = t;
        }
    }
    if (mp.peD1 || mp.peD2)
        times_[index(EventKind::PE)] = t;
    if (mp.feD1 || mp.feD2)
        times_[index(EventKind::FE)] = t;
    if (mp.leD1 || mp.leD2)
        times_[index(EventKind::LE)] = t;
}

void LastEvents::ResetAll(double now, const std::array<std::uint8_t, 6> &levels)
{
    times_.fill(now);
    levels_.fill(0);
    for (int i = 0; i < 6; ++i)
        levels_[index(EventKind::S1) + i] = levels[i];
}

} // namespace kestrel
