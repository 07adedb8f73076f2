// kestrel-cli ports: the serial devices Kestrel offers for ports A and B.

#include <cstdio>

#include "ports/port_scan.h"
#include "command.h"

namespace kestrel::cli {
namespace {

int runPorts(const std::vector<std::string> &args)
{
    bool all = false;
    for (const auto &a : args) {
        if (a == "--all") {
            all = true;
        } else if (a == "--help" || a == "-h") {
            std::printf("usage: kestrel-cli ports [--all]\n\n"
                        "Lists the serial devices offered for ports A and B, one a line.\n"
                        "--all  also lists devices that another program holds (marked \"busy\").\n"
                        "KESTREL_PORTS=/dev/a:/dev/b replaces the scan.\n");
            return kExitOk;
        } else {
            std::fprintf(stderr, "kestrel-cli ports: unknown option '%s'\n", a.c_str());
            return kExitUsage;
        }
    }
    if (!all) {
        for (const auto &p : AvailablePorts())
            std::printf("%s\n", p.c_str());
        return kExitOk;
    }
    for (const auto &p : ScanSerialPorts())
        std::printf("%s%s\n", p.c_str(), IsPortAvailable(p) ? "" : "\tbusy");
    return kExitOk;
}

const Registration reg({"ports", "list the serial devices for ports A and B", runPorts});

} // namespace
} // namespace kestrel::cli
