#include "base/string_table.h"

#include <atomic>
#include <charconv>
#include <unordered_map>

namespace kestrel {
namespace detail {
extern const unsigned char kStringTableData[];
extern const std::size_t kStringTableDataSize;
} // namespace detail

namespace {

std::atomic<int> g_lang{kLangGerman};

std::string unescape(std::string_view s)
{
    std::string out;
    out.reserve(s.size());
    for (std::size_t i = 0; i < s.size(); ++i) {
        if (s[i] == '\\' && i + 1 < s.size()) {
            const char c = s[++i];
            switch (c) {
            case 'n': out += '\n'; break;
            case 't': out += '\t'; break;
            case 'r': out += '\r'; break;
            case '\\': out += '\\'; break;
            default: out += '\\'; out += c; break;
            }
        } else {
            out += s[i];
        }
    }
    return out;
}

// Built on first use from the embedded data; never changes afterwards.
const std::unordered_map<int, std::string> &table()
{
    static const std::unordered_map<int, std::string> map = [] {
        std::unordered_map<int, std::string> m;
        std::string_view data(reinterpret_cast<const char *>(detail::kStringTableData),
                              detail::kStringTableDataSize);
        while (!data.empty()) {
            const auto eol = data.find('\n');
            std::string_view line = data.substr(0, eol);
            data = eol == std::string_view::npos ? std::string_view{} : data.substr(eol + 1);
            StringTableEntry e;
            if (!ParseStringTableLine(line, e))
                continue;
            m.emplace(e.number, std::move(e.german));
            m.emplace(e.number + kLangEnglish, std::move(e.english));
        }
        return m;
    }();
    return map;
}

} // namespace

int GlobalLang() { return g_lang.load(std::memory_order_relaxed); }

void SetGlobalLang(int offset)
{
    g_lang.store(offset == kLangEnglish ? kLangEnglish : kLangGerman, std::memory_order_relaxed);
}

bool ParseStringTableLine(std::string_view line, StringTableEntry &out)
{
    if (!line.empty() && line.back() == '\r')
        line.remove_suffix(1);
    if (line.empty() || line.front() == '#')
        return false;
    const auto tab1 = line.find('\t');
    if (tab1 == std::string_view::npos)
        return false;
    const auto tab2 = line.find('\t', tab1 + 1);
    int number = 0;
    const auto num = line.substr(0, tab1);
    const auto [ptr, ec] = std::from_chars(num.data(), num.data() + num.size(), number);
    if (ec != std::errc{} || ptr != num.data() + num.size() || number < 0 || number >= kLangEnglish)
        return false;
    out.number = number;
    if (tab2 == std::string_view::npos) {
        out.german = unescape(line.substr(tab1 + 1));
        out.english = out.german;
    } else {
        out.german = unescape(line.substr(tab1 + 1, tab2 - tab1 - 1));
        out.english = unescape(line.substr(tab2 + 1));
    }
    return true;
}

std::optional<std::string> FindStr(int absoluteNumber)
{
    const auto &t = table();
    const auto it = t.find(absoluteNumber);
    if (it == t.end())
        return std::nullopt;
    return it->second;
}

std::string StrIn(int n, int langOffset)
{
    if (auto s = FindStr(n + langOffset))
        return *s;
    return "[#" + std::to_string(n + langOffset) + "]";
}

std::string Str(int n) { return StrIn(n, GlobalLang()); }

std::string StrArg(int n, std::string_view value)
{
    std::string text = Str(n);
    if (const auto at = text.find("%1"); at != std::string::npos)
        text.replace(at, 2, value);
    return text;
}

} // namespace kestrel
