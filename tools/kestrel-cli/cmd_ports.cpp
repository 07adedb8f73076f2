// kestrel-cli ports: the serial devices Kestrel offers for ports A and B.

#include <cstdio>
#include <memory>

#include "cli_common.h"
#include "ports/port_scan.h"

namespace kestrel::cli {
namespace {

int runPorts(bool all)
{
    if (!all) {
        for (const auto &p : AvailablePorts())
            std::printf("%s\n", p.c_str());
        return kExitOk;
    }
    for (const auto &p : ScanSerialPorts())
        std::printf("%s%s\n", p.c_str(), IsPortAvailable(p) ? "" : "\tbusy");
    return kExitOk;
}

std::function<int()> declarePorts(CLI::App &cmd)
{
    auto all = std::make_shared<bool>(false);
    cmd.footer("One device a line. KESTREL_PORTS=/dev/a:/dev/b replaces the scan.");
    cmd.add_flag("--all", *all, "also list devices that another program holds (marked \"busy\")");
    return [all] { return runPorts(*all); };
}

const Registration reg({"ports", "list the serial devices for ports A and B", declarePorts});

} // namespace
} // namespace kestrel::cli
