#pragma once
// The close query of the main window, without the window: refuse while
// recording (the window says why in its status bar), ask whether to close, close the record file's handles,
// offer to save a changed environment, save the configuration.

#include "base/prompt.h"

namespace kestrel {

class CloseSteps {
public:
    virtual ~CloseSteps() = default;
    [[nodiscard]] virtual bool isRecording() const = 0;
    virtual void closeRecordHandles() = 0;
    [[nodiscard]] virtual bool environmentChanged() const = 0;
    virtual void saveEnvironmentDialog() = 0;
    virtual void saveConfiguration() = 0;
};

// true when the window may close.
enum class CloseAnswer {
    Close,
    Declined,         // the user said no
    RefusedRecording, // a recording runs: stop it first (text 60 says so)
};

// A recording that started while the question waited (a start trigger, say) refuses
// the close too: the program never ends in the middle of a recording.
[[nodiscard]] CloseAnswer FormCloseQuery(Prompter &prompter, CloseSteps &steps);

} // namespace kestrel
