#include "present/mark_text.h"

#include "base/string_table.h"

namespace kestrel {
namespace {
namespace Text {
inline constexpr int TriggerPrefix = 7310;
inline constexpr int Start = 7311;
inline constexpr int Stop = 7312;
inline constexpr int Detected = 7313;
inline constexpr int Appended = 7314;
inline constexpr int UserStop = 7315;
inline constexpr int UserStart = 7316;
inline constexpr int Debug = 7317;
} // namespace Text
} // namespace

std::string MarkText(const MpRecord &mp, int langOffset)
{
    switch (mp.markCode) {
    case 1:
    case 2:
    case 3: {
        static constexpr int words[] = {Text::Start, Text::Stop, Text::Detected};
        return StrIn(Text::TriggerPrefix, langOffset) + std::to_string(mp.markExtra) + "." +
               std::to_string(mp.markKind) + "." + StrIn(words[mp.markCode - 1], langOffset);
    }
    case 4:
        return StrIn(Text::Appended, langOffset);
    case 5:
        return StrIn(Text::UserStop, langOffset);
    case 6:
        return StrIn(Text::UserStart, langOffset);
    case 99:
        return StrIn(Text::Debug, langOffset);
    default:
        return {};
    }
}

} // namespace kestrel
