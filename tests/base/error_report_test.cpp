#include <gtest/gtest.h>

#include "base/error_report.h"
#include "base/string_table.h"
#include "support/scripted_prompter.h"

using namespace kestrel;

TEST(ErrorReport, OrdinaryAndDetailedReportsInTheirLanguage)
{
    SetGlobalLang(kLangEnglish);
    auto r = BuildErrorReport(3000, 3001, {"MainForm", 812}, "\n\n/tmp/x.ksr");
    EXPECT_EQ(r.title, "File operation");
    EXPECT_EQ(r.text.rfind("Error opening record file!\n\n/tmp/x.ksr", 0), 0u) << r.text;
    EXPECT_NE(r.text.find("FILE\t: MainForm\nLINE\t: 812"), std::string::npos) << r.text;
    EXPECT_EQ(BuildErrorReport(0, 3002, {}, "").title, "No title available");

    // The fatal report lists its labelled fields in this order.
    r = BuildErrorReport(206, 0, {"ReportForm", 42}, "division by zero", true);
    EXPECT_EQ(r.title, "FATAL application error occurred");
    std::size_t pos = 0;
    for (const char *label : {"ERROR:\t: division by zero\n", "TITLE\t: Kestrel\n", "PROG\t: ", "FILE\t: ReportForm\n",
                              "LINE\t: 42\n", "Please report that problem to Quorv!!!\n"}) {
        pos = r.text.find(label, pos);
        ASSERT_NE(pos, std::string::npos) << label << " in\n" << r.text;
    }

    SetGlobalLang(kLangGerman);
    EXPECT_EQ(BuildErrorReport(-1, 3002, {}, "").title, "Kein Titel verfügbar");
    test::ScriptedPrompter p;
    ReportError(p, 3000, 3003, {"MainForm", 1}, "");
    ASSERT_EQ(p.asked.size(), 1u);
    EXPECT_EQ(p.asked[0].title, "Dateioperation");
    EXPECT_EQ(p.asked[0].buttons, Buttons::Ok);
    EXPECT_EQ(p.asked[0].icon, Icon::Error);
    EXPECT_EQ(p.normalized + p.restored, 2); // windows on top are lowered around it and raised again
}
