#include "config/record_setup.h"

#include <array>

#include "ports/port_texts.h"

namespace kestrel {

namespace {
constexpr std::array<const char *, 5> kParityLetters{"N", "O", "E", "M", "S"}; // by ordinal

RecordPortSetup LineSettings(const EnvPort &port)
{
    RecordPortSetup s;
    s.baud = std::to_string(port.CustomBaudRate);
    s.dataBits = std::to_string(port.DataBits);
    s.parity = ParityLetter(port.Parity);
    s.stopBits = StopBitsText(port.StopBits, port.DataBits);
    return s;
}
} // namespace

std::string DevicePathOf(const EnvPort &port)
{
    if (!port.DevicePath.empty())
        return port.DevicePath;
    const long long index = port.Device >= 1 ? static_cast<long long>(port.Device) - 1 : 0;
    return "/dev/ttyS" + std::to_string(index);
}

std::string ParityLetter(int ordinal)
{
    if (ordinal < 0 || ordinal >= static_cast<int>(kParityLetters.size()))
        return "N";
    return kParityLetters[static_cast<std::size_t>(ordinal)];
}

std::optional<int> ParityOrdinalOf(const std::string &letter)
{
    // The ordinals are the order of the Parity enumeration: N, O, E, M, S.
    if (const auto parity = ParseParityText(letter))
        return static_cast<int>(*parity);
    return std::nullopt;
}

std::string StopBitsText(int stopBits, int dataBits)
{
    if (stopBits == 2)
        return dataBits == 5 ? "1.5" : "2";
    return "1";
}

RecordSetup RecordSetupFromEnvironment(const Environment &env, const std::optional<std::string> &recordFileOnCommandLine)
{
    RecordSetup setup;
    setup.portA = LineSettings(env.comA);
    setup.portA.device = DevicePathOf(env.comA);
    setup.portB = LineSettings(env.comA);
    setup.portB.device = DevicePathOf(env.comB);
    setup.recordFile = EffectiveRecordFile(env.recordFile, recordFileOnCommandLine);
    return setup;
}

} // namespace kestrel
