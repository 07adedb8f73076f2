#include <gtest/gtest.h>

#include "export/csv_line.h"
#include "only_columns.h"

using namespace kestrel;

namespace {

// Decodes one UTF-8 character of at most two bytes (all the raw column writes).
int decodeLatin1(const std::string &s, std::size_t &pos)
{
    const auto c = static_cast<unsigned char>(s[pos++]);
    if (c < 0x80)
        return c;
    if ((c & 0xE0) != 0xC0 || pos >= s.size())
        return -1;
    const auto d = static_cast<unsigned char>(s[pos++]);
    return ((c & 0x1F) << 6) | (d & 0x3F);
}

} // namespace

TEST(CsvColumn, EveryByteUnderEveryFrameReadsBackAsThatByte)
{
    for (char frame : {'"', '\'', kNoFrame}) {
        for (int b = 0; b < 256; ++b) {
            const std::string col = BuildCSVColumn(static_cast<std::uint8_t>(b), frame);
            std::size_t pos = 0;
            if (frame != kNoFrame) {
                ASSERT_GE(col.size(), 3u);
                ASSERT_EQ(col.front(), frame);
                ASSERT_EQ(col.back(), frame);
                pos = 1;
                if (b == static_cast<unsigned char>(frame)) {
                    // The frame character inside the frame is doubled: four in a row.
                    EXPECT_EQ(col, std::string(4, frame));
                    continue;
                }
            }
            const int got = decodeLatin1(col, pos);
            EXPECT_EQ(got, b) << "frame " << int(frame);
            EXPECT_EQ(pos + (frame != kNoFrame ? 1 : 0), col.size()) << "byte " << b;
        }
    }
}

TEST(CsvLine, FrameCharacterInATextFieldIsDoubled)
{
    std::string framed;
    AppendFramed(framed, "a'b", '\'');
    EXPECT_EQ(framed, "'a''b'");
}

TEST(CsvLine, RelativeBaseIsTakenWhenMpOneIsExported)
{
    ExportOptions o;
    o.langOffset = kLangEnglish;
    o.columns = test::Only({&ExportColumns::timestamp});
    o.frame = kNoFrame;
    o.timeMode = 1;
    ExportTimeState t(TimeLocale::Fixed(), kLangEnglish);
    t.relativeBase.value = 100.0; // what the caller knew before
    MpRecord mp;
    mp.number = 1;
    mp.time = 101.25;
    EXPECT_EQ(BuildCSVFileLine(mp, o, t), "0 day(s)  00:00:00,000000;");
    mp.number = 2;
    mp.time = 103.5;
    EXPECT_EQ(BuildCSVFileLine(mp, o, t), "2 day(s)  06:00:00,000000;");
}
