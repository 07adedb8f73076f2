// kestrel-cli driven as a user would: every command's help and option errors, and
// export, search and dump on real files with real exit codes and no crash on files
// that are not recordings.

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <random>
#include <string>
#include <vector>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "record/record_reader.h"
#include "record/recording_check.h"
#include "support/recording_builder.h"
#include "support/run_cli.h"
#include "support/temp_dir.h"

using kestrel::test::RecordingBuilder;
namespace test = kestrel::test;

namespace {

using test::CliRun;

CliRun cli(const std::string &args) { return test::RunCapture(KESTREL_CLI_PATH, args); }

struct Files {
    test::TempDir dir;
    std::string rec = dir.file("rec.ksr");
    Files()
    {
        RecordingBuilder b(46082.5, 1.0);
        b.d1('H').d1('i').d2('!').mark(1, 0, 3);
        b.level(0, 1).d1('A').d1('B');
        b.last().peD2 = 1;
        b.write(rec);
    }
};

} // namespace

// A bad option is a usage error (exit 2) whose message names it.
TEST(CliRecordings, EveryCommandHasHelpAndRefusesBadOptionsByName)
{
    Files f;
    const std::pair<std::string, std::string> cases[] = {
        {"record --simulate -o x.ksr --baud fast", "--baud"},
        {"record --simulate --port-a /dev/a -o x.ksr", "--port-a"},
        {"record --simulate -o x.ksr --parity X", "--parity"},
        {"record --simulate -o x.ksr --duration nan", "--duration"},
        {"export " + f.rec + " --separator pipe", "--separator"},
        {"export " + f.rec + " --range 9:3", "--range"},
        {"search " + f.rec + " --trigger 3 --from 010x", "--from"},
        {"dump " + f.rec + " --char utf8", "--char"},
        {"info " + f.rec + " --xml", "--xml"},
        {"ports --busy", "--busy"},
        {"scenario --demo x.ksc", "--demo"},
        {"env show x.kef --language fr", "--language"},
        {"env list", "unknown command 'list'"},
    };
    for (const auto &[args, named] : cases) {
        const CliRun bad = cli(args);
        EXPECT_EQ(bad.code, 2) << args << "\n" << bad.out;
        EXPECT_NE(bad.out.find(named), std::string::npos) << args << "\n" << bad.out;
    }

    // The overview lists every command; no command at all is a usage error.
    const CliRun overview = cli("--help");
    EXPECT_EQ(overview.code, 0);
    for (const char *command : {"dump", "env", "export", "info", "ports", "record", "scenario", "search"}) {
        EXPECT_NE(overview.out.find(std::string("\n  ") + command + " "), std::string::npos) << command;
        EXPECT_EQ(cli(std::string(command) + " --help").code, 0) << command;
    }
    EXPECT_EQ(cli("").code, 2);
    const CliRun version = cli("--version");
    EXPECT_EQ(version.code, 0);
    EXPECT_EQ(version.out.rfind("kestrel-cli ", 0), 0u) << version.out;
    const CliRun unknown = cli("replay " + f.rec);
    EXPECT_EQ(unknown.code, 2);
    EXPECT_NE(unknown.out.find("unknown command 'replay'"), std::string::npos) << unknown.out;

    // --verbose belongs to the program: before or after the command, the command runs the same.
    const CliRun plain = cli("search " + f.rec + " --trigger 3");
    EXPECT_EQ(plain.out, "5\n");
    EXPECT_EQ(cli("--verbose search " + f.rec + " --trigger 3").out, plain.out);
    EXPECT_EQ(cli("search " + f.rec + " --trigger 3 -v").out, plain.out);
}

TEST(CliRecordings, ExportAndDumpWriteWhatTheyShould)
{
    Files f;
    const std::string out = f.dir.file("out.csv");
    CliRun r = cli("export " + f.rec + " -o " + out + " --columns mp,d1 --frame none --separator comma --range 2:3");
    ASSERT_EQ(r.code, 0) << r.out;
    EXPECT_EQ(test::ReadWholeFile(out), "Event no.,D1 [RAW],\r\n2,H,\r\n3,i,\r\n");

    r = cli("export " + f.rec + " --format raw --columns d2");
    EXPECT_EQ(r.code, 0);
    EXPECT_EQ(r.out, "!");

    r = cli("dump " + f.rec + " --range 4:5 --char hex --time relative");
    ASSERT_EQ(r.code, 0) << r.out;
    EXPECT_NE(r.out.find("Date/Time-Relative"), std::string::npos);
    EXPECT_NE(r.out.find("0 day(s)  00:00:03,000000"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("T_3.0.start"), std::string::npos);
}

// Each run's exit code and what it prints: the MP found (exactly), or the reason it failed.
TEST(CliRecordings, SearchFindsAndBadInputGetsAClearErrorAndExitCode)
{
    Files f;
    std::mt19937 rng(7);
    const std::string junk = f.dir.file("junk.ksr");
    {
        std::ofstream j(junk, std::ios::binary);
        for (int i = 0; i < 80 * 500 + 13; ++i)
            j.put(static_cast<char>(rng()));
    }
    const std::string search = "search " + f.rec;
    struct Case {
        std::string args;
        int code;
        std::string says; // "=..." the whole output
    } cases[] = {
        {search + " --data 4142 --d1", 0, "=6\n"},
        {search + " --trigger 3", 0, "=5\n"},
        {search + " --signal S1=1 --backward", 0, "=7\n"},
        {search + " --error PE=1", 0, "=7\n"},
        {search + " --time '2026-03-01 12:00:03.5'", 0, "=4\n"},
        {search + " --text 'i!' --d1 --d2", 1, ""}, // one circuit at a time
        {search + " --data 21 --d1", 1, "=The requested data cannot be found from the current position!\n"},
        {search + " --signal M3=1 --language de", 1, "Fehlerbedingung"},
        {"export " + f.dir.file("missing.ksr"), 3, "cannot open"},
        {"search " + junk + " --data 41 --d1", 3, "not a Kestrel recording"},
        {"dump " + junk, 3, "not a Kestrel recording"},
        {"export " + f.rec + " --range 5:99", 2, "beyond the recording"},
        {"dump " + f.rec + " --range 50:60", 2, "outside the recording"},
        {search + " --data 4G --d1", 2, "malformed hex pattern"},
        {search + " --data 4100 --d1", 2, "cannot be searched"},
        {search + " --data 41", 2, "select at least one data line"},
        {search + " --signal X9=1", 2, "unknown signal"},
        {search + " --time 'tomorrow'", 2, "malformed time"},
        {search + " --trigger 1 --signal S1=1", 2, "2 were given"},
        {search + " --trigger 0", 2, "--trigger: takes a whole number from 1 to 255"}, // 0: any ordinary MP
        {"export " + f.rec + " -o " + f.dir.file("no/such/dir/x.csv"), 3, "cannot create"},
        {"export " + f.rec + " --columns d1,bogus", 2, "unknown column"},
    };
    for (const auto &c : cases) {
        const CliRun r = cli(c.args);
        EXPECT_EQ(r.code, c.code) << c.args << "\n" << r.out;
        if (!c.says.empty() && c.says[0] == '=')
            EXPECT_EQ(r.out, c.says.substr(1)) << c.args;
        else
            EXPECT_NE(r.out.find(c.says), std::string::npos) << c.args << "\n" << r.out;
    }
}

TEST(CliRecordings, NumberedRecordsWithGarbageFieldsNeverCrash)
{
    // Passes the numbering check but every other byte is random: NaN times,
    // levels of 200, mark codes of any value.
    test::TempDir dir;
    const std::string path = dir.file("garbage.ksr");
    std::mt19937 rng(99);
    {
        std::ofstream g(path, std::ios::binary);
        for (std::uint32_t n = 0; n < 3000; ++n) {
            char rec[80];
            for (char &c : rec)
                c = static_cast<char>(rng());
            for (int k = 0; k < 4; ++k)
                rec[k] = static_cast<char>(n >> (8 * k));
            if (n % 7 == 0)
                for (int k = 8; k < 16; ++k)
                    rec[k] = static_cast<char>(0xFF); // a NaN time stamp
            g.write(rec, sizeof rec);
        }
    }
    for (const std::string &args :
         {"export " + path + " --time relative -o " + dir.file("g.csv"), "dump " + path + " --control mnemonic",
          "dump " + path + " --char ebcdic --time delta", "search " + path + " --data FE --d1 --d2",
          "search " + path + " --time '2000-01-01 00:00:00' --backward", "search " + path + " --signal S1=1,M3=0"}) {
        const CliRun r = cli(args + " > /dev/null");
        EXPECT_TRUE(r.code == 0 || r.code == 1) << args << " gave " << r.code << "\n" << r.out;
    }
}

TEST(CliRecordings, ExportNeverWritesOverItsOwnRecording)
{
    Files f;
    const auto sizeOf = [](const std::string &p) {
        std::ifstream in(p, std::ios::binary | std::ios::ate);
        return static_cast<long long>(in.tellg());
    };
    const long long before = sizeOf(f.rec);
    const std::string link = f.dir.file("link.ksr");
    ASSERT_EQ(symlink(f.rec.c_str(), link.c_str()), 0);
    for (const std::string &out : {f.rec, link, f.dir.file(".") + "/rec.ksr"}) {
        const CliRun r = cli("export " + f.rec + " -o " + out);
        EXPECT_EQ(r.code, 3) << out << "\n" << r.out;
        EXPECT_NE(r.out.find("is the recording itself"), std::string::npos) << r.out;
        EXPECT_EQ(sizeOf(f.rec), before) << "the recording was cut by exporting into " << out;
    }
}

// What is no regular file, or no file at all, is refused at once with the reason:
// a FIFO would otherwise hang every reader in open(), a symlink loop is not
// "missing", a huge "scenario" is not read into memory, and a file's escape
// sequences never reach the terminal.
TEST(CliRecordings, FilesThatAreNoRecordingsAreRefusedAtOnceWithTheReason)
{
    Files f;
    const std::string fifo = f.dir.file("fifo");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    const std::string loop = f.dir.file("loop");
    ASSERT_EQ(::symlink(loop.c_str(), loop.c_str()), 0);
    const std::string huge = f.dir.file("huge.ksc");
    std::ofstream(huge).close();
    ASSERT_EQ(::truncate(huge.c_str(), 1LL << 33), 0); // 8 GiB, sparse
    const std::string hostile = f.dir.file("hostile.ksc");
    std::ofstream(hostile) << "\x1b]0;owned\x07\x1b[2J\xc2\x9b" "31m bytes\n";
    const std::string one = f.dir.file("one.ksr");
    {
        RecordingBuilder b(46082.5, 1.0, false);
        b.d1('x').last().number = 42;
        b.write(one);
    }

    struct Case {
        std::string args;
        int code;
        std::string says;
    } cases[] = {
        {"info " + fifo, 3, "not a regular file"},
        {"export " + fifo, 3, "not a regular file"},
        {"dump " + fifo, 3, "not a regular file"},
        {"search " + fifo + " --data 41 --d1", 3, "not a regular file"},
        {"scenario " + fifo, 3, "not a regular file"},
        {"record --simulate " + fifo + " -o " + f.dir.file("x.ksr"), 2, "not a regular file"},
        {"info " + loop, 3, "Too many levels of symbolic links"},
        {"scenario " + loop, 3, "Too many levels of symbolic links"},
        {"info <(cat " + f.rec + ")", 3, "not a regular file"},
        {"scenario " + huge, 3, "at most 4 MB"},
        {"scenario --bogus", 2, "FILE.ksc"},
        {"export " + one, 3, "not a Kestrel recording"},
    };
    for (const auto &c : cases) {
        const CliRun r = cli(c.args);
        EXPECT_EQ(r.code, c.code) << c.args << "\n" << r.out;
        EXPECT_NE(r.out.find(c.says), std::string::npos) << c.args << "\n" << r.out;
    }
    const CliRun once = cli("export " + one);
    EXPECT_EQ(once.out.find("says 42"), once.out.rfind("says 42")) << once.out;

    const CliRun escaped = cli("scenario " + hostile);
    EXPECT_EQ(escaped.code, 2) << escaped.out;
    EXPECT_EQ(escaped.out.find('\x1b'), std::string::npos) << escaped.out;
    EXPECT_EQ(escaped.out.find("\xc2\x9b"), std::string::npos) << escaped.out;
    EXPECT_EQ(escaped.out.find('\x07'), std::string::npos) << escaped.out;
}

// MP numbers are 32 bits on disk and wrap after 2^32 MPs; places are 64-bit. A
// sparse file holds a recording across the wrap: every reader shows places, not
// numbers, and an append goes on at the right place with the right number.
TEST(CliRecordings, ARecordingAcrossTheNumberWrapReadsAndAppendsByPlace)
{
    test::TempDir dir;
    const std::string path = dir.file("wrap.ksr");
    constexpr std::uint64_t kWrap = 1ull << 32;
    {
        std::FILE *f = std::fopen(path.c_str(), "wb");
        ASSERT_NE(f, nullptr);
        auto put = [&](std::uint64_t index, const kestrel::MpRecord &mp) {
            const kestrel::MpBytes b = kestrel::EncodeMp(mp);
            ASSERT_EQ(::fseeko(f, static_cast<off_t>(index * 80), SEEK_SET), 0);
            ASSERT_EQ(std::fwrite(b.data(), 1, b.size(), f), b.size());
        };
        kestrel::MpRecord mp;
        mp.time = 46000.5;
        mp.markKind = kestrel::kSystemMarkKind;
        put(0, mp); // opening mark
        mp.markCode = kestrel::SystemMark::Started;
        mp.time = 46000.5 + 1.0 / 86400;
        put(1, mp); // relative time counts from here
        for (std::uint64_t index = kWrap - 2; index <= kWrap + 2; ++index) {
            kestrel::MpRecord d;
            d.number = static_cast<std::uint32_t>(index);
            d.time = 46000.5 + 1.0 / 86400 + static_cast<double>(index - (kWrap - 2) + 1) / 86400;
            d.d1 = static_cast<std::uint8_t>('a' + (index - (kWrap - 2)));
            d.d1Valid = 1;
            d.counts[0] = index;
            put(index, d);
        }
        std::fclose(f);
    }
    const std::string range = " --range " + std::to_string(kWrap - 2) + ":" + std::to_string(kWrap + 2);

    const CliRun csv = cli("export " + path + range + " --columns mp,d1,time --time relative");
    ASSERT_EQ(csv.code, 0) << csv.out;
    EXPECT_NE(csv.out.find("\"4294967296\";\"0 day(s)  00:00:03,000000\";\"c\""), std::string::npos) << csv.out;
    // MP 2^32 + 1 carries the number 1: relative time still counts from MP 1.
    EXPECT_NE(csv.out.find("\"4294967297\";\"0 day(s)  00:00:04,"), std::string::npos) << csv.out;

    const CliRun dump = cli("dump " + path + range);
    ASSERT_EQ(dump.code, 0) << dump.out;
    EXPECT_NE(dump.out.find("\n4294967297 "), std::string::npos) << dump.out;

    const CliRun found = cli("search " + path + " --data 64 --d1 --from " + std::to_string(kWrap - 2));
    EXPECT_EQ(found.out, std::to_string(kWrap + 1) + "\n");

    // Appending: the recorder takes it for a recording and goes on at MP 2^32 + 3, number 3.
    const CliRun appended = cli("record --simulate -o " + path + " --append --duration 0.2");
    ASSERT_EQ(appended.code, 0) << appended.out;
    kestrel::RecordReader reader;
    ASSERT_TRUE(reader.open(path));
    kestrel::MpRecord next;
    ASSERT_TRUE(reader.read(kWrap + 3, next));
    EXPECT_EQ(next.number, 3u);
    EXPECT_TRUE(next.isSystemMark());
    EXPECT_EQ(next.markCode, kestrel::SystemMark::Appended);
    EXPECT_EQ(next.count(kestrel::Counter::D1), kWrap + 2);
    EXPECT_TRUE(CheckRecording(reader, kestrel::CheckDepth::Writable).isRecording());
}
