// The player on files made here. No test waits for a sound to end: on a machine without
// a sound device the back end may report playing for ever. What is checked is bounded in
// time: a broken file is reported, a good one is not, and repeat never reports an end.

#include <gtest/gtest.h>

#include <QSignalSpy>

#include "alert_player.h"
#include "support/temp_dir.h"
#include "wav_bytes.h"

using namespace kestrel::chimer;
namespace test = kestrel::test;

TEST(AlertPlayer, BrokenFileIsReportedOnceWithAReason)
{
    test::TempDir dir;
    const std::string path = dir.file("broken.wav");
    test::WriteFile(path, test::BrokenWav());
    AlertPlayer player;
    QSignalSpy failures(&player, &AlertPlayer::failed);
    QSignalSpy ends(&player, &AlertPlayer::playedOnce);
    player.play(QString::fromStdString(path), false);
    ASSERT_TRUE(failures.wait(10000));
    failures.wait(300); // time for a repeated report, which must not reach the window
    EXPECT_EQ(failures.count(), 1);
    EXPECT_FALSE(failures.first().first().toString().isEmpty());
    EXPECT_EQ(ends.count(), 0);
}

TEST(AlertPlayer, GoodFilePlaysAndRepeatReportsNoEnd)
{
    test::TempDir dir;
    const std::string path = dir.file("silence.wav");
    test::WriteFile(path, test::SilentWav(0.2, 8000));
    for (const bool repeat : {false, true}) {
        AlertPlayer player;
        QSignalSpy failures(&player, &AlertPlayer::failed);
        QSignalSpy ends(&player, &AlertPlayer::playedOnce);
        player.play(QString::fromStdString(path), repeat);
        failures.wait(1500); // several rounds of the 0.2 s file where a device plays it
        EXPECT_EQ(failures.count(), 0) << (failures.isEmpty() ? "" : failures.first().first().toString().toStdString());
        if (repeat)
            EXPECT_EQ(ends.count(), 0);
        else
            EXPECT_LE(ends.count(), 1);
        player.stop();
    }
}
