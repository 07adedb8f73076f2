#pragma once
// What the program says about itself: the version it was built from (the
// git tag or commit, "-dirty" for local changes), the build date, and the
// about text with the licences of what it links.

#include <string>
#include <string_view>

namespace kestrel {

[[nodiscard]] std::string BuildVersion();
[[nodiscard]] std::string BuildDate();
// The "About" text in the active language; qtVersion is the Qt the program runs with.
[[nodiscard]] std::string AboutText(std::string_view qtVersion);

} // namespace kestrel
