#include "app/startup_args.h"

#include <cctype>
#include <cstdlib>

namespace kestrel {

std::string LastArgContaining(const std::vector<std::string> &args, std::string_view needle)
{
    std::string found;
    for (std::size_t i = 1; i < args.size(); ++i)
        if (args[i].find(needle) != std::string::npos)
            found = args[i];
    return found;
}

std::string EnvironmentFilePath(const std::string &stored, const std::string &dataFolder)
{
    const bool drive = stored.size() >= 2 && std::isalpha(static_cast<unsigned char>(stored[0])) && stored[1] == ':';
    const bool windows = drive || stored.find('\\') != std::string::npos; // a drive, a share or a backslash folder
    std::string name = stored;
    if (windows)
        name = stored.substr(stored.find_last_of("\\/:") + 1);
    else if (stored.find('/') != std::string::npos)
        return stored;
    return dataFolder + (name.empty() ? std::string("Default.kef") : name);
}

namespace {

bool isFileArgument(const std::string &a)
{
    return a.find(".kef") != std::string::npos || a.find(".ksr") != std::string::npos;
}

bool parseSeconds(const std::string &text, double &out)
{
    if (text.empty())
        return false;
    char *end = nullptr;
    const double v = std::strtod(text.c_str(), &end);
    if (end == nullptr || *end != '\0' || !(v > 0.0) || v > 7 * 86400.0)
        return false;
    out = v;
    return true;
}

} // namespace

StartupArgs ParseStartupArgs(const std::vector<std::string> &args)
{
    StartupArgs r;
    r.environmentFile = LastArgContaining(args, ".kef");
    r.recordFile = LastArgContaining(args, ".ksr");

    for (std::size_t i = 1; i < args.size(); ++i) {
        const std::string &a = args[i];
        const bool hasNext = i + 1 < args.size();
        if (a == "--simulate") {
            r.simulate = true;
            // The scenario is optional: take the next word only when it is not an option or a file of ours.
            if (hasNext && !args[i + 1].starts_with("-") && !isFileArgument(args[i + 1]))
                r.scenario = args[++i];
        } else if (a.starts_with("--simulate=")) {
            r.simulate = true;
            r.scenario = a.substr(11);
        } else if (a == "--data-dir") {
            if (hasNext && !args[i + 1].empty())
                r.dataDir = args[++i];
            else
                r.errors.push_back("--data-dir needs a folder");
        } else if (a.starts_with("--data-dir=")) {
            r.dataDir = a.substr(11);
            if (r.dataDir->empty()) {
                r.dataDir.reset();
                r.errors.push_back("--data-dir needs a folder");
            }
        } else if (a == "--help" || a == "-h") {
            r.help = true;
        } else if (a == "--record") {
            r.recordAtStart = true;
        } else if (a == "--verbose" || a == "-v") {
            r.verbose = true;
        } else if (a == "--quit-after") {
            double s = 0;
            if (hasNext && parseSeconds(args[i + 1], s)) {
                r.quitAfterSeconds = s;
                ++i;
            } else {
                r.errors.push_back("--quit-after needs a number of seconds");
                if (hasNext && !args[i + 1].starts_with("--"))
                    ++i;
            }
        } else if (a.starts_with("-") && !isFileArgument(a)) {
            // Qt's own options (-platform, -style, ...) are taken out before we see the list.
            r.errors.push_back("unknown option " + a);
        }
    }
    return r;
}

} // namespace kestrel
