// kestrel-chimer run as the main program runs it: bad use ends at once with one line on
// stderr and the right exit code; a good file opens the window and plays until it ends,
// is stopped, or the test's --quit-after runs out. Every run has a deadline, so a player
// that never finishes cannot hang the suite.

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "support/run_cli.h"
#include "support/temp_dir.h"
#include "wav_bytes.h"

namespace test = kestrel::test;

namespace {

struct ChimerResult {
    int code = -1;   // exit code, or 128 + signal
    std::string out; // standard output and error together
    long long tookMs = 0;
};

// Runs the chimer with the given arguments, each quoted; envPrefix may replace the environment
// ("env -i ..."). A time-out turns a hang into exit code 124, not a stuck suite.
ChimerResult chimer(const std::vector<std::string> &args, const std::string &envPrefix = "")
{
    std::string quoted;
    for (const auto &a : args)
        quoted += " '" + a + "'";
    const auto start = std::chrono::steady_clock::now();
    const test::CliRun run = test::RunCapture(KESTREL_CHIMER_PATH, quoted, envPrefix);
    const auto took = std::chrono::steady_clock::now() - start;
    return {run.code, run.out, std::chrono::duration_cast<std::chrono::milliseconds>(took).count()};
}

long lineCount(const std::string &s) { return std::count(s.begin(), s.end(), '\n'); }

// Lines the chimer writes itself start with its name; Qt and the sound back end may add
// their own remarks about the machine (no sound server, offscreen platform), which are no fault.
bool reportsOwnError(const std::string &err)
{
    return err.rfind("kestrel-chimer:", 0) == 0 || err.find("\nkestrel-chimer:") != std::string::npos;
}

struct SoundFiles {
    test::TempDir dir;
    std::string silence = dir.file("silence.wav");
    std::string broken = dir.file("broken.wav");
    std::string text = dir.file("readme.wav");
    SoundFiles()
    {
        test::WriteFile(silence, test::SilentWav(0.2, 8000));
        test::WriteFile(broken, test::BrokenWav());
        test::WriteFile(text, "just text\n");
    }
};

} // namespace

// Bad use and file problems are found before Qt starts: no window, one line, exit 2 or 3.
TEST(ChimerRun, BadUseAndBadFilesEndAtOnceWithOneLine)
{
    SoundFiles f;
    const std::string missing = f.dir.file("missing.wav");
    const struct {
        std::vector<std::string> args;
        int code;
        std::string mentions;
    } cases[] = {
        {{}, 2, "no sound file"},
        {{"-x", f.silence}, 2, "'-x'"},
        {{"-s", f.silence, "-r", f.silence}, 2, "only one"},
        {{"-s", missing}, 3, missing},
        {{"-r", f.text}, 3, f.text},
    };
    for (const auto &c : cases) {
        const ChimerResult r = chimer(c.args);
        EXPECT_EQ(r.code, c.code) << c.mentions << r.out;
        EXPECT_EQ(lineCount(r.out), 1) << r.out;
        EXPECT_TRUE(reportsOwnError(r.out)) << r.out;
        EXPECT_NE(r.out.find(c.mentions), std::string::npos) << r.out;
    }
    const ChimerResult help = chimer({"--help"});
    EXPECT_EQ(help.code, 0);
    EXPECT_NE(help.out.find("-r FILE"), std::string::npos);
}

// Without any display Qt would abort; the chimer says so and ends instead.
TEST(ChimerRun, NoDisplayIsOneLineAndExitFour)
{
    SoundFiles f;
    for (const char *platform : {"LANG=C", "QT_QPA_PLATFORM=xcb"}) {
        const ChimerResult r = chimer({"-s", f.silence}, std::string("env -i PATH=/usr/bin:/bin ") + platform);
        EXPECT_EQ(r.code, 4) << platform << r.out;
        EXPECT_EQ(lineCount(r.out), 1) << r.out;
        EXPECT_TRUE(reportsOwnError(r.out)) << r.out;
    }
}

TEST(ChimerRun, PlaysAGoodFileWithoutComplaint)
{
    SoundFiles f;
    // Once: ends by itself after the file, or at --quit-after where no device plays it.
    const ChimerResult once = chimer({"-s", f.silence, "--quit-after", "3000"});
    EXPECT_EQ(once.code, 0) << once.out;
    EXPECT_FALSE(reportsOwnError(once.out)) << once.out;

    // Repeat never ends by itself: it is still there when --quit-after ends it.
    const ChimerResult repeat = chimer({"-r", f.silence, "--quit-after", "1000"});
    EXPECT_EQ(repeat.code, 0) << repeat.out;
    EXPECT_GE(repeat.tookMs, 1000);
    EXPECT_FALSE(reportsOwnError(repeat.out)) << repeat.out;
}

// A file that passes the header check but cannot be decoded: the window shows why and
// stays until stopped; the program neither crashes nor reports on stderr.
TEST(ChimerRun, UndecodableFileKeepsTheWindowAndEndsWithExitThree)
{
    SoundFiles f;
    const ChimerResult r = chimer({"-s", f.broken, "--quit-after", "4000"});
    EXPECT_EQ(r.code, 3) << r.out;
    EXPECT_GE(r.tookMs, 4000); // still open at the end, not quit on the error
    EXPECT_FALSE(reportsOwnError(r.out)) << r.out;
}
