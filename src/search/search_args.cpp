#include "search/search_args.h"

#include <cctype>
#include <string>

#include "search/search.h"

namespace kestrel {
namespace {

std::string upper(std::string_view s)
{
    std::string u(s);
    for (char &c : u)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return u;
}

std::string_view trim(std::string_view s)
{
    while (!s.empty() && std::isspace(static_cast<unsigned char>(s.front())))
        s.remove_prefix(1);
    while (!s.empty() && std::isspace(static_cast<unsigned char>(s.back())))
        s.remove_suffix(1);
    return s;
}

struct Alias {
    const char *name;
    int index;
};

Result malformed(std::string message)
{
    return Result::Fail(kMalformedSearchValue, std::move(message));
}

// "NAME=0|1" items; sets criteria[index] to 1 (low / clear) or 2 (high / set).
template <std::size_t N>
Result parseLevels(std::string_view text, const Alias (&aliases)[N], int *criteria, const char *what, const char *known)
{
    if (trim(text).empty())
        return malformed(std::string("no ") + what + " given (e.g. " + known + ")");
    std::size_t pos = 0;
    while (pos <= text.size()) {
        const auto comma = text.find(',', pos);
        const std::string_view item =
            trim(text.substr(pos, comma == std::string_view::npos ? std::string_view::npos : comma - pos));
        pos = comma == std::string_view::npos ? text.size() + 1 : comma + 1;
        const auto eq = item.find('=');
        const std::string name = upper(trim(item.substr(0, eq)));
        const std::string_view value = eq == std::string_view::npos ? std::string_view() : trim(item.substr(eq + 1));
        if (eq == std::string_view::npos || (value != "0" && value != "1"))
            return malformed(std::string("malformed ") + what + " '" + std::string(item) + "': expected NAME=0 or NAME=1");
        int index = -1;
        for (const auto &a : aliases)
            if (name == a.name)
                index = a.index;
        if (index < 0)
            return malformed(std::string("unknown ") + what + " '" + name + "' (known: " + known + ")");
        criteria[index] = value == "1" ? 2 : 1;
    }
    return Result::Ok();
}

constexpr Alias kSignals[] = {{"S1", 0},  {"M1", 1},  {"S2", 2},  {"M2", 3},  {"M5", 4},  {"M3", 5},  {"DTR", 0},
                              {"DSR", 1}, {"RTS", 2}, {"CTS", 3}, {"DCD", 4}, {"RNG", 5}, {"RI", 5}};
constexpr Alias kErrors[] = {{"PE", 0}, {"FE", 1}, {"LE", 2}, {"P", 0}, {"F", 1}, {"L", 2}};

int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

} // namespace

Expected<SignalCriteria> ParseSignalCriteria(std::string_view text)
{
    Expected<SignalCriteria> out;
    out.result = parseLevels(text, kSignals, out.value.level, "signal", "S1 M1 S2 M2 M5 M3 or DTR DSR RTS CTS DCD RNG");
    return out;
}

Expected<ErrorCriteria> ParseErrorCriteria(std::string_view text)
{
    Expected<ErrorCriteria> out;
    out.result = parseLevels(text, kErrors, out.value.flag, "error flag", "PE FE LE");
    return out;
}

Expected<std::vector<std::uint8_t>> ParseHexPattern(std::string_view text)
{
    Expected<std::vector<std::uint8_t>> out;
    std::vector<std::uint8_t> &bytes = out.value;
    const std::string quoted = "'" + std::string(text) + "'";
    int high = -1;
    for (char c : text) {
        if (std::isspace(static_cast<unsigned char>(c))) {
            if (high >= 0)
                return {{}, malformed("malformed hex pattern " + quoted + ": blanks may only stand between digit pairs")};
            continue;
        }
        const int v = hexValue(c);
        if (v < 0)
            return {{}, malformed("malformed hex pattern " + quoted + ": '" + std::string(1, c) + "' is no hex digit")};
        if (high < 0) {
            high = v;
        } else {
            bytes.push_back(static_cast<std::uint8_t>(high * 16 + v));
            high = -1;
        }
    }
    if (high >= 0)
        return {{}, malformed("malformed hex pattern " + quoted + ": an odd number of hex digits")};
    if (bytes.empty())
        return {{}, Result::Fail(SearchText::BadPattern, "empty hex pattern")};
    for (std::uint8_t b : bytes) {
        if (b == 0)
            return {{}, Result::Fail(SearchText::BadPattern, "the hex pattern holds 00, which cannot be searched for")};
    }
    return out;
}

} // namespace kestrel
