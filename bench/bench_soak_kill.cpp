// Soak: kestrel-cli record is killed with SIGKILL 100 times at random moments
// while it records the simulated line at full speed (both ways at 921,600 baud), each time appending to the same file.
// Just before each kill the file is copied; after the kill, and again at the
// end, every whole record of every copy is compared with the file. A kill may
// lose what was not yet written, never change what was.
//
//   bench_soak_kill [--kills N] [--cli PATH]
//
// Prints kills, records_checked and records_changed (must be 0), and whether
// the final file is sound (numbers without gaps, times never going back,
// counters that agree with the data).

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "full_speed_line.h"
#include "record/mp_record.h"
#include "record/record_reader.h"
#include "record/record_summary.h"

#ifndef KESTREL_CLI_PATH
#define KESTREL_CLI_PATH ""
#endif

namespace {

using namespace std::chrono_literals;

std::string readAll(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

pid_t startRecorder(const std::string &cli, const std::string &scenario, const std::string &file, bool append)
{
    const pid_t pid = ::fork();
    if (pid == 0) {
        const int devnull = ::open("/dev/null", O_WRONLY);
        ::dup2(devnull, 1);
        ::dup2(devnull, 2);
        std::vector<std::string> args{cli, "record", "--simulate", scenario, "-o", file};
        if (append)
            args.emplace_back("--append");
        std::vector<char *> argv;
        for (auto &a : args)
            argv.push_back(a.data());
        argv.push_back(nullptr);
        ::execv(argv[0], argv.data());
        ::_exit(127);
    }
    return pid;
}

// Records of snapshot (whole ones) that differ from the file now.
std::uint64_t changedRecords(const std::string &snapshot, const std::string &now, std::uint64_t &checked)
{
    const std::uint64_t whole = snapshot.size() / kestrel::kMpSize;
    std::uint64_t changed = 0;
    for (std::uint64_t n = 0; n < whole; ++n) {
        ++checked;
        const std::size_t at = n * kestrel::kMpSize;
        if (now.size() < at + kestrel::kMpSize || now.compare(at, kestrel::kMpSize, snapshot, at, kestrel::kMpSize) != 0)
            ++changed;
    }
    return changed;
}

} // namespace

int main(int argc, char **argv)
{
    int kills = 100;
    std::string cli = KESTREL_CLI_PATH;
    for (int i = 1; i + 1 < argc; i += 2) {
        if (std::strcmp(argv[i], "--kills") == 0)
            kills = std::atoi(argv[i + 1]);
        else if (std::strcmp(argv[i], "--cli") == 0)
            cli = argv[i + 1];
    }
    if (cli.empty() || kills <= 0) {
        std::fprintf(stderr, "usage: bench_soak_kill [--kills N] [--cli PATH-TO-kestrel-cli]\n");
        return 2;
    }
    const std::filesystem::path dir = std::filesystem::temp_directory_path() / ("kestrel-soak-" + std::to_string(::getpid()));
    std::filesystem::create_directories(dir);
    const std::string file = (dir / "soak.ksr").string();
    const std::string scenario = (dir / "full-speed.ksc").string();
    std::ofstream(scenario) << kestrel::bench::FullSpeedScenario();

    std::mt19937 rng(20261125);
    std::uniform_int_distribution<int> waitMs(30, 700);
    // Each copy is compared with the file right after its kill, and what the file held
    // after a kill with the copy taken before the next kill: a chain that covers every
    // record from its first write to the end, without holding 100 copies at once.
    std::string afterLastKill;
    std::uint64_t checked = 0, changed = 0;
    int done = 0;
    for (int k = 0; k < kills; ++k) {
        const pid_t pid = startRecorder(cli, scenario, file, k > 0);
        std::this_thread::sleep_for(std::chrono::milliseconds(waitMs(rng)));
        const std::string snapshot = readAll(file); // what must survive this kill
        ::kill(pid, SIGKILL);
        int status = 0;
        ::waitpid(pid, &status, 0);
        if (WIFEXITED(status)) // ended by itself before the kill (it refused, say): not a kill
            std::fprintf(stderr, "run %d ended with exit code %d before the kill\n", k, WEXITSTATUS(status));
        else
            ++done;
        changed += changedRecords(afterLastKill, snapshot, checked); // the append left the old records alone
        afterLastKill = readAll(file);
        changed += changedRecords(snapshot, afterLastKill, checked); // the kill left the written records alone
    }

    kestrel::RecordReader reader;
    bool sound = false;
    std::uint64_t mps = 0;
    if (reader.open(file)) {
        const kestrel::RecordingSummary summary = kestrel::SummarizeRecording(reader);
        sound = summary.sound();
        mps = summary.mpCount;
    }
    std::filesystem::remove_all(dir);
    std::printf("soak_kills: %d kills\n", done);
    std::printf("soak_records_checked: %llu records\n", static_cast<unsigned long long>(checked));
    std::printf("soak_records_changed: %llu records\n", static_cast<unsigned long long>(changed));
    std::printf("soak_final_mps: %llu MPs\n", static_cast<unsigned long long>(mps));
    std::printf("soak_final_sound: %d bool\n", sound ? 1 : 0);
    return changed == 0 && sound && done == kills ? 0 : 1;
}
