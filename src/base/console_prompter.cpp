#include "base/console_prompter.h"

#include <cstdio>

namespace kestrel {

int ConsolePrompter::ShowMessage(const std::string &title, const std::string &text, int, int icon)
{
    ++shown_;
    const char *kind = icon == Icon::Error ? "error" : icon == Icon::Warning ? "warning" : "note";
    std::fprintf(stderr, "kestrel: %s: %s: %s\n", kind, title.c_str(), text.c_str());
    return answer_;
}

} // namespace kestrel
