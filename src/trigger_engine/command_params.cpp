#include "trigger_engine/command_params.h"

#include <QDateTime>
#include <QLocale>

#include "base/string_table.h"

namespace kestrel {

namespace {

constexpr int kTransmitHint = 7440;
constexpr int kReceiveHint = 7441;

enum Slot { Timestamp, Number, Name, Descr, Type, Event, Data, Tx, Rx, Empty };

constexpr std::array<ParameterSlot, kParameterSlotCount> kPool{{
    {"%TIMESTAMP%", 7442},
    {"%TRIG_NUM%", 7443},
    {"%TRIG_NAME%", 7444},
    {"%TRIG_DESCR%", 7445},
    {"%TRIG_TYPE%", 7446},
    {"%TRIG_EVENT%", 7447},
    {"%TRIG_DATA%", 7448},
    {"%TRIG_TX%", 7449},
    {"%TRIG_RX%", 7450},
    {"", 0},
}};

// The slot's text for this trigger, or nullopt when its condition does not hold.
std::optional<std::string> SlotValue(Slot slot, const TriggerDef &t, const std::string &timestamp)
{
    const bool data = t.Event == TriggerEvent::Data;
    switch (slot) {
    case Timestamp:
        return timestamp;
    case Number:
        return std::to_string(t.number);
    case Name:
        return t.Name;
    case Descr:
        return t.Description;
    case Type:
        return std::string(); // both type texts are empty, in every language
    case Event: {
        static constexpr const char *kEvents[] = {"data", "signal", "error", "timer"};
        if (t.Event >= 0 && t.Event < 4)
            return std::string(kEvents[t.Event]);
        return std::nullopt;
    }
    case Data:
        return data ? std::optional<std::string>(t.Data) : std::nullopt;
    case Tx:
        return data && t.D1 ? std::optional<std::string>(Str(kTransmitHint)) : std::nullopt;
    case Rx:
        return data && t.D2 ? std::optional<std::string>(Str(kReceiveHint)) : std::nullopt;
    case Empty:
        break;
    }
    return std::nullopt;
}

} // namespace

const std::array<ParameterSlot, kParameterSlotCount> &ParameterPool() { return kPool; }

bool ContainsPlaceholder(std::string_view text)
{
    for (const ParameterSlot &slot : kPool) {
        if (*slot.placeholder != '\0' && text.find(slot.placeholder) != std::string_view::npos)
            return true;
    }
    return false;
}

std::optional<std::vector<std::string>> SplitShellWords(std::string_view line)
{
    std::vector<std::string> words;
    std::string word;
    bool inWord = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (c == ' ' || c == '\t' || c == '\n') {
            if (inWord)
                words.push_back(std::move(word));
            word.clear();
            inWord = false;
            continue;
        }
        inWord = true;
        if (c == '\\') {
            if (++i < line.size())
                word += line[i];
        } else if (c == '\'') {
            const std::size_t end = line.find('\'', i + 1);
            if (end == std::string_view::npos)
                return std::nullopt;
            word.append(line.substr(i + 1, end - i - 1));
            i = end;
        } else if (c == '"') {
            for (++i;; ++i) {
                if (i >= line.size())
                    return std::nullopt;
                if (line[i] == '"')
                    break;
                if (line[i] == '\\' && i + 1 < line.size() &&
                    std::string_view("\"\\$`").find(line[i + 1]) != std::string_view::npos)
                    ++i;
                word += line[i];
            }
        } else {
            word += c;
        }
    }
    if (inWord)
        words.push_back(std::move(word));
    return words;
}

std::vector<std::string> FillPlaceholders(std::vector<std::string> args, const TriggerDef &trigger,
                                          const std::string &timestamp)
{
    std::string carried; // the last replacement made
    for (std::size_t s = 0; s < kPool.size(); ++s) {
        const std::string_view placeholder = kPool[s].placeholder;
        if (placeholder.empty())
            continue;
        const std::string value = SlotValue(static_cast<Slot>(s), trigger, timestamp).value_or(carried);
        bool replaced = false;
        for (std::string &arg : args) {
            for (std::size_t at = arg.find(placeholder); at != std::string::npos;
                 at = arg.find(placeholder, at + value.size())) {
                arg.replace(at, placeholder.size(), value);
                replaced = true;
            }
        }
        if (replaced)
            carried = value;
    }
    return args;
}

std::string TimestampText()
{
    const QLocale locale = QLocale::system();
    const QDateTime now = QDateTime::currentDateTime();
    return (locale.toString(now.date(), QLocale::ShortFormat) + ' ' + locale.toString(now.time(), QLocale::LongFormat))
        .toStdString();
}

} // namespace kestrel
