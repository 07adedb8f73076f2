// Reports of a crafted recording, read back from the PDF as text (pdftotext)
// and measured with pdfinfo: what the header, details and summary say, how
// many pages a known range takes, where each row lands, stopping, truncating
// and the output's safety.

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QImage>
#include <QPdfWriter>
#include <cstdio>
#include <fstream>
#include <regex>

#include "report/report_printer.h"
#include "report/report_texts.h"
#include "support/recording_builder.h"
#include "support/run_cli.h"
#include "support/temp_dir.h"

namespace kestrel::report {
namespace {

std::string Shell(const std::string &cmd) { return test::RunCapture("/bin/sh", "-c '" + cmd + "'", {}, false).out; }
std::string PdfText(const std::string &pdf, int page = 0)
{
    const std::string pages = page > 0 ? " -f " + std::to_string(page) + " -l " + std::to_string(page) : "";
    return Shell("pdftotext -layout" + pages + " " + pdf + " -");
}
int PdfPages(const std::string &pdf)
{
    std::smatch m;
    const std::string info = Shell("pdfinfo " + pdf);
    return std::regex_search(info, m, std::regex(R"(Pages:\s+(\d+))")) ? std::stoi(m[1]) : -1;
}
std::string PdfPaper(const std::string &pdf)
{
    std::smatch m;
    const std::string info = Shell("pdfinfo " + pdf);
    return std::regex_search(info, m, std::regex(R"(Page size:\s+(.*))")) ? m[1].str() : "";
}
std::string ReadAll(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

class ReportPdf : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        static int argc = 1;
        static char name[] = "test_report";
        static char *argv[] = {name, nullptr};
        static QGuiApplication app(argc, argv);
    }

    void SetUp() override
    {
        // 10 MPs: system marks, a trigger mark, characters on both circuits with
        // errors, two level changes of S1 and one of M3, and a busy second.
        test::RecordingBuilder b(45000.5, 0.001);
        b.d1('H').d1('i').both('A', 'B');
        b.last().peD1 = 1;
        b.last().feD2 = 1;
        b.level(0, 1).d2(0x0D);
        b.last().leD2 = 1;
        b.mark(1, 0, 4); // trigger 4 started
        b.level(0, 0).level(5, 1).gap(2.0).d1(0x0A).d2('z');
        b.d1('!');
        b.last().counts[0] = 50; // the recorder's counters, not the range's count
        b.last().counts[1] = 30;
        b.last().loadPeak = 42;
        b.last().quality = 97;
        b.write(rec);
    }

    ReportRequest Request() const
    {
        ReportRequest rq;
        rq.recording = rec;
        rq.last = 9;
        rq.lang = 10000;
        rq.header.title = "Pump station 3";
        rq.header.author = "A. Author";
        rq.header.company = "Waterworks Ltd";
        rq.header.customer = "City of Riverside";
        rq.header.description = {"Controller resets at night", "second line"};
        rq.header.ports = {{"A", "/dev/ttyUSB0", 19200, 8, 2, 1}};
        return rq;
    }

    test::TempDir dir;
    std::string rec = dir.file("line.ksr");
    std::string pdf = dir.file("out.pdf");
};

TEST_F(ReportPdf, ShowsHeaderDetailsBodyAndSummaryInEitherLanguage)
{
    auto written = WriteReportPdf(pdf, Request());
    ASSERT_TRUE(written.ok()) << written.result.code << " " << written.result.detail;
    EXPECT_EQ(written.value.pages, 1);
    std::string text = PdfText(pdf);
    for (const char *expected :
         {"Pump station 3", "A. Author", "Waterworks Ltd", "City of Riverside", "Controller resets at night",
          "second line", "line.ksr", "800 bytes", "MP 0 to 9", "/dev/ttyUSB0, 19200 Bd, 8 data bits, parity E, 1 stop",
          "42 %", "97 %", "T_4.0.start", "Summary", "Page 1 of 1"})
        EXPECT_NE(text.find(expected), std::string::npos) << expected << "\n" << text;
    EXPECT_TRUE(std::regex_search(text, std::regex(R"(Counters:\s+D1 50\s+D2 30)"))) << text;
    // Summary: 5 characters on D1 and 3 on D2, errors one of each kind, S1 up
    // and down, M3 up once; the first second holds all but the three after the gap.
    EXPECT_TRUE(std::regex_search(text, std::regex(R"(Characters:\s+D1 5\s+D2 3)"))) << text;
    EXPECT_TRUE(std::regex_search(text, std::regex(R"(Errors:\s+PE 1\s+FE 1\s+LE 1)"))) << text;
    EXPECT_TRUE(std::regex_search(text, std::regex(R"(Signal changes:\s+3\s+\(S1 2\s+M1 0\s+S2 0\s+M2 0\s+M5 0\s+M3 1\))")))
        << text;
    EXPECT_TRUE(std::regex_search(text, std::regex(R"(Busiest second:\s+\S+ 12:00:00\s+5 characters)"))) << text;

    ReportRequest german = Request();
    german.lang = 0;
    german.paper = PaperSize::Letter;
    german.landscape = true;
    ASSERT_TRUE(WriteReportPdf(pdf, german).ok());
    text = PdfText(pdf);
    for (const char *expected : {"Zusammenfassung", "Seite 1 von 1", "Marken und Trigger:", "Fehler:"})
        EXPECT_NE(text.find(expected), std::string::npos) << expected << "\n" << text;
    EXPECT_NE(PdfPaper(pdf).find("792 x 612"), std::string::npos) << PdfPaper(pdf);
}

TEST_F(ReportPdf, LongBodyFillsWholePagesAndNeverSplitsARow)
{
    test::RecordingBuilder::writeNumbered(rec, 1300);
    ReportRequest rq = Request();
    rq.withHeader = rq.withDetails = rq.withSummary = false;
    rq.landscape = true;
    // A4 landscape, body only: 40 rows of 16 units under the 16-unit head row per page.
    for (const auto &[last, pages] : {std::pair{599, 15}, std::pair{600, 16}, std::pair{1299, 33}}) {
        rq.last = static_cast<std::uint64_t>(last);
        auto written = WriteReportPdf(pdf, rq);
        ASSERT_TRUE(written.ok());
        EXPECT_EQ(written.value.pages, pages);
        EXPECT_EQ(PdfPages(pdf), pages) << "range 0:" << last;
    }
    EXPECT_NE(PdfPaper(pdf).find("(A4)"), std::string::npos) << PdfPaper(pdf);
    // Each page holds a whole run of MPs, the next page going on where it stopped.
    std::uint64_t next = 0;
    const std::regex row(R"(^\s*(\d+)\s+\d{4}-\d{2}-\d{2} )", std::regex::multiline);
    for (int page = 1; page <= 33; ++page) {
        const std::string text = PdfText(pdf, page);
        const std::size_t before = next;
        for (auto it = std::sregex_iterator(text.begin(), text.end(), row); it != std::sregex_iterator(); ++it)
            ASSERT_EQ(std::stoull((*it)[1].str()), next++) << "page " << page;
        EXPECT_EQ(next - before, page < 33 ? 40u : 20u) << "page " << page << "\n" << text;
        EXPECT_NE(text.find("Page " + std::to_string(page) + " of 33"), std::string::npos);
    }
    EXPECT_EQ(next, 1300u);
}

TEST_F(ReportPdf, StopsWhenAskedAndPreviewEndsAtItsLimit)
{
    test::RecordingBuilder::writeNumbered(rec, 3000);
    ReportRequest rq = Request();
    rq.last = 2999;
    {
        std::ofstream old(pdf);
        old << "%PDF-1.4 an earlier report";
    }
    int calls = 0;
    auto stopped = WriteReportPdf(pdf, rq, [&](const ReportProgress &p) {
        EXPECT_LE(p.done, p.total);
        return ++calls < 5;
    });
    ASSERT_TRUE(stopped.ok());
    EXPECT_TRUE(stopped.value.stopped);
    EXPECT_EQ(calls, 5);
    EXPECT_EQ(ReadAll(pdf), "%PDF-1.4 an earlier report"); // the old file stays as it was

    QPdfWriter writer(QString::fromStdString(dir.file("preview.pdf")));
    auto preview = PrintReport(writer, rq, {}, 3);
    ASSERT_TRUE(preview.ok());
    EXPECT_EQ(preview.value.pages, 3);
    EXPECT_TRUE(preview.value.truncated);
    EXPECT_FALSE(preview.value.stopped);
}

TEST_F(ReportPdf, RefusesOutputsItMustNotReplace)
{
    const std::string notes = dir.file("notes.txt");
    {
        std::ofstream f(notes);
        f << "my notes";
    }
    auto refused = WriteReportPdf(notes, Request());
    EXPECT_EQ(refused.result.code, txt::kNotPdf);
    EXPECT_EQ(ReadAll(notes), "my notes");

    ReportRequest force = Request();
    force.replaceNonPdf = true;
    ASSERT_TRUE(WriteReportPdf(notes, force).ok());
    EXPECT_EQ(ReadAll(notes).substr(0, 4), "%PDF");

    const std::string before = ReadAll(rec);
    EXPECT_EQ(WriteReportPdf(rec, force).result.code, txt::kOntoRecording);
    EXPECT_EQ(ReadAll(rec), before);

    ReportRequest outside = Request();
    outside.first = 5;
    outside.last = 10;
    EXPECT_EQ(WriteReportPdf(pdf, outside).result.code, txt::kRangeOutside);
    EXPECT_FALSE(std::filesystem::exists(pdf));
}

} // namespace
} // namespace kestrel::report

namespace kestrel::report {
namespace {

// The first and last page of each body, as PNG for a person to look at
// (build/screenshots/report-*.png); each must come out as a drawn page.
TEST_F(ReportPdf, RendersFirstAndLastPagesOfEachBody)
{
    test::RecordingBuilder b(45000.5, 0.0005);
    for (int i = 0; i < 1800; ++i) {
        b.level(0, (i / 7) % 2).level(1, (i / 11) % 2).level(5, (i / 23) % 2);
        if (i % 5 == 0)
            b.both(static_cast<std::uint8_t>(i), static_cast<std::uint8_t>('A' + i % 26));
        else
            b.d1(static_cast<std::uint8_t>("Report line\r\n"[i % 13]));
        if (i % 37 == 0)
            b.last().feD1 = 1;
        if (i == 150)
            b.mark(3, 1, 2);
    }
    b.write(rec);
    const std::string folder = KESTREL_SCREENSHOT_DIR;
    std::filesystem::create_directories(folder);
    const struct {
        ReportBody body;
        const char *name;
        int control;
    } bodies[] = {{ReportBody::Vertical, "vertical", 7}, {ReportBody::Dump, "dump", 8}, {ReportBody::DataOnly, "data", 0}};
    for (const auto &body : bodies) {
        ReportRequest rq = Request();
        rq.last = 1800;
        rq.body = body.body;
        rq.controlMode = body.control;
        auto written = WriteReportPdf(pdf, rq);
        ASSERT_TRUE(written.ok());
        const int last = written.value.pages;
        ASSERT_GE(last, 2) << body.name;
        for (const auto &[page, which] : {std::pair{1, "first"}, std::pair{last, "last"}}) {
            const std::string png = folder + "/report-" + body.name + "-" + which;
            Shell("pdftoppm -png -r 80 -singlefile -f " + std::to_string(page) + " -l " + std::to_string(page) + " " +
                  pdf + " " + png);
            const QImage image(QString::fromStdString(png + ".png"));
            EXPECT_FALSE(image.isNull()) << png;
            EXPECT_GT(image.width(), 600) << png;
        }
    }
}

} // namespace
} // namespace kestrel::report
