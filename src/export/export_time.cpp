#include "export/export_time.h"

namespace kestrel {

void AppendExportTime(std::string &out, double t, int mode, ExportTimeState &state)
{
    const std::size_t start = out.size();
    state.formatter.AppendText(out, mode, t, state.relativeBase.value, state.previous);
    // The grid pads its time cell with one blank; a CSV field ends at the text.
    if (out.size() > start && out.back() == ' ')
        out.pop_back();
}

void AppendTimeOfNext(std::string &out, const MpRecord &mp, std::uint64_t index, int mode, ExportTimeState &state)
{
    state.noteRead(mp, index);
    AppendExportTime(out, mp.time, mode, state);
    state.previous = mp.time;
}

} // namespace kestrel
