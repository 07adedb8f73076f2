// MPs per second through RecordComEvent into a record file: once the way the
// data handler writes (one write per receive burst) and once with one write
// per MP, for comparison.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <unistd.h>

#include "capture/clock.h"
#include "capture/record_file.h"
#include "capture/record_store.h"

using namespace kestrel;

namespace {

constexpr auto kRunTime = std::chrono::milliseconds(1500);

double run(const std::string &path, int burstSize)
{
    SystemClock clock;
    RecordStore store(clock);
    RecordFile file;
    file.setPath(path);
    if (!file.create(RecordHandle::Record)) {
        std::fprintf(stderr, "bench_writer: cannot create %s: %s\n", path.c_str(), file.errorText().c_str());
        std::exit(1);
    }
    store.setSink(&file);
    store.SetLineTiming({921600, 8, Parity::None, StopBits::One});
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
                    std::fprintf(stderr, "bench_writer: write failed: %s\n", file.errorText().c_str());
                    std::exit(1);
                }
                e.clearData();
                ++byte;
            }
            if (burstSize > 1 && store.endBurst() != WriteResult::Ok) {
                std::fprintf(stderr, "bench_writer: write failed: %s\n", file.errorText().c_str());
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

} // namespace

int main()
{
    const char *tmp = std::getenv("TMPDIR");
    const std::string path = std::string(tmp && *tmp ? tmp : "/tmp") + "/kestrel-bench-" +
                             std::to_string(::getpid()) + ".ksr";
    const double perBurst = run(path, 64);
    const double perMp = run(path, 1);
    std::printf("writer_mp_per_s: %.0f MP/s\n", perBurst);
    std::printf("writer_one_write_per_mp_mp_per_s: %.0f MP/s\n", perMp);
    return 0;
}
