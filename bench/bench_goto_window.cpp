// The goto and search window on a generated recording of 10 million MPs: a
// data search for a byte that never occurs walks the whole file. It prints how
// late the window's event loop answers during the search (a 10 ms timer,
// largest gap between two of its ticks), the window's search rate against
// RunSearch alone, and how long a search goes on after Stop is clicked.
// KESTREL_BENCH_MPS and KESTREL_BENCH_DIR change size and place.
//
// Prints: goto_search_runsearch_mp_per_s, goto_window_search_mp_per_s,
// goto_window_search_rate_ratio, goto_window_max_loop_gap_ms, goto_window_stop_ms.

#include <QApplication>
#include <QElapsedTimer>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTimer>
#include <cstdio>

#include "app/goto_form.h"
#include "base/prompt.h"
#include "bench_recording.h"
#include "loop_gaps.h"
#include "present/grid/record_grid.h"
#include "search/search.h"

using namespace kestrel;

namespace {

class NotingPrompter final : public Prompter {
public:
    int ShowMessage(const std::string &, const std::string &, int, int) override
    {
        ++messages;
        return MsgResult::Ok;
    }
    int messages = 0;
};

} // namespace

int main(int argc, char **argv)
{
    if (std::getenv("QT_QPA_PLATFORM") == nullptr)
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
    QApplication app(argc, argv);

    const std::string path = bench::BenchFilePath("kestrel-bench-goto-window.ksr");
    const std::uint64_t count = bench::BenchMpCount();
    RecordReader reader;
    if (!bench::MakeBenchRecording(path, count, reader))
        return 1;
    bench::CatMbPerSecond(path); // into the page cache

    // RunSearch alone, as kestrel-cli search runs it: 0xFE on D2 never occurs.
    SearchRequest request;
    request.criteria.kind = SearchKind::Data;
    request.criteria.data = {{0xFE}, true, true};
    request.position = 0;
    request.currentRow = 1;
    request.maximum = static_cast<std::int64_t>(count) - 1;
    const auto t0 = std::chrono::steady_clock::now();
    const SearchOutcome alone = RunSearch(reader, request);
    const double aloneRate = static_cast<double>(alone.tested) / bench::Seconds(t0);
    std::printf("goto_search_runsearch_mp_per_s: %.0f MP/s\n", aloneRate);

    NotingPrompter prompter;
    grid::RecordGrid grid;
    grid.resize(800, 500);
    grid.OpenRecording(QString::fromStdString(path));
    TFormGoto form(prompter, grid, [&] { return path; });
    form.showPage(GotoPage::Search);
    form.findChild<QPlainTextEdit *>("edDataHex")->setPlainText("FE");
    auto *forward = form.findChild<QPushButton *>("btnSearchForward");
    auto *stop = form.findChild<QPushButton *>("btnSearchStop");

    bench::LoopGaps gaps;
    QCoreApplication::processEvents();
    grid.GotoMp(0);
    gaps.start();
    const auto t1 = std::chrono::steady_clock::now();
    forward->click(); // runs to the end: "not found"
    const double windowSeconds = bench::Seconds(t1);
    gaps.stop();
    const double windowRate = static_cast<double>(count) / windowSeconds;
    std::printf("goto_window_search_mp_per_s: %.0f MP/s\n", windowRate);
    std::printf("goto_window_search_rate_ratio: %.2f x\n", windowRate / aloneRate);
    std::printf("goto_window_max_loop_gap_ms: %.1f ms\n", static_cast<double>(gaps.worst) / 1e6);
    std::printf("goto_window_messages: %d\n", prompter.messages);

    // Stop clicked shortly after the start: how long until the search has ended.
    grid.GotoMp(0);
    QElapsedTimer sinceStop;
    QTimer::singleShot(static_cast<int>(windowSeconds * 1000 / 4), [&] {
        sinceStop.start();
        stop->click();
    });
    forward->click();
    const double stopMs = sinceStop.isValid() ? static_cast<double>(sinceStop.nsecsElapsed()) / 1e6 : -1.0;
    std::printf("goto_window_stop_ms: %.1f ms\n", stopMs);
    std::printf("goto_window_recording_mps: %llu MPs\n", static_cast<unsigned long long>(count));
    std::remove(path.c_str());
    return 0;
}
