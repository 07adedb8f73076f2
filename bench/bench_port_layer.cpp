// Throughput of the port layer without the file: bytes of both ports through
// the receive buffers, the event-loop notifications and Capture's pairing
// into MPs (the record callback only counts), from the simulated line and
// from a pseudo-terminal through the termios backend.

#include <QCoreApplication>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

#include "base/prompt.h"
#include "capture/capture.h"
#include "record/clock.h"
#include "ports/sim_port.h"
#include "ports/termios_port.h"

namespace {

double seconds(std::chrono::steady_clock::duration d)
{
    return std::chrono::duration<double>(d).count();
}

void benchSimulated()
{
    using namespace kestrel;
    ScenarioError err;
    auto sc = ParseScenario("pace off\nchunk 64\nloop\na \"" + std::string(256, 'a') + "\"\n& b \"" +
                                std::string(256, 'b') + "\"\n",
                            err);
    ManualClock clock;
    SimLine line(*sc, clock);
    ComEvent ev;
    std::uint64_t mps = 0;
    Capture cap(line.portA(), line.portB(), ev, {});
    cap.hooks().record = [&](std::uint16_t) {
        ++mps;
        return 0;
    };
    cap.setPortList({"sim:A", "sim:B"});
    cap.setStoredIndexes(0, 1);
    (void)cap.InitInterface({"921600", "8", "N", "1"});
    if (!cap.OpenPortsForRecording())
        return;
    const auto t0 = std::chrono::steady_clock::now();
    while (mps < 20'000'000 && seconds(std::chrono::steady_clock::now() - t0) < 3.0) {
        line.poll();
        QCoreApplication::processEvents();
    }
    const double s = seconds(std::chrono::steady_clock::now() - t0);
    std::printf("sim_capture_mp_per_s: %.0f MP/s\n", static_cast<double>(mps) / s);
    std::printf("sim_capture_bytes_per_s: %.0f B/s\n", static_cast<double>(ev.d1Count + ev.d2Count) / s);
    cap.ClosePorts();
}

void benchPseudoTerminal()
{
    using namespace kestrel;
    const int master = posix_openpt(O_RDWR | O_NOCTTY);
    if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0)
        return;
    TermiosPort port(ptsname(master));
    PortSettings s;
    s.baud = 921600;
    port.setSettings(s);
    if (const Result opened = port.open(); !opened) {
        std::fprintf(stderr, "pty: %s\n", opened.detail.c_str());
        return;
    }
    const std::size_t total = 8u << 20;
    std::atomic<bool> stop{false};
    fcntl(master, F_SETFL, O_NONBLOCK);
    std::thread writer([&] {
        std::string block(4096, 'x');
        std::size_t sent = 0;
        while (sent < total && !stop) {
            const ssize_t n = ::write(master, block.data(), std::min(block.size(), total - sent));
            if (n > 0)
                sent += static_cast<std::size_t>(n);
            else
                std::this_thread::sleep_for(std::chrono::microseconds(50));
        }
    });
    std::size_t got = 0;
    const auto t0 = std::chrono::steady_clock::now();
    while (got < total && seconds(std::chrono::steady_clock::now() - t0) < 10.0) {
        QCoreApplication::processEvents();
        while (port.charReady()) {
            (void)port.getChar();
            ++got;
        }
    }
    const double sec = seconds(std::chrono::steady_clock::now() - t0);
    std::printf("termios_pty_bytes_per_s: %.0f B/s\n", static_cast<double>(got) / sec);
    std::printf("termios_pty_lost_bytes: %zu bytes\n", total - got);
    stop = true;
    writer.join();
    port.close();
    ::close(master);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    benchSimulated();
    benchPseudoTerminal();
    return 0;
}
