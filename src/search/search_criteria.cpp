#include "search/search_criteria.h"

#include "record/mp_fields.h"

namespace kestrel {

bool MatchesTriggerPoint(const std::uint8_t *rec, int triggerNumber)
{
    return rec[mpraw::kOffMarkExtra] == triggerNumber;
}

bool MatchesDateTime(const std::uint8_t *rec, double wanted, int direction)
{
    // Strict both ways: an MP stamped exactly at the wanted time is no hit.
    const double t = mpraw::Time(rec);
    return direction > 0 ? t > wanted : t < wanted;
}

bool MatchesError(const std::uint8_t *rec, const ErrorCriteria &c)
{
    // All three criteria must hold on one port's triple: port A's or port B's.
    auto holdsOn = [&](int offset) {
        for (int k = 0; k < 3; ++k)
            if (!CriterionHolds(c.flag[k], rec[offset + k]))
                return false;
        return true;
    };
    return holdsOn(mpraw::kOffErrorsD2) || holdsOn(mpraw::kOffErrorsD1);
}

bool MatchesSignal(const std::uint8_t *rec, const SignalCriteria &c)
{
    for (int k = 0; k < 6; ++k)
        if (!CriterionHolds(c.level[k], rec[mpraw::kOffLevels + k]))
            return false;
    return true;
}

} // namespace kestrel
