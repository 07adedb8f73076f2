#pragma once
// Version numbers as the update check compares them: dotted whole numbers
// ("1.2.3"), a leading "v" allowed. A build made from git describe carries more
// ("v0.3-12-gabcdef-dirty": twelve commits after the tag 0.3); only the dotted
// numbers in front count, so that build is up to date with a published 0.3 and
// older than 0.3.1. Missing parts count as 0 ("0.3" equals "0.3.0"). A build from a
// tree without tags is named by its commit alone; it compares as the project's version.

#include <compare>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel {

struct VersionNumber {
    std::vector<unsigned> parts;
    [[nodiscard]] std::string text() const; // "1.2.3"
};

// The whole text must be a version number ("1.2", "v1.2.3"); anything else gives none.
[[nodiscard]] std::optional<VersionNumber> ParseVersionNumber(std::string_view text);
// The dotted numbers a build version starts with ("v0.3-12-gabc" gives 0.3); none when
// it does not start with one (a bare commit hash).
[[nodiscard]] std::optional<VersionNumber> LeadingVersionNumber(std::string_view text);
// The number the running program compares with: the build's own when it starts with one,
// else the project's version number (a build from a tree without tags).
[[nodiscard]] VersionNumber RunningVersionNumber(std::string_view buildVersion, std::string_view projectVersion);

// RunningVersionNumber of this build.
[[nodiscard]] VersionNumber ThisProgramsVersion();

[[nodiscard]] std::strong_ordering CompareVersions(const VersionNumber &a, const VersionNumber &b);

} // namespace kestrel
