// The real kestrel window under Xvfb recording the simulated line at full
// speed (both directions at 921,600 baud, 16-byte chunks, looping): how much
// of a core the window program takes and how late its event loop answers,
// once on an idle machine and once while another process keeps one core busy.
//
// The benchmark starts itself again under xvfb-run, then starts kestrel with
// KESTREL_LATENCY_PROBE=1 (the window prints its worst and mean event-loop
// lateness while recording at exit), samples the program's user + system time
// from /proc/PID/stat over a measuring span after a warm-up, and ends it with
// SIGTERM, which stops the recording cleanly.
//
//   bench_window_live [--seconds N] [--warmup N] [--kestrel PATH]
//
// Prints, for LOAD = idle and busy: window_LOAD_cpu_percent (kestrel's user +
// system time over the span, percent of one core), window_LOAD_xvfb_cpu_percent
// (the X server painting for it), window_LOAD_mp_per_s (MPs written per second
// over the span: shows the line was recorded), window_LOAD_max_loop_latency_ms
// and window_LOAD_mean_loop_latency_ms.

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "full_speed_line.h"

#ifndef KESTREL_PROGRAM
#define KESTREL_PROGRAM ""
#endif

namespace {

constexpr const char *kUnderX = "--under-xvfb";

using Clock = std::chrono::steady_clock;

struct Options {
    double seconds = 20.0;
    double warmup = 3.0;
    std::string kestrel = KESTREL_PROGRAM;
};


// utime + stime of a process in clock ticks, fields 14 and 15 of its stat
// line (counted after the command name, which may hold blanks).
std::optional<long long> cpuTicks(pid_t pid)
{
    std::ifstream f("/proc/" + std::to_string(pid) + "/stat");
    std::string line;
    if (!std::getline(f, line))
        return std::nullopt;
    const auto close = line.rfind(')');
    if (close == std::string::npos)
        return std::nullopt;
    std::istringstream rest(line.substr(close + 2));
    std::string field;
    long long utime = 0, stime = 0;
    for (int i = 3; i <= 15 && rest >> field; ++i) {
        if (i == 14)
            utime = std::atoll(field.c_str());
        if (i == 15)
            stime = std::atoll(field.c_str());
    }
    return utime + stime;
}

// The Xvfb that xvfb-run started next to this process (same parent).
pid_t findXvfb()
{
    const pid_t parent = ::getppid();
    DIR *d = ::opendir("/proc");
    if (d == nullptr)
        return -1;
    pid_t found = -1;
    while (dirent *e = ::readdir(d)) {
        const pid_t pid = static_cast<pid_t>(std::atoi(e->d_name));
        if (pid <= 0)
            continue;
        std::ifstream f(std::string("/proc/") + e->d_name + "/stat");
        std::string line;
        if (!std::getline(f, line) || line.find("(Xvfb)") == std::string::npos)
            continue;
        std::istringstream rest(line.substr(line.rfind(')') + 2));
        std::string state;
        pid_t ppid = 0;
        rest >> state >> ppid;
        if (ppid == parent)
            found = pid;
    }
    ::closedir(d);
    return found;
}

std::uintmax_t fileSize(const std::string &path)
{
    std::error_code ec;
    const auto n = std::filesystem::file_size(path, ec);
    return ec ? 0 : n;
}

// A process that keeps one core busy until it is killed.
pid_t startBusyLoop()
{
    const pid_t pid = ::fork();
    if (pid == 0) {
        volatile unsigned long spin = 0;
        for (;;)
            spin = spin + 1;
    }
    return pid;
}

struct Figures {
    bool ok = false;
    double cpu = 0, xvfbCpu = 0, mpPerS = 0;
    std::string probe; // the window's own "name: value unit" lines
};

Figures runWindow(const Options &o, const std::filesystem::path &dir, const std::string &scenario)
{
    Figures out;
    const std::filesystem::path data = dir / "data";
    std::filesystem::remove_all(data);
    std::filesystem::create_directories(data / "recordings");
    const std::string record = (data / "recordings" / "Window.ksr").string();

    int pipeFd[2];
    if (::pipe(pipeFd) != 0)
        return out;
    const std::string quitAfter = std::to_string(static_cast<int>(o.warmup + o.seconds + 60));
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::dup2(pipeFd[1], STDOUT_FILENO);
        ::close(pipeFd[0]);
        ::close(pipeFd[1]);
        ::setenv("KESTREL_LATENCY_PROBE", "1", 1);
        ::unsetenv("QT_QPA_PLATFORM"); // the real X server, not offscreen
        const std::string dataArg = data.string();
        ::execl(o.kestrel.c_str(), o.kestrel.c_str(), "--data-dir", dataArg.c_str(), "--simulate", scenario.c_str(),
                "--record", "--quit-after", quitAfter.c_str(), record.c_str(), static_cast<char *>(nullptr));
        std::fprintf(stderr, "bench_window_live: cannot start %s: %s\n", o.kestrel.c_str(), std::strerror(errno));
        ::_exit(127);
    }
    ::close(pipeFd[1]);
    if (pid < 0) {
        ::close(pipeFd[0]);
        return out;
    }

    const pid_t xvfb = findXvfb();
    const double tick = static_cast<double>(::sysconf(_SC_CLK_TCK));
    std::this_thread::sleep_for(std::chrono::duration<double>(o.warmup));
    const auto cpu0 = cpuTicks(pid);
    const auto x0 = xvfb > 0 ? cpuTicks(xvfb) : std::nullopt;
    const std::uintmax_t size0 = fileSize(record);
    const auto t0 = Clock::now();
    std::this_thread::sleep_for(std::chrono::duration<double>(o.seconds));
    const auto cpu1 = cpuTicks(pid);
    const auto x1 = xvfb > 0 ? cpuTicks(xvfb) : std::nullopt;
    const std::uintmax_t size1 = fileSize(record);
    const double wall = std::chrono::duration<double>(Clock::now() - t0).count();

    ::kill(pid, SIGTERM); // stops the recording and closes the window
    std::string text;
    char buf[4096];
    for (ssize_t n; (n = ::read(pipeFd[0], buf, sizeof buf)) != 0;) {
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            break;
        text.append(buf, static_cast<std::size_t>(n));
    }
    ::close(pipeFd[0]);
    int status = 0;
    ::waitpid(pid, &status, 0);

    if (!cpu0 || !cpu1 || size1 <= size0) {
        std::fprintf(stderr, "bench_window_live: the window did not record (exit status %d)\n", status);
        return out;
    }
    out.cpu = static_cast<double>(*cpu1 - *cpu0) / tick * 100.0 / wall;
    if (x0 && x1)
        out.xvfbCpu = static_cast<double>(*x1 - *x0) / tick * 100.0 / wall;
    out.mpPerS = static_cast<double>(size1 - size0) / 80.0 / wall;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        if (line.rfind("window_", 0) == 0)
            out.probe += line + "\n";
    out.ok = !out.probe.empty();
    return out;
}

int underX(const Options &o)
{
    const auto dir = std::filesystem::temp_directory_path() / ("kestrel-bench-window-" + std::to_string(::getpid()));
    std::filesystem::create_directories(dir);
    const std::string scenario = (dir / "full-speed.ksc").string();
    {
        std::ofstream f(scenario);
        f << kestrel::bench::FullSpeedScenario();
    }
    bool ok = true;
    std::printf("window_seconds: %.1f s\n", o.seconds);
    for (const char *load : {"idle", "busy"}) {
        const bool busy = std::strcmp(load, "busy") == 0;
        const pid_t spinner = busy ? startBusyLoop() : -1;
        const Figures f = runWindow(o, dir, scenario);
        if (spinner > 0) {
            ::kill(spinner, SIGKILL);
            ::waitpid(spinner, nullptr, 0);
        }
        if (!f.ok) {
            ok = false;
            continue;
        }
        std::printf("window_%s_cpu_percent: %.1f %%\n", load, f.cpu);
        std::printf("window_%s_xvfb_cpu_percent: %.1f %%\n", load, f.xvfbCpu);
        std::printf("window_%s_mp_per_s: %.0f MP/s\n", load, f.mpPerS);
        // The probe's lines, named after the load.
        std::istringstream lines(f.probe);
        for (std::string line; std::getline(lines, line);)
            std::printf("window_%s_%s\n", load, line.c_str() + std::strlen("window_"));
        std::fflush(stdout);
    }
    std::error_code ec;
    std::filesystem::remove_all(dir, ec);
    return ok ? 0 : 1;
}

} // namespace

int main(int argc, char **argv)
{
    Options o;
    bool inner = false;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        if (a == kUnderX)
            inner = true;
        else if (a == "--seconds" && i + 1 < argc)
            o.seconds = std::max(1.0, std::atof(argv[++i]));
        else if (a == "--warmup" && i + 1 < argc)
            o.warmup = std::max(0.5, std::atof(argv[++i]));
        else if (a == "--kestrel" && i + 1 < argc)
            o.kestrel = argv[++i];
    }
    if (o.kestrel.empty() || ::access(o.kestrel.c_str(), X_OK) != 0) {
        std::fprintf(stderr, "bench_window_live: no kestrel program (--kestrel PATH)\n");
        return 1;
    }
    if (inner)
        return underX(o);

    // Again, inside a fresh X server of its own.
    char self[4096];
    const ssize_t len = ::readlink("/proc/self/exe", self, sizeof self - 1);
    if (len <= 0)
        return 1;
    self[len] = '\0';
    std::vector<std::string> args = {"xvfb-run", "-a", "-s", "-screen 0 1280x1024x24", self, kUnderX,
                                     "--seconds", std::to_string(o.seconds), "--warmup", std::to_string(o.warmup),
                                     "--kestrel", o.kestrel};
    std::vector<char *> argvX;
    for (std::string &s : args)
        argvX.push_back(s.data());
    argvX.push_back(nullptr);
    ::execvp("xvfb-run", argvX.data());
    std::fprintf(stderr, "bench_window_live: cannot run xvfb-run (%s); install xvfb and xauth\n", std::strerror(errno));
    return 1;
}
