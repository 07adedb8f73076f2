#pragma once
// The options dialog's profile fields without the dialog: what they show when it
// opens, what a chosen profile puts into them, how the typed value lists are read
// and which of them a port could not use. The dialog stays a thin layer over this.

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "config/hardware_profile.h"
#include "config/program_config.h"
#include "config/value_selector.h"

namespace kestrel {

// Refusals of the options dialog's OK (string numbers; the dialog fills in %1 and %2).
inline constexpr int kMsgValueNotOffered = 9240; // %1 the value, %2 the list's name
inline constexpr int kMsgEmptyValueList = 9241;  // %1 the list's name
inline constexpr int kMsgSamePortAB = 9242;
// The names of the four lists in messages and in the selector's title.
[[nodiscard]] int ValueListName(PortValueKind kind);

// A value-list field's text: comma text, where a line break counts as a comma and
// empty items are dropped ("300, 1200,\n2400," -> 300 1200 2400).
[[nodiscard]] std::vector<std::string> ParseValueListField(std::string_view text);
[[nodiscard]] std::string ValueListFieldText(const std::vector<std::string> &values);

// The lists of a profile by kind.
[[nodiscard]] const std::vector<std::string> &ValuesOf(const PortValueLists &lists, PortValueKind kind);

// The first value of the four lists that no port can use, or an empty list: Fail with
// kMsgValueNotOffered (detail: the value) or kMsgEmptyValueList; kind says which list.
struct OfferedValuesCheck {
    Result status;
    PortValueKind kind = PortValueKind::BaudRates;
};
[[nodiscard]] OfferedValuesCheck CheckOfferedValues(const PortValueLists &lists);

// When the dialog opens: the profile in use (name, maker, port entries) with the
// program-wide lists, which may differ from the file's (Kestrel.ini's lists win at start).
[[nodiscard]] HardwareProfile ProfileFieldsOnShow(const std::filesystem::path &dataFolder, const ProgramConfig &cfg);

// A profile chosen in the profile box: its file read into the fields, the lists it
// lacks taken from the fields as they were. A missing file or a name that is not a
// plain file name reads as the defaults. A file that exists but cannot be read, or
// is no settings file (binary, too large), reads as the defaults too, with status
// kMsgSettingsFileNotRead and the reason, so that the dialog can say so.
struct ProfileFieldsRead {
    HardwareProfile profile;
    Result status;
};
[[nodiscard]] ProfileFieldsRead ProfileFieldsOfFile(const std::filesystem::path &dataFolder, const std::string &name,
                                                    const PortValueLists &listsShown);

} // namespace kestrel
