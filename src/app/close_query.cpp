#include "app/close_query.h"

#include "base/string_table.h"

namespace kestrel {

CloseAnswer FormCloseQuery(Prompter &prompter, CloseSteps &steps)
{
    // No question while recording: the user stops first, then closes.
    if (steps.isRecording())
        return CloseAnswer::RefusedRecording;
    if (prompter.ShowMessage(Str(203), Str(24), Buttons::YesNo, Icon::Confirmation) != MsgResult::Yes)
        return CloseAnswer::Declined;
    if (steps.isRecording())
        return CloseAnswer::RefusedRecording;
    steps.closeRecordHandles();
    if (steps.environmentChanged() &&
        prompter.ShowMessage(Str(204), Str(25), Buttons::YesNo, Icon::Confirmation) == MsgResult::Yes)
        steps.saveEnvironmentDialog();
    steps.saveConfiguration();
    return CloseAnswer::Close;
}

} // namespace kestrel
