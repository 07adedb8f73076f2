#include "support/version_file.h"

#include <algorithm>
#include <cctype>

#include "base/string_table.h"
#include "support/support_texts.h"

namespace kestrel {

namespace {

std::string_view Trim(std::string_view s)
{
    while (!s.empty() && std::isspace(static_cast<unsigned char>(s.front())))
        s.remove_prefix(1);
    while (!s.empty() && std::isspace(static_cast<unsigned char>(s.back())))
        s.remove_suffix(1);
    return s;
}

std::string Lower(std::string_view s)
{
    std::string out(s);
    std::transform(out.begin(), out.end(), out.begin(), [](unsigned char c) { return std::tolower(c); });
    return out;
}

bool IsWebAddress(std::string_view url)
{
    const std::string lower = Lower(url.substr(0, 8));
    const bool web = lower.starts_with("http://") || lower.starts_with("https://");
    return web && url.find_first_of(" \t") == std::string_view::npos && url.size() > lower.find("//") + 2;
}

Expected<VersionFile> Bad(std::string reason) { return {{}, Result::Fail(support_txt::kBadFile, std::move(reason))}; }

} // namespace

Expected<VersionFile> ParseVersionFile(std::string_view text)
{
    if (text.size() > kMaxVersionFileSize)
        return Bad(Str(support_txt::kTooLarge));
    if (text.find('\0') != std::string_view::npos)
        return Bad(Str(support_txt::kNoVersionLine));
    if (text.starts_with("\xEF\xBB\xBF"))
        text.remove_prefix(3);

    std::optional<std::string> version;
    VersionFile file;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        std::string_view line = Trim(text.substr(0, end));
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
        const std::size_t eq = line.find('=');
        if (line.empty() || line.front() == '#' || eq == std::string_view::npos)
            continue;
        const std::string key = Lower(Trim(line.substr(0, eq)));
        const std::string_view value = Trim(line.substr(eq + 1));
        if (key == "version")
            version = std::string(value);
        else if (key == "url")
            file.url = std::string(value);
        else if (key == "notes")
            file.notes = std::string(value);
    }
    if (!version)
        return Bad(Str(support_txt::kNoVersionLine));
    const auto number = ParseVersionNumber(*version);
    if (!number)
        return Bad(StrArg(support_txt::kNotAVersion, version->substr(0, 40)));
    if (!IsWebAddress(file.url))
        return Bad(Str(support_txt::kNoDownloadAddress));
    file.version = *number;
    return {std::move(file), Result::Ok()};
}

} // namespace kestrel
