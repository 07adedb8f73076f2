#include <gtest/gtest.h>

#include "present/grid/cell_content.h"
#include "base/string_table.h"

using namespace kestrel;
using namespace kestrel::grid;

namespace {

constexpr double kT0 = 46000.5; // noon

// MPs 0..19: MP 0 the opening mark; MP k (k >= 1) carries D1 = 'A' + k,
// D2 only on even numbers, S1 high on MPs 5..7, one second apart.
std::vector<MpRecord> Recording()
{
    std::vector<MpRecord> v;
    for (std::uint32_t n = 0; n < 20; ++n) {
        MpRecord mp;
        mp.number = n;
        mp.time = kT0 + n / 86400.0;
        if (n == 0) {
            mp.markKind = kSystemMarkKind;
        } else {
            mp.d1 = static_cast<std::uint8_t>('A' + n);
            mp.d1Valid = 1;
            mp.d2 = static_cast<std::uint8_t>(n);
            mp.d2Valid = n % 2 == 0;
            mp.s1 = n >= 5 && n <= 7;
            mp.counts[static_cast<int>(Counter::PE)] = n / 4;
        }
        v.push_back(mp);
    }
    return v;
}

struct Fixture : ::testing::Test {
    FetchBuffer buffer;
    GridModes modes;
    TimeTextFormatter times{TimeLocale::Fixed(), kLangEnglish};
    GridFrame frame;
    void SetUp() override
    {
        buffer.FillFromRecords(Recording());
        frame.shape = ShapeForView(kViewVertical, 1000);
        frame.modes = &modes;
        frame.buffer = &buffer;
        frame.position = 0;
        frame.lang = kLangEnglish;
        frame.relativeBase = kT0 + 1 / 86400.0; // MP 1
    }
    GridCell Cell(int col, int row) { return DescribeCell(frame, col, row, times); }
};

} // namespace

TEST_F(Fixture, VerticalRowsShowTheMpAfterThePosition)
{
    EXPECT_EQ(Cell(1, 1).text, "1");
    frame.position = 4;
    EXPECT_EQ(Cell(1, 1).text, "5");
    EXPECT_EQ(Cell(1, 15).text, "19");
    // Beyond the recording: nothing at all.
    EXPECT_EQ(Cell(1, 16).kind, ContentKind::Empty);
}

TEST_F(Fixture, DataBytesFollowTheModesAndTheValidFlags)
{
    frame.position = 9; // row 1 = MP 10: D1 'K', D2 0x0A
    GridCell d1 = Cell(3, 1);
    ASSERT_EQ(d1.kind, ContentKind::Byte);
    EXPECT_EQ(d1.byte.text, "K");
    modes.panel.ClickCaretButton();
    EXPECT_EQ(Cell(4, 1).byte.kind, CellKind::Caret);
    EXPECT_EQ(Cell(4, 1).byte.text, "^J");
    EXPECT_EQ(Cell(4, 2).kind, ContentKind::Empty); // MP 11 has no D2 byte
    modes.panel.ChooseMode(CharMode::Hex);
    EXPECT_EQ(Cell(3, 1).byte.kind, CellKind::Number);
    EXPECT_EQ(Cell(3, 1).byte.text, "4B");
}

TEST_F(Fixture, WaveformsUseTheNeighbourSlots)
{
    // S1 is high on MPs 5..7: MP 4 rises after, 5 rises, 6 stays, 7 falls after, 8 falls.
    const int expected[] = {1, 3, 7, 6, 4};
    for (int i = 0; i < 5; ++i) {
        const GridCell c = Cell(5, 4 + i);
        ASSERT_EQ(c.kind, ContentKind::Waveform);
        EXPECT_EQ(c.waveCase, expected[i]) << "MP " << 4 + i;
    }
    // The newest MP continues its own level instead of falling to the zeroed slot.
    buffer.FillFromRecords([] {
        auto v = Recording();
        v.resize(7); // MP 6 is the newest, high
        return v;
    }());
    EXPECT_EQ(Cell(5, 6).waveCase, 7);
}

TEST_F(Fixture, MarksErrorsAndDescriptions)
{
    std::vector<MpRecord> v = Recording();
    v[1].markKind = kSystemMarkKind;
    v[1].markCode = SystemMark::Started;
    v[1].d1Valid = v[1].d2Valid = 0;
    v[2].feD2 = 1;
    v[4].d1 = 0x02;
    v[4].d2 = 0x03;
    buffer.FillFromRecords(v);
    EXPECT_EQ(Cell(0, 1).mark, MarkStyle::SystemStart);
    EXPECT_EQ(Cell(12, 2).kind, ContentKind::Errors);
    EXPECT_EQ(Cell(13, 1).kind, ContentKind::Empty); // no data byte
    EXPECT_EQ(Cell(13, 4).text, "start of text <---|---> end of text");
    modes.panel.ChooseMode(CharMode::Dec);
    EXPECT_EQ(Cell(13, 4).kind, ContentKind::Empty);
}

TEST_F(Fixture, DeltaTimeIsToTheRecordBefore)
{
    // A record whose number is off (a damaged file): its delta is still taken
    // to the record before it, in the time column and the status line alike.
    std::vector<MpRecord> v = Recording();
    v[6].number = 2;
    buffer.FillFromRecords(v);
    modes.ClickTimeDelta(true);
    EXPECT_EQ(Cell(2, 6).text, "0 day(s)  00:00:01,000000 ");
    const auto panels = StatusLine(frame, 2, 6, times);
    ASSERT_EQ(panels.size(), 4u);
    EXPECT_EQ(panels[2], "Dx: 0 day(s)  00:00:01,000000 ");
}

TEST_F(Fixture, DataViewsPairTheCircuitRows)
{
    frame.shape = ShapeForView(kViewDataOnly, 130 + 15 * 8); // 8 MPs a line
    ASSERT_EQ(frame.shape.mpsPerRow, 8);
    modes.ToggleNaming();
    EXPECT_EQ(Cell(0, 2).text, "Rx");
    EXPECT_EQ(Cell(1, 3).text, "9"); // second line starts at MP 9
    EXPECT_EQ(Cell(2, 2).kind, ContentKind::Empty);   // MP 1 has none

    frame.shape = ShapeForView(kViewDataDump, 800);
    modes.SelectView(kViewDataDump);
    GridCell hex = Cell(2, 1);
    ASSERT_EQ(hex.kind, ContentKind::Byte);
    EXPECT_EQ(hex.byte.text, "42"); // MP 1's 'B' in the secondary mode
    frame.position = 1;
    GridCell divider = Cell(18, 1); // slot 0: MP 1
    EXPECT_EQ(divider.tone, TextTone::Dim);
    EXPECT_EQ(divider.byte.text, "B");
}

TEST_F(Fixture, StatusLineForTheCurrentCell)
{
    frame.position = 8; // row 1 = MP 9
    const auto panels = StatusLine(frame, 3, 1, times);
    ASSERT_EQ(panels.size(), 4u);
    EXPECT_EQ(panels[0], "MP: 9");
    EXPECT_EQ(panels[1], "Tx: 09.12.2025 12:00:09,000000 ");
    EXPECT_EQ(panels[2], "Dx: 0 day(s)  00:00:01,000000 ");
    EXPECT_EQ(panels[3], "PE: 2  FE: 0  LE: 0");
    // A row past the end of an open recording is not a closed recording.
    EXPECT_EQ(StatusLine(frame, 3, 30, times), std::vector<std::string>{"No MP in this row"});
    frame.recordingOpen = false;
    frame.buffer = nullptr;
    EXPECT_EQ(StatusLine(frame, 3, 1, times), std::vector<std::string>{"No recording open"});
}
