#pragma once
// A generated recording for the export and search benchmarks: realistic
// traffic (text and control bytes on both circuits, level changes, a few
// errors and trigger marks), written in large blocks. The byte 0xFE never
// occurs, so a search for it scans the whole file.

#include <sys/resource.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "record/mp_record.h"
#include "record/record_reader.h"

namespace kestrel::bench {

inline std::string BenchFilePath(const char *name)
{
    const char *dir = std::getenv("KESTREL_BENCH_DIR");
    return std::string(dir && *dir ? dir : "/tmp") + "/" + name;
}

// MPs in the benchmark recording; KESTREL_BENCH_MPS overrides (at least 1000).
inline std::uint64_t BenchMpCount()
{
    const char *v = std::getenv("KESTREL_BENCH_MPS");
    const std::uint64_t n = v ? std::strtoull(v, nullptr, 10) : 0;
    return n >= 1000 ? n : 10'000'000;
}

inline bool WriteBenchRecording(const std::string &path, std::uint64_t count)
{
    std::FILE *f = std::fopen(path.c_str(), "wb");
    if (!f)
        return false;
    std::mt19937 rng(42);
    MpRecord mp;
    double t = 46082.5;
    const double charTime = 1.0 / 11520 / 86400; // 115200 baud
    std::vector<std::uint8_t> block;
    block.reserve(65536 * kMpSize);
    for (std::uint64_t n = 0; n < count; ++n) {
        const std::uint32_t r = rng();
        mp.number = static_cast<std::uint32_t>(n);
        mp.time = t;
        t += charTime;
        mp.d1Valid = (r & 3) != 0;
        mp.d2Valid = (r & 3) != 1;
        mp.d1 = static_cast<std::uint8_t>(r % 11 == 0 ? (r >> 8) % 32 : 32 + (r >> 8) % 95);
        mp.d2 = static_cast<std::uint8_t>(0x80 + (r >> 16) % 0x7E); // 0x80..0xFD, never 0xFE
        if ((r >> 24) == 0)
            mp.s1 ^= 1, mp.m2 ^= 1;
        mp.peD1 = (r >> 20) % 5000 == 0;
        mp.markCode = (r >> 12) % 20000 == 0 ? 1 : 0;
        mp.markExtra = mp.markCode ? 3 : 0;
        block.resize(block.size() + kMpSize);
        EncodeMp(mp, block.data() + block.size() - kMpSize);
        if (block.size() == block.capacity()) {
            if (std::fwrite(block.data(), 1, block.size(), f) != block.size())
                return std::fclose(f), false;
            block.clear();
        }
    }
    const bool ok = std::fwrite(block.data(), 1, block.size(), f) == block.size();
    return std::fclose(f) == 0 && ok;
}

inline double Seconds(std::chrono::steady_clock::time_point since)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

// Peak resident memory of this process so far.
inline double PeakRssMb()
{
    rusage u{};
    getrusage(RUSAGE_SELF, &u);
    return static_cast<double>(u.ru_maxrss) / 1024.0;
}

// Times `cat FILE > /dev/null` (the file already in the page cache) and returns MB/s.
inline double CatMbPerSecond(const std::string &path)
{
    std::FILE *f = std::fopen(path.c_str(), "rb");
    if (!f)
        return 0;
    std::fseek(f, 0, SEEK_END);
    const double bytes = static_cast<double>(std::ftell(f));
    std::fclose(f);
    const std::string cmd = "cat '" + path + "' > /dev/null";
    const auto t0 = std::chrono::steady_clock::now();
    if (std::system(cmd.c_str()) != 0)
        return 0;
    return bytes / 1e6 / Seconds(t0);
}

// Writes the benchmark recording under name and opens it; false (with a
// message on standard error) when either fails.
inline bool MakeBenchRecording(const std::string &path, std::uint64_t count, RecordReader &reader)
{
    if (!WriteBenchRecording(path, count)) {
        std::fprintf(stderr, "cannot write %s\n", path.c_str());
        return false;
    }
    if (!reader.open(path)) {
        std::fprintf(stderr, "cannot open %s\n", path.c_str());
        return false;
    }
    return true;
}

} // namespace kestrel::bench
