#pragma once
// The pending event: capture fills it from the port notifications, the MP
// writer turns it into the next MP. It always holds the current levels of all
// six signals, whatever caused the MP.

#include <cstdint>

namespace kestrel {

struct ComEvent {
    std::uint8_t d1 = 0, d2 = 0;           // D1 from port B, D2 from port A
    std::uint8_t d1Valid = 0, d2Valid = 0;
    std::uint8_t s1 = 0, m1 = 0, s2 = 0, m2 = 0, m5 = 0, m3 = 0;
    std::uint8_t peD1 = 0, feD1 = 0, leD1 = 0; // port B
    std::uint8_t peD2 = 0, feD2 = 0, leD2 = 0; // port A
    std::uint8_t markCode = 0, markKind = 0, markExtra = 0; // trigger mark bytes

    // Running counts for the control centre; not written to the MP.
    std::uint64_t d1Count = 0, d2Count = 0;
    std::uint64_t peCount = 0, feCount = 0; // shared by both ports

    void clearData() { d1 = d2 = d1Valid = d2Valid = 0; }
    void clearErrors() { peD1 = feD1 = leD1 = peD2 = feD2 = leD2 = 0; }
};

} // namespace kestrel
