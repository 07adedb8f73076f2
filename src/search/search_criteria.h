#pragma once
// What a search looks for. The signal and error criteria are small integers
// taken from the dialog's radio groups: 0 (or -1 when no button is set) means
// ignore, otherwise value - 1 is the wanted level or flag (0 low / not set,
// 1 high / set). They select a level, never an edge.

#include <cstdint>
#include <vector>

namespace kestrel {

enum class SearchKind { TriggerPoint, DateTime, Error, Signal, Data };

// Index of each signal in SignalCriteria::level, in record order.
enum class SignalLine { S1 = 0, M1, S2, M2, M5, M3 };
// Index of each error flag in ErrorCriteria::flag.
enum class ErrorFlag { PE = 0, FE, LE };

struct SignalCriteria {
    int level[6] = {0, 0, 0, 0, 0, 0};
};

struct ErrorCriteria {
    int flag[3] = {0, 0, 0};
};

struct DataCriteria {
    std::vector<std::uint8_t> pattern; // 0x00 cannot be searched for
    bool d1 = false;
    bool d2 = false;
};

struct SearchCriteria {
    SearchKind kind = SearchKind::Data;
    int triggerNumber = 0;  // compared with the mark extra byte
    double dateTime = 0.0;  // days since 1899-12-30, local time
    ErrorCriteria error;
    SignalCriteria signal;
    DataCriteria data;
};

// True when the criterion is ignored or the value has the wanted level.
[[nodiscard]] constexpr bool CriterionHolds(int criterion, std::uint8_t value)
{
    if (criterion <= 0)
        return true;
    return (value != 0) == (criterion - 1 != 0);
}

// Tests of one raw record (80 bytes) against a criterion; the data search is
// not here because it looks at the MPs after the first one too.
[[nodiscard]] bool MatchesTriggerPoint(const std::uint8_t *rec, int triggerNumber);
[[nodiscard]] bool MatchesDateTime(const std::uint8_t *rec, double wanted, int direction);
[[nodiscard]] bool MatchesError(const std::uint8_t *rec, const ErrorCriteria &c);
[[nodiscard]] bool MatchesSignal(const std::uint8_t *rec, const SignalCriteria &c);

} // namespace kestrel
