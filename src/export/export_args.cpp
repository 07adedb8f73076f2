#include "export/export_args.h"

#include <charconv>

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

} // namespace

std::optional<int> ParseLanguage(std::string_view text)
{
    if (text == "de")
        return kLangGerman;
    if (text == "en")
        return kLangEnglish;
    return std::nullopt;
}

std::optional<int> ParseTimeMode(std::string_view text)
{
    if (text == "absolute")
        return 0;
    if (text == "relative")
        return 1;
    if (text == "delta")
        return 2;
    return std::nullopt;
}

std::optional<int> ParseNaming(std::string_view text)
{
    if (text == "v24")
        return 0;
    if (text == "rs232")
        return 1;
    return std::nullopt;
}

bool ParseMpRange(std::string_view text, MpRangeText &out, std::string &error)
{
    out = {};
    const auto colon = text.find(':');
    const std::string_view a = text.substr(0, colon);
    const std::string_view b = colon == std::string_view::npos ? a : text.substr(colon + 1);
    std::uint64_t v = 0;
    if (!a.empty()) {
        if (!parseNumber(a, v)) {
            error = "malformed range '" + std::string(text) + "': expected FIRST:LAST with MP numbers";
            return false;
        }
        out.first = v;
    }
    if (!b.empty()) {
        if (!parseNumber(b, v)) {
            error = "malformed range '" + std::string(text) + "': expected FIRST:LAST with MP numbers";
            return false;
        }
        out.last = v;
    }
    if (!out.first && !out.last) {
        error = "malformed range '" + std::string(text) + "': expected FIRST:LAST with MP numbers";
        return false;
    }
    if (out.first && out.last && *out.first > *out.last) {
        error = "the range " + std::string(text) + " starts after it ends";
        return false;
    }
    return true;
}

bool ParseColumnList(std::string_view list, ExportColumns &out, std::string &error)
{
    if (list.empty()) {
        error = "empty column list";
        return false;
    }
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
        if (!known) {
            error = "unknown column '" + std::string(item) +
                    "' (known: mark, mp, time, d1, d2, hex, dec, oct, bin, s1, m1, s2, m2, m5, m3, pfl, desc, all)";
            return false;
        }
    }
    return true;
}

bool ParseExportArgs(const std::vector<std::string> &args, ExportCommandLine &out, std::string &error)
{
    ExportOptions &o = out.options;
    for (std::size_t k = 0; k < args.size(); ++k) {
        const std::string &a = args[k];
        auto value = [&](std::string &v) {
            if (k + 1 >= args.size()) {
                error = "option " + a + " needs a value";
                return false;
            }
            v = args[++k];
            return true;
        };
        std::string v;
        if (a == "-h" || a == "--help") {
            out.help = true;
        } else if (a == "-o" || a == "--output") {
            if (!value(out.output))
                return false;
        } else if (a == "--format") {
            if (!value(v))
                return false;
            if (v == "csv")
                o.format = ExportFormat::Csv;
            else if (v == "raw")
                o.format = ExportFormat::Raw;
            else
                return error = "--format takes csv or raw, not '" + v + "'", false;
        } else if (a == "--separator") {
            if (!value(v))
                return false;
            if (v == "comma")
                o.separator = ',';
            else if (v == "semicolon")
                o.separator = ';';
            else if (v == "tab")
                o.separator = '\t';
            else if (v == "space")
                o.separator = ' ';
            else
                return error = "--separator takes comma, semicolon, tab or space, not '" + v + "'", false;
        } else if (a == "--frame") {
            if (!value(v))
                return false;
            if (v == "double")
                o.frame = '"';
            else if (v == "single")
                o.frame = '\'';
            else if (v == "none")
                o.frame = kNoFrame;
            else
                return error = "--frame takes double, single or none, not '" + v + "'", false;
        } else if (a == "--no-header") {
            o.header = false;
        } else if (a == "--columns") {
            if (!value(v) || !ParseColumnList(v, o.columns, error))
                return false;
        } else if (a == "--range") {
            MpRangeText r;
            if (!value(v) || !ParseMpRange(v, r, error))
                return false;
            out.range = r;
        } else if (a == "--time") {
            if (!value(v))
                return false;
            const auto m = ParseTimeMode(v);
            if (!m)
                return error = "--time takes absolute, relative or delta, not '" + v + "'", false;
            o.timeMode = *m;
        } else if (a == "--language") {
            if (!value(v))
                return false;
            const auto l = ParseLanguage(v);
            if (!l)
                return error = "--language takes de or en, not '" + v + "'", false;
            o.langOffset = *l;
        } else if (a == "--naming") {
            if (!value(v))
                return false;
            const auto n = ParseNaming(v);
            if (!n)
                return error = "--naming takes v24 or rs232, not '" + v + "'", false;
            o.naming = *n;
        } else if (!a.empty() && a[0] == '-' && a != "-") {
            error = "unknown option " + a;
            return false;
        } else if (out.input.empty()) {
            out.input = a;
        } else {
            error = "more than one recording named ('" + out.input + "', '" + a + "')";
            return false;
        }
    }
    if (out.input.empty() && !out.help) {
        error = "no recording named";
        return false;
    }
    return true;
}

} // namespace kestrel
