#include "config/port_combo.h"

#include <algorithm>
#include <climits>

#include "config/record_setup.h"
#include "ports/port_texts.h"

namespace kestrel {

namespace {
int IndexOf(const std::vector<std::string> &list, const std::string &text)
{
    const auto it = std::find(list.begin(), list.end(), text);
    return it == list.end() ? -1 : static_cast<int>(it - list.begin());
}
} // namespace

PortComboIndexes ComboIndexesFor(const EnvPort &port, const PortValueLists &lists)
{
    PortComboIndexes idx;
    idx.baud = IndexOf(lists.baudRates, std::to_string(port.CustomBaudRate));
    idx.dataBits = IndexOf(lists.dataBits, std::to_string(port.DataBits));
    idx.parity = IndexOf(lists.parities, ParityLetter(port.Parity));
    idx.stopBits = IndexOf(lists.stopBits, StopBitsText(port.StopBits, port.DataBits));
    return idx;
}

EnvPort WithComboTexts(EnvPort port, const std::string &baud, const std::string &dataBits, const std::string &parity,
                       const std::string &stopBits)
{
    // Read as capture reads them: a text no port takes is saved as the default the line
    // runs with (capture says so when it applies the settings), never as typed.
    const PortSettings line;
    const auto rate = ParseBaudText(baud);
    port.CustomBaudRate = static_cast<int>(rate && *rate <= INT_MAX ? *rate : line.baud);
    port.DataBits = ParseDataBitsText(dataBits).value_or(line.dataBits);
    port.Parity = ParityOrdinalOf(parity).value_or(ParityOrdinal::None);
    // Kept as chosen: "1" stays 1 with five data bits too (the line then runs 1.5), so
    // the box shows "1" again after a reload.
    const StopBitsChoice stop = ParseStopBitsText(stopBits).value_or(StopBitsChoice::One);
    port.StopBits = stop == StopBitsChoice::One ? 1 : 2;
    return port;
}

} // namespace kestrel
