// Recording with data triggers armed: the simulated line through capture, the
// trigger patterns of the ports, the recorder and the record file. Unpaced it
// measures the MPs per second with 32 data triggers on each port against none;
// paced at 921,600 baud on both ports it counts the bytes delivered and
// recorded (none may be lost).

#include <QCoreApplication>

#include <chrono>
#include <cstdio>
#include <string>

#include "base/reporter.h"
#include "capture/recording_session.h"
#include "ports/sim_port.h"
#include "record/record_reader.h"
#include "trigger_engine/trigger_engine.h"
#include "bench_recording.h"

namespace {

using namespace kestrel;

class QuietReporter final : public Reporter {
public:
    void report(int, const Result &r, ErrorSource, Severity) override
    {
        std::fprintf(stderr, "report %d %s\n", r.code, r.detail.c_str());
    }
};

// 32 stop triggers per port whose patterns never occur in the traffic: all armed, none fires.
TriggerList Armed()
{
    TriggerList list;
    for (int i = 0; i < 64; ++i) {
        TriggerDef t;
        t.Active = true;
        t.Type = TriggerType::StopRecording;
        t.Event = TriggerEvent::Data;
        char hex[16];
        std::snprintf(hex, sizeof hex, "5A5A%02X", i); // "ZZ" and a number
        t.Data = hex;
        t.D1 = i % 2 == 0;
        t.D2 = !t.D1;
        list.Append(t);
    }
    return list;
}

std::string Traffic(const char *head, int loops)
{
    std::string text(240, 'a');
    for (std::size_t i = 0; i < text.size(); ++i)
        text[i] = static_cast<char>('A' + i % 26); // letters: Z appears, ZZ never
    const std::string repeat = loops > 0 ? "loop " + std::to_string(loops) + "\n" : "loop\n"; // 0: for ever
    return std::string(head) + "chunk 16\n" + repeat + "a \"" + text + "\"\n& b \"" + text + "\"\n";
}

struct Run {
    double seconds = 0;
    std::uint64_t dataBytes = 0; // D1 and D2 bytes in the file
    std::uint64_t mps = 0;
    std::uint64_t dropped = 0;
};

Run Record(const std::string &scenarioText, const TriggerList *triggers, Clock *clock, double limitSeconds)
{
    ScenarioError err;
    std::optional<Scenario> scenario = ParseScenario(scenarioText, err);
    QuietReporter reporter;
    auto session = RecordingSession::Simulated(std::move(*scenario), reporter, clock);
    const std::string path = bench::BenchFilePath("bench_trigger_capture.ksr");
    session->file().setPath(path);
    session->recorder().setDelay([](std::chrono::milliseconds) {});
    session->recorder().setAppendReplace(RecordMode::Replace);
    (void)session->applySettings({"921600", "8", "N", "1"});
    if (triggers != nullptr) {
        auto engine = std::make_unique<TriggerEngine>();
        engine->setTriggers(triggers);
        session->setTriggerHooks(std::move(engine));
    }
    session->record();
    SimLine &line = *session->simLine();
    line.restart();
    const auto t0 = std::chrono::steady_clock::now();
    while (!line.finished() && bench::Seconds(t0) < limitSeconds) {
        line.poll();
        QCoreApplication::processEvents();
    }
    Run run;
    run.seconds = bench::Seconds(t0);
    session->drainAndStop();
    run.dropped = line.droppedBytes();
    RecordReader reader;
    if (reader.open(path)) {
        run.mps = reader.recordCount();
        std::vector<MpRecord> block;
        for (std::uint64_t at = 0; at < run.mps; at += 65536) {
            reader.readBlock(at, std::min<std::uint64_t>(65536, run.mps - at), block);
            for (const MpRecord &mp : block)
                run.dataBytes += mp.d1Valid + mp.d2Valid;
        }
    }
    return run;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const TriggerList triggers = Armed();

    ManualClock still; // unpaced: the line delivers as fast as the recorder takes it
    const Run plain = Record(Traffic("pace off\n", 0), nullptr, &still, 3.0);
    const Run armed = Record(Traffic("pace off\n", 0), &triggers, &still, 3.0);
    const double plainRate = static_cast<double>(plain.mps) / plain.seconds;
    const double armedRate = static_cast<double>(armed.mps) / armed.seconds;
    std::printf("record_unpaced_no_triggers: %.0f MP/s\n", plainRate);
    std::printf("record_unpaced_64_data_triggers: %.0f MP/s\n", armedRate);
    std::printf("record_unpaced_triggers_ratio: %.2f x\n", armedRate / plainRate);

    // 921,600 baud, 8N1: 92,160 bytes a second on each port, for about two seconds.
    const int loops = 2 * 92160 / 240;
    const Run paced = Record(Traffic("baud 921600\n", loops), &triggers, nullptr, 30.0);
    const std::uint64_t delivered = 2ull * 240 * static_cast<std::uint64_t>(loops);
    std::printf("record_paced_921600_delivered: %llu bytes\n", static_cast<unsigned long long>(delivered));
    std::printf("record_paced_921600_recorded: %llu bytes\n", static_cast<unsigned long long>(paced.dataBytes));
    std::printf("record_paced_921600_lost: %llu bytes\n",
                static_cast<unsigned long long>(delivered - std::min(delivered, paced.dataBytes) + paced.dropped));
    std::printf("record_paced_921600_seconds: %.2f s\n", paced.seconds);
    return 0;
}
