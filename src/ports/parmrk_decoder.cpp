#include "ports/parmrk_decoder.h"

#include "ports/port_settings.h"

namespace kestrel {

void ParmrkDecoder::decode(const std::uint8_t *data, std::size_t size, std::vector<std::uint8_t> &out,
                           std::vector<std::size_t> &marked)
{
    for (std::size_t i = 0; i < size; ++i) {
        const std::uint8_t b = data[i];
        switch (state_) {
        case State::Normal:
            if (b == 0xFF)
                state_ = State::SawFF;
            else
                out.push_back(b);
            break;
        case State::SawFF:
            if (b == 0xFF) {
                out.push_back(0xFF);
                state_ = State::Normal;
            } else if (b == 0x00) {
                state_ = State::SawFF00;
            } else {
                // Not a marker the line discipline writes; keep both bytes rather than lose one.
                out.push_back(0xFF);
                out.push_back(b);
                state_ = State::Normal;
            }
            break;
        case State::SawFF00:
            marked.push_back(out.size());
            out.push_back(b);
            state_ = State::Normal;
            break;
        }
    }
}

unsigned ClassifyMarkedByte(std::uint8_t byte, bool parityEnabled, LineCounters &c)
{
    if (c.valid) {
        if (byte == 0 && c.brk > 0) {
            --c.brk;
            return LineError::Break | LineError::Framing;
        }
        if (c.frame > 0) {
            --c.frame;
            return LineError::Framing;
        }
        if (c.parity > 0) {
            --c.parity;
            return LineError::Parity;
        }
    }
    // No counters to ask: a zero byte is what a break looks like; otherwise only a port
    // that checks parity can have a parity error.
    if (byte == 0)
        return LineError::Break | LineError::Framing;
    return parityEnabled ? LineError::Parity : LineError::Framing;
}

} // namespace kestrel
