#pragma once
// The text of an MP's mark: trigger marks name the trigger and what it did,
// system marks what the recorder did.
//
//   mark code 1, 2, 3 (trigger start, stop, detected): "T_<trigger>.<event>.<word>",
//     e.g. "T_4.0.start" for trigger number 4 (mark extra) watching event 0 (mark kind);
//   4 "E_0.appended", 5 "E_0.user stop", 6 "E_0.user start", 99 "debug";
//   any other code: empty.

#include <string>

#include "record/mp_record.h"

namespace kestrel {

[[nodiscard]] std::string MarkText(const MpRecord &mp, int langOffset);

} // namespace kestrel
