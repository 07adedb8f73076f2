// The problem report: its text names the version, the ports and the last errors
// the program showed (the user saw the same boxes as ever); the mail link carries
// the text unchanged; saving never replaces a file that holds something without a yes.

#include <gtest/gtest.h>

#include <QUrlQuery>

#include "base/build_info.h"
#include "base/string_table.h"
#include "support/error_history.h"
#include "support/problem_report.h"
#include "support/scripted_prompter.h"
#include "support/support_texts.h"
#include "support/temp_dir.h"

using namespace kestrel;

namespace {

bool Has(const std::string &text, const std::string &part) { return text.find(part) != std::string::npos; }

} // namespace

TEST(ProblemReport, NamesVersionPortsAndTheLastErrorsShown)
{
    SetGlobalLang(kLangEnglish);
    test::ScriptedPrompter box(MsgResult::Yes);
    ErrorHistory history(3);
    RememberingPrompter prompter(box, history);
    for (int i = 1; i <= 5; ++i)
        prompter.ShowMessage("Port error", "Port /dev/ttyUSB" + std::to_string(i) + " was lost.", Buttons::Ok, Icon::Error);
    EXPECT_EQ(prompter.ShowMessage("Note", "Recording saved.", Buttons::Ok, Icon::Information), MsgResult::Yes);
    prompter.ShowMessage("Confirm", "Replace the recording?", Buttons::YesNo, Icon::Confirmation);
    prompter.ShowMessage("Warning", "The disk is almost full.", Buttons::Ok, Icon::Warning);

    // What the user saw is what the box was asked, every one of them.
    ASSERT_EQ(box.asked.size(), 8u);
    EXPECT_EQ(box.asked[0].text, "Port /dev/ttyUSB1 was lost.");
    EXPECT_EQ(box.asked[6].buttons, Buttons::YesNo);

    const std::string text = ComposeProblemReport(CollectReportFacts(
        {{"Port A", "/dev/ttyUSB0", "19200 8 E 1"}, {"Port B", "/dev/serial/by-id/usb-FTDI-if01", "19200 8 E 1"}},
        history));
    EXPECT_TRUE(Has(text, BuildVersion())) << text;
    EXPECT_TRUE(Has(text, BuildDate()));
    EXPECT_TRUE(Has(text, qVersion()));
    EXPECT_TRUE(Has(text, "Port A: /dev/ttyUSB0, 19200 8 E 1"));
    EXPECT_TRUE(Has(text, "Port B: /dev/serial/by-id/usb-FTDI-if01, 19200 8 E 1"));
    // The ring keeps the newest three errors and warnings; questions and notes are no errors.
    EXPECT_FALSE(Has(text, "ttyUSB3 was lost")) << text;
    EXPECT_TRUE(Has(text, "ttyUSB4 was lost"));
    EXPECT_TRUE(Has(text, "ttyUSB5 was lost"));
    EXPECT_TRUE(Has(text, "The disk is almost full."));
    EXPECT_FALSE(Has(text, "Recording saved."));
    EXPECT_FALSE(Has(text, "Replace the recording?"));
    EXPECT_LT(text.find("ttyUSB4"), text.find("almost full")) << "oldest first";
}

TEST(ProblemReport, MailLinkCarriesTheTextUnchanged)
{
    const std::string body = "Grid froze at 03:12 & the trigger #2 fired twice (a+b=c?)\nÜberlauf auf Port B\n";
    const MailtoLink link = ReportMailto("support@kestrel.example.org", "Kestrel problem report", body);
    ASSERT_TRUE(link.problem.ok());
    EXPECT_EQ(link.url.scheme(), "mailto");
    EXPECT_EQ(link.url.path(), "support@kestrel.example.org");
    const QUrlQuery query(link.url);
    EXPECT_EQ(query.queryItemValue("subject", QUrl::FullyDecoded), "Kestrel problem report");
    QString expected = QString::fromStdString(body);
    expected.replace("\n", "\r\n");
    EXPECT_EQ(query.queryItemValue("body", QUrl::FullyDecoded), expected);

    for (const char *bad : {"", "support", "a@b@c", "support@kestrel.example.org?cc=x@y.z", "x y@z"})
        EXPECT_EQ(ReportMailto(bad, "s", "b").problem.code, support_txt::kBadRecipient) << bad;
}

TEST(ProblemReport, SavingReplacesAFileThatHoldsSomethingOnlyAfterYes)
{
    SetGlobalLang(kLangEnglish);
    test::TempDir dir;
    const std::string foreign = dir.file("notes.txt");
    {
        std::ofstream(foreign) << "my own notes";
    }
    test::ScriptedPrompter no(MsgResult::No);
    SaveReportOutcome out = SaveReportText(foreign, "the report", no);
    EXPECT_FALSE(out.saved);
    EXPECT_TRUE(out.declined);
    ASSERT_EQ(no.asked.size(), 1u);
    EXPECT_TRUE(Has(no.asked[0].text, foreign));
    EXPECT_EQ(no.asked[0].buttons, Buttons::YesNoDefaultNo);
    EXPECT_EQ(test::ReadWholeFile(foreign), "my own notes");

    test::ScriptedPrompter yes(MsgResult::Yes);
    out = SaveReportText(foreign, "the report", yes);
    EXPECT_TRUE(out.saved);
    EXPECT_EQ(test::ReadWholeFile(foreign), "the report");

    // An empty file and a new one are written without a question.
    const std::string empty = dir.file("empty.txt");
    std::ofstream{empty}.close();
    test::ScriptedPrompter silent(MsgResult::No);
    EXPECT_TRUE(SaveReportText(empty, "one", silent).saved);
    EXPECT_TRUE(SaveReportText(dir.file("new.txt"), "two", silent).saved);
    EXPECT_TRUE(silent.asked.empty());
    EXPECT_EQ(test::ReadWholeFile(empty), "one");

    // A folder, or a folder that is not there, is a clear failure.
    for (const std::string &path : {dir.path().string(), dir.file("missing/report.txt")}) {
        out = SaveReportText(path, "x", yes);
        EXPECT_FALSE(out.saved) << path;
        EXPECT_EQ(out.problem.code, support_txt::kFileNotWritten) << path;
    }
}
