#include "ports/port_texts.h"

#include <array>
#include <cctype>
#include <charconv>

namespace kestrel {
namespace {

std::string_view trimmed(std::string_view s)
{
    while (!s.empty() && std::isspace(static_cast<unsigned char>(s.front())))
        s.remove_prefix(1);
    while (!s.empty() && std::isspace(static_cast<unsigned char>(s.back())))
        s.remove_suffix(1);
    return s;
}

template <class T>
std::optional<T> whole(std::string_view s)
{
    s = trimmed(s);
    T v{};
    const auto [p, ec] = std::from_chars(s.data(), s.data() + s.size(), v);
    if (s.empty() || ec != std::errc() || p != s.data() + s.size())
        return std::nullopt;
    return v;
}

constexpr std::array<std::pair<char, Parity>, 5> kParityLetters{
    {{'N', Parity::None}, {'O', Parity::Odd}, {'E', Parity::Even}, {'M', Parity::Mark}, {'S', Parity::Space}}};

} // namespace

std::optional<long> ParseBaudText(std::string_view text)
{
    const auto v = whole<long>(text);
    return v && *v > 0 ? v : std::nullopt;
}

std::optional<int> ParseDataBitsText(std::string_view text)
{
    const auto v = whole<int>(text);
    return v && *v >= 5 && *v <= 8 ? v : std::nullopt;
}

std::optional<Parity> ParseParityText(std::string_view text)
{
    text = trimmed(text);
    if (text.size() != 1)
        return std::nullopt;
    const char c = static_cast<char>(std::toupper(static_cast<unsigned char>(text.front())));
    for (const auto &[letter, parity] : kParityLetters)
        if (c == letter)
            return parity;
    return std::nullopt;
}

std::optional<StopBitsChoice> ParseStopBitsText(std::string_view text)
{
    text = trimmed(text);
    if (text == "1")
        return StopBitsChoice::One;
    if (text == "1.5")
        return StopBitsChoice::OnePointFive;
    if (text == "2")
        return StopBitsChoice::Two;
    return std::nullopt;
}

} // namespace kestrel
