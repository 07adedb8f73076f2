#include "export/export_args.h"

#include <charconv>
#include <string>

namespace kestrel {
namespace {

bool parseNumber(std::string_view s, std::uint64_t &v)
{
    if (s.empty())
        return false;
    const auto r = std::from_chars(s.data(), s.data() + s.size(), v);
    return r.ec == std::errc() && r.ptr == s.data() + s.size();
}

struct ColumnName {
    const char *name;
    bool ExportColumns::*flag;
};
constexpr ColumnName kColumns[] = {
    {"mark", &ExportColumns::prefix}, {"mp", &ExportColumns::mpNo}, {"time", &ExportColumns::timestamp},
    {"d1", &ExportColumns::d1},       {"d2", &ExportColumns::d2},   {"hex", &ExportColumns::hex},
    {"dec", &ExportColumns::dec},     {"oct", &ExportColumns::oct}, {"bin", &ExportColumns::bin},
    {"s1", &ExportColumns::s1},       {"m1", &ExportColumns::m1},   {"s2", &ExportColumns::s2},
    {"m2", &ExportColumns::m2},       {"m5", &ExportColumns::m5},   {"m3", &ExportColumns::m3},
    {"pfl", &ExportColumns::pfl},     {"desc", &ExportColumns::description},
};

void setAll(ExportColumns &c, bool on)
{
    for (const auto &col : kColumns)
        c.*col.flag = on;
}

template <class T>
Expected<T> malformed(std::string message)
{
    return {T{}, Result::Fail(kMalformedExportValue, std::move(message))};
}

} // namespace

Expected<MpRangeText> ParseMpRange(std::string_view text)
{
    MpRangeText out;
    const auto colon = text.find(':');
    const std::string_view a = text.substr(0, colon);
    const std::string_view b = colon == std::string_view::npos ? a : text.substr(colon + 1);
    const auto bad = [&] {
        return malformed<MpRangeText>("malformed range '" + std::string(text) + "': expected FIRST:LAST with MP numbers");
    };
    std::uint64_t v = 0;
    if (!a.empty()) {
        if (!parseNumber(a, v))
            return bad();
        out.first = v;
    }
    if (!b.empty()) {
        if (!parseNumber(b, v))
            return bad();
        out.last = v;
    }
    if (!out.first && !out.last)
        return bad();
    if (out.first && out.last && *out.first > *out.last)
        return malformed<MpRangeText>("the range " + std::string(text) + " starts after it ends");
    return {out, {}};
}

Expected<ExportColumns> ParseColumnList(std::string_view list)
{
    if (list.empty())
        return malformed<ExportColumns>("empty column list");
    ExportColumns out;
    bool started = false;
    std::size_t pos = 0;
    while (pos <= list.size()) {
        const auto comma = list.find(',', pos);
        std::string_view item = list.substr(pos, comma == std::string_view::npos ? std::string_view::npos : comma - pos);
        pos = comma == std::string_view::npos ? list.size() + 1 : comma + 1;
        const bool off = !item.empty() && item.front() == '-';
        if (off)
            item.remove_prefix(1);
        if (!started) {
            // A list that begins by taking columns away starts from all of them.
            setAll(out, off);
            started = true;
        }
        if (item == "all") {
            setAll(out, !off);
            continue;
        }
        bool known = false;
        for (const auto &col : kColumns) {
            if (item == col.name) {
                out.*col.flag = !off;
                known = true;
            }
        }
        if (!known)
            return malformed<ExportColumns>(
                "unknown column '" + std::string(item) +
                "' (known: mark, mp, time, d1, d2, hex, dec, oct, bin, s1, m1, s2, m2, m5, m3, pfl, desc, all)");
    }
    return {out, {}};
}

} // namespace kestrel
