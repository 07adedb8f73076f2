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
#include <sys/wait.h>
#include <unistd.h>

#include "support/recording_builder.h"
#include "support/temp_dir.h"

using kestrel::test::RecordingBuilder;
namespace test = kestrel::test;

namespace {

struct CliRun {
    int code = -1;
    std::string out; // standard output and error together
};

CliRun cli(const std::string &args)
{
    const std::string cmd = std::string("LANG=C LC_ALL=C '") + KESTREL_CLI_PATH + "' " + args + " 2>&1";
    CliRun r;
    std::FILE *p = popen(cmd.c_str(), "r");
    if (!p)
        return r;
    std::array<char, 4096> buf;
    std::size_t n;
    while ((n = std::fread(buf.data(), 1, buf.size(), p)) > 0)
        r.out.append(buf.data(), n);
    const int status = pclose(p);
    // A crash shows as a signal, never as an ordinary exit code.
    r.code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return r;
}

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

TEST(CliRecordings, EveryCommandHasHelpAndRefusesBadOptionsByName)
{
    Files f;
    struct Case {
        std::string command;
        std::vector<std::string> options; // named in its help
        std::string bad;                  // options that must fail with exit 2
        std::string named;                // what the message must name
    } cases[] = {
        {"record", {"--output", "--simulate", "--port-a", "--port-b", "--baud", "--parity", "--env", "--duration"},
         "--simulate -o x.ksr --baud fast", "--baud"},
        {"record", {}, "--simulate --port-a /dev/a -o x.ksr", "--port-a"},
        {"record", {}, "--simulate -o x.ksr --parity X", "--parity"},
        {"record", {}, "--simulate -o x.ksr --duration nan", "--duration"},
        {"export", {"--output", "--format", "--separator", "--frame", "--no-header", "--columns", "--range", "--naming"},
         f.rec + " --separator pipe", "--separator"},
        {"export", {}, f.rec + " --range 9:3", "--range"},
        {"search", {"--data", "--text", "--signal", "--error", "--time", "--trigger", "--from", "--backward"},
         f.rec + " --trigger 3 --from 010x", "--from"},
        {"dump", {"--range", "--char", "--control", "--time", "--language"}, f.rec + " --char utf8", "--char"},
        {"info", {"--json"}, f.rec + " --xml", "--xml"},
        {"ports", {"--all"}, "--busy", "--busy"},
        {"scenario", {"--demo"}, "--demo x.ksc", "--demo"},
        {"env show", {"--data-dir", "--language"}, "x.kef --language fr", "--language"},
        {"env", {"show"}, "list", "unknown command 'list'"},
    };
    for (const auto &c : cases) {
        if (!c.options.empty()) {
            const CliRun help = cli(c.command + " --help");
            EXPECT_EQ(help.code, 0) << c.command;
            for (const auto &o : c.options)
                EXPECT_NE(help.out.find(o), std::string::npos) << c.command << " --help does not name " << o;
        }
        const CliRun bad = cli(c.command + " " + c.bad);
        EXPECT_EQ(bad.code, 2) << c.command << " " << c.bad << "\n" << bad.out;
        EXPECT_NE(bad.out.find(c.named), std::string::npos) << c.command << " " << c.bad << "\n" << bad.out;
    }

    // The overview lists every command; no command at all is a usage error.
    const CliRun overview = cli("--help");
    EXPECT_EQ(overview.code, 0);
    for (const char *command : {"dump", "env", "export", "info", "ports", "record", "scenario", "search"})
        EXPECT_NE(overview.out.find(std::string("\n  ") + command + " "), std::string::npos) << command;
    EXPECT_EQ(cli("").code, 2);
    const CliRun unknown = cli("replay " + f.rec);
    EXPECT_EQ(unknown.code, 2);
    EXPECT_NE(unknown.out.find("unknown command 'replay'"), std::string::npos) << unknown.out;

    // --verbose belongs to the program: before or after the command, the command runs the same.
    const CliRun plain = cli("search " + f.rec + " --trigger 3");
    EXPECT_EQ(plain.out, "5\n");
    EXPECT_EQ(cli("--verbose search " + f.rec + " --trigger 3").out, plain.out);
    EXPECT_EQ(cli("search " + f.rec + " --trigger 3 -v").out, plain.out);
}

TEST(CliRecordings, SearchPrintsTheMpOrTheNotFoundText)
{
    Files f;
    EXPECT_EQ(cli("search " + f.rec + " --data 4142 --d1").out, "6\n");
    EXPECT_EQ(cli("search " + f.rec + " --trigger 3").out, "5\n");
    EXPECT_EQ(cli("search " + f.rec + " --text 'i!' --d1 --d2").code, 1); // one circuit at a time
    EXPECT_EQ(cli("search " + f.rec + " --signal S1=1 --backward").out, "7\n");
    EXPECT_EQ(cli("search " + f.rec + " --error PE=1").out, "7\n");
    EXPECT_EQ(cli("search " + f.rec + " --time '2026-03-01 12:00:03.5'").out, "4\n");
    const CliRun none = cli("search " + f.rec + " --data 21 --d1");
    EXPECT_EQ(none.code, 1);
    EXPECT_EQ(none.out, "The requested data cannot be found from the current position!\n");
    const CliRun sig = cli("search " + f.rec + " --signal M3=1 --language de");
    EXPECT_EQ(sig.code, 1);
    EXPECT_NE(sig.out.find("Fehlerbedingung"), std::string::npos);
}

TEST(CliRecordings, ExportAndDumpWriteWhatTheyShould)
{
    Files f;
    const std::string out = f.dir.file("out.csv");
    CliRun r = cli("export " + f.rec + " -o " + out + " --columns mp,d1 --frame none --separator comma --range 2:3");
    ASSERT_EQ(r.code, 0) << r.out;
    std::ifstream in(out, std::ios::binary);
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_EQ(text, "Event no.,D1 [RAW],\r\n2,H,\r\n3,i,\r\n");

    r = cli("export " + f.rec + " --format raw --columns d2");
    EXPECT_EQ(r.code, 0);
    EXPECT_EQ(r.out, "!");

    r = cli("dump " + f.rec + " --range 4:5 --char hex --time relative");
    ASSERT_EQ(r.code, 0) << r.out;
    EXPECT_NE(r.out.find("Date/Time-Relative"), std::string::npos);
    EXPECT_NE(r.out.find("0 day(s)  00:00:03,000000"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("T_3.0.start"), std::string::npos);
}

TEST(CliRecordings, ClearErrorsForBadInputAndNoCrash)
{
    Files f;
    std::mt19937 rng(7);
    const std::string junk = f.dir.file("junk.ksr");
    {
        std::ofstream j(junk, std::ios::binary);
        for (int i = 0; i < 80 * 500 + 13; ++i)
            j.put(static_cast<char>(rng()));
    }
    struct Case {
        std::string args;
        int code;
        const char *says;
    } cases[] = {
        {"export " + f.dir.file("missing.ksr"), 3, "cannot open"},
        {"search " + junk + " --data 41 --d1", 3, "not a Kestrel recording"},
        {"dump " + junk, 3, "not a Kestrel recording"},
        {"export " + f.rec + " --range 5:99", 2, "beyond the recording"},
        {"dump " + f.rec + " --range 50:60", 2, "outside the recording"},
        {"search " + f.rec + " --data 4G --d1", 2, "malformed hex pattern"},
        {"search " + f.rec + " --data 4100 --d1", 2, "cannot be searched"},
        {"search " + f.rec + " --data 41", 2, "select at least one data line"},
        {"search " + f.rec + " --signal X9=1", 2, "unknown signal"},
        {"search " + f.rec + " --time 'tomorrow'", 2, "malformed time"},
        {"search " + f.rec + " --trigger 1 --signal S1=1", 2, "2 were given"},
        {"search " + f.rec + " --trigger 0", 2, "--trigger: takes a whole number from 1 to 255"}, // 0: any ordinary MP
        {"export " + f.rec + " -o " + f.dir.file("no/such/dir/x.csv"), 3, "cannot create"},
        {"export " + f.rec + " --columns d1,bogus", 2, "unknown column"},
    };
    for (const auto &c : cases) {
        const CliRun r = cli(c.args);
        EXPECT_LT(r.code, 128) << "crashed: " << c.args;
        EXPECT_EQ(r.code, c.code) << c.args << "\n" << r.out;
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
