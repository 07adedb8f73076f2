#pragma once
// Pixel-free layout of a report: the page's content box for a paper and
// orientation, the text lines before and after the body, and the body as a
// run of equal units (a grid line: one row in the vertical view, the D1 and
// D2 rows in the data views) that is never cut across pages. Where every
// line and unit lands, and so the page count, follows without painting and
// without keeping anything per page: a long body is arithmetic.
// Lengths are in units of 1/96 inch (the grid's pixels at 96 dpi).

#include <cstdint>
#include <string>
#include <vector>

#include "report/report_request.h"

namespace kestrel::report {

inline constexpr double kUnitsPerInch = 96.0;
inline constexpr double kMarginMm = 15.0;
inline constexpr double kFooterHeight = 22.0; // below the content box, when the footer is on
inline constexpr double kSectionGap = 10.0;

struct PageBox {
    double width = 0, height = 0;
};

// The paper in units, without margins.
[[nodiscard]] PageBox PaperBox(PaperSize paper, bool landscape);
// What the header, details, body and summary may fill: the paper without
// margins and, with a footer, without the footer's band.
[[nodiscard]] PageBox ContentBox(PaperSize paper, bool landscape, bool withFooter);

enum class LineKind { Title, Heading, Field, Plain };

struct TextLine {
    LineKind kind = LineKind::Field;
    std::string label; // Field: the label column; other kinds: the text
    std::string value; // Field: the value column
};

[[nodiscard]] double LineHeight(LineKind kind);
// The room line i needs at the foot of a page before it may stand there: its own
// height, or for a heading its whole section (up to the next heading or title)
// when that fits on a page, else the heading and the line after it.
[[nodiscard]] double KeepTogetherHeight(const std::vector<TextLine> &lines, std::size_t i, double pageHeight);

struct Placed {
    int page = 0; // 0-based
    double y = 0;
};

struct BodyUnits {
    std::uint64_t count = 0;   // units of the body (0: no body)
    double unitHeight = 16;    // one grid line
    double headHeight = 16;    // the column head row, repeated on every body page
};

class ReportLayout {
public:
    // False from Plan when not even one body unit fits an empty page.
    [[nodiscard]] bool Plan(double pageHeight, const std::vector<TextLine> &before, const BodyUnits &body,
                            const std::vector<TextLine> &after);

    [[nodiscard]] int pageCount() const { return pages_; }
    [[nodiscard]] const std::vector<Placed> &beforePlaces() const { return before_; }
    [[nodiscard]] const std::vector<Placed> &afterPlaces() const { return after_; }

    // Body units on a page: [first, end) and the y of the head row; empty when none.
    struct BodySlice {
        std::uint64_t first = 0, end = 0;
        double y = 0;
        [[nodiscard]] bool empty() const { return end <= first; }
    };
    [[nodiscard]] BodySlice BodyOnPage(int page) const;

private:
    Placed PlaceLines(Placed at, const std::vector<TextLine> &lines, std::vector<Placed> &out) const;

    double pageHeight_ = 0;
    BodyUnits body_;
    std::vector<Placed> before_, after_;
    int bodyFirstPage_ = 0;
    double bodyFirstY_ = 0;
    std::uint64_t unitsFirstPage_ = 0, unitsPerPage_ = 0;
    int pages_ = 0;
};

} // namespace kestrel::report
