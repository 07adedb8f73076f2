#pragma once
// The small text file the update check fetches. One "key=value" per line;
// blank lines and lines starting with '#' are skipped; unknown keys are
// ignored, so that later files can say more:
//
//     version=1.2.3
//     url=https://example.org/kestrel/download
//     notes=Reads recordings of the 0.9 format.
//
// version and url are required (url http or https); notes is optional.

#include <cstddef>
#include <string>
#include <string_view>

#include "base/result.h"
#include "support/version_number.h"

namespace kestrel {

// A longer answer is no version file (an error page, a download started by mistake).
inline constexpr std::size_t kMaxVersionFileSize = 16 * 1024;

struct VersionFile {
    VersionNumber version;
    std::string url;   // where to get it
    std::string notes; // may be empty
};

// A file that cannot be used: code support_txt::kBadFile and the reason in the
// active language in the detail.
[[nodiscard]] Expected<VersionFile> ParseVersionFile(std::string_view text);

} // namespace kestrel
