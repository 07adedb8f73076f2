// The player on a file made here: a broken file is reported once, with a reason. A good
// file, once and repeated, is the program-run test's (kestrel-chimer ends with 0 at
// --quit-after, and a repeat is still playing then). No test waits for a sound to end: on
// a machine without a sound device the back end may report playing for ever.

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
