#pragma once
// What a fired trigger does besides its mark: play a sound, start a command.
// The evaluator only says when; TriggerLauncher (trigger_launcher.h) does it.

#include "triggers/trigger_def.h"

namespace kestrel {

class TriggerActions {
public:
    virtual ~TriggerActions() = default;
    // A recording starts (failures are told in a box once per trigger and recording).
    virtual void newRecording() {}
    // Runs the trigger's sound action, then its command action, each only if ticked.
    virtual void run(const TriggerDef &trigger) = 0;
};

} // namespace kestrel
