#pragma once
// How late the event loop answers while the window works: a timer that should
// fire every 10 ms, and the largest and mean gap between two of its ticks.
// KESTREL_BENCH_GAPS=1 prints every gap above 40 ms.

#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace kestrel::bench {

constexpr int kTickMs = 10;

// Largest and mean gap between the ticks of a timer that should fire every kTickMs.
struct LoopGaps {
    QTimer timer;
    QElapsedTimer clock;
    qint64 last = 0;
    qint64 worst = 0;
    qint64 sum = 0;
    qint64 ticks = 0;

    LoopGaps()
    {
        timer.setTimerType(Qt::PreciseTimer);
        timer.setInterval(kTickMs);
        QObject::connect(&timer, &QTimer::timeout, [this] {
            const qint64 now = clock.nsecsElapsed();
            if (std::getenv("KESTREL_BENCH_GAPS") && now - last > 40'000'000)
                std::fprintf(stderr, "gap %.1f ms at %.3f s\n", static_cast<double>(now - last) / 1e6, static_cast<double>(now) / 1e9);
            worst = std::max(worst, now - last);
            sum += now - last;
            ++ticks;
            last = now;
        });
    }
    void start()
    {
        clock.start();
        last = 0;
        timer.start();
    }
    void stop()
    {
        // The time since the last tick counts too: a loop that never ran shows as one long gap.
        worst = std::max(worst, clock.nsecsElapsed() - last);
        timer.stop();
    }
};

} // namespace kestrel::bench
