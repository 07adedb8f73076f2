#include "app/close_query.h"

#include "base/string_table.h"

namespace kestrel {

bool FormCloseQuery(Prompter &prompter, CloseSteps &steps)
{
    // No question while recording: the user stops first, then closes.
    if (steps.isRecording())
        return false;
    if (prompter.ShowMessage(Str(203), Str(24), Buttons::YesNo, Icon::Confirmation) != MsgResult::Yes)
        return false;
    steps.closeRecordHandles();
    if (steps.environmentChanged() &&
        prompter.ShowMessage(Str(204), Str(25), Buttons::YesNo, Icon::Confirmation) == MsgResult::Yes)
        steps.saveEnvironmentDialog();
    steps.saveConfiguration();
    return true;
}

} // namespace kestrel
