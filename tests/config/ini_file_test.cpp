#include <gtest/gtest.h>

#include <sys/resource.h>

#include <csignal>

#include <filesystem>
#include <fstream>
#include <map>
#include <random>

#include "config/config_messages.h"
#include "config/ini_file.h"
#include "support/temp_dir.h"

using namespace kestrel;

TEST(IniFile, ReadsAWindowsStyleFile)
{
    const IniFile ini = IniFile::Parse("\xEF\xBB\xBF[files]\r\nRECORD DATA = C:\\x y.ksr \r\n"
                                       "  [ ComA ]  \r\n device=3\r\n;comment=9\r\nParity\t=\t2\r\n");
    EXPECT_EQ(ini.ReadString("Files", "Record data", ""), "C:\\x y.ksr");
    EXPECT_EQ(ini.ReadInteger("COMA", "Device", 0), 3);
    EXPECT_EQ(ini.ReadInteger("ComA", "Parity", 0), 2);
    EXPECT_FALSE(ini.ValueExists("ComA", ";comment"));
    EXPECT_TRUE(ini.SectionExists("coma"));
    // A lone carriage return ends a line too.
    const IniFile cr = IniFile::Parse("[A]\rk=1\r\r[B]\nk=2\r\n");
    EXPECT_EQ(cr.ReadInteger("A", "k", 0), 1);
    EXPECT_EQ(cr.ReadInteger("B", "k", 0), 2);
    // The first of a repeated key or section counts; an open bracket still names a section.
    const IniFile rep = IniFile::Parse("[A]\nk=1\nK=2\n[a]\nk=3\nonly=4\n[Broken\nx=5\n=6\nno equals\n");
    EXPECT_EQ(rep.ReadInteger("a", "k", 0), 1);
    EXPECT_FALSE(rep.ValueExists("A", "only"));
    EXPECT_EQ(rep.KeyNames("Broken"), (std::vector<std::string>{"x"}));
    EXPECT_EQ(rep.SectionNames(), (std::vector<std::string>{"A", "Broken"}));
}

TEST(IniFile, IntegersParseWholeDecimalTextOrGiveTheDefault)
{
    const std::pair<const char *, int> cases[] = {
        {"12", 12},         {" -5", -5},         {"12abc", -1},         {"", -1},         {"0x10", -1},
        {"2147483648", -1}, {"-2147483648", -2147483647 - 1}, {"99999999999999999999999", -1},
    };
    for (auto [text, expected] : cases) {
        const IniFile ini = IniFile::Parse(std::string("[S]\nv=") + text + "\n");
        EXPECT_EQ(ini.ReadInteger("S", "v", -1), expected) << "'" << text << "'";
    }
    const IniFile ini = IniFile::Parse("[S]\nt=2\nf=0\nbad=yes\n");
    EXPECT_TRUE(ini.ReadBool("S", "t", false) && !ini.ReadBool("S", "f", true));
    EXPECT_TRUE(ini.ReadBool("S", "bad", true) && !ini.ReadBool("S", "bad", false));
}

TEST(CommaText, HandTypedListsSplitAsAStringListDoes)
{
    const std::pair<const char *, std::vector<std::string>> cases[] = {
        {"1, 2 ,3", {"1", "2", "3"}}, {"a,", {"a", ""}},   {"  ", {}},
        {"a b", {"a", "b"}},         {"\"open", {"open"}}, {"\"q\"x,y", {"q", "y"}},
    };
    for (const auto &[text, items] : cases)
        EXPECT_EQ(SplitCommaText(text), items) << text;
    EXPECT_EQ(JoinCommaText({"a b", "x,y", ""}), "\"a b\",\"x,y\",\"\"");
}

TEST(IniFile, WritingKeepsOrderCommentsAndUnknownEntries)
{
    IniFile ini = IniFile::Parse("; made by hand\n[Keep]\nmine=1\n\n[Modes]\nDisplayMode=1\nOther=x\n\n[Tail]\nz=0\n");
    ini.WriteInteger("modes", "displaymode", 4);
    ini.WriteString("Modes", "New Key", "v w");
    ini.WriteBool("Fresh", "Flag", true);
    EXPECT_EQ(ini.ToText(), "; made by hand\n[Keep]\nmine=1\n\n[Modes]\nDisplayMode=4\nOther=x\nNew Key=v w\n\n"
                            "[Tail]\nz=0\n\n[Fresh]\nFlag=1\n");
    // A line break in a value must not smuggle a new key or section into the file.
    ini.WriteString("Keep", "mine", "x\n[Evil]\r\ninjected=1");
    const IniFile back = IniFile::Parse(ini.ToText());
    EXPECT_FALSE(back.SectionExists("Evil"));
    EXPECT_EQ(back.ReadString("Keep", "mine", ""), "x [Evil]  injected=1");
}

// A file-size limit makes writes fail as a full disk does: the old file must survive whole.
TEST(IniFiles, AWriteThatRunsOutOfSpaceLeavesTheOldFile)
{
    test::TempDir dir;
    const auto path = dir.path() / "x.kef";
    const std::string old = "[Files]\nRecord data=/old.ksr\n";
    ASSERT_TRUE(WriteFileAtomic(path, old).ok());

    rlimit saved{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &saved), 0);
    rlimit small = saved;
    small.rlim_cur = 1024;
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const Result r = WriteFileAtomic(path, std::string(64 * 1024, 'x'));
    setrlimit(RLIMIT_FSIZE, &saved);
    std::signal(SIGXFSZ, oldHandler);

    EXPECT_FALSE(r.ok());
    EXPECT_NE(r.detail.find("cannot write"), std::string::npos) << r.detail;
    EXPECT_EQ(ReadIniFile(path).ini.ReadString("Files", "Record data", ""), "/old.ksr");
    int files = 0;
    for ([[maybe_unused]] const auto &e : std::filesystem::directory_iterator(dir.path()))
        ++files;
    EXPECT_EQ(files, 1);
}

// Random writes, key deletions and section erasures against a plain map: every
// read, and the document's own text read back, always agree with the model.
TEST(IniFile, RandomEditsAgreeWithAPlainMapAndSurviveTheirText)
{
    const std::vector<std::string> sections{"A", "a", "Record data", "Trigger1", "trigger1", "[x"};
    const std::vector<std::string> keys{"k", "K", "Line0", "Record data", "x=y"};
    const std::vector<std::string> values{"", "1", "two words", "=", "a;b", "\"q\""};
    std::map<std::string, std::map<std::string, std::string>> model; // lower-case names
    std::mt19937 rng(11);
    IniFile ini = IniFile::Parse("; kept\n");
    auto pick = [&](const std::vector<std::string> &from) { return from[rng() % from.size()]; };
    auto expectAgrees = [&](const IniFile &doc, int step) {
        for (const auto &s : sections) {
            const auto sec = model.find(AsciiLower(s));
            ASSERT_EQ(doc.SectionExists(s), sec != model.end()) << s << " step " << step;
            for (const auto &k : keys) {
                if (k.find('=') != std::string::npos)
                    continue;
                const bool has = sec != model.end() && sec->second.count(AsciiLower(k));
                ASSERT_EQ(doc.ValueExists(s, k), has) << s << "/" << k << " step " << step;
                if (has) {
                    ASSERT_EQ(doc.ReadString(s, k, "?"), sec->second.at(AsciiLower(k))) << s << "/" << k;
                }
            }
        }
    };
    for (int step = 0; step < 3000; ++step) {
        const std::string s = pick(sections);
        std::string k = pick(keys);
        if (k.find('=') != std::string::npos)
            k = "k"; // a key holding '=' cannot be stored; callers never use one
        switch (rng() % 6) {
        case 0:
            ini.EraseSection(s);
            model.erase(AsciiLower(s));
            break;
        case 1:
            ini.DeleteKey(s, k);
            if (auto it = model.find(AsciiLower(s)); it != model.end())
                it->second.erase(AsciiLower(k));
            break;
        default: {
            const std::string v = pick(values);
            ini.WriteString(s, k, v);
            model[AsciiLower(s)][AsciiLower(k)] = v;
            break;
        }
        }
        expectAgrees(ini, step);
        if (step % 100 == 0)
            expectAgrees(IniFile::Parse(ini.ToText()), step);
    }
    EXPECT_EQ(ini.ToText().rfind("; kept\n", 0), 0u);
}

// Failures are results that name the file, and leave what was there: a missing folder, a
// folder in the file's place, a file the user made read-only (the rename would get past it).
// A symbolic link stays a link; the file it points to is written.
TEST(IniFiles, AtomicWritesRefuseWhatIsNotTheirsAndFollowLinks)
{
    test::TempDir dir;
    namespace fs = std::filesystem;
    const Result noFolder = WriteFileAtomic(dir.path() / "missing" / "x.kef", "[A]\n");
    EXPECT_EQ(noFolder.code, kMsgSettingsFileNotWritten);
    EXPECT_NE(noFolder.detail.find("missing"), std::string::npos);
    fs::create_directory(dir.path() / "taken.kef");
    EXPECT_FALSE(WriteFileAtomic(dir.path() / "taken.kef", "[A]\n").ok());
    EXPECT_TRUE(fs::is_directory(dir.path() / "taken.kef"));
    EXPECT_EQ(ReadIniFile(dir.path() / "taken.kef").status.code, kMsgSettingsFileNotRead);
    const IniReadResult missing = ReadIniFile(dir.path() / "none.ini");
    EXPECT_TRUE(!missing.existed && missing.status.ok());

    const auto frozen = dir.path() / "frozen.kef";
    ASSERT_TRUE(WriteFileAtomic(frozen, "[A]\nk=kept\n").ok());
    fs::permissions(frozen, fs::perms::owner_read | fs::perms::group_read);
    const Result r = WriteFileAtomic(frozen, "[A]\nk=new\n");
    EXPECT_NE(r.detail.find("read-only"), std::string::npos) << r.detail;
    EXPECT_EQ(ReadIniFile(frozen).ini.ReadString("A", "k", ""), "kept");

    fs::create_directory(dir.path() / "shared");
    const auto real = dir.path() / "shared" / "line.kef", link = dir.path() / "line.kef";
    ASSERT_TRUE(WriteFileAtomic(real, "[A]\nk=old\n").ok());
    fs::create_symlink(fs::path("shared") / "line.kef", link);
    ASSERT_TRUE(WriteFileAtomic(link, "[A]\nk=new\n").ok());
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(ReadIniFile(real).ini.ReadString("A", "k", ""), "new");
    // No temporary is left beside any of them.
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.path()), {}), 4);
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.path() / "shared"), {}), 1);
}
