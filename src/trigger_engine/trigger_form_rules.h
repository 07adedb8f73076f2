#pragma once
// The trigger editor's rules that need no window: what its OK button refuses
// and in which order, how the condition decides the event, what the seconds
// field makes of its text, and how a time trigger's moment is put together
// from its date and time pickers. The editor (app/trigger_form.h) shows the
// results; tests check them here without a widget.

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "triggers/trigger_def.h"

namespace kestrel {

// Texts of the editor's messages and questions.
namespace TrigFormMsg {
inline constexpr int Title = 7433;            // "Trigger engine message"
inline constexpr int InvalidCommand = 7452;   // the command file is not there
inline constexpr int InvalidSound = 7453;     // the sound file is not there
inline constexpr int PlaceholderInName = 7454; // name or description holds a placeholder
inline constexpr int UnclosedQuote = 7455;    // the parameter line has an open quote
inline constexpr int NoName = 7486;           // "A trigger must have a title to be accepted!"
inline constexpr int Overwrite = 7487;        // "Should the existing trigger be overwritten ...?"
inline constexpr int SaveChanges = 7488;      // "Do you want to save the changes?"
} // namespace TrigFormMsg

// Whether a file is there; tests hand in their own.
using FileExists = std::function<bool(const std::string &path)>;

// A regular file (or a link to one) at path; a folder does not count.
[[nodiscard]] bool RegularFileExists(const std::string &path);

// Where the OK checks look for files.
struct FileLookup {
    FileExists exists = RegularFileExists;
    // The folders a command given without a '/' is looked up in, ':'-separated (PATH).
    std::string searchPath;

    // The real file system and this process's PATH.
    [[nodiscard]] static FileLookup System();
};

// The command as the launcher would start it: a bare name is looked up in the
// folders of searchPath as a shell does (an empty entry meaning the current
// folder); anything with a '/' is taken as it stands.
[[nodiscard]] bool CommandExists(const std::string &command, const FileLookup &files);

// The first reason OK refuses the trigger, as the number of the message to show;
// nothing when it may be taken. In this order:
//  1. sound ticked and its file not there        (InvalidSound)
//  2. command ticked and its program not there   (InvalidCommand)
//  3. the name empty or only blanks               (NoName)
//  4. a placeholder in the name or description    (PlaceholderInName)
//  5. command ticked and a quote of its parameter line never closed (UnclosedQuote)
// An unticked action is not looked at: it never runs, and ticking it again
// goes through these checks once more.
[[nodiscard]] std::optional<int> CheckTriggerForOk(const TriggerDef &trigger, const FileLookup &files);

// The condition "Inaktivität" brings its own event and hides the event box.
[[nodiscard]] constexpr bool EventBoxShown(std::int32_t type) { return type != TriggerType::Inactivity; }

// The event a trigger gets from the condition box and the event box's entry
// (0-3): the inactivity event under "Inaktivität", else that entry; an entry
// outside 0-3 (none chosen) counts as the data event.
[[nodiscard]] std::int32_t EventOfCondition(std::int32_t type, int eventBoxIndex);

// The event box entry for a stored trigger: its event when that is one of the
// box's four, else the data event (an inactivity trigger's box stays at data
// until the user picks another condition).
[[nodiscard]] int EventBoxIndexOf(std::int32_t event);

// The condition box entry for a stored type; a value no entry has counts as "start recording".
[[nodiscard]] int ConditionBoxIndexOf(std::int32_t type);

// The seconds field's text as the editor leaves it: its leading digits taken as
// a number and clamped to 1 ... 65535 (so "" and "0" give 1, "70000" and any
// longer run of digits give 65535).
[[nodiscard]] std::int32_t InActivitySecondsFromText(std::string_view text);

// Date-times are days since 1899-12-30 with the time of day as fraction; before
// that day the fraction still counts the time of day forward (-1.25 is
// 1899-12-29 06:00).
struct DateTimeParts {
    std::int64_t day = 0; // whole days since 1899-12-30
    double time = 0.0;    // time of day, 0 <= time < 1
};
[[nodiscard]] DateTimeParts SplitDateTime(double dateTime);
// TimeReached from the date part of one value and the time part of another.
[[nodiscard]] double ComposeTimeReached(double datePart, double timePart);

} // namespace kestrel
