#include "present/grid/cell_content.h"

#include "present/grid/grid_texts.h"
#include "present/grid/waveform.h"
#include "base/string_table.h"

namespace kestrel::grid {

namespace {

const MpRecord kZero{};

const MpRecord *MpAtSlot(const GridFrame &f, std::int64_t slot)
{
    if (f.buffer == nullptr || (slot < 0 && static_cast<std::uint64_t>(-slot) > f.position))
        return nullptr;
    return f.buffer->Mp(f.position + static_cast<std::uint64_t>(slot));
}

std::uint8_t Level(const MpRecord &mp, Signal s)
{
    switch (s) {
    case Signal::S1: return mp.s1;
    case Signal::M1: return mp.m1;
    case Signal::S2: return mp.s2;
    case Signal::M2: return mp.m2;
    case Signal::M5: return mp.m5;
    case Signal::M3: return mp.m3;
    }
    return 0;
}

// Delta times are taken to the record in the slot before (MP n - 1 in a
// sound file), not looked up by number, so a damaged number cannot send
// them elsewhere.
std::optional<double> TimeBefore(const GridFrame &f, std::int64_t slot)
{
    const MpRecord *prev = MpAtSlot(f, slot - 1);
    if (prev == nullptr)
        return std::nullopt;
    return prev->time;
}

GridCell TextCell(std::string text, TextTone tone = TextTone::Normal)
{
    GridCell c;
    c.kind = ContentKind::Text;
    c.text = std::move(text);
    c.tone = tone;
    return c;
}

GridCell ByteCell(std::uint8_t byte, int mode, int overlay)
{
    GridCell c;
    c.kind = ContentKind::Byte;
    c.byte = RenderByte(byte, mode, overlay);
    return c;
}

} // namespace

const MpRecord *CellMp(const GridFrame &f, int col, int row)
{
    return MpAtSlot(f, CellSlot(f.shape, col, row));
}

GridCell DescribeCell(const GridFrame &f, int col, int row, TimeTextFormatter &times)
{
    const CellInfo info = RoleOf(f.shape, col, row);
    if (info.role == CellRole::Empty || f.modes == nullptr)
        return {};
    const std::int64_t slot = CellSlot(f.shape, col, row);
    const MpRecord *mp = MpAtSlot(f, slot);
    if (mp == nullptr)
        return {};
    const GridModes &m = *f.modes;
    switch (info.role) {
    case CellRole::MarkTrigger: {
        MarkCell mark = DescribeMark(*mp, f.lang);
        GridCell c;
        if (mark.style == MarkStyle::None)
            return c;
        c.kind = ContentKind::Mark;
        c.mark = mark.style;
        c.text = std::move(mark.text);
        return c;
    }
    case CellRole::Number:
        return TextCell(std::to_string(mp->number));
    case CellRole::Time:
        return TextCell(times.Text(m.timeMode(), mp->time, f.relativeBase, TimeBefore(f, slot)));
    case CellRole::DataD1:
    case CellRole::DataD2: {
        const bool d2 = info.role == CellRole::DataD2;
        if (!(d2 ? mp->d2Valid : mp->d1Valid))
            return {};
        return ByteCell(d2 ? mp->d2 : mp->d1, m.charMode(), m.overlay());
    }
    case CellRole::DumpNumeric:
        if (!(info.d2 ? mp->d2Valid : mp->d1Valid))
            return {};
        return ByteCell(info.d2 ? mp->d2 : mp->d1, m.secondaryMode(), m.overlay());
    case CellRole::DumpSeparator: {
        // The slot before the row's first MP, shown faintly as the dump's divider.
        if (!(info.d2 ? mp->d2Valid : mp->d1Valid))
            return {};
        GridCell c = ByteCell(info.d2 ? mp->d2 : mp->d1, m.charMode(), m.overlay());
        c.tone = TextTone::Dim;
        return c;
    }
    case CellRole::Signal: {
        // Slot 0 is always in the buffer (or zero at a fresh file's start).
        const MpRecord *prev = MpAtSlot(f, slot - 1);
        const MpRecord *next = MpAtSlot(f, slot + 1);
        GridCell c;
        c.kind = ContentKind::Waveform;
        // Past the newest MP the line simply continues at its level.
        c.waveCase = WaveformCase(Level(prev ? *prev : kZero, info.signal), Level(*mp, info.signal),
                                  Level(next ? *next : *mp, info.signal));
        return c;
    }
    case CellRole::ErrorsD1:
    case CellRole::ErrorsD2: {
        GridCell c;
        c.errors = ErrorsOf(*mp, info.role == CellRole::ErrorsD2);
        if (c.errors.any())
            c.kind = ContentKind::Errors;
        return c;
    }
    case CellRole::Description: {
        if (!mp->d1Valid && !mp->d2Valid)
            return {};
        std::optional<std::uint8_t> d1, d2;
        if (mp->d1Valid)
            d1 = mp->d1;
        if (mp->d2Valid)
            d2 = mp->d2;
        std::string text = JoinDescriptions(d1, d2, m.charMode());
        if (text.empty())
            return {};
        return TextCell(std::move(text), TextTone::Description);
    }
    case CellRole::LineName:
        return TextCell(CircuitName(info.d2, m.namingSet()), TextTone::LineName);
    case CellRole::Empty:
        break;
    }
    return {};
}

std::vector<std::string> StatusLine(const GridFrame &f, int col, int row, TimeTextFormatter &times)
{
    const std::int64_t slot = CellSlot(f.shape, col, row);
    const MpRecord *mp = row >= 1 ? MpAtSlot(f, slot) : nullptr;
    if (mp == nullptr || f.modes == nullptr)
        return {StrIn(f.recordingOpen ? txt::kStatusNoMp : txt::kStatusNoRecord, f.lang)};
    // With a real MP its neighbour takes part; a zeroed slot stands for both.
    double before = mp->time;
    if (mp->number != 0)
        before = TimeBefore(f, slot).value_or(mp->time);
    std::vector<std::string> panels;
    panels.push_back(StrIn(txt::kStatusMp, f.lang) + std::to_string(mp->number));
    panels.push_back("Tx: " + times.Text(f.modes->timeMode(), mp->time, f.relativeBase, before));
    panels.push_back("Dx: " + times.Text(TimeMode::Delta, mp->time, f.relativeBase, before));
    panels.push_back("PE: " + std::to_string(mp->count(Counter::PE)) + "  FE: " + std::to_string(mp->count(Counter::FE)) +
                     "  LE: " + std::to_string(mp->count(Counter::LE)));
    return panels;
}

} // namespace kestrel::grid
