#include "present/grid/mark_cell.h"

#include "present/grid/grid_texts.h"
#include "resources/string_table.h"

namespace kestrel::grid {

MarkCell DescribeMark(const MpRecord &mp, int lang)
{
    MarkCell cell;
    if (mp.isSystemMark()) {
        switch (mp.markCode) {
        case SystemMark::NewFile:
            cell = {MarkStyle::SystemOther, StrIn(txt::kMarkNewFile, lang)};
            break;
        case SystemMark::Started:
            cell = {MarkStyle::SystemStart, StrIn(txt::kMarkStarted, lang)};
            break;
        case SystemMark::Appended:
            cell = {MarkStyle::SystemStart, StrIn(txt::kMarkAppended, lang)};
            break;
        case SystemMark::Stopped:
            cell = {MarkStyle::SystemStop, StrIn(txt::kMarkStopped, lang)};
            break;
        default:
            cell = {MarkStyle::SystemOther, StrIn(txt::kMarkSystemOther, lang) + std::to_string(mp.markCode)};
        }
        return cell;
    }
    if (!mp.isTriggerMark())
        return cell;
    // Trigger marks: code = trigger type + 1, kind = trigger event, extra = trigger number.
    const std::string head = "T_" + std::to_string(mp.markExtra) + ".";
    switch (mp.markCode) {
    case 1: return {MarkStyle::TriggerStart, head + StrIn(txt::kMarkTriggerStart, lang)};
    case 2: return {MarkStyle::TriggerStop, head + StrIn(txt::kMarkTriggerStop, lang)};
    case 3: return {MarkStyle::TriggerDetected, head + StrIn(txt::kMarkTriggerDetected, lang)};
    default: return {MarkStyle::TriggerDetected, head + std::to_string(mp.markCode)};
    }
}

ErrorMarks ErrorsOf(const MpRecord &mp, bool d2)
{
    if (d2)
        return {mp.peD2 != 0, mp.feD2 != 0, mp.leD2 != 0};
    return {mp.peD1 != 0, mp.feD1 != 0, mp.leD1 != 0};
}

std::string ErrorLetters(const ErrorMarks &e)
{
    std::string s;
    if (e.pe)
        s += 'P';
    if (e.fe)
        s += 'F';
    if (e.le)
        s += 'L';
    return s;
}

} // namespace kestrel::grid
