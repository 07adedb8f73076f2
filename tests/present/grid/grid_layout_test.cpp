#include <gtest/gtest.h>

#include "present/grid/grid_layout.h"
#include "base/string_table.h"

using namespace kestrel;
using namespace kestrel::grid;

TEST(GridLayout, ShapesOfTheThreeViews)
{
    EXPECT_EQ(ShapeForView(kViewVertical, 1000), (ViewShape{1, 14, 1, 1, 30}));
    EXPECT_EQ(ShapeForView(kViewDataDump, 1000), (ViewShape{4, 35, 16, 2, 15}));
    // (1280 - 50 - 80) / 15 + 2 = 78 columns, 76 MPs per row.
    EXPECT_EQ(ShapeForView(kViewDataOnly, 1280), (ViewShape{3, 78, 76, 2, 15}));
    // Number modes need wider byte cells: the column count follows from them.
    EXPECT_EQ(ShapeForView(kViewDataOnly, 1280, 4), (ViewShape{3, 54, 52, 2, 22})); // (1150 / 22) + 2
    EXPECT_EQ(ShapeForView(kViewDataOnly, 1280, 6).byteWidth, 52);
    EXPECT_EQ(ShapeForView(kViewVertical, 1000, 6).byteWidth, 60);
    EXPECT_EQ(ShapeForView(kViewDataOnly, 144).columns, 2 + 0 + 1); // 14/15 = 0 -> clamped to one data column
    // View 2 does not exist: the vertical shape stands in.
    EXPECT_EQ(ShapeForView(2, 800).view, kViewVertical);
}

TEST(GridLayout, ColumnWidthsTheNarrowWindowAndDumpNumbers)
{
    const ViewShape v = ShapeForView(kViewVertical, 1000);
    int fixed = 0;
    for (int c = 0; c < 13; ++c)
        fixed += ColumnWidth(v, c, 1000, 3);
    EXPECT_EQ(fixed, 650);
    EXPECT_EQ(ColumnWidth(v, 13, 1000, 3), 1000 - 666);
    // Narrower than 666 px: the description width goes negative, the layout
    // still adds up (negative widths count as 0).
    EXPECT_EQ(ColumnWidth(v, 13, 600, 3), -66);
    EXPECT_EQ(TotalWidth(v, 600, 3), 650);
    EXPECT_EQ(ColumnLeft(v, 3, 600, 3), 330);
    // The dump's number columns follow the secondary mode.
    const ViewShape d = ShapeForView(kViewDataDump, 800);
    EXPECT_LT(ColumnWidth(d, 2, 800, 3), ColumnWidth(d, 2, 800, 4));
    EXPECT_GE(ColumnWidth(d, 17, 800, 6), 8 * 7); // eight binary digits fit
}

struct SlotCase {
    int view, col, row;
    std::int64_t slot;
};

TEST(GridLayout, CellToSlot)
{
    const SlotCase cases[] = {
        {1, 0, 1, 1}, {1, 13, 1, 1}, {1, 5, 7, 7},
        // data-only: two grid rows per line, column c >= 3 adds c - 2
        {3, 0, 1, 1}, {3, 1, 2, 1}, {3, 2, 1, 1}, {3, 3, 1, 2}, {3, 77, 2, 76}, {3, 2, 3, 77}, {3, 3, 4, 78},
        // dump: 16 MPs a line; column 18 reaches one slot back
        {4, 2, 1, 1}, {4, 3, 1, 2}, {4, 17, 1, 16}, {4, 18, 1, 0}, {4, 19, 1, 1}, {4, 34, 2, 16}, {4, 18, 3, 16},
        {4, 19, 3, 17},
    };
    for (const SlotCase &c : cases) {
        const ViewShape s = ShapeForView(c.view, 1280);
        EXPECT_EQ(CellSlot(s, c.col, c.row), c.slot) << "view " << c.view << " col " << c.col << " row " << c.row;
    }
}

TEST(GridLayout, RolesAndCircuitRows)
{
    const ViewShape v = ShapeForView(kViewVertical, 1000);
    EXPECT_EQ(RoleOf(v, 0, 1).role, CellRole::MarkTrigger);
    EXPECT_EQ(RoleOf(v, 10, 1).signal, Signal::M3);
    EXPECT_EQ(RoleOf(v, 12, 1).role, CellRole::ErrorsD2);
    EXPECT_EQ(RoleOf(v, 3, 0).role, CellRole::Empty); // header row is not a data cell

    const ViewShape d = ShapeForView(kViewDataDump, 1000);
    EXPECT_EQ(RoleOf(d, 0, 1).role, CellRole::LineName);
    EXPECT_TRUE(RoleOf(d, 0, 2).d2);
    EXPECT_EQ(RoleOf(d, 18, 2).role, CellRole::DumpSeparator);
    EXPECT_EQ(RoleOf(d, 19, 2).role, CellRole::DataD2);
}

TEST(GridLayout, PagesAndRows)
{
    const ViewShape v = ShapeForView(kViewVertical, 1000);
    const ViewShape d = ShapeForView(kViewDataDump, 1000);
    EXPECT_EQ(DataRowsFor(v, 16 + 10 * 16 + 5), 10);
    EXPECT_EQ(DataRowsFor(d, 16 + 11 * 16), 10); // whole lines only
    EXPECT_EQ(DataRowsFor(d, 3), 2);             // at least one line
    EXPECT_EQ(PageMps(d, 10), 80);
    EXPECT_EQ(StepMps(d), 16);
}

TEST(GridLayout, HeadersInBothLanguagesAndNamings)
{
    const ViewShape v = ShapeForView(kViewVertical, 1000);
    EXPECT_EQ(HeaderText(v, 0, 0, 0, kLangGerman), "Marke/Trigger");
    EXPECT_EQ(HeaderText(v, 2, 0, 1, kLangEnglish), "Date/Time-Relative");
    EXPECT_EQ(HeaderText(v, 2, 0, 2, kLangGerman), "Datum/Zeit-Delta");
    EXPECT_EQ(HeaderText(v, 14, 0, 0, kLangEnglish), "14Err");
    EXPECT_EQ(HeaderText(v, 5, kNamingCircuit, 0, kLangGerman), "S1");
    EXPECT_EQ(HeaderText(v, 12, kNamingPin, 0, kLangGerman), "RxErr");
    const ViewShape o = ShapeForView(kViewDataOnly, 1280);
    EXPECT_EQ(HeaderText(o, 11, 0, 0, kLangGerman), "1"); // k = 10
    EXPECT_EQ(HeaderText(o, 6, 0, 0, kLangGerman), "+");  // k = 5
    EXPECT_EQ(HeaderText(o, 3, 0, 0, kLangGerman), "-");
    const ViewShape d = ShapeForView(kViewDataDump, 1280);
    EXPECT_EQ(HeaderText(d, 17, 0, 0, kLangEnglish), "+F");
    EXPECT_EQ(HeaderText(d, 34, 0, 0, kLangEnglish), "F");
}
