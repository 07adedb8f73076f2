#pragma once
// The last error reports the program showed, for the problem report. The
// window's message box is wrapped in a RememberingPrompter: the user sees the
// same boxes as before, and every error and warning among them is kept in a
// small ring (the oldest goes when it is full).

#include <cstddef>
#include <deque>
#include <functional>
#include <string>

#include "base/prompt.h"

namespace kestrel {

struct ShownError {
    std::string when;  // local date and time, ISO 8601
    std::string title;
    std::string text;
};

class ErrorHistory {
public:
    static constexpr std::size_t kDefaultCapacity = 5;
    explicit ErrorHistory(std::size_t capacity = kDefaultCapacity) : capacity_(capacity == 0 ? 1 : capacity) {}

    void add(ShownError error);
    // Oldest first.
    [[nodiscard]] const std::deque<ShownError> &entries() const { return entries_; }

private:
    std::size_t capacity_;
    std::deque<ShownError> entries_;
};

class RememberingPrompter final : public Prompter {
public:
    RememberingPrompter(Prompter &shown, ErrorHistory &history) : shown_(&shown), history_(history) {}

    // Questions and notes pass unchanged; errors and warnings are kept before they show.
    int ShowMessage(const std::string &title, const std::string &text, int buttons, int icon) override;
    void NormalizeTopMosts() override { shown_->NormalizeTopMosts(); }
    void RestoreTopMosts() override { shown_->RestoreTopMosts(); }

private:
    Prompter *shown_;
    ErrorHistory &history_;
};

} // namespace kestrel
