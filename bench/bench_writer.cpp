// MPs per second through RecordComEvent into a record file: once the way the
// data handler writes (one write per receive burst), once with one write per
// MP for comparison, and once the whole way from the simulated line through
// the recording session (capture, recorder, writer) into the file.

#include <QCoreApplication>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <unistd.h>

#include "base/prompt.h"
#include "base/reporter.h"
#include "capture/recording_session.h"
#include "record/clock.h"
#include "record/record_reader.h"
#include "capture/recorder.h"
#include "ports/port_timing.h"
#include "ports/sim_port.h"
#include "record/record_file.h"
#include "record/record_store.h"

using namespace kestrel;

namespace {

constexpr auto kRunTime = std::chrono::milliseconds(1500);

double run(const std::string &path, int burstSize)
{
    SystemClock clock;
    RecordStore store(clock);
    RecordFile file;
    file.setPath(path);
    if (const Result made = file.create(RecordHandle::Record); !made) {
        std::fprintf(stderr, "bench_writer: cannot create %s: %s\n", path.c_str(), made.detail.c_str());
        std::exit(1);
    }
    store.setSink(&file);
    store.SetLineTiming(ComputeLineTiming({921600, 8, Parity::None, StopBits::One}, store.frequency()));
    store.ResetCounters();
    (void)store.WriteSystemMark(SystemMark::NewFile, true);
    (void)store.WriteSystemMark(SystemMark::Started);
    store.RebaseCounter();

    std::uint64_t mps = 0;
    std::uint8_t byte = 0;
    const auto start = std::chrono::steady_clock::now();
    auto now = start;
    while (now - start < kRunTime) {
        for (int rep = 0; rep < 64; ++rep) {
            if (burstSize > 1)
                store.beginBurst();
            for (int i = 0; i < burstSize; ++i) {
                ComEvent &e = store.pending();
                // Both directions busy, now and then both in one round.
                e.d1 = byte;
                e.d1Valid = 1;
                e.d2 = static_cast<std::uint8_t>(~byte);
                e.d2Valid = (byte & 3) == 0;
                if (store.RecordComEvent(static_cast<std::uint16_t>(i)) != WriteResult::Ok) {
                    std::fprintf(stderr, "bench_writer: write failed: %s\n", file.writeError().c_str());
                    std::exit(1);
                }
                e.clearData();
                ++byte;
            }
            if (burstSize > 1 && store.endBurst() != WriteResult::Ok) {
                std::fprintf(stderr, "bench_writer: write failed: %s\n", file.writeError().c_str());
                std::exit(1);
            }
            mps += static_cast<std::uint64_t>(burstSize);
        }
        now = std::chrono::steady_clock::now();
    }
    const double seconds = std::chrono::duration<double>(now - start).count();
    file.close(RecordHandle::Record);
    std::filesystem::remove(path);
    return static_cast<double>(mps) / seconds;
}

class SilentPrompter final : public Prompter {
public:
    int ShowMessage(const std::string &, const std::string &, int, int) override { return MsgResult::Ok; }
};

double runRecording(const std::string &path)
{
    ScenarioError err;
    auto scenario = ParseScenario("pace off\nchunk 64\nloop\na \"" + std::string(256, 'a') + "\"\n& b \"" +
                                      std::string(256, 'b') + "\"\n",
                                  err);
    if (!scenario) {
        std::fprintf(stderr, "bench_writer: scenario: %s\n", err.reason.c_str());
        std::exit(1);
    }
    SystemClock clock;
    SilentPrompter prompter;
    PromptReporter reporter(prompter);
    auto session = RecordingSession::Simulated(std::move(*scenario), reporter, &clock);
    session->file().setPath(path);
    session->recorder().setDelay([](std::chrono::milliseconds) {});
    session->recorder().setAppendReplace(RecordMode::Replace);
    (void)session->applySettings({"921600", "8", "N", "1"});
    session->record();
    if (!session->recording()) {
        std::fprintf(stderr, "bench_writer: recording did not start\n");
        std::exit(1);
    }
    SimLine &line = *session->simLine();
    line.restart();
    const auto start = std::chrono::steady_clock::now();
    auto now = start;
    while (now - start < kRunTime) {
        line.poll();
        QCoreApplication::processEvents();
        now = std::chrono::steady_clock::now();
    }
    session->drainAndStop();
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    RecordReader check;
    const double mps = check.open(path) ? static_cast<double>(check.recordCount()) : 0.0;
    std::filesystem::remove(path);
    return mps / seconds;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const char *tmp = std::getenv("TMPDIR");
    const std::string path = std::string(tmp && *tmp ? tmp : "/tmp") + "/kestrel-bench-" +
                             std::to_string(::getpid()) + ".ksr";
    const double perBurst = run(path, 64);
    const double perMp = run(path, 1);
    std::printf("writer_mp_per_s: %.0f MP/s\n", perBurst);
    std::printf("writer_one_write_per_mp_mp_per_s: %.0f MP/s\n", perMp);
    std::printf("recording_sim_to_file_mp_per_s: %.0f MP/s\n", runRecording(path));
    return 0;
}
