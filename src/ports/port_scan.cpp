#include "ports/port_scan.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <set>
#include <sstream>

#include <unistd.h>

namespace kestrel {

namespace fs = std::filesystem;

namespace {

std::mutex overrideMutex;
std::optional<std::vector<std::string>> overrideList;

std::string readFirstLine(const fs::path &p)
{
    std::ifstream in(p);
    std::string line;
    std::getline(in, line);
    return line;
}

// "ttyS10" after "ttyS2": compare the digit runs as numbers.
bool naturalLess(const std::string &x, const std::string &y)
{
    std::size_t i = 0, j = 0;
    while (i < x.size() && j < y.size()) {
        if (std::isdigit(static_cast<unsigned char>(x[i])) && std::isdigit(static_cast<unsigned char>(y[j]))) {
            std::size_t ie = i, je = j;
            while (ie < x.size() && std::isdigit(static_cast<unsigned char>(x[ie])))
                ++ie;
            while (je < y.size() && std::isdigit(static_cast<unsigned char>(y[je])))
                ++je;
            const std::string a = x.substr(i, ie - i), b = y.substr(j, je - j);
            if (a.size() != b.size())
                return a.size() < b.size();
            if (a != b)
                return a < b;
            i = ie;
            j = je;
        } else {
            if (x[i] != y[j])
                return x[i] < y[j];
            ++i;
            ++j;
        }
    }
    return x.size() - i < y.size() - j;
}

std::set<std::string> consoleNames(const ScanRoots &roots)
{
    std::set<std::string> names;
    std::istringstream in(readFirstLine(fs::path(roots.sysTty) / "console" / "active"));
    std::string n;
    while (in >> n)
        names.insert(n);
    return names;
}

} // namespace

std::vector<std::string> ScanSerialPorts(const ScanRoots &roots)
{
    std::vector<std::string> raw;
    std::error_code ec;
    const auto consoles = consoleNames(roots);
    for (const auto &entry : fs::directory_iterator(roots.dev, ec)) {
        const std::string name = entry.path().filename().string();
        if (name.rfind("ttyUSB", 0) == 0 || name.rfind("ttyACM", 0) == 0) {
            raw.push_back(entry.path().string());
        } else if (name.rfind("ttyS", 0) == 0 && name.size() > 4) {
            // Legacy ports exist whether or not a UART stands behind them; the type tells.
            const std::string type = readFirstLine(fs::path(roots.sysTty) / name / "type");
            if (!type.empty() && type != "0" && !consoles.count(name))
                raw.push_back(entry.path().string());
        }
    }
    std::sort(raw.begin(), raw.end(), naturalLess);

    // Stable names replace the kernel names they point to.
    std::vector<std::pair<std::string, std::string>> byId; // target, link
    for (const auto &entry : fs::directory_iterator(fs::path(roots.dev) / "serial" / "by-id", ec)) {
        std::error_code ec2;
        const fs::path target = fs::weakly_canonical(entry.path().parent_path() / fs::read_symlink(entry.path(), ec2), ec2);
        if (!ec2)
            byId.emplace_back(target.filename().string(), entry.path().string());
    }
    std::sort(byId.begin(), byId.end());
    std::vector<std::string> out;
    for (const auto &dev : raw) {
        const std::string base = fs::path(dev).filename().string();
        auto it = std::find_if(byId.begin(), byId.end(), [&](const auto &p) { return p.first == base; });
        out.push_back(it != byId.end() ? it->second : dev);
    }
    return out;
}

std::string PortDisplayName(const std::string &device)
{
    const fs::path path(device);
    if (path.parent_path().filename() != "by-id" || path.parent_path().parent_path().filename() != "serial")
        return device;
    std::error_code ec;
    const fs::path link = fs::read_symlink(path, ec);
    if (ec)
        return device; // not a link (any more): the path is all there is to show
    const fs::path target = fs::weakly_canonical(path.parent_path() / link, ec);
    if (ec)
        return device;
    return path.filename().string() + "  (" + target.filename().string() + ")";
}

bool IsLockedByLockFile(const std::string &device, const std::string &lockDir)
{
    std::error_code ec;
    fs::path real = fs::weakly_canonical(device, ec);
    if (ec)
        real = device;
    const fs::path lock = fs::path(lockDir) / ("LCK.." + real.filename().string());
    std::ifstream in(lock, std::ios::binary);
    if (!in)
        return false;
    std::string content((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    long pid = 0;
    if (content.size() == sizeof(int) && !std::isdigit(static_cast<unsigned char>(content[0])) && content[0] != ' ') {
        int binaryPid = 0; // old style: the pid as a binary int
        std::copy(content.begin(), content.end(), reinterpret_cast<char *>(&binaryPid));
        pid = binaryPid;
    } else {
        pid = std::strtol(content.c_str(), nullptr, 10);
    }
    if (pid <= 0 || pid == static_cast<long>(getpid()))
        return false;
    return kill(static_cast<pid_t>(pid), 0) == 0 || errno == EPERM; // a stale file of a dead process does not count
}

bool IsPortAvailable(const std::string &device, const std::string &lockDir)
{
    std::error_code ec;
    return fs::exists(device, ec) && !IsLockedByLockFile(device, lockDir);
}

void SetPortListOverride(std::optional<std::vector<std::string>> ports)
{
    std::lock_guard lock(overrideMutex);
    overrideList = std::move(ports);
}

std::vector<std::string> AvailablePorts(const ScanRoots &roots)
{
    {
        std::lock_guard lock(overrideMutex);
        if (overrideList)
            return *overrideList;
    }
    if (const char *env = std::getenv("KESTREL_PORTS"); env && *env) {
        std::vector<std::string> out;
        std::istringstream in(env);
        std::string item;
        while (std::getline(in, item, ':'))
            if (!item.empty())
                out.push_back(item);
        return out;
    }
    std::vector<std::string> out;
    for (auto &dev : ScanSerialPorts(roots))
        if (IsPortAvailable(dev, roots.lockDir))
            out.push_back(std::move(dev));
    return out;
}

} // namespace kestrel
