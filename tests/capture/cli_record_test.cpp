// kestrel-cli record / info end to end, on the simulated line.

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "capture/record_summary.h"
#include "support/temp_dir.h"

using namespace kestrel;

namespace {

// Starts kestrel-cli with stdout and stderr into one file.
pid_t startCli(const std::vector<std::string> &args, const std::string &outputFile)
{
    std::vector<std::string> argv{KESTREL_CLI_PATH};
    argv.insert(argv.end(), args.begin(), args.end());
    const pid_t pid = ::fork();
    if (pid == 0) {
        const int fd = ::open(outputFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        ::dup2(fd, 1);
        ::dup2(fd, 2);
        ::setenv("LANG", "C", 1); // English messages
        ::unsetenv("LC_ALL");
        ::unsetenv("LC_MESSAGES");
        std::vector<char *> cargs;
        for (auto &a : argv)
            cargs.push_back(a.data());
        cargs.push_back(nullptr);
        ::execv(cargs[0], cargs.data());
        ::_exit(127);
    }
    return pid;
}

// Exit code, or 128 + signal; -1 when it did not end within the time-out (then it is killed).
int waitCli(pid_t pid, std::chrono::seconds timeout = std::chrono::seconds(30))
{
    const auto until = std::chrono::steady_clock::now() + timeout;
    int status = 0;
    while (::waitpid(pid, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > until) {
            ::kill(pid, SIGKILL);
            ::waitpid(pid, &status, 0);
            return -1;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

struct CliFixture : ::testing::Test {
    test::TempDir dir;
    std::string out = dir.file("cli.out");
    std::string ksr = dir.file("line.ksr");

    int run(const std::vector<std::string> &args) { return waitCli(startCli(args, out)); }
    std::string output() const
    {
        std::ifstream f(out);
        std::stringstream s;
        s << f.rdbuf();
        return s.str();
    }
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

TEST_F(CliFixture, RecordThenAppendIsOneSoundRecording)
{
    ASSERT_EQ(run({"record", "--simulate", "-o", ksr, "--duration", "1"}), 0) << output();
    const RecordingSummary first = summary();
    EXPECT_TRUE(first.sound());
    EXPECT_EQ(systemMarks(first), (std::vector<int>{0, 6, 5}));
    EXPECT_GT(data(first), 0u);

    ASSERT_EQ(run({"record", "--simulate", "-o", ksr, "--append", "--duration", "1", "--baud", "19200",
                   "--parity", "E", "--data-bits", "7", "--stop-bits", "2"}),
              0)
        << output();
    const RecordingSummary both = summary();
    EXPECT_TRUE(both.sound()) << both.numberGaps << " " << both.timeBackwards << " " << both.counterMismatches;
    EXPECT_EQ(systemMarks(both), (std::vector<int>{0, 6, 5, 4, 5}));
    ASSERT_EQ(both.marks.size(), 5u);
    EXPECT_EQ(both.marks[3].mp, first.mpCount); // mark 4 follows the last MP
    EXPECT_EQ(both.marks[4].mp, both.mpCount - 1);
    EXPECT_GT(data(both), data(first));

    ASSERT_EQ(run({"info", ksr}), 0);
    EXPECT_NE(output().find("checks:        ok"), std::string::npos) << output();
    ASSERT_EQ(run({"info", ksr, "--json"}), 0);
    EXPECT_NE(output().find("\"sound\": true"), std::string::npos) << output();
    EXPECT_NE(output().find("\"mps\": " + std::to_string(both.mpCount)), std::string::npos);
}

TEST_F(CliFixture, CtrlCAndSigtermStopWithTheStopMark)
{
    for (int sig : {SIGINT, SIGTERM}) {
        std::filesystem::remove(ksr);
        const pid_t pid = startCli({"record", "--simulate", "-o", ksr, "--replace"}, out);
        ASSERT_TRUE(waitForRecording());
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        ::kill(pid, sig);
        ASSERT_EQ(waitCli(pid), 0) << "signal " << sig << "\n" << output();
        const RecordingSummary s = summary();
        EXPECT_TRUE(s.sound());
        EXPECT_EQ(systemMarks(s), (std::vector<int>{0, 6, 5})) << "signal " << sig;
        EXPECT_TRUE(s.last.isSystemMark());
        EXPECT_EQ(s.last.markCode, 5);
    }
}

TEST_F(CliFixture, KilledRecordingIsReadableAndAppendContinuesWithoutGap)
{
    const pid_t pid = startCli({"record", "--simulate", "-o", ksr}, out);
    ASSERT_TRUE(waitForRecording());
    std::this_thread::sleep_for(std::chrono::milliseconds(700));
    ::kill(pid, SIGKILL);
    ASSERT_EQ(waitCli(pid), 128 + SIGKILL);
    const RecordingSummary killed = summary();
    EXPECT_EQ(killed.numberGaps, 0u);
    EXPECT_EQ(killed.counterMismatches, 0u);
    EXPECT_EQ(systemMarks(killed), (std::vector<int>{0, 6})); // no stop mark
    EXPECT_EQ(run({"info", ksr}), 0);

    // A kill in the middle of a write leaves part of a record behind.
    { std::ofstream(ksr, std::ios::app | std::ios::binary) << std::string(37, '\x7e'); }
    EXPECT_EQ(run({"info", ksr}), 0);
    EXPECT_NE(output().find("torn tail:     37 bytes"), std::string::npos) << output();

    ASSERT_EQ(run({"record", "--simulate", "-o", ksr, "--append", "--duration", "0.3"}), 0) << output();
    EXPECT_NE(output().find("incomplete record"), std::string::npos) << output();
    const RecordingSummary s = summary();
    EXPECT_TRUE(s.sound());
    EXPECT_EQ(s.tornBytes, 0u);
    EXPECT_EQ(systemMarks(s), (std::vector<int>{0, 6, 4, 5}));
    EXPECT_EQ(s.marks[2].mp, killed.mpCount);
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
        {{"record", sim, "-o", ksr, "--parity", "X"}, 2},
        {{"record", sim, "-o", ksr, "--data-bits", "9"}, 2},
        {{"record", sim, "-o", ksr, "--stop-bits", "3"}, 2},
        {{"record", sim, "-o", ksr, "--duration", "-1"}, 2},
        {{"record", sim, "-o", ksr, "--duration", "soon"}, 2},
        {{"record", sim, "-o", ksr, "--append", "--replace"}, 2},
        {{"record", sim, "-o", ksr, "--port-a", "/dev/null"}, 2},
        {{"record", "-o", ksr}, 2},
        {{"record", sim, "-o", ksr, "--frobnicate"}, 2},
        {{"record", sim, dir.file("missing.ksc"), "-o", ksr}, 2},
        {{"record", sim, dir.file("bad.ksc"), "-o", ksr}, 2},
        {{"record", sim, "-o", dir.file("plain") + "/x.ksr", "--duration", "0.2"}, 3},
        {{"record", "-o", ksr, "--port-a", dir.file("no-tty-a"), "--port-b", dir.file("no-tty-b")}, 3},
        {{"info", dir.file("missing.ksr")}, 3},
        {{"info"}, 2},
        {{"info", ksr, ksr}, 2},
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
}

namespace {

// A pseudo-terminal pair: the test writes into the master, kestrel-cli reads the slave.
struct Pty {
    Pty()
    {
        master = ::posix_openpt(O_RDWR | O_NOCTTY);
        ::fcntl(master, F_SETFD, FD_CLOEXEC); // kestrel-cli must not hold our end open
        ::grantpt(master);
        ::unlockpt(master);
        slave = ::ptsname(master);
    }
    ~Pty()
    {
        if (master >= 0)
            ::close(master);
    }
    void send(const std::string &bytes) const { ASSERT_EQ(::write(master, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size())); }
    int master = -1;
    std::string slave;
};

} // namespace

TEST_F(CliFixture, RealPortsRecordEveryByteRefuseABusyPortAndStopWhenUnplugged)
{
    for (const bool unplug : {false, true}) {
        Pty a, b;
        ASSERT_GE(a.master, 0);
        const std::vector<std::string> ports{"--port-a", a.slave, "--port-b", b.slave, "--baud", "115200"};
        std::vector<std::string> args{"record", "-o", ksr, "--replace"};
        args.insert(args.end(), ports.begin(), ports.end());
        std::filesystem::remove(ksr);
        const pid_t pid = startCli(args, out);
        ASSERT_TRUE(waitForRecording());

        // The ports are taken: a second recorder says so and leaves its file alone.
        std::vector<std::string> second{"record", "-o", dir.file("second.ksr"), "--duration", "1"};
        second.insert(second.end(), ports.begin(), ports.end());
        const std::string firstOut = out;
        out = dir.file("second.out");
        EXPECT_EQ(run(second), 3);
        EXPECT_NE(output().find("in use"), std::string::npos) << output();
        EXPECT_EQ(::access(dir.file("second.ksr").c_str(), F_OK), -1);
        out = firstOut;

        for (int i = 0; i < 50; ++i) {
            a.send("ANSWER " + std::to_string(i) + "\r");
            b.send("Q" + std::to_string(i % 10));
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        if (unplug) {
            ::close(a.master); // the other side goes away: the port is lost
            a.master = -1;
        } else {
            ::kill(pid, SIGTERM);
        }
        EXPECT_EQ(waitCli(pid), unplug ? 3 : 0) << output();
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
