// The chimer's command line: both spellings of -s and -r, and every kind of bad use
// refused with a message that names what is wrong.

#include <gtest/gtest.h>

#include <QStringList>

#include "chimer_args.h"

using namespace kestrel::chimer;

TEST(ChimerArgs, ModeAndFileInBothSpellings)
{
    const struct {
        QStringList args;
        ChimerMode mode;
        QString file;
    } cases[] = {
        {{"-s", "/a/bell.wav"}, ChimerMode::Once, "/a/bell.wav"},
        {{"-r", "/a/bell.mp3"}, ChimerMode::Repeat, "/a/bell.mp3"},
        {{"-s/a/bell.wav"}, ChimerMode::Once, "/a/bell.wav"},
        {{"-rbell.wav"}, ChimerMode::Repeat, "bell.wav"},
        // The word after -s is the path even when it looks like an option.
        {{"-s", "-r"}, ChimerMode::Once, "-r"},
        {{"-s", "with space.wav"}, ChimerMode::Once, "with space.wav"},
        {{"--quit-after", "250", "-r", "x.wav"}, ChimerMode::Repeat, "x.wav"},
    };
    for (const auto &c : cases) {
        const ChimerArgs a = ParseChimerArgs(c.args);
        EXPECT_EQ(a.mode, c.mode) << c.args.join(' ').toStdString();
        EXPECT_EQ(a.file, c.file) << c.args.join(' ').toStdString();
        EXPECT_TRUE(a.error.isEmpty()) << a.error.toStdString();
    }
}

TEST(ChimerArgs, QuitAfterTakesPositiveMillisecondsOnly)
{
    EXPECT_EQ(ParseChimerArgs({"-s", "x.wav", "--quit-after", "1500"}).quitAfterMs, 1500);
    EXPECT_EQ(ParseChimerArgs({"-s", "x.wav"}).quitAfterMs, 0);
    for (const char *bad : {"0", "-5", "+5", " 5", "1e3", "abc", "", "99999999999"}) {
        const ChimerArgs a = ParseChimerArgs({"-s", "x.wav", "--quit-after", bad});
        EXPECT_EQ(a.mode, ChimerMode::Invalid) << bad;
        EXPECT_TRUE(a.error.contains("--quit-after")) << a.error.toStdString();
    }
    EXPECT_EQ(ParseChimerArgs({"-s", "x.wav", "--quit-after"}).mode, ChimerMode::Invalid);
}

// --help alone, with its exit code and text, is the program-run test's.
TEST(ChimerArgs, HelpWinsWhereverItStands)
{
    EXPECT_EQ(ParseChimerArgs({"-h"}).mode, ChimerMode::Help);
    EXPECT_EQ(ParseChimerArgs({"-s", "x.wav", "--help"}).mode, ChimerMode::Help);
}

// Each refusal says what is wrong, so the one line on stderr is enough to fix the call. No
// arguments, an unknown option and two modes also run through the program in its own test.
TEST(ChimerArgs, BadUseIsRefusedWithTheReason)
{
    const struct {
        QStringList args;
        const char *mentions;
    } cases[] = {
        {{"--quit-after", "100"}, "no sound file"},
        {{"-s"}, "-s needs"},
        {{"-r"}, "-r needs"},
        {{"-s", ""}, "-s needs"},
        {{"--single", "x.wav"}, "'--single'"},
        {{"x.wav"}, "'x.wav'"},
        {{"-s", "a.wav", "b.wav"}, "'b.wav'"},
        {{"-s", "a.wav", "-s", "a.wav"}, "only one"},
    };
    for (const auto &c : cases) {
        const ChimerArgs a = ParseChimerArgs(c.args);
        EXPECT_EQ(a.mode, ChimerMode::Invalid) << c.args.join(' ').toStdString();
        EXPECT_TRUE(a.error.contains(c.mentions)) << c.args.join(' ').toStdString() << ": " << a.error.toStdString();
        EXPECT_FALSE(a.error.contains('\n')) << a.error.toStdString();
    }
}
