// The report's layout against a line-by-line reference: lines and body units
// are placed one at a time, and a unit that does not fit goes to the next page.

#include <gtest/gtest.h>

#include <random>

#include "report/report_layout.h"

namespace kestrel::report {
namespace {

struct Reference {
    int pages = 0;
    std::vector<Placed> before, after;
    std::vector<Placed> units; // each body unit's top
};

Reference PlaceOneByOne(double pageHeight, const std::vector<TextLine> &before, const BodyUnits &body,
                        const std::vector<TextLine> &after)
{
    Reference ref;
    Placed at;
    auto text = [&](const std::vector<TextLine> &lines, std::vector<Placed> &out) {
        for (std::size_t i = 0; i < lines.size(); ++i) {
            if (at.y > 0 && at.y + KeepTogetherHeight(lines, i, pageHeight) > pageHeight)
                at = {at.page + 1, 0};
            out.push_back(at);
            at.y += LineHeight(lines[i].kind);
        }
    };
    text(before, ref.before);
    int headOnPage = -1;
    for (std::uint64_t u = 0; u < body.count; ++u) {
        const double head = headOnPage == at.page ? 0 : body.headHeight;
        if (at.y + head + body.unitHeight > pageHeight + 1e-9) {
            const bool headingAbove = u == 0 && !before.empty() && before.back().kind == LineKind::Heading &&
                                      ref.before.back().y > 0;
            at = {at.page + 1, 0};
            if (headingAbove) { // the body's heading goes over with it
                ref.before.back() = at;
                at.y = LineHeight(LineKind::Heading);
            }
        }
        if (headOnPage != at.page) {
            at.y += body.headHeight;
            headOnPage = at.page;
        }
        ref.units.push_back(at);
        at.y += body.unitHeight;
    }
    text(after, ref.after);
    ref.pages = at.page + 1;
    return ref;
}

TEST(ReportLayout, AgreesWithPlacingEveryLineAndUnitInTurn)
{
    std::mt19937 rng(7);
    const LineKind kinds[] = {LineKind::Title, LineKind::Heading, LineKind::Field, LineKind::Plain};
    for (int round = 0; round < 400; ++round) {
        const double pageHeight = 150 + rng() % 900;
        std::vector<TextLine> before(rng() % 40), after(rng() % 12);
        for (auto &l : before)
            l.kind = kinds[rng() % 4];
        for (auto &l : after)
            l.kind = kinds[rng() % 4];
        BodyUnits body;
        body.count = rng() % 3 == 0 ? 0 : rng() % 700;
        body.headHeight = 8 + rng() % 20;
        body.unitHeight = round % 2 ? 16 : 32 * (0.5 + (rng() % 100) / 100.0);
        ReportLayout layout;
        ASSERT_TRUE(layout.Plan(pageHeight, before, body, after));
        const Reference ref = PlaceOneByOne(pageHeight, before, body, after);
        ASSERT_EQ(layout.pageCount(), ref.pages) << "round " << round;
        for (std::size_t i = 0; i < before.size(); ++i) {
            ASSERT_EQ(layout.beforePlaces()[i].page, ref.before[i].page) << "round " << round;
            ASSERT_NEAR(layout.beforePlaces()[i].y, ref.before[i].y, 1e-6) << "round " << round;
        }
        for (std::size_t i = 0; i < after.size(); ++i) {
            ASSERT_EQ(layout.afterPlaces()[i].page, ref.after[i].page) << "round " << round << " line " << i;
            ASSERT_NEAR(layout.afterPlaces()[i].y, ref.after[i].y, 1e-6) << "round " << round;
        }
        // Every unit once, on the page the reference puts it, never past the page's foot.
        std::uint64_t next = 0;
        for (int page = 0; page < layout.pageCount(); ++page) {
            const auto slice = layout.BodyOnPage(page);
            if (slice.empty())
                continue;
            ASSERT_EQ(slice.first, next) << "round " << round;
            for (std::uint64_t u = slice.first; u < slice.end; ++u)
                ASSERT_EQ(ref.units[u].page, page) << "round " << round << " unit " << u;
            ASSERT_LE(slice.y + body.headHeight + double(slice.end - slice.first) * body.unitHeight,
                      pageHeight + 1e-6);
            next = slice.end;
        }
        ASSERT_EQ(next, body.count) << "round " << round;
    }
}

TEST(ReportLayout, RefusesAPageThatHoldsNoUnit)
{
    ReportLayout layout;
    EXPECT_FALSE(layout.Plan(30, {}, BodyUnits{5, 20, 16}, {}));
}

TEST(ReportLayout, AShortSectionGoesOverWholeALongOneKeepsItsHeadingWithALine)
{
    const auto section = [](int fields) {
        std::vector<TextLine> lines(1 + fields);
        lines[0].kind = LineKind::Heading;
        for (int i = 1; i <= fields; ++i)
            lines[i].kind = LineKind::Field;
        return lines;
    };
    const double heading = LineHeight(LineKind::Heading), field = LineHeight(LineKind::Field);
    // After the body's one unit there is room for the heading and one field only.
    const double page = 100 + heading + 4 * field;
    ReportLayout layout;
    ASSERT_TRUE(layout.Plan(page, {}, BodyUnits{1, page - heading - field, 0}, section(4)));
    for (const Placed &p : layout.afterPlaces())
        EXPECT_EQ(p.page, 1); // never a heading and one field at the foot, the rest overleaf
    // A section longer than a page keeps only its heading with the next line.
    ASSERT_TRUE(layout.Plan(page, {}, BodyUnits{1, page - heading - field, 0}, section(12)));
    EXPECT_EQ(layout.afterPlaces()[0].page, 0);
    EXPECT_EQ(layout.afterPlaces()[1].page, 0);
    EXPECT_EQ(layout.afterPlaces()[2].page, 1);
}

TEST(ReportLayout, PapersAreTheirSizeLessTheMargins)
{
    // 210 x 297 mm and 8.5 x 11 in at 96 units per inch, 15 mm margins on each side.
    const double margins = 2 * 15 / 25.4 * 96;
    EXPECT_NEAR(PaperBox(PaperSize::A4, false).width, 793.7 - margins, 0.1);
    EXPECT_NEAR(PaperBox(PaperSize::A4, true).width, 1122.5 - margins, 0.1);
    EXPECT_NEAR(PaperBox(PaperSize::Letter, false).height, 1056 - margins, 0.1);
    EXPECT_NEAR(ContentBox(PaperSize::Letter, false, true).height, 1056 - margins - kFooterHeight, 0.1);
}

} // namespace
} // namespace kestrel::report
