// Record grid on a huge recording: a sparse file of 100 million MPs (8 GB,
// real records only at both ends). Opens it, paints the first page, jumps to
// the end and paints the last page, then scrolls and counts the bytes each
// step reads. Prints "name: value unit" lines.

#include <QApplication>
#include <QKeyEvent>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

#include "record/mp_record.h"
#include "present/grid/record_grid.h"

using namespace kestrel;
using Clock = std::chrono::steady_clock;

namespace {

constexpr std::uint64_t kMps = 100'000'000;

double Ms(Clock::time_point a, Clock::time_point b) { return std::chrono::duration<double, std::milli>(b - a).count(); }

long RssKb()
{
    std::ifstream in("/proc/self/status");
    std::string line;
    while (std::getline(in, line))
        if (line.rfind("VmRSS:", 0) == 0)
            return std::strtol(line.c_str() + 6, nullptr, 10);
    return 0;
}

bool WriteMp(int fd, std::uint64_t n)
{
    MpRecord mp;
    mp.number = static_cast<std::uint32_t>(n);
    mp.time = 46000.5 + static_cast<double>(n) * 1e-4 / 86400.0;
    mp.d1 = static_cast<std::uint8_t>('A' + n % 26);
    mp.d1Valid = 1;
    mp.s1 = (n / 3) % 2;
    const MpBytes b = EncodeMp(mp);
    return ::pwrite(fd, b.data(), b.size(), static_cast<off_t>(MpOffset(n))) == static_cast<ssize_t>(b.size());
}

void Key(QWidget *w, int key)
{
    QKeyEvent e(QEvent::KeyPress, key, Qt::NoModifier);
    QApplication::sendEvent(w, &e);
}

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);

    const std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("kestrel-bench-grid-" + std::to_string(::getpid()) + ".ksr");
    const int fd = ::open(path.c_str(), O_CREAT | O_RDWR | O_TRUNC, 0644);
    if (fd < 0 || ::ftruncate(fd, static_cast<off_t>(kMps * kMpSize)) != 0) {
        std::fprintf(stderr, "cannot create the sparse recording %s\n", path.c_str());
        return 1;
    }
    bool ok = true;
    for (std::uint64_t n = 0; n < 2000; ++n)
        ok = ok && WriteMp(fd, n) && WriteMp(fd, kMps - 1 - n);
    ::close(fd);
    if (!ok) {
        std::fprintf(stderr, "cannot write records\n");
        std::filesystem::remove(path);
        return 1;
    }

    grid::RecordGrid grid;
    grid.resize(1100, 800);
    grid.show();
    QApplication::processEvents();
    const long rssBefore = RssKb();

    const auto t0 = Clock::now();
    if (!grid.OpenRecording(QString::fromStdString(path.string()))) {
        std::fprintf(stderr, "cannot open: %s\n", grid.errorText().toLocal8Bit().constData());
        std::filesystem::remove(path);
        return 1;
    }
    (void)grid.viewport()->grab();
    const auto t1 = Clock::now();
    grid.scrollToEnd();
    (void)grid.viewport()->grab();
    const auto t2 = Clock::now();

    // Scroll back from the end a page at a time and a line at a time.
    std::uint64_t maxStep = 0, total = 0;
    int steps = 0;
    Key(&grid, Qt::Key_PageUp); // cursor to the top row
    for (int i = 0; i < 400; ++i) {
        const std::uint64_t before = grid.fetchBuffer().totalReadBytes();
        Key(&grid, i % 4 == 0 ? Qt::Key_PageUp : Qt::Key_Up);
        (void)grid.viewport()->grab();
        const std::uint64_t step = grid.fetchBuffer().totalReadBytes() - before;
        maxStep = std::max(maxStep, step);
        total += step;
        ++steps;
    }
    // And jumps across the whole file.
    for (int i = 0; i < 20; ++i) {
        const std::uint64_t before = grid.fetchBuffer().totalReadBytes();
        grid.GotoMp(static_cast<std::int64_t>(kMps / 20 * static_cast<std::uint64_t>(i)));
        (void)grid.viewport()->grab();
        const std::uint64_t step = grid.fetchBuffer().totalReadBytes() - before;
        maxStep = std::max(maxStep, step);
        total += step;
        ++steps;
    }
    const long rssAfter = RssKb();

    std::printf("grid_first_page_ms: %.2f ms\n", Ms(t0, t1));
    std::printf("grid_end_jump_ms: %.2f ms\n", Ms(t1, t2));
    std::printf("grid_scroll_max_read_per_step: %llu bytes\n", static_cast<unsigned long long>(maxStep));
    std::printf("grid_scroll_avg_read_per_step: %llu bytes\n", static_cast<unsigned long long>(total / static_cast<std::uint64_t>(steps)));
    std::printf("grid_fetch_window: %llu bytes\n", static_cast<unsigned long long>(grid::kFetchSlots * kMpSize));
    std::printf("grid_rss_growth: %ld kB\n", rssAfter - rssBefore);
    std::filesystem::remove(path);
    return maxStep <= static_cast<std::uint64_t>(grid::kFetchSlots) * kMpSize ? 0 : 2;
}
