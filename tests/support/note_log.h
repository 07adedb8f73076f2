#pragma once
// A port listener that writes each notification down as a short line
// ("data 4", "error 2", "modem", "tdata 3", "tstatus 5", "lost"), so tests
// compare whole sequences; data notifications also take the bytes at once.

#include <string>
#include <vector>

#include "ports/com_port.h"

namespace kestrel::test {

class NoteLog final : public ComPortListener {
public:
    bool readBytes = true;
    std::vector<std::string> notes;
    std::string bytes;

    void onDataAvailable(ComPort &port, int count) override
    {
        notes.push_back("data " + std::to_string(count));
        if (readBytes)
            while (port.charReady())
                bytes.push_back(static_cast<char>(port.getChar()));
    }
    void onTriggerData(ComPort &, int handle) override { notes.push_back("tdata " + std::to_string(handle)); }
    void onTriggerStatus(ComPort &, int handle) override { notes.push_back("tstatus " + std::to_string(handle)); }
    void onLineError(ComPort &, unsigned word) override { notes.push_back("error " + std::to_string(word)); }
    void onModemStatusChanged(ComPort &) override { notes.push_back("modem"); }
    void onPortLost(ComPort &, const std::string &) override { notes.push_back("lost"); }

    [[nodiscard]] int count(const std::string &prefix) const
    {
        int n = 0;
        for (const auto &s : notes)
            n += s.rfind(prefix, 0) == 0 ? 1 : 0;
        return n;
    }
};

} // namespace kestrel::test
