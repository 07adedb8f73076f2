#pragma once
// Test double of the prompt interface: records each question and answers
// from a script (the default answer once the script runs out).

#include <deque>
#include <string>
#include <vector>

#include "base/prompt.h"

namespace kestrel::test {

struct AskedMessage {
    std::string title;
    std::string text;
    int buttons = 0;
    int icon = 0;
};

class ScriptedPrompter final : public Prompter {
public:
    explicit ScriptedPrompter(int defaultAnswer = MsgResult::Ok) : defaultAnswer_(defaultAnswer) {}

    void answerNext(int result) { script_.push_back(result); }

    int ShowMessage(const std::string &title, const std::string &text, int buttons, int icon) override
    {
        asked.push_back({title, text, buttons, icon});
        const int r = script_.empty() ? defaultAnswer_ : script_.front();
        if (!script_.empty())
            script_.pop_front();
        return r;
    }
    void NormalizeTopMosts() override { ++normalized; }
    void RestoreTopMosts() override { ++restored; }

    std::vector<AskedMessage> asked;
    int normalized = 0;
    int restored = 0;

private:
    int defaultAnswer_;
    std::deque<int> script_;
};

} // namespace kestrel::test
