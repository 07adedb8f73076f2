// Capture files without Wireshark: local time to UTC across daylight-saving
// changes, the upper-PDU tags, and what a PcapStream writes for a crafted
// recording (packets, order, directions, lines, comments, time stamps), read
// back block by block.

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>

#include "export/pcap_export.h"
#include "support/pcapng_reader.h"
#include "support/recording_builder.h"
#include "support/temp_dir.h"

namespace kestrel {
namespace {

// Runs with the time zone of Berlin (CET, CEST from the last Sunday in March
// 01:00 UTC to the last Sunday in October 01:00 UTC).
struct Berlin : ::testing::Test {
    std::string saved;
    bool had = false;
    void SetUp() override
    {
        if (const char *tz = std::getenv("TZ"))
            saved = tz, had = true;
        ::setenv("TZ", "Europe/Berlin", 1);
        ::tzset();
    }
    void TearDown() override
    {
        had ? ::setenv("TZ", saved.c_str(), 1) : ::unsetenv("TZ");
        ::tzset();
    }
};

// Seconds since 1970 of a wall-clock reading, taken as if it were UTC.
std::int64_t wall(int y, int mo, int d, int h, int mi, int s = 0)
{
    std::tm tm{};
    tm.tm_year = y - 1900, tm.tm_mon = mo - 1, tm.tm_mday = d, tm.tm_hour = h, tm.tm_min = mi, tm.tm_sec = s;
    return static_cast<std::int64_t>(timegm(&tm));
}

double dateTime(std::int64_t wallSeconds) { return static_cast<double>(wallSeconds) / 86400.0 + 25569.0; }

TEST_F(Berlin, LocalTimesBecomeUtcAndARepeatedHourTakesItsFirstReading)
{
    EXPECT_EQ(LocalSecondsToUtc(wall(2023, 1, 15, 12, 0)), wall(2023, 1, 15, 11, 0));  // CET
    EXPECT_EQ(LocalSecondsToUtc(wall(2023, 7, 15, 12, 0)), wall(2023, 7, 15, 10, 0));  // CEST
    // 29 October 2023: 03:00 CEST went back to 02:00 CET; 02:30 happened twice.
    EXPECT_EQ(LocalSecondsToUtc(wall(2023, 10, 29, 2, 30)), wall(2023, 10, 29, 0, 30));
    EXPECT_EQ(LocalSecondsToUtc(wall(2023, 10, 29, 3, 0)), wall(2023, 10, 29, 2, 0));
    // 26 March 2023: 02:00 CET jumped to 03:00 CEST; 02:30 never happened: read as CET.
    EXPECT_EQ(LocalSecondsToUtc(wall(2023, 3, 26, 2, 30)), wall(2023, 3, 26, 1, 30));
    EXPECT_EQ(LocalSecondsToUtc(wall(2023, 3, 26, 3, 0)), wall(2023, 3, 26, 1, 0));
}

TEST_F(Berlin, TheRememberedOffsetNeverDiffersFromAskingEachTime)
{
    for (const std::int64_t from : {wall(2023, 3, 26, 0, 0), wall(2023, 10, 29, 0, 0)}) {
        LocalToUtc walk;
        for (std::int64_t s = from; s < from + 5 * 3600; s += 37) {
            const auto us = walk.micros(dateTime(s) + 0.25 / 86400.0);
            ASSERT_TRUE(us);
            ASSERT_EQ(*us, LocalSecondsToUtc(s) * 1'000'000 + 250'000) << s - from;
        }
    }
    LocalToUtc walk;
    EXPECT_FALSE(walk.micros(std::nan("")));
    EXPECT_FALSE(walk.micros(1e9));
}

TEST(PcapBlocks, TheDissectorTagCountsItsPaddingAndTheListEnds)
{
    using namespace std::string_literals;
    EXPECT_EQ(pcap::UpperPduTags("mbrtu"), "\x00\x0c\x00\x08mbrtu\x00\x00\x00\x00\x00\x00\x00"s);
    EXPECT_EQ(pcap::UpperPduTags("dnp3"), "\x00\x0c\x00\x08" "dnp3\x00\x00\x00\x00\x00\x00\x00\x00"s);
    EXPECT_TRUE(ValidDissectorName("dnp3.udp"));
    EXPECT_FALSE(ValidDissectorName(""));
    EXPECT_FALSE(ValidDissectorName("m b"));
    EXPECT_FALSE(ValidDissectorName(std::string(65, 'a')));
}

TEST(PcapBlocks, ControlLinesFollowTheCircuitNames)
{
    EXPECT_EQ(RtacLines(LevelBit::S1), pcap::Line::DTR);
    EXPECT_EQ(RtacLines(LevelBit::S2), pcap::Line::RTS);
    EXPECT_EQ(RtacLines(LevelBit::M1), pcap::Line::DSR);
    EXPECT_EQ(RtacLines(LevelBit::M2), pcap::Line::CTS);
    EXPECT_EQ(RtacLines(LevelBit::M5), pcap::Line::DCD);
    EXPECT_EQ(RtacLines(LevelBit::M3), pcap::Line::RING);
    EXPECT_EQ(RtacLines(0x3F), 0x3F);
}

// MP 0, 1: opening marks; 2, 3: "AB" on D1 with DTR on; 4: a trigger mark;
// 5: a parity error on D2, 6: its byte "y"; 7: a lone framing error on D1; 8: stop.
struct Crafted : Berlin {
    test::TempDir dir;
    std::string ksr = dir.file("crafted.ksr");
    void SetUp() override
    {
        Berlin::SetUp();
        test::RecordingBuilder b(45000.5, 0.001); // 2023-03-15 12:00 local, 1 ms apart
        b.level(0, 1).d1('A').d1('B').mark(1, 0, 3);
        b.gap(0.01).plain().last().peD2 = 1;
        b.d2('y').gap(0.01).plain().last().feD1 = 1;
        b.mark(SystemMark::Stopped, kSystemMarkKind, 0);
        b.write(ksr);
    }
    PcapExportOptions options(bool pcapng)
    {
        PcapExportOptions o;
        o.pcapng = pcapng;
        o.rules.charSeconds = 0.0005; // bytes 1 ms apart are back to back with half a character idle
        o.dissector = pcapng ? "mbrtu" : "";
        return o;
    }
    std::string exportFile(const PcapExportOptions &o)
    {
        RecordReader reader;
        EXPECT_TRUE(reader.open(ksr));
        StringSink sink;
        const ExportResult r = RunPcapExport(reader, o, FullRange(reader), sink);
        EXPECT_EQ(r.status, ExportStatus::Done) << r.error;
        EXPECT_EQ(r.exported, 9u);
        return sink.data;
    }
    // UTC microseconds of MP n: 12:00 CET is 11:00 UTC.
    static std::int64_t utcOf(int n, double extraSeconds = 0)
    {
        return (wall(2023, 3, 15, 11, 0) * 1'000'000) + n * 1000 + static_cast<std::int64_t>(extraSeconds * 1e6);
    }
};

TEST_F(Crafted, EveryEventBecomesAPacketInMpOrder)
{
    const test::CaptureFile f = test::ReadPcapng(exportFile(options(true)));
    EXPECT_EQ(f.linkTypes, (std::vector<std::uint16_t>{pcap::kLinkRtacSerial, pcap::kLinkUpperPdu}));
    struct Want {
        std::uint32_t interface;
        std::uint8_t event;
        std::uint8_t lines;
        std::uint32_t flags;
        std::string payload;
        std::string comment;
        std::int64_t micros;
    };
    const std::uint8_t dtr = pcap::Line::DTR;
    const std::vector<Want> want = {
        {0, pcap::Event::StatusChange, 0, 0, "", "MP 0: new file", utcOf(0)},
        {0, pcap::Event::StatusChange, 0, 0, "", "MP 1: started (E_0.user start)", utcOf(1)},
        {0, pcap::Event::StatusChange, dtr, 0, "", "", utcOf(2)},
        {0, pcap::Event::TxStart, dtr, 2, "AB", "", utcOf(2)},
        {1, 0, 0, 2, "AB", "", utcOf(2)},
        {0, pcap::Event::StatusChange, dtr, 0, "", "MP 4: T_3.0.start", utcOf(4)},
        {0, pcap::Event::ParityError, dtr, 1, "", "", utcOf(5, 0.01)},
        {0, pcap::Event::RxStart, dtr, 1, "y", "parity error before byte 0", utcOf(6, 0.01)},
        {1, 0, 0, 1, "y", "", utcOf(6, 0.01)},
        {0, pcap::Event::FramingError, dtr, 2, "", "", utcOf(7, 0.02)},
        {0, pcap::Event::CaptureComplete, 0, 0, "", "MP 8: stopped (E_0.user stop)", utcOf(8, 0.02)},
    };
    ASSERT_EQ(f.packets.size(), want.size());
    for (std::size_t i = 0; i < want.size(); ++i) {
        const test::CapturedPacket &p = f.packets[i];
        const Want &w = want[i];
        SCOPED_TRACE("packet " + std::to_string(i + 1));
        EXPECT_EQ(p.interface, w.interface);
        EXPECT_EQ(p.flags, w.flags);
        EXPECT_EQ(p.comment, w.comment);
        EXPECT_NEAR(static_cast<double>(p.micros), static_cast<double>(w.micros), 1.0);
        if (w.interface == 0) {
            EXPECT_EQ(p.event(), w.event);
            EXPECT_EQ(p.lines(), w.lines);
            EXPECT_EQ(p.payload(), w.payload);
            // The header's own time stamp: big-endian seconds and microseconds.
            const auto be32 = [&](std::size_t at) {
                return (std::uint32_t{static_cast<std::uint8_t>(p.data[at])} << 24) |
                       (std::uint32_t{static_cast<std::uint8_t>(p.data[at + 1])} << 16) |
                       (std::uint32_t{static_cast<std::uint8_t>(p.data[at + 2])} << 8) |
                       std::uint32_t{static_cast<std::uint8_t>(p.data[at + 3])};
            };
            EXPECT_EQ(std::int64_t{be32(0)} * 1'000'000 + be32(4), p.micros);
        } else {
            EXPECT_EQ(p.data, pcap::UpperPduTags("mbrtu") + w.payload);
        }
    }
}

TEST_F(Crafted, PcapHoldsTheSerialPacketsAlone)
{
    const test::CaptureFile ng = test::ReadPcapng(exportFile(options(true)));
    const test::CaptureFile f = test::ReadPcap(exportFile(options(false)));
    EXPECT_EQ(f.linkTypes, (std::vector<std::uint16_t>{pcap::kLinkRtacSerial}));
    std::vector<test::CapturedPacket> serial;
    for (const auto &p : ng.packets)
        if (p.interface == 0)
            serial.push_back(p);
    ASSERT_EQ(f.packets.size(), serial.size());
    for (std::size_t i = 0; i < serial.size(); ++i) {
        EXPECT_EQ(f.packets[i].data, serial[i].data) << i;
        EXPECT_EQ(f.packets[i].micros, serial[i].micros) << i;
    }
}

class FailingSink final : public ExportSink {
public:
    bool write(std::string_view) override { return false; }
    std::string errorText() const override { return "cannot write out.pcapng: No space left on device"; }
};

TEST_F(Crafted, AFailedWriteARangeAndAStopEndTheExportWithTheirStatus)
{
    RecordReader reader;
    ASSERT_TRUE(reader.open(ksr));
    FailingSink failing;
    ExportResult r = RunPcapExport(reader, options(true), FullRange(reader), failing);
    EXPECT_EQ(r.status, ExportStatus::WriteFailed);
    EXPECT_EQ(r.error, "cannot write out.pcapng: No space left on device");

    StringSink sink;
    r = RunPcapExport(reader, options(true), {3, 20}, sink);
    EXPECT_EQ(r.status, ExportStatus::BadRange);

    // A range: its frames and events only; "AB" starts before it and is cut to "B".
    r = RunPcapExport(reader, options(true), {3, 6}, sink);
    ASSERT_EQ(r.status, ExportStatus::Done);
    const test::CaptureFile f = test::ReadPcapng(sink.data);
    std::string payloads;
    for (const auto &p : f.packets)
        if (p.interface == 0)
            payloads += std::to_string(p.event()) + p.payload() + " ";
    EXPECT_EQ(payloads, "0 1B 0 8 2y ");

    std::atomic<bool> stop{true};
    ExportHooks hooks;
    hooks.stop = &stop;
    StringSink stopped;
    r = RunPcapExport(reader, options(true), FullRange(reader), stopped, hooks);
    EXPECT_EQ(r.status, ExportStatus::Stopped);
    EXPECT_EQ(test::ReadPcapng(stopped.data).linkTypes.size(), 2u); // a file that opens, without packets
}

} // namespace
} // namespace kestrel
