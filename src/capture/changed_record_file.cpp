#include "capture/changed_record_file.h"

namespace kestrel {

ChangedRecordFile OpenChangedRecordFile(RecordFile &file)
{
    ChangedRecordFile changed;
    file.close(RecordHandle::View);
    Result opened = file.open(RecordHandle::View);
    if (!opened) {
        if (file.exists()) {
            changed.result = Result::Fail(opened.code, "\n\n" + file.path() + "\n" + opened.detail);
            return changed;
        }
        if (Result made = file.create(RecordHandle::View); !made) {
            changed.result = Result::Fail(made.code, "\n\n" + file.path() + "\n" + made.detail);
            return changed;
        }
        changed.created = true;
    }
    changed.resetGrid = file.recordCount() > 0;
    return changed;
}

} // namespace kestrel
