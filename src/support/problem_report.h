#pragma once
// The text of a problem report and the ways it leaves: as an e-mail the
// desktop's mail program opens (the user sends it there), or as a text file
// the user saves. Nothing is sent from here.

#include <QUrl>
#include <filesystem>
#include <string>
#include <vector>

#include "base/prompt.h"
#include "base/result.h"
#include "support/error_history.h"

namespace kestrel {

struct ReportPort {
    std::string name;     // "Port A"
    std::string device;   // "/dev/ttyUSB0", or what the window shows instead
    std::string settings; // "19200 8 N 1"
};

struct ProblemReportFacts {
    std::string version;
    std::string buildDate;
    std::string qtVersion;
    std::string system; // operating system, kernel, processor
    std::vector<ReportPort> ports;
    std::deque<ShownError> errors; // oldest first
};

// Version, build date and Qt of this program, the system it runs on, and the given ports and errors.
[[nodiscard]] ProblemReportFacts CollectReportFacts(std::vector<ReportPort> ports, const ErrorHistory &history);
// Plain text in the active language, with room at the top for the user's own words.
[[nodiscard]] std::string ComposeProblemReport(const ProblemReportFacts &facts);

// A mailto: address with the subject and the body (line breaks as CR LF); a recipient that
// is no mail address gives an empty URL and the reason.
struct MailtoLink {
    QUrl url;
    Result problem;
};
[[nodiscard]] MailtoLink ReportMailto(const std::string &recipient, const std::string &subject,
                                      const std::string &body);

// Writes the text to path. An existing file that is not empty is replaced only when the user
// says yes (the answer no gives declined); a file that cannot be written gives the reason.
struct SaveReportOutcome {
    bool saved = false;
    bool declined = false;
    Result problem;
};
[[nodiscard]] SaveReportOutcome SaveReportText(const std::filesystem::path &path, const std::string &text,
                                               Prompter &prompter);

} // namespace kestrel
