#include "config/port_value_lists.h"

namespace kestrel {

const std::vector<std::string> &StandardBaudRates()
{
    static const std::vector<std::string> list{"50",    "75",    "150",   "300",   "600",    "1200",
                                               "1800",  "2000",  "2400",  "3600",  "4800",   "7200",
                                               "9600",  "10400", "14400", "19200", "28800",  "38400",
                                               "56000", "57600", "115200", "230400", "460800", "921600"};
    return list;
}

const std::vector<std::string> &StandardDataBits()
{
    static const std::vector<std::string> list{"5", "6", "7", "8"};
    return list;
}

const std::vector<std::string> &StandardParities()
{
    static const std::vector<std::string> list{"N", "S", "M", "E", "O"};
    return list;
}

const std::vector<std::string> &StandardStopBits()
{
    static const std::vector<std::string> list{"1", "1.5", "2"};
    return list;
}

PortValueLists StandardPortValueLists()
{
    return {StandardBaudRates(), StandardDataBits(), StandardParities(), StandardStopBits()};
}

} // namespace kestrel
