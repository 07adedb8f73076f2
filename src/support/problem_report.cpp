#include "support/problem_report.h"

#include <QSysInfo>
#include <QtGlobal>
#include <system_error>

#include "base/build_info.h"
#include "base/string_table.h"
#include "config/ini_file.h"
#include "support/support_log.h"
#include "support/support_texts.h"

namespace kestrel {

namespace {

// One error report in the text: its time and title on one line, its text indented below.
void AppendError(std::string &out, const ShownError &e)
{
    out += "- " + e.when + "  " + e.title + "\n";
    std::string text = e.text;
    constexpr std::size_t kLongest = 800; // a detailed report is long; its head says what matters
    if (text.size() > kLongest)
        text = text.substr(0, kLongest) + " ...";
    std::size_t start = 0;
    while (start <= text.size()) {
        const std::size_t end = text.find('\n', start);
        const std::string line = text.substr(start, end == std::string::npos ? std::string::npos : end - start);
        if (!line.empty())
            out += "    " + line + "\n";
        if (end == std::string::npos)
            break;
        start = end + 1;
    }
}

// A plain mail address: something@host, no blanks, no second '@', nothing a URL would cut at.
bool LooksLikeMailAddress(const std::string &a)
{
    const std::size_t at = a.find('@');
    return at != std::string::npos && at > 0 && at + 1 < a.size() && a.find('@', at + 1) == std::string::npos &&
           a.find_first_of(" \t\r\n?&#/,;:<>\"") == std::string::npos;
}

QByteArray Encoded(const std::string &text)
{
    return QUrl::toPercentEncoding(QString::fromStdString(text));
}

} // namespace

ProblemReportFacts CollectReportFacts(std::vector<ReportPort> ports, const ErrorHistory &history)
{
    ProblemReportFacts f;
    f.version = BuildVersion();
    f.buildDate = BuildDate();
    f.qtVersion = qVersion();
    f.system = (QSysInfo::prettyProductName() + ", " + QSysInfo::kernelType() + " " + QSysInfo::kernelVersion() +
                ", " + QSysInfo::currentCpuArchitecture())
                   .toStdString();
    f.ports = std::move(ports);
    f.errors = history.entries();
    return f;
}

std::string ComposeProblemReport(const ProblemReportFacts &f)
{
    using namespace support_txt;
    std::string out = Str(kDescribe) + "\n\n\n\n";
    out += "---- " + Str(kReportHeading) + " ----\n";
    out += Str(kVersion) + " " + f.version + "\n";
    out += Str(kBuilt) + " " + f.buildDate + "\n";
    out += Str(kQt) + " " + f.qtVersion + "\n";
    out += Str(kSystem) + " " + f.system + "\n\n";
    out += Str(kPorts) + "\n";
    for (const ReportPort &p : f.ports)
        out += "- " + p.name + ": " + p.device + ", " + p.settings + "\n";
    if (f.ports.empty())
        out += "- " + Str(kNone) + "\n";
    out += "\n" + Str(kLastErrors) + "\n";
    for (const ShownError &e : f.errors)
        AppendError(out, e);
    if (f.errors.empty())
        out += "- " + Str(kNone) + "\n";
    return out;
}

MailtoLink ReportMailto(const std::string &recipient, const std::string &subject, const std::string &body)
{
    if (!LooksLikeMailAddress(recipient))
        return {QUrl(), Result::Fail(support_txt::kBadRecipient, recipient)};
    // Mail programs expect CR LF line breaks in a mailto body.
    std::string crlf;
    crlf.reserve(body.size() + body.size() / 16);
    for (std::size_t i = 0; i < body.size(); ++i) {
        if (body[i] == '\n' && (i == 0 || body[i - 1] != '\r'))
            crlf += '\r';
        crlf += body[i];
    }
    const QByteArray encoded = "mailto:" + QUrl::toPercentEncoding(QString::fromStdString(recipient), "@") +
                               "?subject=" + Encoded(subject) + "&body=" + Encoded(crlf);
    return {QUrl::fromEncoded(encoded, QUrl::StrictMode), Result::Ok()};
}

SaveReportOutcome SaveReportText(const std::filesystem::path &path, const std::string &text, Prompter &prompter)
{
    std::error_code ec;
    const bool exists = std::filesystem::exists(path, ec);
    if (exists && std::filesystem::is_directory(path, ec))
        return {false, false, Result::Fail(support_txt::kFileNotWritten, path.string())};
    if (exists && std::filesystem::file_size(path, ec) > 0 && !ec) {
        const int answer = prompter.ShowMessage(Str(204), StrArg(support_txt::kReplaceFile, path.string()),
                                                Buttons::YesNoDefaultNo, Icon::Warning);
        if (answer != MsgResult::Yes)
            return {false, true, Result::Ok()};
    }
    // Written beside it and moved over it: a full disk leaves the old file as it was.
    if (const Result written = WriteFileAtomic(path, text); !written)
        return {false, false, Result::Fail(support_txt::kFileNotWritten, written.detail)};
    qCInfo(lcSupport) << "problem report saved to" << QString::fromStdString(path.string());
    return {true, false, Result::Ok()};
}

} // namespace kestrel
