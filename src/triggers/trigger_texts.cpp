#include "triggers/trigger_texts.h"

#include <array>

#include "base/string_table.h"

namespace kestrel {

namespace {

constexpr std::array<int, 3> kTypeTexts{7400, 7401, 7402};
constexpr std::array<int, 5> kEventTexts{7403, 7404, 7405, 7406, 7407};
constexpr std::array<int, 3> kEdgeTexts{7408, 7409, 7410};

template <std::size_t N>
std::string TextOf(const std::array<int, N> &table, std::int32_t value)
{
    if (value < 0 || static_cast<std::size_t>(value) >= N)
        return "(" + std::to_string(value) + ")";
    return Str(table[static_cast<std::size_t>(value)]);
}

} // namespace

std::string TriggerTypeText(std::int32_t type) { return TextOf(kTypeTexts, type); }
std::string TriggerEventText(std::int32_t event) { return TextOf(kEventTexts, event); }
std::string SignalEdgeText(std::int32_t edge) { return TextOf(kEdgeTexts, edge); }

} // namespace kestrel
