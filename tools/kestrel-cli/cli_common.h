#pragma once
// Small helpers shared by the recording commands of kestrel-cli.

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "command.h"
#include "base/string_table.h"

namespace kestrel::cli {

// German for a German environment (LC_ALL, LC_MESSAGES, LANG), English otherwise.
inline int LanguageFromEnvironment()
{
    for (const char *name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char *v = std::getenv(name);
        if (v && *v)
            return std::string(v).rfind("de", 0) == 0 ? kLangGerman : kLangEnglish;
    }
    return kLangEnglish;
}

// A bad option: the message, a blank line and the command's usage text.
inline int UsageError(const char *command, const std::string &message, const char *usage)
{
    std::fprintf(stderr, "kestrel-cli %s: %s\n\n%s", command, message.c_str(), usage);
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

} // namespace kestrel::cli
