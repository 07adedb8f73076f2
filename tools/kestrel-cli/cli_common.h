#pragma once
// Helpers shared by the commands of kestrel-cli: messages, exit codes and the kinds of option
// they declare (a choice of words, a whole number in a range, a text one of the parsers reads).

#include <CLI/CLI.hpp>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "base/locale_language.h"
#include "base/result.h"
#include "base/string_table.h"
#include "present/byte_render.h"
#include "command.h"

namespace kestrel::cli {

// German for a German environment (LC_ALL, LC_MESSAGES, LANG), English otherwise;
// the same reading as the alert program (kestrel-chimer).
using kestrel::LanguageFromEnvironment;

// A file may hold anything: control characters (C0, DEL and the C1 set as UTF-8,
// whose U+009B starts an escape sequence too) must not reach the terminal.
inline std::string Printable(const std::string &text)
{
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        if (c == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) >= 0x80 &&
            static_cast<unsigned char>(text[i + 1]) <= 0x9F) {
            out += '?';
            ++i;
        } else {
            out += c < 0x20 || c == 0x7F ? '?' : text[i];
        }
    }
    return out;
}

// A text as a JSON string.
inline std::string JsonString(const std::string &s)
{
    std::string out = "\"";
    for (unsigned char c : s) {
        if (c == '"' || c == '\\') {
            out += '\\';
            out += static_cast<char>(c);
        } else if (c < 0x20) {
            char buf[8];
            std::snprintf(buf, sizeof buf, "\\u%04x", c);
            out += buf;
        } else {
            out += static_cast<char>(c);
        }
    }
    return out + "\"";
}

// A date-time (days) as a JSON number; a damaged record's NaN or infinity has no JSON form.
inline std::string JsonTime(double t)
{
    if (!std::isfinite(t))
        return "null";
    char buf[512];
    std::snprintf(buf, sizeof buf, "%.10f", t);
    return buf;
}

// A bad option or argument found after parsing: the message and where the options are described.
inline int UsageError(const std::string &command, const std::string &message)
{
    std::fprintf(stderr, "kestrel-cli %s: %s\nRun 'kestrel-cli %s --help' for its options.\n", command.c_str(),
                 message.c_str(), command.c_str());
    return kExitUsage;
}

inline int Fail(const char *command, const std::string &message, int code)
{
    std::fprintf(stderr, "kestrel-cli %s: %s\n", command, message.c_str());
    return code;
}

// A text of the table without the line breaks some messages end with.
inline std::string MessageText(int number, int lang)
{
    std::string s = StrIn(number, lang);
    while (!s.empty() && (s.back() == '\n' || s.back() == ' '))
        s.pop_back();
    return s;
}

template <class T>
bool ParseWhole(const std::string &text, T &v)
{
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), v);
    return !text.empty() && ec == std::errc() && end == text.data() + text.size();
}

// Decimal digits only (no sign, no base prefix, no blanks) and within lo..hi.
template <class T>
CLI::Validator WholeNumber(T lo, T hi)
{
    const std::string range = std::to_string(lo) + " to " + std::to_string(hi);
    return CLI::Validator(
        [lo, hi, range](std::string &text) {
            T v{};
            return ParseWhole(text, v) && v >= lo && v <= hi
                       ? std::string()
                       : "takes a whole number from " + range + ", not '" + text + "'";
        },
        "");
}

// A decimal number above 0 and at most hi; what names the unit in the message ("seconds").
inline CLI::Validator PositiveNumber(double hi, const std::string &what)
{
    return CLI::Validator(
        [hi, what](std::string &text) {
            double d = 0;
            const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), d);
            if (ec != std::errc() || end != text.data() + text.size() || !(d > 0) || d > hi)
                return "needs a positive number of " + what + ", not '" + text + "'";
            return std::string();
        },
        "");
}

inline const CLI::Validator kNotEmpty(
    [](std::string &text) { return text.empty() ? std::string("needs a value that is not empty") : std::string(); },
    "");

// A whole number in lo..hi ("010" is ten), shown as "lo..hi"; the target is a T or a std::optional<T>.
template <class T, class Target>
CLI::Option *AddNumber(CLI::App &app, const std::string &name, Target &target, T lo, T hi, const std::string &help)
{
    return app
        .add_option_function<std::string>(
            name,
            [&target](const std::string &text) {
                T v{};
                ParseWhole(text, v);
                target = v;
            },
            help)
        ->check(WholeNumber(lo, hi))
        ->type_name(std::to_string(lo) + ".." + std::to_string(hi));
}

// One of a few words, each standing for a value; shown as "word|word".
template <class T>
CLI::Option *AddChoice(CLI::App &app, const std::string &name, T &target, std::vector<std::pair<std::string, T>> choices,
                       const std::string &help)
{
    std::vector<std::string> words;
    std::string shown;
    for (const auto &c : choices) {
        words.push_back(c.first);
        shown += (shown.empty() ? "" : "|") + c.first;
    }
    return app
        .add_option_function<std::string>(
            name,
            [&target, choices](const std::string &word) {
                for (const auto &c : choices)
                    if (c.first == word)
                        target = c.second;
            },
            help)
        ->check(CLI::IsMember(words).description(""))
        ->type_name(shown);
}

// A text read by one of the parsers that return Expected<T>; what they find wrong names the option.
template <class T, class Parse>
CLI::Option *AddParsed(CLI::App &app, const std::string &name, T &target, Parse parse, const std::string &help)
{
    return app.add_option_function<std::string>(
        name,
        [&target, parse, name](const std::string &text) {
            auto parsed = parse(text);
            if (!parsed)
                throw CLI::ValidationError(name, parsed.result.detail);
            target = std::move(parsed.value);
        },
        help);
}

// The word lists the commands share.
inline CLI::Option *AddLanguage(CLI::App &app, int &lang, const std::string &what, const std::string &names = "--language")
{
    return AddChoice<int>(app, names, lang, {{"de", kLangGerman}, {"en", kLangEnglish}},
                          "language of " + what + " (default from LANG)");
}

inline CLI::Option *AddTimeMode(CLI::App &app, int &mode)
{
    return AddChoice<int>(app, "--time", mode, {{"absolute", 0}, {"relative", 1}, {"delta", 2}},
                          "time column, default absolute");
}

inline CLI::Option *AddCharMode(CLI::App &app, int &mode)
{
    return AddChoice<int>(app, "--char", mode,
                          {{"ascii", CharMode::Ascii},
                           {"ebcdic", CharMode::Ebcdic},
                           {"hex", CharMode::Hex},
                           {"dec", CharMode::Dec},
                           {"oct", CharMode::Oct},
                           {"bin", CharMode::Bin}},
                          "default ascii");
}

inline CLI::Option *AddControlMode(CLI::App &app, int &overlay)
{
    return AddChoice<int>(app, "--control", overlay,
                          {{"none", Overlay::None}, {"caret", Overlay::Caret}, {"mnemonic", Overlay::Mnemonic}},
                          "control characters as glyphs, ^X or mnemonics");
}

// v24: circuit names D1, D2, S1 ...; rs232: Tx, Rx, DTR ...
inline CLI::Option *AddNaming(CLI::App &app, int &naming)
{
    return AddChoice<int>(app, "--naming", naming, {{"v24", 0}, {"rs232", 1}},
                          "circuit names D1/D2/S1... (v24) or Tx/Rx/DTR... (rs232)");
}

} // namespace kestrel::cli
