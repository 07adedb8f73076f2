#include "present/grid/mark_cell.h"

#include "present/mark_text.h"

namespace kestrel::grid {

namespace {

// The tag colour follows what the mark says happened.
MarkStyle StyleOf(std::uint8_t markCode)
{
    switch (markCode) {
    case 1: return MarkStyle::TriggerStart;
    case 2: return MarkStyle::TriggerStop;
    case 3: return MarkStyle::TriggerDetected;
    case SystemMark::Appended:
    case SystemMark::Started: return MarkStyle::SystemStart;
    case SystemMark::Stopped: return MarkStyle::SystemStop;
    default: return MarkStyle::SystemOther;
    }
}

} // namespace

MarkCell DescribeMark(const MpRecord &mp, int lang)
{
    // The same words as the export and the CLI dump, so a mark reads alike everywhere.
    std::string text = MarkText(mp, lang);
    if (text.empty())
        return {};
    return {StyleOf(mp.markCode), std::move(text)};
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
