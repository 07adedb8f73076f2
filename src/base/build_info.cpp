#include "base/build_info.h"

#include "base/string_table.h"

namespace kestrel {

namespace detail {
extern const char *const kBuildVersion;
extern const char *const kBuildDate;
} // namespace detail

namespace {
constexpr int kDescription = 7650;
constexpr int kVersionLine = 7877; // %1 version, %2 date
constexpr int kQtLine = 7878;      // %1 Qt version
constexpr int kLicences = 7879;
} // namespace

std::string BuildVersion() { return detail::kBuildVersion; }
std::string BuildDate() { return detail::kBuildDate; }

std::string AboutText(std::string_view qtVersion)
{
    std::string version = Str(kVersionLine);
    if (const auto at = version.find("%1"); at != std::string::npos)
        version.replace(at, 2, BuildVersion());
    if (const auto at = version.find("%2"); at != std::string::npos)
        version.replace(at, 2, BuildDate());
    return Str(kDescription) + "\n\n" + version + "\n" + StrArg(kQtLine, qtVersion) + "\n\n" + Str(kLicences);
}

} // namespace kestrel
