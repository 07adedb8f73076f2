// kestrel-cli report end to end: a PDF without a display, and clear errors
// with the usage exit code for what the user got wrong.

#include <gtest/gtest.h>

#include <fstream>

#include "support/recording_builder.h"
#include "support/run_cli.h"
#include "support/temp_dir.h"

namespace kestrel {
namespace {

const std::string kCli = KESTREL_CLI_PATH;

class CliReport : public ::testing::Test {
protected:
    void SetUp() override { test::RecordingBuilder::writeNumbered(rec, 200); }
    test::CliRun Run(const std::string &args) { return test::RunCapture(kCli, "report " + args, "DISPLAY= WAYLAND_DISPLAY= QT_QPA_PLATFORM=xcb"); }

    test::TempDir dir;
    std::string rec = dir.file("line.ksr");
    std::string pdf = dir.file("out.pdf");
};

TEST_F(CliReport, WritesTheReportWithoutADisplay)
{
    const std::string env = dir.file("site.kef");
    {
        std::ofstream f(env);
        f << "[General]\nTitle=Night shift\nAuthor=Sam\n[ComA]\nCustomBaudRate=9600\n";
    }
    const auto run = Run(rec + " -o " + pdf + " --env " + env + " --range 10:150 --body dump --char hex --language de "
                         "--paper letter --landscape");
    ASSERT_EQ(run.code, 0) << run.out;
    const auto text = test::RunCapture("/usr/bin/pdftotext", "-layout " + pdf + " -").out;
    EXPECT_NE(text.find("Night shift"), std::string::npos) << text;
    EXPECT_NE(text.find("MP 10 bis 150"), std::string::npos) << text;
    EXPECT_NE(text.find("9600 Bd"), std::string::npos) << text;
    EXPECT_NE(test::RunCapture("/usr/bin/pdfinfo", pdf).out.find("792 x 612"), std::string::npos);
}

TEST_F(CliReport, BadInputEndsWithAClearMessage)
{
    {
        std::ofstream f(dir.file("notes.txt"));
        f << "keep me";
    }
    const struct {
        std::string args;
        int code;
        std::string message;
    } cases[] = {
        {dir.file("missing.ksr") + " -o " + pdf, 3, "cannot open"},
        {rec + " -o " + pdf + " --range 150:10", 2, "range"},
        {rec + " -o " + pdf + " --range 0:200", 2, "The range lies outside the recording: MP 0:200 (0:199)"},
        {rec + " -o " + pdf + " --body sideways", 2, "--body"},
        {rec + " -o " + pdf + " --paper a3", 2, "--paper"},
        {rec + " -o " + pdf + " --env " + dir.file("none.kef"), 3, "Cannot read the environment"},
        {rec + " -o " + dir.file("notes.txt"), 2, "not a PDF file and is not replaced"},
        {rec + " -o " + rec + " --force", 2, "onto the recording itself"},
        {rec, 2, "-o"},
    };
    for (const auto &c : cases) {
        const auto run = Run(c.args);
        EXPECT_EQ(run.code, c.code) << c.args << "\n" << run.out;
        EXPECT_NE(run.out.find(c.message), std::string::npos) << c.args << "\n" << run.out;
    }
    EXPECT_FALSE(std::filesystem::exists(pdf));
    std::ifstream notes(dir.file("notes.txt"));
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(notes), {}), "keep me");
    EXPECT_EQ(std::filesystem::file_size(rec), 200u * 80u);

    const auto forced = Run(rec + " -o " + dir.file("notes.txt") + " --force");
    EXPECT_EQ(forced.code, 0) << forced.out;
}

} // namespace
} // namespace kestrel
