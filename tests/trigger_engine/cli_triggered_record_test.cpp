// kestrel-cli record --env with triggers, end to end on a simulated dial-up:
// the environment starts the recording on ATD and stops it on NO CARRIER.

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "record/record_reader.h"
#include "support/run_cli.h"
#include "support/temp_dir.h"

namespace kestrel {
namespace {

constexpr const char *kDialUp = R"(baud 9600
chunk 4
b "AT\r"
wait 50ms
a "\r\nOK\r\n"
wait 50ms
b "ATD 12345\r"
wait 200ms
a "\r\nCONNECT 9600\r\n"
& modem A +DCD
wait 50ms
b "ping"
wait 30ms
a "pong"
wait 50ms
a "\r\nNO CARRIER"
wait 1s
b "more data after the call"
wait 300ms
)";

struct TriggeredRecord : ::testing::Test {
    test::TempDir dir;
    std::string scenario = dir.file("dialup.ksc");
    std::string env = dir.file("dialup.kef");
    std::string ksr = dir.file("call.ksr");
    std::string out = dir.file("cli.out");
    std::string argsFile = dir.file("args.txt");

    void SetUp() override
    {
        std::ofstream(scenario) << kDialUp;
        const std::string script = dir.file("note.sh");
        std::ofstream(script) << "#!/bin/sh\nprintf '%s\\n' \"$@\" > " << argsFile << "\n";
        ::chmod(script.c_str(), 0755);
        std::ofstream(env) << "[Trigger0]\nName=dial\nActive=1\nType=0\nEvent=0\nD1=1\nData=415444\n"
                           << "[Trigger1]\nName=hang up\nActive=1\nType=1\nEvent=0\nD2=1\nData=4E4F2043415252494552\n"
                           << "ExecCommand=1\nCommandFilePath=" << script << "\nCommandParams=%TRIG_NUM% \"%TRIG_NAME%\"\n";
    }
    int record(std::vector<std::string> extra = {})
    {
        std::vector<std::string> args{"record", "--simulate", scenario, "--env", env, "-o", ksr, "--replace"};
        args.insert(args.end(), extra.begin(), extra.end());
        return test::WaitCli(test::StartCli(KESTREL_CLI_PATH, args, out));
    }
};

TEST_F(TriggeredRecord, OnlyTheCallIsRecordedAndTheStopTriggerEndsTheCommand)
{
    ASSERT_EQ(record(), 0) << test::ReadWholeFile(out);
    RecordReader reader;
    ASSERT_TRUE(reader.open(ksr));
    std::vector<MpRecord> recs;
    reader.readBlock(0, reader.recordCount(), recs);

    std::size_t start = 0, stop = 0;
    for (std::size_t i = 0; i < recs.size(); ++i) {
        if (recs[i].isTriggerMark() && recs[i].markCode == 1)
            start = i;
        if (recs[i].isTriggerMark() && recs[i].markCode == 2)
            stop = i;
    }
    ASSERT_GT(start, 0u) << test::ReadWholeFile(out);
    ASSERT_GT(stop, start);
    for (std::size_t i = 0; i < start; ++i)
        EXPECT_TRUE(recs[i].isSystemMark()) << "MP " << i << " before the start mark";
    EXPECT_EQ(recs[start].markExtra, 1);
    EXPECT_EQ(recs[stop].markExtra, 2);

    std::string d1, d2;
    for (std::size_t i = start + 1; i < stop; ++i) {
        if (recs[i].d1Valid)
            d1 += static_cast<char>(recs[i].d1);
        if (recs[i].d2Valid)
            d2 += static_cast<char>(recs[i].d2);
    }
    EXPECT_EQ(d1, " 12345\rping");
    EXPECT_EQ(d2, "\r\nCONNECT 9600\r\npong\r\nNO CARRIER");
    EXPECT_TRUE(recs[stop - 1].d2Valid && recs[stop - 1].d2 == 'R'); // the last byte of NO CARRIER
    ASSERT_EQ(recs.size(), stop + 2);
    EXPECT_TRUE(recs[stop + 1].isSystemMark());
    EXPECT_EQ(recs[stop + 1].markCode, 5);

    // Without --allow-actions the hang-up command was only listed.
    EXPECT_FALSE(std::filesystem::exists(argsFile));
    EXPECT_NE(test::ReadWholeFile(out).find("trigger 2: run"), std::string::npos) << test::ReadWholeFile(out);
}

TEST_F(TriggeredRecord, AllowedActionsRunWithTheirArguments)
{
    ASSERT_EQ(record({"--allow-actions"}), 0) << test::ReadWholeFile(out);
    for (int i = 0; i < 500 && !std::filesystem::exists(argsFile); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_EQ(test::ReadWholeFile(argsFile), "2\nhang up\n");
    EXPECT_EQ(test::ReadWholeFile(out).find("were not run"), std::string::npos);
}

} // namespace
} // namespace kestrel
