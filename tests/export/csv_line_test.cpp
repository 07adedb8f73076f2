#include <gtest/gtest.h>

#include "export/csv_line.h"
#include "export/mark_text.h"
#include "only_columns.h"

using namespace kestrel;
using test::Only;
using C = ExportColumns;

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

ExportTimeState pinnedTime(int lang = kLangEnglish) { return ExportTimeState(TimeLocale::Fixed(), lang); }

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

TEST(CsvLine, HeadLineNamesTheChosenColumnsInOrder)
{
    ExportOptions o;
    o.columns = Only({&C::d1, &C::hex});
    EXPECT_EQ(BuildCSVHeadLine(o), "\"D1 [RAW]\";\"D1 [HEX]\";");

    // "[PFL]" follows the name without a blank; the data suffixes carry one.
    o.columns.pfl = true;
    o.columns.d2 = true;
    o.naming = 1;
    o.separator = ',';
    o.frame = kNoFrame;
    EXPECT_EQ(BuildCSVHeadLine(o), "Tx [RAW],Tx [HEX],Rx [RAW],Rx [HEX],Tx[PFL],Rx[PFL],");

    ExportOptions all;
    all.langOffset = kLangEnglish;
    all.timeMode = 1;
    all.separator = '\t';
    EXPECT_EQ(BuildCSVHeadLine(all),
              "\"Mark/Trigger\"\t\"Event no.\"\t\"Date/Time-Relative\"\t\"D1 [RAW]\"\t\"D1 [HEX]\"\t\"D1 [DEC]\"\t"
              "\"D1 [OCT]\"\t\"D1 [BIN]\"\t\"D2 [RAW]\"\t\"D2 [HEX]\"\t\"D2 [DEC]\"\t\"D2 [OCT]\"\t\"D2 [BIN]\"\t"
              "\"S1\"\t\"M1\"\t\"S2\"\t\"M2\"\t\"M5\"\t\"M3\"\t\"D1[PFL]\"\t\"D2[PFL]\"\t\"Description\"\t");
    all.langOffset = kLangGerman;
    all.timeMode = 0;
    all.frame = '\'';
    all.columns = Only({&C::prefix, &C::mpNo, &C::timestamp, &C::description});
    EXPECT_EQ(BuildCSVHeadLine(all), "'Marke/Trigger'\t'Ereignisnr.'\t'Datum/Zeit-Absolut/Lokal'\t'Beschreibung'\t");
}

TEST(CsvLine, QuoteByteIsDoubledInsideTheFrame)
{
    ExportOptions o; // semicolon, double quote, all columns
    o.langOffset = kLangEnglish;
    MpRecord mp;
    mp.number = 7;
    mp.time = 46082.75;
    mp.d1 = 0x22;
    mp.d1Valid = 1;
    ExportTimeState t = pinnedTime();
    const std::string line = BuildCSVFileLine(mp, o, t);
    EXPECT_NE(line.find(";\"\"\"\";\"22\";\"34\";\"042\";\"00100010\";"), std::string::npos) << line;
    // A frame character in a text field is doubled too.
    std::string framed;
    AppendFramed(framed, "a\"b", '"');
    EXPECT_EQ(framed, "\"a\"\"b\"");
}

TEST(CsvLine, DataLevelsErrorsAndDescription)
{
    ExportOptions o;
    o.langOffset = kLangEnglish;
    o.columns.timestamp = false;
    o.separator = ',';
    o.frame = kNoFrame;
    MpRecord mp;
    mp.number = 12;
    mp.d1 = 0x01;
    mp.d1Valid = 1;
    mp.d2 = 0x0D;
    mp.d2Valid = 1;
    mp.s1 = 1;
    mp.m3 = 1;
    mp.peD1 = 1;
    mp.leD1 = 1;
    mp.feD2 = 1;
    ExportTimeState t = pinnedTime();
    EXPECT_EQ(BuildCSVFileLine(mp, o, t),
              ",12,\x01,01,1,001,00000001,\r,0D,13,015,00001101,1,0,0,0,0,1,PL,F,"
              "start of heading <---|---> carriage return,");

    // No byte on a circuit: its columns stay, empty; the description names only the other byte.
    mp.d1Valid = 0;
    mp.d2 = 'A';
    o.frame = '"';
    EXPECT_EQ(BuildCSVFileLine(mp, o, t),
              "\"\",\"12\",\"\",\"\",\"\",\"\",\"\",\"A\",\"41\",\"65\",\"101\",\"01000001\","
              "\"1\",\"0\",\"0\",\"0\",\"0\",\"1\",\"PL\",\"F\",\"\",");
    mp.d1Valid = 1;
    mp.d1 = 0x7F;
    mp.d2 = 0x1B;
    o.frame = kNoFrame;
    o.columns = Only({&C::description});
    EXPECT_EQ(BuildCSVFileLine(mp, o, t), "escape,");
}

TEST(CsvLine, MarkTextsInBothLanguages)
{
    struct Case {
        std::uint8_t code, kind, extra;
        const char *en, *de;
    } cases[] = {
        {0, 99, 0, "", ""},
        {1, 0, 4, "T_4.0.start", "T_4.0.start"},
        {2, 2, 17, "T_17.2.stop", "T_17.2.stopp"},
        {3, 4, 1, "T_1.4.detected", "T_1.4.erkannt"},
        {4, 99, 0, "E_0.appended", "E_0.angehängt"},
        {5, 99, 0, "E_0.user stop", "E_0.user stop"},
        {6, 99, 0, "E_0.user start", "E_0.user start"},
        {7, 0, 0, "", ""},
        {99, 99, 0, "debug", "debug"},
        {200, 1, 1, "", ""},
    };
    for (const auto &c : cases) {
        MpRecord mp;
        mp.markCode = c.code;
        mp.markKind = c.kind;
        mp.markExtra = c.extra;
        EXPECT_EQ(MarkText(mp, kLangEnglish), c.en) << int(c.code);
        EXPECT_EQ(MarkText(mp, kLangGerman), c.de) << int(c.code);
    }
}

TEST(CsvLine, RelativeBaseIsTakenWhenMpOneIsExported)
{
    ExportOptions o;
    o.langOffset = kLangEnglish;
    o.columns = Only({&C::timestamp, &C::hex, &C::dec, &C::oct, &C::bin}); // number columns without a byte stay away
    o.frame = kNoFrame;
    o.timeMode = 1;
    ExportTimeState t = pinnedTime();
    t.relativeBase.value = 100.0; // what the caller knew before
    MpRecord mp;
    mp.number = 5;
    mp.time = 100.0 + 1.5 / 86400;
    EXPECT_EQ(BuildCSVFileLine(mp, o, t), "0 day(s)  00:00:01,500000;");
    mp.number = 1;
    mp.time = 101.25;
    EXPECT_EQ(BuildCSVFileLine(mp, o, t), "0 day(s)  00:00:00,000000;");
    mp.number = 2;
    mp.time = 103.5;
    EXPECT_EQ(BuildCSVFileLine(mp, o, t), "2 day(s)  06:00:00,000000;");
    o.timeMode = 2;
    mp.number = 3;
    mp.time = 103.5 + 0.25 / 86400;
    EXPECT_EQ(BuildCSVFileLine(mp, o, t), "0 day(s)  00:00:00,250000;");
}
