#pragma once
// The values the port settings may offer: program-wide, kept in Kestrel.ini
// under [Port Standards] and replaced by a hardware profile.

#include <string>
#include <vector>

namespace kestrel {

struct PortValueLists {
    std::vector<std::string> baudRates;
    std::vector<std::string> dataBits;
    std::vector<std::string> parities; // letters N, S, M, E, O
    std::vector<std::string> stopBits;
    friend bool operator==(const PortValueLists &, const PortValueLists &) = default;
};

// The standard lists (also what the value selector resets to).
[[nodiscard]] const std::vector<std::string> &StandardBaudRates();
[[nodiscard]] const std::vector<std::string> &StandardDataBits();
[[nodiscard]] const std::vector<std::string> &StandardParities();
[[nodiscard]] const std::vector<std::string> &StandardStopBits();
[[nodiscard]] PortValueLists StandardPortValueLists();

} // namespace kestrel
