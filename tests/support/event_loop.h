#pragma once
// Port notifications arrive through the event loop: tests create the core
// application once and spin the loop until a condition holds or a deadline
// passes (never a fixed sleep).

#include <QCoreApplication>

#include <chrono>
#include <functional>
#include <thread>

namespace kestrel::test {

inline QCoreApplication &TestApp()
{
    static int argc = 1;
    static char name[] = "kestrel-test";
    static char *argv[] = {name, nullptr};
    static QCoreApplication *app =
        QCoreApplication::instance() ? QCoreApplication::instance() : new QCoreApplication(argc, argv);
    return *app;
}

// Runs queued notifications until pred() is true; false when the deadline passed first.
inline bool SpinUntil(const std::function<bool()> &pred, int timeoutMs = 3000)
{
    TestApp();
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    for (;;) {
        QCoreApplication::processEvents();
        if (pred())
            return true;
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
}

// Delivers everything already queued.
inline void SpinPending()
{
    TestApp();
    for (int i = 0; i < 3; ++i)
        QCoreApplication::processEvents();
}

} // namespace kestrel::test
