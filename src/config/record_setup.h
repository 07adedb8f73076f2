#pragma once
// What a recording needs from an environment: both ports (device and line
// settings as the texts the port settings use) and the record file.

#include <optional>
#include <string>

#include "config/environment.h"

namespace kestrel {

struct RecordPortSetup {
    std::string device;   // a device path
    std::string baud;     // "9600"
    std::string dataBits; // "8"
    std::string parity;   // "N", "O", "E", "M" or "S"
    std::string stopBits; // "1", "1.5" or "2"
    friend bool operator==(const RecordPortSetup &, const RecordPortSetup &) = default;
};

struct RecordSetup {
    RecordPortSetup portA;
    RecordPortSetup portB; // its own device, port A's line settings (B always follows A)
    std::string recordFile;
    friend bool operator==(const RecordSetup &, const RecordSetup &) = default;
};

// The device-path key when set, else COM n taken as the n-th on-board serial port
// (/dev/ttyS0 for COM1); a port number below 1 also gives /dev/ttyS0.
[[nodiscard]] std::string DevicePathOf(const EnvPort &port);
// Parity ordinal to letter; an unknown ordinal keeps no parity ("N").
[[nodiscard]] std::string ParityLetter(int ordinal);
// Ordinal of a parity letter (N, O, E, M, S, any case); empty when unknown.
[[nodiscard]] std::optional<int> ParityOrdinalOf(const std::string &letter);
// Stop bits 2 with 5 data bits is one and a half on the line.
[[nodiscard]] std::string StopBitsText(int stopBits, int dataBits);

// recordFileOnCommandLine wins over the environment's record file.
[[nodiscard]] RecordSetup RecordSetupFromEnvironment(const Environment &env,
                                                     const std::optional<std::string> &recordFileOnCommandLine = {});

} // namespace kestrel
