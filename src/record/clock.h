#pragma once
// Time sources of the MP writer: a monotonic tick counter with a known
// frequency (steady_clock in nanoseconds) and the local wall clock as a
// date-time (days since 1899-12-30 00:00). Injectable so tests drive time.

#include <cstdint>

namespace kestrel {

class Clock {
public:
    virtual ~Clock() = default;
    [[nodiscard]] virtual std::int64_t counter() = 0;          // ticks
    [[nodiscard]] virtual std::int64_t frequency() const = 0;  // ticks per second
    [[nodiscard]] virtual bool highResolution() const { return true; }
    [[nodiscard]] virtual double nowDateTime() = 0;            // local date-time
};

// steady_clock (CLOCK_MONOTONIC) at 10^9 ticks per second and the local wall clock.
class SystemClock final : public Clock {
public:
    std::int64_t counter() override;
    std::int64_t frequency() const override { return 1'000'000'000; }
    double nowDateTime() override;
};

// A clock that only moves when told to (tests, and simulated lines run as fast as possible).
class ManualClock final : public Clock {
public:
    explicit ManualClock(double startDateTime = 46000.5, std::int64_t frequency = 1'000'000'000)
        : dateTime_(startDateTime), frequency_(frequency) {}
    std::int64_t counter() override { return ticks_; }
    std::int64_t frequency() const override { return frequency_; }
    bool highResolution() const override { return highRes_; }
    double nowDateTime() override { return dateTime_ + static_cast<double>(ticks_) / frequency_ / 86400.0; }

    void advance(std::int64_t ticks) { ticks_ += ticks; }
    void setHighResolution(bool on) { highRes_ = on; }

private:
    double dateTime_;
    std::int64_t frequency_;
    std::int64_t ticks_ = 1; // never 0: a zero counter base means "not yet based"
    bool highRes_ = true;
};

// Local date-time of a system time point, as days since 1899-12-30.
[[nodiscard]] double ToDateTime(std::int64_t unixSeconds, std::int64_t nanoseconds);

} // namespace kestrel
