// kestrel-cli record / info end to end, on the simulated line.

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "record/record_summary.h"
#include "support/pty_pair.h"
#include "support/run_cli.h"
#include "support/temp_dir.h"

using namespace kestrel;

namespace {

pid_t startCli(const std::vector<std::string> &args, const std::string &outputFile, rlim_t fileLimit = 0)
{
    return test::StartCli(KESTREL_CLI_PATH, args, outputFile, fileLimit);
}
using test::WaitCli;

struct CliFixture : ::testing::Test {
    test::TempDir dir;
    std::string out = dir.file("cli.out");
    std::string ksr = dir.file("line.ksr");

    int run(const std::vector<std::string> &args) { return WaitCli(startCli(args, out)); }
    std::string output() const { return test::ReadWholeFile(out); }
    RecordingSummary summary() const
    {
        RecordReader r;
        EXPECT_TRUE(r.open(ksr));
        return SummarizeRecording(r);
    }
    // Waits until the recorder has written its start marks and the first MP (ports open,
    // signal handlers in place); false after ten seconds.
    bool waitForRecording() const
    {
        const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (std::chrono::steady_clock::now() < until) {
            RecordReader r;
            if (r.open(ksr) && r.recordCount() >= 3)
                return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        return false;
    }
    static std::vector<int> systemMarks(const RecordingSummary &s)
    {
        std::vector<int> codes;
        for (const auto &m : s.marks)
            if (m.system())
                codes.push_back(m.code);
        return codes;
    }
    static std::uint64_t data(const RecordingSummary &s) { return s.last.counts[0] + s.last.counts[1]; }
};

} // namespace

TEST_F(CliFixture, KilledRecordingIsReadableAndAppendContinuesWithoutGap)
{
    const pid_t pid = startCli({"record", "--simulate", "-o", ksr}, out);
    ASSERT_TRUE(waitForRecording());
    std::this_thread::sleep_for(std::chrono::milliseconds(700));
    ::kill(pid, SIGKILL);
    ASSERT_EQ(WaitCli(pid), 128 + SIGKILL);
    const RecordingSummary killed = summary();
    EXPECT_EQ(systemMarks(killed), (std::vector<int>{0, 6})); // no stop mark

    // A kill in the middle of a write leaves part of a record behind.
    { std::ofstream(ksr, std::ios::app | std::ios::binary) << std::string(37, '\x7e'); }
    EXPECT_EQ(run({"info", ksr}), 0);
    EXPECT_NE(output().find("torn tail:     37 bytes"), std::string::npos) << output();
    EXPECT_NE(output().find("no stop mark: the recorder was killed, crashed or ran out of space"), std::string::npos)
        << output();

    // Appended with other line settings: one sound recording, numbers, counters and time going on.
    ASSERT_EQ(run({"record", "--simulate", "-o", ksr, "--append", "--duration", "0.3", "--baud", "19200", "--parity",
                   "E", "--data-bits", "7", "--stop-bits", "2"}),
              0)
        << output();
    EXPECT_NE(output().find("incomplete record"), std::string::npos) << output();
    const RecordingSummary s = summary();
    EXPECT_TRUE(s.sound()) << s.numberGaps << " " << s.timeBackwards << " " << s.counterMismatches;
    EXPECT_EQ(s.tornBytes, 0u);
    EXPECT_EQ(systemMarks(s), (std::vector<int>{0, 6, 4, 5}));
    EXPECT_EQ(s.marks[2].mp, killed.mpCount);
    EXPECT_GT(data(s), data(killed));
    ASSERT_EQ(run({"info", ksr}), 0);
    EXPECT_NE(output().find("checks:        ok"), std::string::npos) << output();
    EXPECT_NE(output().find("ends:          with the stop mark"), std::string::npos) << output();
}

TEST_F(CliFixture, FileSizeLimitIsReportedLikeAFullDiskAndKeepsWholeRecords)
{
    // 8192 is no multiple of 80: the write that crosses it lands in part.
    const int code = WaitCli(startCli({"record", "--simulate", "-o", ksr, "--duration", "5"}, out, 8192));
    EXPECT_EQ(code, 3) << output();
    EXPECT_NE(output().find("Error writing the record file"), std::string::npos) << output();
    const RecordingSummary s = summary();
    EXPECT_EQ(s.tornBytes, 0u);
    EXPECT_EQ(s.mpCount, 8192u / 80u);
    EXPECT_TRUE(s.sound());
    EXPECT_EQ(systemMarks(s), (std::vector<int>{0, 6}));
}

TEST_F(CliFixture, InfoJsonStaysJsonForTimesThatAreNoNumbers)
{
    // A damaged file can hold any bit pattern in the time field.
    {
        std::ofstream f(ksr, std::ios::binary);
        for (double t : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(), 46000.5}) {
            MpRecord mp;
            mp.time = t;
            mp.markKind = kSystemMarkKind;
            const MpBytes b = EncodeMp(mp);
            f.write(reinterpret_cast<const char *>(b.data()), b.size());
        }
    }
    ASSERT_EQ(run({"info", ksr, "--json"}), 0);
    const std::string json = output();
    EXPECT_EQ(json.find("nan"), std::string::npos) << json;
    EXPECT_EQ(json.find("inf"), std::string::npos) << json;
    EXPECT_NE(json.find("\"firstTime\": null"), std::string::npos) << json;
    EXPECT_NE(json.find("\"time\": 46000.5"), std::string::npos) << json;
}

TEST_F(CliFixture, BadInvocationsSayWhyAndExitNonZero)
{
    std::ofstream(dir.file("plain")) << "x";
    std::ofstream(dir.file("bad.ksc")) << "this is not a scenario\n";
    const std::string sim = "--simulate";
    struct Case {
        std::vector<std::string> args;
        int code;
    };
    const Case cases[] = {
        {{"record", sim}, 2},
        {{"record", sim, "-o", ksr, "--baud", "fast"}, 2},
        {{"record", sim, "-o", ksr, "--baud", "0"}, 2},
        {{"record", sim, "-o", ksr, "--duration", "-1"}, 2},
        {{"record", sim, "-o", ksr, "--append", "--replace"}, 2},
        {{"record", "-o", ksr}, 2},
        {{"record", sim, dir.file("bad.ksc"), "-o", ksr}, 2},
        {{"record", sim, "-o", dir.file("plain") + "/x.ksr", "--duration", "0.2"}, 3},
        {{"record", "-o", ksr, "--port-a", dir.file("no-tty-a"), "--port-b", dir.file("no-tty-b")}, 3},
        {{"info", dir.file("missing.ksr")}, 3},
        {{"info"}, 2},
    };
    for (const auto &c : cases) {
        std::string joined;
        for (const auto &a : c.args)
            joined += a + " ";
        EXPECT_EQ(run(c.args), c.code) << joined << "\n" << output();
        EXPECT_FALSE(output().empty()) << joined;
        EXPECT_EQ(::access(ksr.c_str(), F_OK), -1) << joined << ": no file may be left behind";
    }

    // An existing recording is never touched without --append or --replace.
    ASSERT_EQ(run({"record", sim, "-o", ksr, "--duration", "0.2"}), 0) << output();
    const RecordingSummary before = summary();
    EXPECT_EQ(run({"record", sim, "-o", ksr, "--duration", "0.2"}), 2);
    EXPECT_NE(output().find("--append or --replace"), std::string::npos);
    EXPECT_EQ(summary().mpCount, before.mpCount);
    ASSERT_EQ(run({"record", sim, "-o", ksr, "--replace", "--duration", "0.2"}), 0) << output();
    EXPECT_EQ(systemMarks(summary()), (std::vector<int>{0, 6, 5})); // a fresh file, not appended

    // A file that is not a recording is refused whatever the mode, and left as it was.
    const std::string notes = dir.file("notes.txt");
    const std::string text = "call the vendor about the handshake timing\n";
    for (const char *mode : {"--append", "--replace", "--duration"}) {
        std::ofstream(notes) << text;
        std::vector<std::string> args{"record", sim, "-o", notes, mode};
        if (std::string(mode) == "--duration")
            args.push_back("0.2");
        EXPECT_EQ(run(args), 3) << mode;
        EXPECT_NE(output().find("is not a Kestrel recording"), std::string::npos) << output();
        EXPECT_EQ(output().find("holds a recording"), std::string::npos) << output();
        EXPECT_EQ(test::ReadWholeFile(notes), text) << mode;
    }
}

TEST_F(CliFixture, RealPortsRecordEveryByteAndStopWhenUnplugged)
{
    for (const bool unplug : {false, true}) {
        test::PtyPair a, b;
        ASSERT_GE(a.master, 0);
        const std::vector<std::string> args{"record", "-o", ksr, "--replace", "--port-a", a.slavePath,
                                            "--port-b", b.slavePath, "--baud", "115200"};
        std::filesystem::remove(ksr);
        const pid_t pid = startCli(args, out);
        ASSERT_TRUE(waitForRecording());

        for (int i = 0; i < 50; ++i) {
            a.send("ANSWER " + std::to_string(i) + "\r");
            b.send("Q" + std::to_string(i % 10));
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        if (unplug) {
            a.closeMaster(); // the other side goes away: the port is lost
        } else {
            ::kill(pid, SIGINT); // Ctrl-C (SIGTERM takes the same way; the extcap test sends that)
        }
        EXPECT_EQ(WaitCli(pid), unplug ? 3 : 0) << output();
        if (unplug) {
            EXPECT_NE(output().find("lost during recording"), std::string::npos) << output();
        }
        const RecordingSummary s = summary();
        EXPECT_TRUE(s.sound());
        EXPECT_EQ(systemMarks(s), (std::vector<int>{0, 6, 5}));
        EXPECT_EQ(s.last.counts[0], 100u); // D1: "Qn" fifty times
        std::uint64_t answers = 0;
        for (int i = 0; i < 50; ++i)
            answers += 8 + std::to_string(i).size();
        EXPECT_EQ(s.last.counts[1], answers);
    }
}
