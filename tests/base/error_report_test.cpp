#include <gtest/gtest.h>

#include "base/error_report.h"
#include "base/string_table.h"
#include "support/scripted_prompter.h"

using namespace kestrel;

namespace {
struct English {
    English() { SetGlobalLang(kLangEnglish); }
    ~English() { SetGlobalLang(kLangGerman); }
};
} // namespace

TEST(ButtonResult, FollowsTheButtonSetTable)
{
    EXPECT_EQ(ButtonResult(Buttons::Ok, 2), MsgResult::Ok);
    EXPECT_EQ(ButtonResult(Buttons::YesNoCancel, 1), MsgResult::Yes);
    EXPECT_EQ(ButtonResult(Buttons::YesNoCancel, 2), MsgResult::No);
    EXPECT_EQ(ButtonResult(Buttons::YesNoCancel, 3), MsgResult::Cancel);
    EXPECT_EQ(ButtonResult(Buttons::YesNo, 1), MsgResult::Yes);
    EXPECT_EQ(ButtonResult(Buttons::YesNo, 3), MsgResult::No);
    EXPECT_EQ(ButtonResult(Buttons::YesNo, 2), MsgResult::None); // btn2 is hidden in a yes/no box
    EXPECT_EQ(ButtonResult(1, 2), MsgResult::UnlistedOk);
    EXPECT_EQ(ButtonResult(99, 2), -1);
}

TEST(ErrorReport, OrdinaryReportShowsMessageDetailAndPlace)
{
    English en;
    const auto r = BuildErrorReport(3000, 3001, {"MainForm", 812}, "\n\n/tmp/x.ksr");
    EXPECT_EQ(r.title, "File operation");
    EXPECT_EQ(r.text.rfind("Error opening record file!\n\n/tmp/x.ksr", 0), 0u) << r.text;
    EXPECT_NE(r.text.find("FILE\t: MainForm\nLINE\t: 812"), std::string::npos) << r.text;
}

TEST(ErrorReport, MissingTitleFallsBack)
{
    English en;
    EXPECT_EQ(BuildErrorReport(0, 3002, {}, "").title, "No title available");
    SetGlobalLang(kLangGerman);
    EXPECT_EQ(BuildErrorReport(-1, 3002, {}, "").title, "Kein Titel verfügbar");
}

TEST(ErrorReport, DetailedReportListsLabelledFieldsInOrder)
{
    English en;
    const auto r = BuildErrorReport(206, 0, {"ReportForm", 42}, "division by zero", true);
    EXPECT_EQ(r.title, "FATAL application error occurred");
    const char *labels[] = {"Application error message\n", "ERROR:\t: division by zero\n", "TITLE\t: Kestrel\n",
                            "PROG\t: ", "FILE\t: ReportForm\n", "LINE\t: 42\n", "An unexpected error occurred!!!\n",
                            "Please report that problem to Quorv!!!\n"};
    std::size_t pos = 0;
    for (const char *label : labels) {
        const auto at = r.text.find(label, pos);
        ASSERT_NE(at, std::string::npos) << label << " in\n" << r.text;
        pos = at;
    }
}

TEST(ErrorReport, ShownWithOkAndErrorIconBetweenTopMostHandling)
{
    test::ScriptedPrompter p;
    ReportError(p, 3000, 3003, {"MainForm", 1}, "");
    ASSERT_EQ(p.asked.size(), 1u);
    EXPECT_EQ(p.asked[0].buttons, Buttons::Ok);
    EXPECT_EQ(p.asked[0].icon, Icon::Error);
    EXPECT_EQ(p.asked[0].title, "Dateioperation");
    EXPECT_EQ(p.normalized, 1);
    EXPECT_EQ(p.restored, 1);
}
