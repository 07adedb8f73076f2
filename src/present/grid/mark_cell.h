#pragma once
// What the mark/trigger cell and the error cells of an MP show. The mark's
// text is the one the export and the CLI dump print (MarkText); the style
// tells the painter which colour the tag gets.

#include <cstdint>
#include <string>

#include "record/mp_record.h"

namespace kestrel::grid {

enum class MarkStyle { None, SystemStart, SystemStop, SystemOther, TriggerStart, TriggerStop, TriggerDetected };

struct MarkCell {
    MarkStyle style = MarkStyle::None;
    std::string text;
};

// lang is the language offset (0 or 10000).
[[nodiscard]] MarkCell DescribeMark(const MpRecord &mp, int lang);

struct ErrorMarks {
    bool pe = false, fe = false, le = false;
    [[nodiscard]] bool any() const { return pe || fe || le; }
};

[[nodiscard]] ErrorMarks ErrorsOf(const MpRecord &mp, bool d2);
// "P", "F", "L" for the errors present, in that order ("" when none).
[[nodiscard]] std::string ErrorLetters(const ErrorMarks &e);

} // namespace kestrel::grid
