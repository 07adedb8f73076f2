#pragma once
// A prompter for command-line use: prints the message to standard error and
// gives a fixed answer (no terminal questions in batch runs).

#include "base/prompt.h"

namespace kestrel {

class ConsolePrompter final : public Prompter {
public:
    explicit ConsolePrompter(int answer = MsgResult::Ok) : answer_(answer) {}
    int ShowMessage(const std::string &title, const std::string &text, int buttons, int icon) override;
    [[nodiscard]] int shownCount() const { return shown_; }

private:
    int answer_;
    int shown_ = 0;
};

} // namespace kestrel
