#pragma once
// An environment's port settings against the four port combo boxes (baud, data
// bits, parity, stop bits) that offer the values of the lists in use.

#include <string>

#include "config/environment.h"
#include "config/port_value_lists.h"

namespace kestrel {

// Item index of each setting in the offered lists; -1 when the list does not offer it.
struct PortComboIndexes {
    int baud = -1;
    int dataBits = -1;
    int parity = -1;
    int stopBits = -1;
    friend bool operator==(const PortComboIndexes &, const PortComboIndexes &) = default;
};
[[nodiscard]] PortComboIndexes ComboIndexesFor(const EnvPort &port, const PortValueLists &lists);

// The combo texts into a port's stored values: a baud or data-bit text that is not a
// number keeps the old value; an unknown parity letter means none; "1" stop bit
// with 5 data bits and "1.5" are both stored as 2 (one and a half on the line).
[[nodiscard]] EnvPort WithComboTexts(EnvPort port, const std::string &baud, const std::string &dataBits,
                                     const std::string &parity, const std::string &stopBits);

} // namespace kestrel
