#include "report/report_layout.h"

#include <algorithm>
#include <cmath>

namespace kestrel::report {

namespace {
constexpr double kMmPerInch = 25.4;
double Units(double mm) { return mm / kMmPerInch * kUnitsPerInch; }
} // namespace

PageBox PaperBox(PaperSize paper, bool landscape)
{
    PageBox box = paper == PaperSize::Letter ? PageBox{8.5 * kUnitsPerInch, 11.0 * kUnitsPerInch}
                                             : PageBox{Units(210), Units(297)};
    if (landscape)
        std::swap(box.width, box.height);
    box.width -= 2 * Units(kMarginMm);
    box.height -= 2 * Units(kMarginMm);
    return box;
}

PageBox ContentBox(PaperSize paper, bool landscape, bool withFooter)
{
    PageBox box = PaperBox(paper, landscape);
    if (withFooter)
        box.height -= kFooterHeight;
    return box;
}

double LineHeight(LineKind kind)
{
    switch (kind) {
    case LineKind::Title: return 30;
    case LineKind::Heading: return 22 + kSectionGap; // the gap above belongs to the heading
    case LineKind::Field:
    case LineKind::Plain: return 16;
    }
    return 16;
}

double KeepTogetherHeight(const std::vector<TextLine> &lines, std::size_t i, double pageHeight)
{
    double h = LineHeight(lines[i].kind);
    if (lines[i].kind != LineKind::Heading || i + 1 >= lines.size())
        return h;
    const double withNext = h + LineHeight(lines[i + 1].kind);
    for (std::size_t j = i + 1; j < lines.size() && lines[j].kind != LineKind::Heading && lines[j].kind != LineKind::Title; ++j)
        h += LineHeight(lines[j].kind);
    return h <= pageHeight ? h : withNext;
}

Placed ReportLayout::PlaceLines(Placed at, const std::vector<TextLine> &lines, std::vector<Placed> &out) const
{
    out.clear();
    for (std::size_t i = 0; i < lines.size(); ++i) {
        // A heading does not stand alone at the foot of a page, nor split a short section.
        if (at.y > 0 && at.y + KeepTogetherHeight(lines, i, pageHeight_) > pageHeight_)
            at = {at.page + 1, 0};
        out.push_back(at);
        at.y += LineHeight(lines[i].kind);
    }
    return at;
}

bool ReportLayout::Plan(double pageHeight, const std::vector<TextLine> &before, const BodyUnits &body,
                        const std::vector<TextLine> &after)
{
    pageHeight_ = pageHeight;
    body_ = body;
    Placed at = PlaceLines({0, 0}, before, before_);
    unitsFirstPage_ = unitsPerPage_ = 0;
    if (body.count > 0) {
        const auto fit = [&](double room) {
            const double units = std::floor((room - body.headHeight) / body.unitHeight + 1e-9);
            return units > 0 ? static_cast<std::uint64_t>(units) : std::uint64_t{0};
        };
        unitsPerPage_ = fit(pageHeight);
        if (unitsPerPage_ == 0)
            return false;
        unitsFirstPage_ = fit(pageHeight - at.y);
        if (unitsFirstPage_ == 0) {
            // A heading right above the body goes over with it.
            if (!before.empty() && before.back().kind == LineKind::Heading && before_.back().y > 0) {
                before_.back() = {at.page + 1, 0};
                at = {at.page + 1, LineHeight(LineKind::Heading)};
            } else {
                at = {at.page + 1, 0};
            }
        }
        unitsFirstPage_ = std::min(fit(pageHeight - at.y), body.count);
        bodyFirstPage_ = at.page;
        bodyFirstY_ = at.y;
        const std::uint64_t rest = body.count - unitsFirstPage_;
        if (rest == 0) {
            at.y += body.headHeight + static_cast<double>(unitsFirstPage_) * body.unitHeight;
        } else {
            const std::uint64_t more = (rest + unitsPerPage_ - 1) / unitsPerPage_;
            const std::uint64_t onLast = rest - (more - 1) * unitsPerPage_;
            at = {at.page + static_cast<int>(more), body.headHeight + static_cast<double>(onLast) * body.unitHeight};
        }
    }
    at = PlaceLines(at, after, after_);
    pages_ = at.page + 1;
    return true;
}

ReportLayout::BodySlice ReportLayout::BodyOnPage(int page) const
{
    BodySlice s;
    if (body_.count == 0 || page < bodyFirstPage_)
        return s;
    if (page == bodyFirstPage_) {
        s.end = unitsFirstPage_;
        s.y = bodyFirstY_;
        return s;
    }
    s.first = unitsFirstPage_ + static_cast<std::uint64_t>(page - bodyFirstPage_ - 1) * unitsPerPage_;
    s.end = std::min(body_.count, s.first + unitsPerPage_);
    if (s.first >= body_.count)
        s.first = s.end = body_.count;
    return s;
}

} // namespace kestrel::report
