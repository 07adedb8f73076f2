#pragma once
// The text lines of a report: the header from the environment, the details
// of the recording and the summary of the range, in the request's language.

#include <vector>

#include "record/record_summary.h"
#include "report/range_facts.h"
#include "report/report_layout.h"
#include "report/report_request.h"

namespace kestrel::report {

// What the details need of the whole recording besides the range's facts.
struct RecordingFacts {
    std::uint64_t fileSize = 0, mpCount = 0;
    MpRecord first, last; // the recording's first and last MP
};

[[nodiscard]] std::vector<TextLine> HeaderLines(const ReportRequest &request);
[[nodiscard]] std::vector<TextLine> DetailLines(const ReportRequest &request, const RecordingFacts &recording,
                                                const RangeFacts &range);
[[nodiscard]] std::vector<TextLine> SummaryLines(const ReportRequest &request, const RangeFacts &range);

} // namespace kestrel::report
