#include "ports/scenario.h"

#include <array>
#include <cctype>
#include <charconv>
#include <cerrno>
#include <cstring>
#include <sstream>
#include <fcntl.h>
#include <unistd.h>

#include "ports/port_settings.h"
#include "record/record_reader.h"

namespace kestrel {

namespace {

// ASCII control names usable as <NAME> in byte strings; index = byte value.
constexpr std::array<std::string_view, 33> kControlNames = {
    "NUL", "SOH", "STX", "ETX", "EOT", "ENQ", "ACK", "BEL", "BS",  "HT",  "LF",
    "VT",  "FF",  "CR",  "SO",  "SI",  "DLE", "DC1", "DC2", "DC3", "DC4", "NAK",
    "SYN", "ETB", "CAN", "EM",  "SUB", "ESC", "FS",  "GS",  "RS",  "US",  "SP"};

struct NamedBits {
    std::string_view name;
    unsigned bits;
};
constexpr std::array<NamedBits, 4> kModemNames = {{
    {"CTS", Msr::Cts}, {"DSR", Msr::Dsr}, {"RI", Msr::Ri}, {"DCD", Msr::Dcd}}};
constexpr std::array<NamedBits, 4> kErrorNames = {{
    {"OVERRUN", LineError::Overrun}, {"PARITY", LineError::Parity},
    {"FRAMING", LineError::Framing}, {"BREAK", LineError::Break}}};

std::string upper(std::string_view s)
{
    std::string r(s);
    for (char &c : r)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return r;
}

bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\r'; }

int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

// Cuts the line at a '#' that stands outside quotes.
std::string_view stripComment(std::string_view line)
{
    char quote = 0;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (quote) {
            if (c == '\\')
                ++i;
            else if (c == quote)
                quote = 0;
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == '#') {
            return line.substr(0, i);
        }
    }
    return line;
}

std::string_view trim(std::string_view s)
{
    while (!s.empty() && isSpace(s.front()))
        s.remove_prefix(1);
    while (!s.empty() && isSpace(s.back()))
        s.remove_suffix(1);
    return s;
}

// First word and the rest.
std::pair<std::string_view, std::string_view> splitWord(std::string_view s)
{
    s = trim(s);
    std::size_t i = 0;
    while (i < s.size() && !isSpace(s[i]))
        ++i;
    return {s.substr(0, i), trim(s.substr(i))};
}

std::vector<std::string_view> words(std::string_view s)
{
    std::vector<std::string_view> out;
    while (!(s = trim(s)).empty()) {
        auto [w, rest] = splitWord(s);
        out.push_back(w);
        s = rest;
    }
    return out;
}

std::optional<unsigned> parseNumber(std::string_view w)
{
    unsigned v = 0;
    int base = 10;
    if (w.size() > 2 && w[0] == '0' && (w[1] == 'x' || w[1] == 'X')) {
        w.remove_prefix(2);
        base = 16;
    }
    auto [p, ec] = std::from_chars(w.data(), w.data() + w.size(), v, base);
    if (ec != std::errc() || p != w.data() + w.size() || w.empty())
        return std::nullopt;
    return v;
}

std::optional<int> parsePort(std::string_view w)
{
    const std::string u = upper(w);
    if (u == "A")
        return kSimPortA;
    if (u == "B")
        return kSimPortB;
    return std::nullopt;
}

template <std::size_t N>
std::optional<unsigned> lookupBits(const std::array<NamedBits, N> &table, std::string_view w)
{
    const std::string u = upper(w);
    for (const auto &e : table)
        if (u == e.name)
            return e.bits;
    return parseNumber(w);
}

} // namespace

std::optional<std::int64_t> ParseDuration(std::string_view text)
{
    text = trim(text);
    std::size_t unitAt = 0;
    while (unitAt < text.size() && (std::isdigit(static_cast<unsigned char>(text[unitAt])) || text[unitAt] == '.'))
        ++unitAt;
    const std::string number(text.substr(0, unitAt));
    const std::string unit = upper(text.substr(unitAt));
    if (number.empty() || number == ".")
        return std::nullopt;
    double scale = 0;
    if (unit == "S")
        scale = 1e9;
    else if (unit == "MS")
        scale = 1e6;
    else if (unit == "US")
        scale = 1e3;
    else if (unit == "NS")
        scale = 1;
    else
        return std::nullopt;
    std::istringstream in(number);
    in.imbue(std::locale::classic());
    double value = 0;
    if (!(in >> value) || !in.eof() || value < 0 || value * scale > 9.0e18)
        return std::nullopt;
    return static_cast<std::int64_t>(value * scale + 0.5);
}

std::optional<std::vector<std::uint8_t>> ParseByteItems(std::string_view text, std::string &reason)
{
    std::vector<std::uint8_t> out;
    std::size_t i = 0;
    while (i < text.size()) {
        const char c = text[i];
        if (isSpace(c)) {
            ++i;
        } else if (c == '"' || c == '\'') {
            const char quote = c;
            ++i;
            bool closed = false;
            while (i < text.size()) {
                char d = text[i++];
                if (d == quote) {
                    closed = true;
                    break;
                }
                if (d != '\\') {
                    out.push_back(static_cast<std::uint8_t>(d));
                    continue;
                }
                if (i >= text.size()) {
                    reason = "backslash at the end of a text";
                    return std::nullopt;
                }
                d = text[i++];
                switch (d) {
                case 'r': out.push_back('\r'); break;
                case 'n': out.push_back('\n'); break;
                case 't': out.push_back('\t'); break;
                case '0': out.push_back(0); break;
                case 'e': out.push_back(0x1B); break;
                case '\\': case '"': case '\'': out.push_back(static_cast<std::uint8_t>(d)); break;
                case 'x': {
                    const int hi = i < text.size() ? hexValue(text[i]) : -1;
                    const int lo = i + 1 < text.size() ? hexValue(text[i + 1]) : -1;
                    if (hi < 0 || lo < 0) {
                        reason = "\\x needs two hex digits";
                        return std::nullopt;
                    }
                    out.push_back(static_cast<std::uint8_t>(hi * 16 + lo));
                    i += 2;
                    break;
                }
                default:
                    reason = std::string("unknown escape \\") + d;
                    return std::nullopt;
                }
            }
            if (!closed) {
                reason = "text without closing quote";
                return std::nullopt;
            }
        } else if (c == '<') {
            const std::size_t end = text.find('>', i);
            if (end == std::string_view::npos) {
                reason = "'<' without '>'";
                return std::nullopt;
            }
            const std::string name = upper(text.substr(i + 1, end - i - 1));
            bool found = false;
            for (std::size_t v = 0; v < kControlNames.size(); ++v) {
                if (name == kControlNames[v]) {
                    out.push_back(static_cast<std::uint8_t>(v)); // <SP> is 0x20, the entry after US
                    found = true;
                }
            }
            if (name == "DEL") {
                out.push_back(0x7F);
                found = true;
            }
            if (!found) {
                reason = "unknown control name <" + name + ">";
                return std::nullopt;
            }
            i = end + 1;
        } else {
            std::size_t end = i;
            while (end < text.size() && !isSpace(text[end]) && text[end] != '"' && text[end] != '\'' && text[end] != '<')
                ++end;
            const std::string_view word = text.substr(i, end - i);
            std::string_view digits = word;
            if (digits.size() > 2 && digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X'))
                digits.remove_prefix(2);
            if (digits.size() != 2 || hexValue(digits[0]) < 0 || hexValue(digits[1]) < 0) {
                reason = "'" + std::string(word) + "' is not a hex byte (two digits)";
                return std::nullopt;
            }
            out.push_back(static_cast<std::uint8_t>(hexValue(digits[0]) * 16 + hexValue(digits[1])));
            i = end;
        }
    }
    return out;
}

std::optional<Scenario> ParseScenario(std::string_view text, ScenarioError &error)
{
    Scenario sc;
    bool loopSeen = false;
    int lineNo = 0;
    auto fail = [&](std::string reason) -> std::optional<Scenario> {
        error.line = lineNo;
        error.reason = std::move(reason);
        return std::nullopt;
    };

    std::size_t pos = 0;
    while (pos <= text.size()) {
        std::size_t nl = text.find('\n', pos);
        if (nl == std::string_view::npos)
            nl = text.size();
        std::string_view line = trim(stripComment(text.substr(pos, nl - pos)));
        pos = nl + 1;
        ++lineNo;
        if (line.empty())
            continue;

        bool withPrevious = false;
        if (line.front() == '&') {
            withPrevious = true;
            line = trim(line.substr(1));
        }
        auto [cmdWord, rest] = splitWord(line);
        const std::string cmd = upper(cmdWord);
        ScenarioStep step;
        step.line = lineNo;
        step.withPrevious = withPrevious;

        if (cmd == "A" || cmd == "B") {
            step.kind = ScenarioStep::Kind::Bytes;
            step.port = cmd == "A" ? kSimPortA : kSimPortB;
            std::string reason;
            auto bytes = ParseByteItems(rest, reason);
            if (!bytes)
                return fail(reason);
            if (bytes->empty())
                return fail("no bytes given");
            step.bytes = std::move(*bytes);
        } else if (cmd == "MODEM") {
            auto args = words(rest);
            if (args.empty())
                return fail("modem needs a port (A or B)");
            auto port = parsePort(args[0]);
            if (!port)
                return fail("unknown port '" + std::string(args[0]) + "' (A or B)");
            step.port = *port;
            if (args.size() < 2)
                return fail("modem needs line names, '-' or a status word");
            int relative = 0; // +1 on, -1 off, 0 absolute
            unsigned bits = 0;
            for (std::size_t k = 1; k < args.size(); ++k) {
                std::string_view w = args[k];
                if (w == "-" && args.size() == 2)
                    break; // all lines off
                int sign = 0;
                if (w.front() == '+' || w.front() == '-') {
                    sign = w.front() == '+' ? 1 : -1;
                    w.remove_prefix(1);
                }
                if (k > 1 && sign != relative)
                    return fail("mixing '+'/'-' changes with plain line names");
                relative = sign;
                auto b = lookupBits(kModemNames, w);
                if (!b || *b > 0xFF)
                    return fail("unknown modem line '" + std::string(args[k]) + "' (CTS, DSR, RI, DCD)");
                bits |= *b;
            }
            step.kind = relative > 0 ? ScenarioStep::Kind::ModemOn
                      : relative < 0 ? ScenarioStep::Kind::ModemOff
                                     : ScenarioStep::Kind::ModemSet;
            step.value = bits & (Msr::Cts | Msr::Dsr | Msr::Ri | Msr::Dcd);
        } else if (cmd == "ERROR") {
            auto args = words(rest);
            if (args.size() < 2)
                return fail("error needs a port and an error (parity, framing, break, overrun)");
            auto port = parsePort(args[0]);
            if (!port)
                return fail("unknown port '" + std::string(args[0]) + "' (A or B)");
            step.kind = ScenarioStep::Kind::LineError;
            step.port = *port;
            for (std::size_t k = 1; k < args.size(); ++k) {
                auto b = lookupBits(kErrorNames, args[k]);
                if (!b || *b == 0 || *b > 0xFFFF)
                    return fail("unknown line error '" + std::string(args[k]) + "'");
                step.value |= *b;
            }
        } else if (cmd == "LOST") {
            auto args = words(rest);
            auto port = args.size() == 1 ? parsePort(args[0]) : std::nullopt;
            if (!port)
                return fail("lost needs one port (A or B)");
            step.kind = ScenarioStep::Kind::Lost;
            step.port = *port;
        } else if (cmd == "WAIT" || cmd == "AT") {
            auto d = ParseDuration(rest);
            if (!d)
                return fail("'" + std::string(rest) + "' is not a time (e.g. 20ms, 500us, 1.5s)");
            step.kind = cmd == "WAIT" ? ScenarioStep::Kind::Wait : ScenarioStep::Kind::At;
            step.nanoseconds = *d;
        } else if (cmd == "LOOP") {
            if (loopSeen)
                return fail("loop given twice");
            loopSeen = true;
            if (rest.empty()) {
                sc.loops = 0;
            } else {
                auto n = parseNumber(rest);
                if (!n || *n < 1 || *n > 1'000'000'000)
                    return fail("loop count must be a number from 1");
                sc.loops = static_cast<int>(*n);
            }
            continue;
        } else if (cmd == "CHUNK") {
            auto n = parseNumber(rest);
            if (!n || *n < 1 || *n > 4096)
                return fail("chunk must be a number from 1 to 4096");
            sc.chunk = static_cast<int>(*n);
            continue;
        } else if (cmd == "BAUD") {
            auto n = parseNumber(rest);
            if (!n || *n < 1 || *n > 20'000'000)
                return fail("baud must be a positive number");
            sc.baud = static_cast<long>(*n);
            continue;
        } else if (cmd == "PACE") {
            const std::string v = upper(rest);
            if (v != "ON" && v != "OFF")
                return fail("pace is 'on' or 'off'");
            sc.paced = v == "ON";
            continue;
        } else {
            return fail("unknown command '" + std::string(cmdWord) + "'");
        }
        if (withPrevious && sc.steps.empty())
            return fail("'&' needs a step before it");
        sc.steps.push_back(std::move(step));
    }
    return sc;
}

std::optional<Scenario> LoadScenarioFile(const std::string &path, ScenarioError &error)
{
    auto refuse = [&](const std::string &why) -> std::optional<Scenario> {
        error.line = 0;
        error.reason = why;
        return std::nullopt;
    };
    std::string why;
    std::uint64_t size = 0;
    const int fd = OpenRegularFile(path, O_RDONLY, why, &size); // a FIFO cannot hang us
    if (fd < 0)
        return refuse(why);
    // A scenario is text a person writes; anything this big is not one, and reading it
    // whole would only cost memory.
    if (size > kMaxScenarioBytes) {
        ::close(fd);
        return refuse("it is " + std::to_string(size >> 20) + " MB; a scenario is at most " +
                      std::to_string(kMaxScenarioBytes >> 20) + " MB of text");
    }
    std::string text;
    char buf[65536];
    for (;;) {
        const ssize_t got = ::read(fd, buf, sizeof buf);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0) {
            const int err = errno;
            ::close(fd);
            return refuse(std::strerror(err));
        }
        if (got == 0)
            break;
        if (text.size() + static_cast<std::size_t>(got) > kMaxScenarioBytes) { // grew while we read
            ::close(fd);
            return refuse("it is larger than " + std::to_string(kMaxScenarioBytes >> 20) + " MB");
        }
        text.append(buf, static_cast<std::size_t>(got));
    }
    ::close(fd);
    return ParseScenario(text, error);
}

std::optional<Scenario> LoadScenario(const std::string &fileOrEmpty, ScenarioError &error)
{
    if (fileOrEmpty.empty())
        return ParseScenario(DemoScenarioText(), error);
    return LoadScenarioFile(fileOrEmpty, error);
}

} // namespace kestrel
