#pragma once
// Result codes of the record layer: the numbers of the texts that say what
// went wrong. The layer itself shows no text; its callers do.

namespace kestrel {

inline constexpr int kRecordOpenFailed = 3001;   // "Error opening record file!"
inline constexpr int kRecordCreateFailed = 3002; // "Error creating record file!"
inline constexpr int kRecordDeleteFailed = 3003; // "Error deleting record file!"
inline constexpr int kRecordWriteFailed = 3020;  // "Error writing the record file! ..."
inline constexpr int kRecordFileBusy = 7102;     // another recorder is writing the file

} // namespace kestrel
