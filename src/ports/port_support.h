#pragma once
// Small helpers both port backends share: the texts they report, the check
// of a settings set, and the length of one character on the wire.

#include <string>

#include "base/result.h"
#include "ports/port_settings.h"

namespace kestrel {

enum class PortTextId {
    Gone = 7150,        // the device went away
    Busy = 7151,        // held by another program
    Missing = 7152,     // no such device
    BadSettings = 7153, // the device refuses the settings
    OtherSideClosed = 7154,
    ReadFailed = 7155,
    NotSerial = 7156,
    OpenFailed = 7157,
};

// The text in the active language.
[[nodiscard]] std::string PortText(PortTextId id);

// A port failure: the text's number as the code, the text (and what follows it) as the detail.
[[nodiscard]] Result PortFailure(PortTextId id, const std::string &more = {});

// Baud 1..20,000,000, data bits 5..8; BadSettings with the value otherwise.
[[nodiscard]] Result ValidPortSettings(const PortSettings &s);

// Bits of one character (start + data + parity + stop), doubled so that 1.5 stop bits stay whole.
// Two stop bits with five data bits are one and a half on the wire.
[[nodiscard]] int CharacterBitsTimesTwo(const PortSettings &s);

} // namespace kestrel
