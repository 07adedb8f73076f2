// Whole exports of a small crafted recording compared byte for byte with
// files under golden/. To change the expected output on purpose, run the test
// with KESTREL_UPDATE_GOLDEN=1: it rewrites the files and reports each one as
// skipped, so an update never passes unnoticed. Review the diff before committing.

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "export/export_run.h"
#include "support/recording_builder.h"
#include "support/temp_dir.h"

using namespace kestrel;
using test::RecordingBuilder;

namespace {

// A short session: system marks, a trigger firing, text with every character
// that a CSV writer must treat with care, control bytes with errors, both
// circuits in one MP, level changes, a gap of more than a day, an appended
// recording and the stop mark.
RecordingBuilder craftedRecording()
{
    RecordingBuilder b(46082.5, 0.25); // 01.03.2026 12:00:00, MPs 250 ms apart
    b.level(0, 1).level(2, 1);                          // S1, S2 on
    b.mark(1, 0, 2);                                    // trigger 2 (data) starts recording
    for (std::uint8_t c : {'S', '"', ';', ',', '\'', ' ', '\t'})
        b.d1(c);
    b.d2(0x06);
    b.both(0x0D, 0x0A);
    b.last().feD2 = 1;
    b.level(1, 1).level(3, 1).d2(0xE4); // M1, M2 on
    b.d1(0x01);
    b.last().peD1 = 1;
    b.last().leD1 = 1;
    b.mark(2, 1, 5).mark(3, 4, 9).mark(99, 99, 0);
    b.gap(86400.0 * 2 + 3723.000004).d1(0x7F).mark(5, 99, 0); // two days later
    b.mark(4, 99, 0).level(0, 0).level(4, 1).level(5, 1).d2(0xFF).mark(5, 99, 0);
    return b;
}

struct GoldenCase {
    std::string file;
    ExportOptions options;
};

void PrintTo(const GoldenCase &c, std::ostream *os) { *os << c.file; }

class GoldenExport : public ::testing::TestWithParam<GoldenCase> {};

// narrow: the frame and separator matrix, a few columns that show framing and escaping.
ExportOptions opts(int lang, int mode, char sep = ';', char frame = '"', int naming = 0, bool narrow = false)
{
    ExportOptions o;
    o.langOffset = lang;
    o.timeMode = mode;
    o.separator = sep;
    o.frame = frame;
    o.naming = naming;
    if (narrow)
        o.columns.timestamp = o.columns.dec = o.columns.oct = o.columns.bin = o.columns.s1 = o.columns.m1 =
            o.columns.s2 = o.columns.m2 = o.columns.m5 = o.columns.m3 = false;
    return o;
}

ExportOptions rawD2()
{
    ExportOptions o;
    o.format = ExportFormat::Raw;
    o.columns.d1 = false;
    return o;
}

std::vector<GoldenCase> cases()
{
    return {
        {"all_en_absolute.csv", opts(kLangEnglish, 0)},
        {"all_en_relative.csv", opts(kLangEnglish, 1)},
        {"all_en_delta.csv", opts(kLangEnglish, 2)},
        {"all_de_absolute_rs232.csv", opts(kLangGerman, 0, ';', '"', 1)},
        {"all_de_relative.csv", opts(kLangGerman, 1)},
        {"raw_d2_only.dat", rawD2()},
        {"frame_double_sep_comma.csv", opts(kLangEnglish, 0, ',', '"', 0, true)},
        {"frame_single_sep_space.csv", opts(kLangEnglish, 0, ' ', '\'', 0, true)},
        {"frame_none_sep_tab.csv", opts(kLangEnglish, 0, '\t', kNoFrame, 0, true)},
    };
}

} // namespace

TEST_P(GoldenExport, MatchesTheGoldenFile)
{
    const GoldenCase &gc = GetParam();
    test::TempDir dir;
    craftedRecording().write(dir.file("golden.ksr"));
    RecordReader reader;
    ASSERT_TRUE(reader.open(dir.file("golden.ksr")));
    StringSink sink;
    ExportTimeState time(TimeLocale::Fixed(), gc.options.langOffset);
    const ExportRange range = FullRange(reader);
    SeedExportTime(reader, range, time);
    ASSERT_EQ(RunExport(reader, gc.options, range, sink, time).status, ExportStatus::Done);

    const std::string path = std::string(KESTREL_GOLDEN_DIR) + "/" + gc.file;
    const char *update = std::getenv("KESTREL_UPDATE_GOLDEN");
    if (update && std::string(update) == "1") {
        std::ofstream(path, std::ios::binary | std::ios::trunc) << sink.data;
        GTEST_SKIP() << "rewrote " << path;
    }
    std::ifstream probe(path, std::ios::binary);
    ASSERT_TRUE(probe.good()) << path << " is missing; create it with KESTREL_UPDATE_GOLDEN=1 and review it";
    const std::string want = test::ReadWholeFile(path);
    ASSERT_EQ(sink.data.size(), want.size()) << gc.file;
    EXPECT_EQ(sink.data, want) << gc.file;
}

INSTANTIATE_TEST_SUITE_P(Files, GoldenExport, ::testing::ValuesIn(cases()),
                         [](const ::testing::TestParamInfo<GoldenCase> &info) {
                             std::string n = info.param.file;
                             n = n.substr(0, n.find('.'));
                             for (char &c : n)
                                 if (!std::isalnum(static_cast<unsigned char>(c)))
                                     c = '_';
                             return n;
                         });
