#include "triggers/trigger_texts.h"

#include <array>
#include <vector>

#include "base/string_table.h"
#include "record/record_summary.h"
#include "triggers/trigger_def.h"

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

namespace {

// Texts of the description; German under n, English under n + 10000.
constexpr std::array<int, 3> kTypeWords{7411, 7412, 7413}; // "start recording on", ...
constexpr int kDataWord = 7414, kOnWord = 7415, kAndWord = 7416, kSignalWord = 7417, kErrorWord = 7418,
              kOrWord = 7419, kTimeWord = 7456, kWithoutWord = 7457, kNothingWord = 7458;

std::string JoinWith(const std::vector<std::string> &parts, const std::string &separator)
{
    std::string out;
    for (const std::string &p : parts)
        out += (out.empty() ? "" : separator) + p;
    return out;
}

std::string HexPairs(const std::string &hex)
{
    std::string out;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
        out += (out.empty() ? "" : " ") + hex.substr(i, 2);
    return out.empty() ? "-" : out;
}

std::string EventWords(const TriggerDef &t)
{
    switch (t.Event) {
    case TriggerEvent::Data: {
        std::vector<std::string> lines;
        if (t.D1)
            lines.push_back("D1 (Tx)");
        if (t.D2)
            lines.push_back("D2 (Rx)");
        return Str(kDataWord) + " " + HexPairs(t.Data) + " " + Str(kOnWord) + " " +
               (lines.empty() ? Str(kNothingWord) : JoinWith(lines, " " + Str(kAndWord) + " "));
    }
    case TriggerEvent::Signal: {
        std::vector<std::string> edges;
        for (const auto &[key, field] : kSignalEdgeKeys) {
            if (t.*field != SignalEdge::Ignore)
                edges.push_back(std::string(key) + " " + SignalEdgeText(t.*field));
        }
        return Str(kSignalWord) + " " + (edges.empty() ? Str(kNothingWord) : JoinWith(edges, ", "));
    }
    case TriggerEvent::Error: {
        std::vector<std::string> errors;
        for (const auto &[key, field] : kErrorKeys) {
            if (t.*field)
                errors.push_back(key);
        }
        return Str(kErrorWord) + " " + (errors.empty() ? Str(kNothingWord) : JoinWith(errors, " " + Str(kOrWord) + " "));
    }
    case TriggerEvent::TimeReached:
        return Str(kTimeWord) + " " + FormatDateTimeIso(t.TimeReached).substr(0, 19); // to the second
    case TriggerEvent::Inactivity: {
        std::vector<std::string> kinds;
        for (const auto &[key, field] : kInactivityEventKeys) {
            if (t.*field)
                kinds.push_back(std::string(key).substr(5)); // "EventD1" -> "D1"
        }
        return std::to_string(t.InActivityTime) + " s " + Str(kWithoutWord) + " " +
               (kinds.empty() ? Str(kNothingWord) : JoinWith(kinds, ", "));
    }
    default:
        return TriggerEventText(t.Event);
    }
}

} // namespace

std::string DescribeTrigger(const TriggerDef &t)
{
    const std::string type = t.Type >= 0 && t.Type < 3 ? Str(kTypeWords[static_cast<std::size_t>(t.Type)])
                                                       : TriggerTypeText(t.Type);
    return type + " " + EventWords(t);
}

} // namespace kestrel
