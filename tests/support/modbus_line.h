#pragma once
// A Modbus RTU conversation for the simulated line at 19,200 baud: a master on
// D1 (port B) asks, a slave on D2 (port A) answers. The third answer has one
// byte damaged on the way (its CRC no longer matches); the status lines come
// up before the first question, and a parity error hits the last answer.

namespace kestrel::test {

inline constexpr const char *kModbusScenario =
    "baud 19200\n"
    "chunk 16\n"
    "modem A DSR CTS\n"
    "modem B DSR CTS\n"
    "wait 10ms\n"
    "b 01 03 00 00 00 01 84 0A\n"    // #1 read one holding register of slave 1
    "wait 5ms\n"
    "a 01 03 02 00 2A 39 9B\n"       // #2 its answer: 42
    "wait 20ms\n"
    "b 01 06 00 01 00 03 98 0B\n"    // #3 write register 1 := 3
    "wait 5ms\n"
    "a 01 06 00 01 00 03 98 0B\n"    // #4 the echo
    "wait 20ms\n"
    "b 02 03 00 10 00 02 C5 FD\n"    // #5 read two registers of slave 2
    "wait 5ms\n"
    "a 02 03 04 00 01 00 03 19 32\n" // #6 damaged: 00 02 became 00 03
    "wait 20ms\n"
    "modem B -CTS\n"
    "wait 5ms\n"
    "b 02 03 00 10 00 02 C5 FD\n"    // #7 asked again
    "wait 5ms\n"
    "a 02 03 04 00 01\n"
    "error A parity\n"
    "a 00 02 19 32\n"                // #8 whole again, with a parity error reported inside
    "wait 20ms\n";

// Frames of the conversation, and which of them has the bad CRC (numbered from 1).
inline constexpr int kModbusFrames = 8;
inline constexpr int kModbusBadFrame = 6;

} // namespace kestrel::test
