#include "trigger_engine/action_consent.h"

#include <cstdint>
#include <cstdio>
#include <fstream>

namespace kestrel {

namespace {

constexpr std::size_t kMaxConsentFileBytes = 1 << 20; // a person's agreements, not a log
constexpr int kMsgCannotWrite = 7425; // "The settings file cannot be written!"

// FNV-1a, 64 bits, over fields separated by a byte no text holds.
class Fnv {
public:
    void add(const std::string &field)
    {
        for (unsigned char c : field)
            step(c);
        step(0);
    }
    [[nodiscard]] std::string hex() const
    {
        char out[17];
        std::snprintf(out, sizeof out, "%016llx", static_cast<unsigned long long>(h_));
        return out;
    }

private:
    void step(unsigned char c)
    {
        h_ ^= c;
        h_ *= 1099511628211ULL;
    }
    std::uint64_t h_ = 14695981039346656037ULL;
};

} // namespace

std::string ActionFingerprint(const std::string &environmentFile, const TriggerDef &t)
{
    if (!t.HasExternalAction())
        return {};
    Fnv f;
    std::error_code ec;
    f.add(std::filesystem::absolute(environmentFile, ec).lexically_normal().string());
    if (t.PlaySound) {
        f.add("sound");
        f.add(t.SoundFilePath);
        f.add(t.PlaySoundRepeat ? "repeat" : "once");
    }
    if (t.ExecCommand) {
        f.add("command");
        f.add(t.CommandFilePath);
        f.add(t.CommandParams);
    }
    return f.hex();
}

std::vector<std::string> DescribeActions(const std::vector<const TriggerDef *> &triggers)
{
    std::vector<std::string> lines;
    for (const TriggerDef *t : triggers) {
        const std::string who = std::to_string(t->number) + " " + t->Name + ": ";
        if (t->PlaySound)
            lines.push_back(who + (t->PlaySoundRepeat ? "play (endless) " : "play ") + t->SoundFilePath);
        if (t->ExecCommand)
            lines.push_back(who + "run " + t->CommandFilePath + (t->CommandParams.empty() ? "" : " " + t->CommandParams));
    }
    return lines;
}

ActionConsent::ActionConsent(std::filesystem::path file) : file_(std::move(file))
{
    if (file_.empty())
        return;
    std::error_code ec;
    if (std::filesystem::file_size(file_, ec) > kMaxConsentFileBytes || ec)
        return; // missing or absurd: nothing agreed yet
    std::ifstream in(file_);
    for (std::string line; std::getline(in, line);) {
        if (line.size() == 16)
            agreed_.insert(line);
    }
}

bool ActionConsent::agreed(const std::string &environmentFile, const TriggerDef &trigger) const
{
    const std::string fp = ActionFingerprint(environmentFile, trigger);
    return fp.empty() || agreed_.count(fp) > 0;
}

std::vector<const TriggerDef *> ActionConsent::pending(const std::string &environmentFile,
                                                       const TriggerList &triggers) const
{
    std::vector<const TriggerDef *> out;
    for (const TriggerDef &t : triggers) {
        if (!agreed(environmentFile, t))
            out.push_back(&t);
    }
    return out;
}

Result ActionConsent::agree(const std::string &environmentFile, const std::vector<const TriggerDef *> &triggers)
{
    std::string added;
    for (const TriggerDef *t : triggers) {
        const std::string fp = ActionFingerprint(environmentFile, *t);
        if (!fp.empty() && agreed_.insert(fp).second)
            added += fp + "\n";
    }
    if (added.empty() || file_.empty())
        return Result::Ok();
    std::ofstream out(file_, std::ios::app);
    out << added;
    out.flush();
    if (!out)
        return Result::Fail(kMsgCannotWrite, file_.string());
    return Result::Ok();
}

} // namespace kestrel
