#include "support/version_number.h"

#include <algorithm>
#include <charconv>

#include "base/build_info.h"

namespace kestrel {

namespace {

// Reads "N(.N)*" from the front of text; consumed tells how far it got.
std::optional<VersionNumber> ReadDotted(std::string_view text, std::size_t &consumed)
{
    std::size_t at = 0;
    if (!text.empty() && (text[0] == 'v' || text[0] == 'V'))
        at = 1;
    VersionNumber v;
    for (;;) {
        unsigned part = 0;
        const char *begin = text.data() + at;
        const auto [end, ec] = std::from_chars(begin, text.data() + text.size(), part);
        if (ec != std::errc() || end == begin)
            return std::nullopt; // no digits where a part belongs, or too large
        v.parts.push_back(part);
        at = static_cast<std::size_t>(end - text.data());
        if (at + 1 < text.size() && text[at] == '.' && text[at + 1] >= '0' && text[at + 1] <= '9') {
            ++at;
            continue;
        }
        consumed = at;
        return v;
    }
}

} // namespace

std::string VersionNumber::text() const
{
    std::string s;
    for (std::size_t i = 0; i < parts.size(); ++i)
        s += (i != 0 ? "." : "") + std::to_string(parts[i]);
    return s;
}

std::optional<VersionNumber> ParseVersionNumber(std::string_view text)
{
    std::size_t consumed = 0;
    auto v = ReadDotted(text, consumed);
    if (!v || consumed != text.size())
        return std::nullopt;
    return v;
}

std::optional<VersionNumber> LeadingVersionNumber(std::string_view text)
{
    std::size_t consumed = 0;
    auto v = ReadDotted(text, consumed);
    // "1.2" alone, or followed by git describe's "-N-g..." or "-dirty". A bare commit hash
    // may start with digits ("804b3f0") or be digits only ("1234567-dirty"): a version has
    // a "v" or a dot.
    if (!v || (consumed != text.size() && text[consumed] != '-'))
        return std::nullopt;
    if (v->parts.size() < 2 && text[0] != 'v' && text[0] != 'V')
        return std::nullopt;
    return v;
}

VersionNumber RunningVersionNumber(std::string_view buildVersion, std::string_view projectVersion)
{
    if (auto v = LeadingVersionNumber(buildVersion))
        return *v;
    if (auto v = ParseVersionNumber(projectVersion))
        return *v;
    return VersionNumber{{0}};
}

VersionNumber ThisProgramsVersion() { return RunningVersionNumber(BuildVersion(), KESTREL_PROJECT_VERSION); }

std::strong_ordering CompareVersions(const VersionNumber &a, const VersionNumber &b)
{
    const std::size_t n = std::max(a.parts.size(), b.parts.size());
    for (std::size_t i = 0; i < n; ++i) {
        const unsigned x = i < a.parts.size() ? a.parts[i] : 0;
        const unsigned y = i < b.parts.size() ? b.parts[i] : 0;
        if (x != y)
            return x <=> y;
    }
    return std::strong_ordering::equal;
}

} // namespace kestrel
