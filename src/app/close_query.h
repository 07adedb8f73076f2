#pragma once
// The close query of the main window, without the window: refuse silently
// while recording, ask whether to close, close the record file's handles,
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
[[nodiscard]] bool FormCloseQuery(Prompter &prompter, CloseSteps &steps);

} // namespace kestrel
