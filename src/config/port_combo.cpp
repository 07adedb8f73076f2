#include "config/port_combo.h"

#include <algorithm>

#include "config/record_setup.h"

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
    int value = 0;
    if (ParseIniInteger(baud, value))
        port.CustomBaudRate = value;
    if (ParseIniInteger(dataBits, value))
        port.DataBits = value;
    port.Parity = ParityOrdinalOf(parity).value_or(ParityOrdinal::None);
    if (stopBits == "1.5" || stopBits == "2")
        port.StopBits = 2;
    else if (stopBits == "1")
        port.StopBits = port.DataBits == 5 ? 2 : 1;
    return port;
}

} // namespace kestrel
