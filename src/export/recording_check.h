#pragma once
// A quick plausibility check before a tool walks a file: a record file holds
// MP n at offset n * 80, so its first record is numbered 0 and its last whole
// record count - 1. Any other file (a random one, a text file, a recording
// cut at the front) fails here with a clear message instead of producing
// nonsense. A torn tail (size not a multiple of 80) is fine.

#include <string>

#include "record/record_reader.h"

namespace kestrel {

// Opens path into reader; false with a message for the user when the file
// cannot be opened, is empty, or is not a recording.
[[nodiscard]] bool OpenRecording(RecordReader &reader, const std::string &path, std::string &error);

} // namespace kestrel
