#include <gtest/gtest.h>

#include <deque>
#include <fstream>
#include <functional>
#include <random>
#include <vector>

#include "record/record_reader.h"
#include "capture/recorder.h"
#include "base/string_table.h"
#include "support/scripted_prompter.h"
#include "support/temp_dir.h"

using namespace kestrel;

namespace {

// Ports that record what was asked of them; openForRecording can be made to fail.
class FakePorts final : public RecorderPorts {
public:
    explicit FakePorts(RecordStore &store) : store_(store) {}
    Result openForRecording() override
    {
        calls.push_back("open");
        open = openSucceeds;
        return open ? Result::Ok() : Result::Fail(2010, "\n\n/dev/ttyUSB9\nbusy");
    }
    void closeAfterRecording() override // what the ports still hold is recorded, then they close
    {
        for (std::uint8_t b : queued) {
            store_.pending().d2 = b;
            store_.pending().d2Valid = 1;
            (void)store_.RecordComEvent(0);
            store_.pending().clearData();
        }
        queued.clear();
        calls.push_back("close");
        open = false;
    }
    void armStatusTriggers() override { calls.push_back("arm"); }
    void readModemStatus() override
    {
        store_.pending().m1 = dsr;
    }
    [[nodiscard]] int count(const std::string &what) const
    {
        return static_cast<int>(std::count(calls.begin(), calls.end(), what));
    }

    bool openSucceeds = true;
    bool open = false;
    std::uint8_t dsr = 1;
    std::vector<std::uint8_t> queued;
    std::vector<std::string> calls;

private:
    RecordStore &store_;
};

class CountingView final : public RecorderView {
public:
    void setRecordButtons(bool down) override { recDown = down; }
    void setStatusLights(bool hold, bool recording) override { lights.push_back({hold, recording}); }
    void setStatusText(const std::string &text) override { status = text; }
    std::string status;
    std::vector<std::pair<bool, bool>> lights;
    bool recDown = false;
};

struct RecorderFixture : ::testing::Test {
    test::TempDir dir;
    ManualClock clock{46000.5};
    RecordStore store{clock};
    RecordFile file;
    FakePorts ports{store};
    test::ScriptedPrompter prompter;
    PromptReporter reporter{prompter};
    CountingView view;
    Recorder rec{store, file, ports, reporter};
    std::deque<std::function<void()>> posted;

    void SetUp() override
    {
        SetGlobalLang(kLangEnglish);
        rec.setView(&view);
        rec.setDataDir(dir.path().string());
        rec.setDelay([](std::chrono::milliseconds) {});
        file.setPath(dir.file("rec.ksr"));
    }
    void TearDown() override { SetGlobalLang(kLangGerman); }

    void dataByte(std::uint8_t b)
    {
        clock.advance(2'000'000);
        if (!rec.RecordingGate())
            return;
        store.pending().d1 = b;
        store.pending().d1Valid = 1;
        (void)rec.recordEvent(0);
        store.pending().clearData();
    }
    std::vector<MpRecord> fileRecords()
    {
        RecordReader r;
        EXPECT_TRUE(r.open(file.path()));
        std::vector<MpRecord> out;
        r.readBlock(0, r.recordCount(), out);
        return out;
    }
    std::vector<int> marks()
    {
        std::vector<int> out;
        for (const auto &mp : fileRecords())
            if (mp.isSystemMark())
                out.push_back(mp.markCode);
        return out;
    }
};

void expectGapFree(const std::vector<MpRecord> &recs)
{
    for (std::size_t i = 0; i < recs.size(); ++i) {
        ASSERT_EQ(recs[i].number, i);
        if (i > 0) {
            ASSERT_GE(recs[i].time, recs[i - 1].time) << "MP " << i;
        }
    }
}

} // namespace

TEST_F(RecorderFixture, NewFileRecordsMarksLevelsAndDataThenStops)
{
    rec.record();
    EXPECT_TRUE(rec.recording());
    rec.record(); // a second press while recording does nothing
    EXPECT_EQ(ports.count("open"), 1);
    EXPECT_EQ(file.openCount(RecordHandle::Record), 1);
    dataByte('A');
    dataByte('B');
    rec.stop();
    EXPECT_FALSE(rec.recording());
    EXPECT_FALSE(rec.loaded());

    const auto recs = fileRecords();
    ASSERT_EQ(recs.size(), 6u); // 0, 6, initial levels, A, B, 5
    EXPECT_EQ(marks(), (std::vector<int>{SystemMark::NewFile, SystemMark::Started, SystemMark::Stopped}));
    EXPECT_EQ(recs[2].m1, 1); // the levels read at start
    EXPECT_EQ(recs[4].d1, 'B');
    EXPECT_EQ(recs[4].count(Counter::D1), 2u);
    expectGapFree(recs);
    EXPECT_TRUE(prompter.asked.empty());
}

TEST_F(RecorderFixture, ExistingFileWithoutChoiceRecordsNothing)
{
    rec.record();
    rec.stop();
    const auto before = fileRecords();
    view = CountingView{};
    rec.setAppendReplace(RecordMode::None);
    rec.record();
    EXPECT_FALSE(rec.recording());
    EXPECT_FALSE(rec.loaded());
    EXPECT_FALSE(view.recDown); // buttons back to Stop
    EXPECT_EQ(fileRecords(), before);
    EXPECT_EQ(ports.count("open"), 1);
}

// Only an empty file, or a recording, is written to without a question. Anything
// else (a note, a text, a torn record with nothing before it) is not ours: the
// user is asked, "no" leaves it as it was, and it is never appended to.
TEST_F(RecorderFixture, OnlyEmptyFilesAndRecordingsAreWrittenWithoutAsking)
{
    auto readAll = [&] { return test::ReadWholeFile(file.path()); };
    std::ofstream(file.path()).close();
    rec.setAppendReplace(RecordMode::Append); // the window's default
    rec.record();
    EXPECT_EQ(rec.recordMode(), RecordMode::Replace);
    rec.stop();
    EXPECT_EQ(marks(), (std::vector<int>{0, 6, 5}));
    EXPECT_TRUE(prompter.asked.empty());

    const std::string note = "dial 0049 before the number\n";
    const std::string text(117, 't');
    for (const std::string &foreign : {note, text, std::string(33, '\0')}) {
        for (const int choice : {RecordMode::None, RecordMode::Append, RecordMode::Replace}) {
            std::ofstream(file.path(), std::ios::binary | std::ios::trunc) << foreign;
            rec.setAppendReplace(choice);
            std::string asked;
            rec.setForeignFileQuestion([&](const std::string &, const RecordingCheck &found) {
                asked = NotRecordingText(found);
                return false;
            });
            rec.record();
            EXPECT_FALSE(rec.loaded());
            EXPECT_FALSE(asked.empty()) << "not asked; choice " << choice;
            EXPECT_EQ(readAll(), foreign) << "choice " << choice;
        }
        rec.setForeignFileQuestion([](const std::string &, const RecordingCheck &) { return true; });
        rec.record();
        EXPECT_EQ(rec.recordMode(), RecordMode::Replace);
        rec.stop();
        EXPECT_EQ(marks(), (std::vector<int>{0, 6, 5}));
    }
    EXPECT_TRUE(prompter.asked.empty());

    // With nobody to ask the file stays as it was and the refusal says why.
    std::ofstream(file.path(), std::ios::binary | std::ios::trunc) << note;
    rec.setForeignFileQuestion(nullptr);
    rec.record();
    EXPECT_FALSE(rec.loaded());
    EXPECT_EQ(readAll(), note);
    ASSERT_EQ(prompter.asked.size(), 1u);
    EXPECT_NE(prompter.asked[0].text.find(Str(7103)), std::string::npos) << prompter.asked[0].text;
    EXPECT_NE(prompter.asked[0].text.find(Str(7105)), std::string::npos) << prompter.asked[0].text;
}

TEST_F(RecorderFixture, PauseThenStopStopsOnceAndWritesOneStopMark)
{
    rec.record();
    rec.togglePause();
    EXPECT_TRUE(rec.paused());
    EXPECT_FALSE(rec.recording());
    EXPECT_FALSE(ports.open);
    dataByte('p'); // lines move while paused: no MP
    const auto whilePaused = fileRecords().size();
    EXPECT_EQ(whilePaused, 3u);
    rec.blinkTick();
    EXPECT_EQ(view.lights.back(), std::make_pair(false, false)); // the recorder light stays off while paused
    EXPECT_NE(view.status, Str(8167)); // "reading pending data" ended with the reading, not with the pause
    rec.stop();
    EXPECT_FALSE(rec.paused());
    EXPECT_EQ(ports.count("close"), 1);
    EXPECT_EQ(rec.stopMarks(), 1);
    EXPECT_EQ(marks(), (std::vector<int>{0, 6, 5}));
}

TEST_F(RecorderFixture, PortThatDoesNotOpenLeavesTheRecorderIdle)
{
    ports.openSucceeds = false;
    rec.record();
    EXPECT_FALSE(rec.recording());
    EXPECT_FALSE(rec.loaded());
    EXPECT_FALSE(view.recDown);
    EXPECT_EQ(marks(), (std::vector<int>{0, 6, 5}));
    // The port's failure is shown once, as a port error with the device and the reason.
    ASSERT_EQ(prompter.asked.size(), 1u);
    EXPECT_EQ(prompter.asked[0].title, StrIn(2000, kLangEnglish));
    EXPECT_EQ(prompter.asked[0].text, StrIn(2010, kLangEnglish) + "\n\n/dev/ttyUSB9\nbusy");
    EXPECT_EQ(prompter.asked[0].icon, Icon::Error);
}

TEST_F(RecorderFixture, FileThatCannotBeCreatedIsReportedAndNothingStaysOpen)
{
    std::ofstream(dir.file("plainfile")) << "x";
    file.setPath(dir.file("plainfile") + "/x.ksr"); // a path under a plain file
    rec.record();
    EXPECT_FALSE(rec.recording());
    EXPECT_FALSE(file.isOpen(RecordHandle::Record));
    ASSERT_EQ(prompter.asked.size(), 1u);
    EXPECT_NE(prompter.asked[0].text.find("Error creating record file!"), std::string::npos);
    EXPECT_NE(prompter.asked[0].text.find(file.path()), std::string::npos);
}

TEST_F(RecorderFixture, TriggerControlledStartWritesNothingUntilTriggersOpenTheGate)
{
    rec.setTriggerPreparation([this] {
        rec.triggerControlled = true;
        return true;
    });
    rec.record();
    EXPECT_EQ(ports.count("arm"), 0); // trigger evaluation arms its own
    dataByte('n');
    EXPECT_EQ(fileRecords().size(), 2u);
    EXPECT_EQ(rec.WriteTriggerMark(0, 1, 12), 0); // the start trigger fires
    rec.captureEnabled = true;
    dataByte('n'); // no trigger group armed yet: still nothing
    rec.triggerStates.stopGroupArmed = true;
    dataByte('y');
    rec.stop();
    EXPECT_FALSE(rec.triggerControlled);
    const auto recs = fileRecords();
    ASSERT_EQ(recs.size(), 5u);
    EXPECT_EQ(recs[2].markCode, 1);
    EXPECT_EQ(recs[2].markExtra, 12);
    EXPECT_EQ(recs[3].d1, 'y');
}

TEST_F(RecorderFixture, LostPortStopsOnceKeepsEverythingAndReportsOnce)
{
    rec.setPoster([this](std::function<void()> f) { posted.push_back(std::move(f)); });
    rec.record();
    dataByte('a');
    ports.queued = {'b', 'c'}; // still in the other port's buffer
    rec.onPortLost("/dev/ttyUSB0", "device removed");
    rec.onPortLost("/dev/ttyUSB1", "device removed");
    EXPECT_TRUE(rec.recording()); // nothing happens inside the port's handler
    ASSERT_EQ(posted.size(), 1u);
    posted.front()();
    EXPECT_FALSE(rec.recording());
    EXPECT_TRUE(rec.portLost());
    ASSERT_EQ(prompter.asked.size(), 1u);
    EXPECT_NE(prompter.asked[0].text.find("/dev/ttyUSB0"), std::string::npos);
    EXPECT_EQ(prompter.asked[0].title, StrIn(2000, kLangEnglish));
    const auto recs = fileRecords();
    expectGapFree(recs);
    EXPECT_EQ(recs[recs.size() - 2].d2, 'c');
    EXPECT_EQ(recs.back().markCode, SystemMark::Stopped);
    rec.onPortLost("/dev/ttyUSB0", "again"); // idle now: ignored
    EXPECT_EQ(posted.size(), 1u);
}

// The drive filling up stops the recording while the stop mark still fits: on the
// second's look, or within 256 KB of writing on a fast line.
TEST_F(RecorderFixture, LowFreeSpaceStopsCleanlyWithTheStopMark)
{
    std::uint64_t free = 50u << 20;
    int looks = 0;
    rec.setFreeSpaceProbe([&]() -> std::optional<std::uint64_t> {
        ++looks;
        return free;
    });
    rec.setPoster([this](std::function<void()> f) { posted.push_back(std::move(f)); });
    rec.record();
    for (int i = 0; i < 3300; ++i) // a little over 256 KB of MPs
        dataByte('a');
    EXPECT_EQ(looks, 1);
    rec.watchFreeSpace();
    EXPECT_TRUE(posted.empty());

    free = Recorder::kSpaceReserve - 1;
    for (int i = 0; i < 3300 && posted.empty(); ++i)
        dataByte('b');
    ASSERT_EQ(posted.size(), 1u);
    rec.watchFreeSpace(); // once is enough
    posted.front()();
    EXPECT_FALSE(rec.loaded());
    EXPECT_EQ(fileRecords().back().markCode, SystemMark::Stopped);
    expectGapFree(fileRecords());
    ASSERT_EQ(prompter.asked.size(), 1u);
    EXPECT_NE(prompter.asked[0].text.find(Str(3020)), std::string::npos);
    EXPECT_NE(prompter.asked[0].text.find(Str(7109)), std::string::npos);
    EXPECT_EQ(posted.size(), 1u);
}

TEST_F(RecorderFixture, RandomButtonPressesKeepTheFileWellFormedAndLoseNoByte)
{
    std::mt19937 rng(20261122);
    std::uint64_t d1 = 0, d2 = 0; // bytes the file must hold since its mark 0
    for (int step = 0; step < 3000; ++step) {
        // Mostly lines moving and appended recordings; now and then a replace or a refusal.
        switch (rng() % 16) {
        case 0:
        case 1: {
            const bool wasLoaded = rec.loaded();
            const unsigned choice = rng() % 10;
            rec.setAppendReplace(choice == 0 ? RecordMode::None : choice == 1 ? RecordMode::Replace : RecordMode::Append);
            rec.record();
            if (!wasLoaded && rec.loaded() && rec.recordMode() != RecordMode::Append)
                d1 = d2 = 0; // a new or replaced file
            break;
        }
        case 2:
            rec.togglePause();
            break;
        case 3:
            rec.stop();
            break;
        case 4:
        case 5:
        case 6:
            if (ports.open) { // only an open port receives
                ports.queued.push_back(static_cast<std::uint8_t>(step));
                ++d2;
            }
            break;
        default:
            if (rec.RecordingGate())
                ++d1;
            dataByte(static_cast<std::uint8_t>(step));
            break;
        }
        ASSERT_EQ(ports.open, rec.recording()) << "step " << step;
        ASSERT_FALSE(rec.recording() && rec.paused()) << "step " << step;
        ASSERT_TRUE(!rec.recording() || rec.loaded()) << "step " << step;
    }
    rec.stop();
    ASSERT_FALSE(rec.loaded());
    EXPECT_TRUE(prompter.asked.empty());

    const auto recs = fileRecords();
    expectGapFree(recs);
    ASSERT_GE(recs.size(), 3u);
    EXPECT_EQ(recs.back().count(Counter::D1), d1);
    EXPECT_EQ(recs.back().count(Counter::D2), d2);
    EXPECT_GT(d1 * d2, 0u) << "the sequence should end with data on both lines";
    // The last fresh file opens with 0 and 6; each later recording was appended (4) and each ended with one 5.
    const auto m = marks();
    ASSERT_GE(m.size(), 3u);
    ASSERT_EQ(m.size() % 2, 1u);
    EXPECT_EQ(m[0], SystemMark::NewFile);
    EXPECT_EQ(m[1], SystemMark::Started);
    for (std::size_t i = 2; i < m.size(); ++i)
        ASSERT_EQ(m[i], i % 2 == 0 ? SystemMark::Stopped : SystemMark::Appended) << "mark " << i;
}
