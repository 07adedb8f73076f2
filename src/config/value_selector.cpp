#include "config/value_selector.h"

#include <algorithm>
#include <charconv>

#include "config/port_value_lists.h"
#include "ports/port_texts.h"

namespace kestrel {

namespace {

std::string_view Trimmed(std::string_view s)
{
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t'))
        s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t'))
        s.remove_suffix(1);
    return s;
}

std::optional<double> NumberOf(const std::string &text)
{
    double v = 0.0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), v);
    if (ec != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return v;
}

bool Contains(const std::vector<std::string> &list, std::string_view value)
{
    return std::find(list.begin(), list.end(), value) != list.end();
}

bool Remove(std::vector<std::string> &list, std::string_view value)
{
    const auto it = std::find(list.begin(), list.end(), value);
    if (it == list.end())
        return false;
    list.erase(it);
    return true;
}

} // namespace

const std::vector<std::string> &StandardValuesOf(PortValueKind kind)
{
    switch (kind) {
    case PortValueKind::BaudRates: return StandardBaudRates();
    case PortValueKind::DataBits: return StandardDataBits();
    case PortValueKind::Parities: return StandardParities();
    case PortValueKind::StopBits: break;
    }
    return StandardStopBits();
}

std::optional<std::string> OfferableValue(PortValueKind kind, std::string_view text)
{
    const std::string_view t = Trimmed(text);
    switch (kind) {
    case PortValueKind::BaudRates:
        // Only digits: "9600 baud" or "+9600" is not what a list should keep.
        if (t.empty() || !std::all_of(t.begin(), t.end(), [](char c) { return c >= '0' && c <= '9'; }))
            return std::nullopt;
        if (const auto baud = ParseBaudText(t))
            return std::to_string(*baud);
        return std::nullopt;
    case PortValueKind::DataBits:
        if (const auto bits = ParseDataBitsText(t); bits && t.size() == 1)
            return std::to_string(*bits);
        return std::nullopt;
    case PortValueKind::Parities:
        if (t.size() == 1 && ParseParityText(t))
            return std::string(1, static_cast<char>(t[0] & ~0x20)); // capital letter
        return std::nullopt;
    case PortValueKind::StopBits: {
        std::string dotted(t);
        std::replace(dotted.begin(), dotted.end(), ',', '.');
        if (const auto stop = ParseStopBitsText(dotted)) {
            switch (*stop) {
            case StopBitsChoice::One: return std::string("1");
            case StopBitsChoice::OnePointFive: return std::string("1.5");
            case StopBitsChoice::Two: return std::string("2");
            }
        }
        return std::nullopt;
    }
    }
    return std::nullopt;
}

void InsertInValueOrder(std::vector<std::string> &list, const std::string &value)
{
    const auto number = NumberOf(value);
    auto at = list.end();
    if (number) {
        at = std::find_if(list.begin(), list.end(), [&](const std::string &item) {
            const auto other = NumberOf(item);
            return !other || *other > *number;
        });
    }
    list.insert(at, value);
}

ValueSelector::ValueSelector(PortValueKind kind, const std::vector<std::string> &current) : kind_(kind)
{
    for (const std::string &v : current)
        if (!v.empty() && !Contains(selected_, v))
            selected_.push_back(v);
    ResetAvailable();
}

ValueSelector::AddOutcome ValueSelector::AddValue(std::string_view typed)
{
    const auto value = OfferableValue(kind_, typed);
    if (!value)
        return AddOutcome::Invalid;
    if (Contains(available_, *value) || Contains(selected_, *value))
        return AddOutcome::AlreadyListed;
    InsertInValueOrder(available_, *value);
    return AddOutcome::Added;
}

bool ValueSelector::DeleteAvailable(std::string_view value) { return Remove(available_, value); }

bool ValueSelector::ToSelected(std::string_view value)
{
    if (!Remove(available_, value))
        return false;
    InsertInValueOrder(selected_, std::string(value));
    return true;
}

bool ValueSelector::ToAvailable(std::string_view value)
{
    if (!Remove(selected_, value))
        return false;
    InsertInValueOrder(available_, std::string(value));
    return true;
}

void ValueSelector::ResetAvailable()
{
    available_.clear();
    for (const std::string &v : StandardValuesOf(kind_))
        if (!Contains(selected_, v))
            available_.push_back(v);
}

} // namespace kestrel
