#include <gtest/gtest.h>

#include <sys/stat.h>

#include <fstream>

#include "config/environment.h"
#include "config/environment_save.h"
#include "base/string_table.h"
#include "support/scripted_prompter.h"
#include "support/temp_dir.h"

using namespace kestrel;

namespace {

constexpr double kNow = 46347.5;

EnvLoadContext Context(const std::filesystem::path &dataFolder = "/data")
{
    return {dataFolder, std::nullopt, kNow};
}

TriggerDef MakeTrigger(int kind)
{
    TriggerDef t;
    t.Name = "Trigger of kind " + std::to_string(kind);
    t.Description = "watches kind " + std::to_string(kind);
    t.Active = kind % 2 == 0;
    t.Type = kind == 4 ? TriggerType::Inactivity : kind % 2;
    t.Event = kind;
    t.TimeReached = 46000.0 + kind + 0.123456789;
    switch (kind) {
    case TriggerEvent::Data:
        t.D1 = true;
        t.Data = "0D0A";
        break;
    case TriggerEvent::Signal:
        t.S1 = SignalEdge::Rises;
        t.M1 = SignalEdge::Falls;
        t.M3 = SignalEdge::Rises;
        break;
    case TriggerEvent::Error:
        t.PE = t.LE = true;
        break;
    case TriggerEvent::TimeReached:
        t.PlaySound = t.PlaySoundRepeat = true;
        t.SoundFilePath = "/usr/share/sounds/alarm.wav";
        break;
    default:
        t.InActivityTime = 65535;
        t.EventD2 = t.EventM5 = t.EventFE = t.EventLE = true;
        t.ExecCommand = true;
        t.CommandFilePath = "/usr/bin/logger";
        t.CommandParams = "-t kestrel \"%TRIG_NAME%\" %TIMESTAMP%";
        break;
    }
    return t;
}

Environment FullEnvironment()
{
    Environment env;
    env.comA = {3, "/dev/serial/by-id/usb-FTDI_A-if00-port0", 115200, 7, ParityOrdinal::Even, 2};
    env.comB = {4, "", 115200, 7, ParityOrdinal::Even, 2};
    env.recordFile = "/srv/rec/line 7.ksr";
    env.general.Title = "Prüfstand Süd — Messung 3";
    env.general.Author = "Jörg Ørsted";
    env.general.Email = "j@example.org";
    env.customer.Company = "株式会社 テスト";
    env.customer.ZIP = "80331";
    env.description = {"first line", "", "third line = with equals", "  indented"};
    for (int kind = 0; kind <= 4; ++kind)
        env.triggers.Append(MakeTrigger(kind));
    env.triggers.Append(MakeTrigger(0));
    return env;
}

void WriteText(const std::filesystem::path &path, const std::string &text)
{
    std::ofstream(path, std::ios::binary) << text;
}

} // namespace

TEST(Environment, SaveThenLoadGivesTheSameSetUp)
{
    test::TempDir dir;
    const auto path = dir.path() / "set up.kef";
    Environment env = FullEnvironment();
    env.description[3] = "indented"; // leading blanks of a value are not kept by the file format
    ASSERT_TRUE(SaveEnvironment(env, path).ok);

    const EnvLoadResult loaded = LoadEnvironment(path, Context());
    EXPECT_TRUE(loaded.existed);
    EXPECT_EQ(loaded.env, env);
    EXPECT_EQ(loaded.triggersWithExternalActions, (std::vector<std::size_t>{3, 4}));
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
        env.triggers.Append(MakeTrigger(i));
    StoreEnvironment(env, ini);

    EXPECT_TRUE(ini.SectionExists("Trigger2"));
    EXPECT_FALSE(ini.SectionExists("Trigger3"));
    EXPECT_FALSE(ini.SectionExists("Trigger4"));
    EXPECT_TRUE(ini.SectionExists("Trigger6"));
    EXPECT_EQ(ini.ReadString("Trigger0", "Name", ""), "Trigger of kind 0");
    EXPECT_EQ(ini.KeyNames("Description"), (std::vector<std::string>{"Line0"}));
    EXPECT_EQ(LoadEnvironment(ini, Context()).env.triggers.size(), 3u);

    // Loading stops at the first gap too.
    const IniFile gaps = IniFile::Parse("[Description]\nLine0=a\nLine1=b\nLine3=d\n[Trigger0]\nName=x\n[Trigger2]\nName=z\n");
    const EnvLoadResult r = LoadEnvironment(gaps, Context());
    EXPECT_EQ(r.env.description, (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(r.env.triggers.size(), 1u);
}

TEST(Environment, DefaultsForAMissingFileAndMissingKeys)
{
    test::TempDir dir;
    const EnvLoadResult r = LoadEnvironment(dir.path() / "none.kef", Context(dir.path()));
    EXPECT_FALSE(r.existed);
    EXPECT_TRUE(r.status.ok);
    EXPECT_EQ(r.env.comA, (EnvPort{1, "", 9600, 8, ParityOrdinal::None, 1}));
    EXPECT_EQ(r.env.comB.Device, 2);
    EXPECT_EQ(r.env.recordFile, (dir.path() / "recordings" / "Default.ksr").string());
    EXPECT_TRUE(r.env.triggers.empty());
    EXPECT_TRUE(r.env.description.empty());

    // A trigger without (or with an unreadable) TimeReached fires at the moment of loading.
    const IniFile ini = IniFile::Parse("[Trigger0]\nName=a\n[Trigger1]\nTimeReached=31.02.2026 10:00:00\n"
                                       "InActivityTime=99999999999\n");
    const EnvLoadResult t = LoadEnvironment(ini, Context());
    TriggerDef onlyNamed; // every other key at its load default: off, zero, empty, one second
    onlyNamed.Name = "a";
    onlyNamed.number = 1;
    onlyNamed.TimeReached = kNow;
    EXPECT_EQ(t.env.triggers[0], onlyNamed);
    EXPECT_EQ(t.env.triggers[1].TimeReached, kNow);
    EXPECT_EQ(t.env.triggers[1].InActivityTime, 1);
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

TEST(Environment, AFailedSaveIsReportedOnceAndKeepsTheChangeMark)
{
    test::TempDir dir;
    SetGlobalLang(kLangEnglish);
    test::ScriptedPrompter prompter;
    EnvironmentChangeFlag flag;
    flag.SetEnvironmentChanged();
    EXPECT_FALSE(SaveEnvironmentReported(prompter, FullEnvironment(), dir.path() / "no" / "x.kef", flag));
    ASSERT_EQ(prompter.asked.size(), 1u);
    EXPECT_EQ(prompter.asked[0].title, "File operation");
    EXPECT_NE(prompter.asked[0].text.find("The environment file could not be saved!"), std::string::npos);
    EXPECT_TRUE(flag.IsEnvironmentChanged());

    EXPECT_TRUE(SaveEnvironmentReported(prompter, FullEnvironment(), dir.path() / "x.kef", flag));
    EXPECT_EQ(prompter.asked.size(), 1u);
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
    const FileResult overRecording = SaveEnvironment(FullEnvironment(), recording);
    EXPECT_FALSE(overRecording.ok);
    EXPECT_NE(overRecording.error.find("not a settings file"), std::string::npos) << overRecording.error;
    std::ifstream in(recording, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), mps);

    // A pipe is refused at once instead of waiting for a writer, on loading and on saving.
    const auto pipe = dir.path() / "pipe.kef";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const EnvLoadResult loaded = LoadEnvironment(pipe, Context());
    EXPECT_FALSE(loaded.status.ok);
    EXPECT_EQ(loaded.env.comB.Device, 2);
    EXPECT_FALSE(SaveEnvironment(FullEnvironment(), pipe).ok);
    EXPECT_TRUE(std::filesystem::is_fifo(pipe));
}
