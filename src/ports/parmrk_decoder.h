#pragma once
// With PARMRK the line discipline marks a byte received with an error as
// FF 00 b and doubles a real FF to FF FF. The decoder undoes that, also when
// a sequence is split across reads, and tells which decoded bytes carried an
// error. Which error it was comes from the kernel's line counters where the
// driver keeps them, otherwise from the byte and the parity setting.

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kestrel {

class ParmrkDecoder {
public:
    // Appends the decoded bytes to out and the indexes (into out) of bytes that carried an error to marked.
    void decode(const std::uint8_t *data, std::size_t size, std::vector<std::uint8_t> &out,
                std::vector<std::size_t> &marked);
    void reset() { state_ = State::Normal; }
    [[nodiscard]] bool midSequence() const { return state_ != State::Normal; }

private:
    enum class State { Normal, SawFF, SawFF00 };
    State state_ = State::Normal;
};

// Error counts the kernel has seen and no marked byte has used up yet.
struct LineCounters {
    bool valid = false; // the driver answers TIOCGICOUNT
    std::uint32_t parity = 0, frame = 0, brk = 0;
};

// The line-error word of one marked byte; takes its count from the counters when they have one.
[[nodiscard]] unsigned ClassifyMarkedByte(std::uint8_t byte, bool parityEnabled, LineCounters &counters);

} // namespace kestrel
