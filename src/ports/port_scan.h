#pragma once
// The serial devices of this machine, found without opening them:
// /dev/ttyS* that the kernel knows a UART for (type not 0) and that are not
// the console, /dev/ttyUSB*, /dev/ttyACM*, each under its stable
// /dev/serial/by-id/ name where it has one. A device that another program
// holds (a live LCK.. lock file) is left out.

#include <optional>
#include <string>
#include <vector>

namespace kestrel {

struct ScanRoots {
    std::string dev = "/dev";
    std::string sysTty = "/sys/class/tty";
    std::string lockDir = "/run/lock";
};

// How a port list shows a device: a /dev/serial/by-id/ name with the kernel device it
// stands for ("usb-FTDI_FT232R_USB_UART_A50285BI-if00-port0  (ttyUSB0)"), any other
// path as it is.
[[nodiscard]] std::string PortDisplayName(const std::string &device);

// Every serial device found, in a natural order (ttyS2 before ttyS10), busy ones included.
[[nodiscard]] std::vector<std::string> ScanSerialPorts(const ScanRoots &roots = {});

// A LCK..name file of a live process (other than this one) holds the device.
[[nodiscard]] bool IsLockedByLockFile(const std::string &device, const std::string &lockDir = "/run/lock");

// The device exists and no lock file holds it. (Kestrel's own open finds TIOCEXCL and flock holders.)
[[nodiscard]] bool IsPortAvailable(const std::string &device, const std::string &lockDir = "/run/lock");

// The port list of A and B: the available devices of the scan, or a fixed list that tests
// and demos set (SetPortListOverride, or the environment variable KESTREL_PORTS with
// ':'-separated paths).
[[nodiscard]] std::vector<std::string> AvailablePorts(const ScanRoots &roots = {});
void SetPortListOverride(std::optional<std::vector<std::string>> ports);

} // namespace kestrel
