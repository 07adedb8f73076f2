#pragma once
// The parameter line of a trigger's command: split into arguments as a shell
// splits words (but no shell ever sees it), then the placeholders of the
// parameter pool filled in. Filling happens after splitting, so a trigger
// name such as `x"; rm -rf ~; "` stays one argument and can never start a
// second program; inserted text is never scanned again, so a name that
// contains a placeholder cannot make the filling endless (the editor refuses
// such names anyway).

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "triggers/trigger_def.h"

namespace kestrel {

// One slot of the parameter pool, in table order; the tenth is empty and never matches.
struct ParameterSlot {
    const char *placeholder;
    int description; // string number
};
inline constexpr std::size_t kParameterSlotCount = 10;
[[nodiscard]] const std::array<ParameterSlot, kParameterSlotCount> &ParameterPool();

// True when the text holds one of the pool's placeholders.
[[nodiscard]] bool ContainsPlaceholder(std::string_view text);

// Words as a POSIX shell splits them: blanks separate, '...' is literal, "..."
// keeps blanks and takes \" \\ \$ \` as escapes, a backslash outside quotes
// takes the next character. nullopt when a quote is not closed.
[[nodiscard]] std::optional<std::vector<std::string>> SplitShellWords(std::string_view line);

// Fills the placeholders slot by slot in table order across all arguments. A
// slot whose condition does not hold (%TRIG_DATA% of a signal trigger, say)
// takes the text of the last replacement made in this run; %TRIG_TYPE% is
// always empty. timestamp is the text for %TIMESTAMP%.
[[nodiscard]] std::vector<std::string> FillPlaceholders(std::vector<std::string> args, const TriggerDef &trigger,
                                                        const std::string &timestamp);

// The current date and time for %TIMESTAMP%: the system's short date and long time.
[[nodiscard]] std::string TimestampText();

} // namespace kestrel
