#include <gtest/gtest.h>

#include "present/mark_text.h"
#include "present/grid/grid_layout.h"
#include "present/grid/mark_cell.h"
#include "present/grid/view_modes.h"
#include "present/grid/waveform.h"
#include "base/string_table.h"

using namespace kestrel;
using namespace kestrel::grid;

namespace {

// Points as text: L/H for x0/x1, t/b for top/bottom.
std::string Trace(const WaveShape &s)
{
    std::string out;
    for (int i = 0; i < s.count; ++i) {
        out += s.points[static_cast<std::size_t>(i)].high ? 'H' : 'L';
        out += s.points[static_cast<std::size_t>(i)].bottom ? 'b' : 't';
    }
    return out + (s.fillable ? "+fill" : "");
}

} // namespace

TEST(Waveform, EightCasesFromPreviousCurrentNext)
{
    struct {
        std::uint8_t p, c, n;
        const char *trace;
    } const cases[] = {
        {0, 0, 0, "LtLb"},           {0, 0, 1, "LtLbHb"},         {0, 1, 0, "LtHtHbLb+fill"},
        {0, 1, 1, "LtHtHb+fill"},    {1, 0, 0, "HtLtLb"},         {1, 0, 1, "HtLtLbHb"},
        {1, 1, 0, "HtHbLb+fill"},    {1, 1, 1, "HtHb+fill"},
    };
    for (const auto &c : cases) {
        const int k = WaveformCase(c.p, c.c, c.n);
        EXPECT_EQ(k, 4 * c.p + 2 * c.c + c.n);
        EXPECT_EQ(Trace(WaveformShape(k)), c.trace) << k;
    }
    // Any non-zero level byte counts as high.
    EXPECT_EQ(WaveformCase(0, 7, 0), 2);
    EXPECT_EQ(WaveStepWidth(30), 18);
    EXPECT_EQ(WaveStepWidth(9), 0);
}

TEST(MarkCell, StylesOfSystemAndTriggerMarks)
{
    MpRecord mp;
    EXPECT_EQ(DescribeMark(mp, kLangEnglish).style, MarkStyle::None);
    mp.markKind = kSystemMarkKind;
    mp.markCode = SystemMark::Appended;
    EXPECT_EQ(DescribeMark(mp, kLangGerman).style, MarkStyle::SystemStart);
    mp.markCode = SystemMark::Stopped;
    EXPECT_EQ(DescribeMark(mp, kLangGerman).style, MarkStyle::SystemStop);

    MpRecord trig;
    trig.markCode = 2; // trigger type 1 (stop) + 1
    trig.markKind = 3;
    trig.markExtra = 12;
    EXPECT_EQ(DescribeMark(trig, kLangEnglish).text, "T_12.3.stop");
    EXPECT_EQ(DescribeMark(trig, kLangEnglish).style, MarkStyle::TriggerStop);
    trig.markCode = 3;
    EXPECT_EQ(DescribeMark(trig, kLangGerman).style, MarkStyle::TriggerDetected);
}

// A mark reads the same in the grid as in the export and the CLI dump; a
// record whose mark has no text there gets no tag here either.
TEST(MarkCell, ReadsLikeTheExport)
{
    for (int code = 0; code < 256; ++code) {
        for (std::uint8_t kind : {std::uint8_t{0}, std::uint8_t{4}, kSystemMarkKind}) {
            MpRecord mp;
            mp.markCode = static_cast<std::uint8_t>(code);
            mp.markKind = kind;
            mp.markExtra = 7;
            for (int lang : {kLangGerman, kLangEnglish}) {
                const MarkCell cell = DescribeMark(mp, lang);
                EXPECT_EQ(cell.text, MarkText(mp, lang)) << code << "/" << int(kind);
                EXPECT_EQ(cell.style == MarkStyle::None, cell.text.empty()) << code << "/" << int(kind);
            }
        }
    }
}

TEST(MarkCell, ErrorLettersPerCircuit)
{
    MpRecord mp;
    mp.peD1 = 1;
    mp.leD1 = 1;
    mp.feD2 = 1;
    EXPECT_EQ(ErrorLetters(ErrorsOf(mp, false)), "PL");
    EXPECT_EQ(ErrorLetters(ErrorsOf(mp, true)), "F");
    EXPECT_FALSE(ErrorsOf(MpRecord{}, true).any());
}

TEST(GridModes, TimeButtonsGridLinesAndViews)
{
    GridModes m;
    m.ClickTimeRelative(true);
    m.ClickTimeRelative(true); // pressing twice changes nothing
    EXPECT_EQ(m.timeMode(), kTimeRelative);
    m.ClickTimeDelta(false); // raising a button falls back to absolute
    EXPECT_EQ(m.timeMode(), kTimeAbsolute);

    m.SetGridLines(GridLines::Horizontal);
    EXPECT_EQ(m.gridLines(), (GridLineOptions{false, true}));

    // Only the three views exist.
    EXPECT_FALSE(m.SelectView(2));
    EXPECT_EQ(m.view(), kViewVertical);
}
