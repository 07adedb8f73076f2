#include "app/main_form.h"
namespace kestrel {
bool TFormMain::isRecording() const { return false; }
bool TFormMain::isPaused() const { return false; }
void TFormMain::btnRecordClick() {}
void TFormMain::btnPauseClick() {}
void TFormMain::btnStopClick() {}
void TFormMain::SetRecordOnControls() { SetModeText(4273); DisableComSetup(); DisableCtrlsBeforeRec(); }
void TFormMain::SetRecordOffControls() { SetModeText(4274); EnableComSetup(); EnableCtrlsAfterRec(); }
}
