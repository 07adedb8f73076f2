#pragma once
// A new current record file was chosen (new, open, an environment): the view
// handle follows it, and a file that does not exist yet is made empty. A file
// that exists but cannot be opened is never truncated.

#include "base/result.h"
#include "record/record_file.h"

namespace kestrel {

struct ChangedRecordFile {
    Result result;           // 3001 / 3002 with the path and the reason
    bool created = false;    // the file did not exist and was made
    bool resetGrid = false;  // the file holds MPs: show it from the first row
};

[[nodiscard]] ChangedRecordFile OpenChangedRecordFile(RecordFile &file);

} // namespace kestrel
