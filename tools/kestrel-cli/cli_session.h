#pragma once
// One recording from the command line, through the same RecordingSession as
// the window: kestrel-cli record, and kestrel-cli extcap, which follows the
// record file while it grows and hands its frames to Wireshark.

#include <cstdio>
#include <functional>
#include <optional>
#include <string>

#include "capture/capture.h"
#include "capture/recorder.h"
#include "ports/scenario.h"
#include "triggers/trigger_list.h"

namespace kestrel {
class RecordingSession;
}

namespace kestrel::cli {

struct SessionRun {
    const char *command = "record";   // names the command in messages
    std::string output;               // the record file, absolute
    std::optional<Scenario> scenario; // the simulated line when set, else the two ports
    std::string portA, portB;
    PortComboTexts texts;
    int mode = RecordMode::None;
    std::optional<double> duration;   // seconds; otherwise until a finite scenario ends or a signal
    TriggerList triggers;             // the active ones gate the recording
    bool allowActions = false;
    std::FILE *messages = stdout;     // progress: the MP count at the end, triggers that fired
    // Runs every tickMs while the recording runs, and once more after it stopped
    // (stopped = true); false ends the recording.
    std::function<bool(RecordingSession &session, bool stopped)> tick;
    int tickMs = 20;
};

// Records until the duration has passed, the scenario has played, SIGINT or SIGTERM
// came, or tick said stop; returns the exit code (0, or 3 for ports that do not open,
// a write that fell short, a port lost).
[[nodiscard]] int RunRecordingSession(SessionRun &run);

// The simulated line of a scenario file, or the built-in demo for an empty name; a
// scenario faster than the line settings is recorded at its own rate unless the
// baud rate was given. False, with the reason on standard error, when it cannot be read.
[[nodiscard]] bool LoadSessionScenario(SessionRun &run, const std::string &file, bool baudGiven);

// A file that is not a recording is never touched; a recording only when mode says
// append or replace. The exit code and message when the file cannot be used.
[[nodiscard]] std::optional<int> RefuseRecordFile(const char *command, const std::string &path, int mode);

} // namespace kestrel::cli
