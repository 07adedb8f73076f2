#pragma once
// Display texts of a trigger's condition and event, in the active language.

#include <cstdint>
#include <string>

namespace kestrel {

// "Start recording", "Stop recording", "Inactivity"; an unknown value shows as its number.
[[nodiscard]] std::string TriggerTypeText(std::int32_t type);
// "Data event" ... "Inactivity event"; an unknown value shows as its number.
[[nodiscard]] std::string TriggerEventText(std::int32_t event);
// "Ignore", "Falls", "Rise".
[[nodiscard]] std::string SignalEdgeText(std::int32_t edge);

struct TriggerDef;
// The trigger's condition in words: "start recording on data 41 54 44 on D1 (Tx)",
// "inactivity: 30 s without D2, PE".
[[nodiscard]] std::string DescribeTrigger(const TriggerDef &trigger);

} // namespace kestrel
