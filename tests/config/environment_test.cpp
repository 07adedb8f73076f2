#include <gtest/gtest.h>

#include <sys/stat.h>

#include <fstream>

#include "config/config_messages.h"
#include "config/environment.h"
#include "config/environment_save.h"
#include "golden_files.h"
#include "support/temp_dir.h"

using namespace kestrel;

namespace {

constexpr double kNow = 46347.75; // 2026-11-21 18:00

EnvLoadContext Context(const std::filesystem::path &dataFolder = "/data")
{
    return {dataFolder, std::nullopt, kNow};
}

// The values of golden/two_triggers.kef: the second trigger's switches are the
// first one's turned over, so that two keys swapped show in one of them.
Environment KnownEnvironment()
{
    Environment env;
    env.comA = {3, "/dev/serial/by-id/usb-FTDI_A-if00-port0", 115200, 7, ParityOrdinal::Even, 2};
    env.comB = {4, "", 19200, 5, ParityOrdinal::Space, 1};
    env.recordFile = "/srv/recordings/line 7.ksr";
    env.general = {"Prüfstand Süd — Messung 3", "Jörg Ørsted", "Quorv Messtechnik", "Hauptstraße 1", "Halle 4",
                   "München", "80331", "Bayern", "Deutschland", "+49 89 1234", "+49 89 1235", "https://example.org",
                   "j@example.org"};
    env.customer = {"株式会社 テスト", "Tanaka", "1-2-3 Shiba", "Floor 9", "Minato", "105-0014", "Tokyo", "Japan",
                    "+81 3 1111", "+81 3 2222", "https://example.jp", "t@example.jp"};
    env.description = {"Modem hand-shake on line 7", "", "third line = with equals"};

    TriggerDef start;
    start.Name = "Start on ETX";
    start.Description = "end of telegram";
    start.Active = true;
    start.Type = TriggerType::StartRecording;
    start.Event = TriggerEvent::Data;
    start.D1 = true;
    start.Data = "03";
    start.S1 = SignalEdge::Rises;
    start.M1 = SignalEdge::Falls;
    start.M2 = SignalEdge::Rises;
    start.M5 = SignalEdge::Falls;
    start.PE = start.LE = true;
    start.TimeReached = 46347.75; // 2026-11-21 18:00
    start.InActivityTime = 30;
    start.EventD1 = start.EventS1 = start.EventS2 = start.EventM5 = start.EventPE = start.EventLE = true;
    start.PlaySound = true;
    start.SoundFilePath = "/usr/share/sounds/alarm.wav";
    start.ExecCommand = true;
    start.CommandFilePath = "/usr/bin/logger";
    start.CommandParams = "-t kestrel \"%TRIG_NAME%\" %TIMESTAMP%";
    env.triggers.Append(start);

    TriggerDef quiet;
    quiet.Name = "Stop after a quiet line";
    quiet.Type = TriggerType::Inactivity;
    quiet.Event = TriggerEvent::Inactivity;
    quiet.D2 = true;
    quiet.M1 = SignalEdge::Rises;
    quiet.S2 = SignalEdge::Falls;
    quiet.M2 = SignalEdge::Falls;
    quiet.M3 = SignalEdge::Rises;
    quiet.FE = true;
    quiet.TimeReached = 46000.0 + (12 * 3600 + 34 * 60 + 56.789) / 86400.0; // 2025-12-09 12:34:56.789
    quiet.InActivityTime = 65535;
    quiet.EventD2 = quiet.EventM1 = quiet.EventM2 = quiet.EventM3 = quiet.EventFE = true;
    quiet.PlaySoundRepeat = true;
    env.triggers.Append(quiet);
    return env;
}

void WriteText(const std::filesystem::path &path, const std::string &text)
{
    std::ofstream(path, std::ios::binary) << text;
}

} // namespace

TEST(EnvironmentGolden, SavingAKnownSetUpGivesTheGoldenFile)
{
    test::TempDir dir;
    const auto path = dir.path() / "set up.kef";
    const Result saved = SaveEnvironment(KnownEnvironment(), path);
    ASSERT_TRUE(saved.ok()) << saved.detail;
    EXPECT_EQ(test::ReadWholeFile(path), test::ReadWholeFile(test::GoldenFile("two_triggers.kef")));
}

TEST(EnvironmentGolden, LoadingTheGoldenFileGivesEveryValue)
{
    const EnvLoadResult loaded = LoadEnvironment(test::GoldenFile("two_triggers.kef"), Context());
    EXPECT_TRUE(loaded.existed);
    EXPECT_TRUE(loaded.status.ok());
    // Stored as text first, so that a failure names the key that differs.
    IniFile got, want;
    StoreEnvironment(loaded.env, got);
    StoreEnvironment(KnownEnvironment(), want);
    EXPECT_EQ(got.ToText(), want.ToText());
    EXPECT_TRUE(loaded.env == KnownEnvironment());
    EXPECT_EQ(loaded.triggersWithExternalActions, (std::vector<std::size_t>{0}));
}

// Every key a file lacks, stored again: the defaults, a trigger's time being the moment of loading.
TEST(EnvironmentGolden, MissingKeysLoadTheirDefaults)
{
    const EnvLoadResult loaded = LoadEnvironment(IniFile::Parse("[Trigger0]\n"), Context());
    IniFile stored;
    StoreEnvironment(loaded.env, stored);
    EXPECT_EQ(stored.ToText(), test::ReadWholeFile(test::GoldenFile("defaults.kef")));
}

TEST(Environment, ListsEndAtTheFirstGapAndSavingAShorterListErasesStaleEntries)
{
    IniFile ini;
    for (int i : {0, 1, 2, 3, 4, 6})
        ini.WriteString(NumberedName("Trigger", i), "Name", "old" + std::to_string(i));
    for (int i = 0; i < 5; ++i)
        ini.WriteString("Description", NumberedName("Line", i), "old line");
    Environment env;
    env.description = {"new"};
    for (int i = 0; i < 3; ++i)
        env.triggers.Append(KnownEnvironment().triggers[static_cast<std::size_t>(i % 2)]);
    StoreEnvironment(env, ini);

    EXPECT_TRUE(ini.SectionExists("Trigger2"));
    EXPECT_FALSE(ini.SectionExists("Trigger3"));
    EXPECT_FALSE(ini.SectionExists("Trigger4"));
    EXPECT_TRUE(ini.SectionExists("Trigger6"));
    EXPECT_EQ(ini.ReadString("Trigger0", "Name", ""), "Start on ETX");
    EXPECT_EQ(ini.KeyNames("Description"), (std::vector<std::string>{"Line0"}));
    EXPECT_EQ(LoadEnvironment(ini, Context()).env.triggers.size(), 3u);

    // Loading stops at the first gap too.
    const IniFile gaps = IniFile::Parse("[Description]\nLine0=a\nLine1=b\nLine3=d\n[Trigger0]\nName=x\n[Trigger2]\nName=z\n");
    const EnvLoadResult r = LoadEnvironment(gaps, Context());
    EXPECT_EQ(r.env.description, (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(r.env.triggers.size(), 1u);
}

TEST(Environment, AMissingFileLoadsTheDefaultsAndAnUnreadableTimeIsTheMomentOfLoading)
{
    test::TempDir dir;
    const EnvLoadResult r = LoadEnvironment(dir.path() / "none.kef", Context(dir.path()));
    EXPECT_FALSE(r.existed);
    EXPECT_TRUE(r.status.ok());
    EXPECT_EQ(r.env.comA, (EnvPort{1, "", 9600, 8, ParityOrdinal::None, 1}));
    EXPECT_EQ(r.env.comB.Device, 2);
    EXPECT_EQ(r.env.recordFile, (dir.path() / "recordings" / "Default.ksr").string());
    EXPECT_TRUE(r.env.triggers.empty());

    const IniFile ini = IniFile::Parse("[Trigger0]\nTimeReached=31.02.2026 10:00:00\nInActivityTime=99999999999\n");
    const EnvLoadResult t = LoadEnvironment(ini, Context());
    EXPECT_EQ(t.env.triggers[0].TimeReached, kNow);
    EXPECT_EQ(t.env.triggers[0].InActivityTime, 1);
}

TEST(Environment, WindowsRecordPathsLandInTheRecordingsFolder)
{
    const std::pair<const char *, const char *> cases[] = {
        {"C:\\Users\\jo\\Kestrel\\recordings\\Line 7.ksr", "/data/recordings/Line 7.ksr"},
        {"\\\\server\\share\\b.ksr", "/data/recordings/b.ksr"},
        {"C:\\", "/data/recordings/Default.ksr"},
        {"/home/jo/c.ksr", "/home/jo/c.ksr"},
        {"C:x.ksr", "C:x.ksr"}, // no folder separator: a plain name on this system
    };
    for (const auto &[stored, loaded] : cases) {
        IniFile ini;
        ini.WriteString("Files", "Record data", stored);
        EXPECT_EQ(LoadEnvironment(ini, Context()).env.recordFile, loaded) << stored;
    }
    // A record file named on the command line wins over both.
    EnvLoadContext ctx = Context();
    ctx.commandLineRecord = "/tmp/cli.ksr";
    EXPECT_EQ(LoadEnvironment(IniFile::Parse("[Files]\nRecord data=/x/env.ksr\n"), ctx).env.recordFile, "/tmp/cli.ksr");
}

TEST(Environment, ADevicePathClearedLaterDoesNotLinger)
{
    IniFile ini;
    Environment env;
    env.comA.DevicePath = "/dev/ttyUSB0";
    StoreEnvironment(env, ini);
    env.comA.DevicePath.clear();
    env.comA.Device = 7;
    StoreEnvironment(env, ini);
    EXPECT_FALSE(ini.ValueExists("ComA", "DevicePath"));
    EXPECT_EQ(LoadEnvironment(ini, Context()).env.comA, env.comA);
}

TEST(Environment, AFailedSaveKeepsTheChangeMarkAndSaysWhy)
{
    test::TempDir dir;
    EnvironmentChangeFlag flag;
    flag.SetEnvironmentChanged();
    const Result failed = SaveChangedEnvironment(KnownEnvironment(), dir.path() / "no" / "x.kef", flag);
    EXPECT_EQ(failed.code, kMsgEnvironmentNotSaved);
    EXPECT_NE(failed.detail.find("x.kef"), std::string::npos) << failed.detail;
    EXPECT_TRUE(flag.IsEnvironmentChanged());

    EXPECT_TRUE(SaveChangedEnvironment(KnownEnvironment(), dir.path() / "x.kef", flag).ok());
    EXPECT_FALSE(flag.IsEnvironmentChanged());
}

// Saving must never rewrite what is not a settings file: a recording picked by
// mistake (NUL bytes) or a pipe.
TEST(Environment, SavingLeavesWhatIsNotASettingsFileAlone)
{
    test::TempDir dir;
    const auto recording = dir.path() / "line.ksr";
    std::string mps(800, '\0');
    mps[5] = '\r';
    mps[100] = '=';
    WriteText(recording, mps);
    const Result overRecording = SaveEnvironment(KnownEnvironment(), recording);
    EXPECT_EQ(overRecording.code, kMsgEnvironmentNotSaved);
    EXPECT_NE(overRecording.detail.find("not a settings file"), std::string::npos) << overRecording.detail;
    EXPECT_EQ(test::ReadWholeFile(recording), mps);

    // A pipe is refused at once instead of waiting for a writer, on loading and on saving.
    const auto pipe = dir.path() / "pipe.kef";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const EnvLoadResult loaded = LoadEnvironment(pipe, Context());
    EXPECT_EQ(loaded.status.code, kMsgEnvironmentNotRead);
    EXPECT_EQ(loaded.env.comB.Device, 2);
    EXPECT_FALSE(SaveEnvironment(KnownEnvironment(), pipe).ok());
    EXPECT_TRUE(std::filesystem::is_fifo(pipe));
}
