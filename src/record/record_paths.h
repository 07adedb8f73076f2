#pragma once
// Naming, placing, labelling and copying record files.

#include <cstdint>
#include <string>

namespace kestrel {

inline constexpr const char *kRecordExtension = ".ksr";
inline constexpr const char *kDefaultRecordName = "Default";

// <data folder>/recordings
[[nodiscard]] std::string DefaultRecordFolder(const std::string &dataDir);

struct ResolvedRecordPath {
    std::string path;
    bool placed = false; // the name had no folder part and was put into the record folder
};
// A name without a folder part goes into the record folder; an empty name is "Default.ksr" there.
[[nodiscard]] ResolvedRecordPath ResolveRecordPath(const std::string &path, const std::string &dataDir);

// "<path>   [  <size >> 10> KB ]"
[[nodiscard]] std::string RecordSizeLabel(const std::string &path, std::uint64_t fileSize);

struct CopyResult {
    bool ok = false;
    std::uint64_t bytes = 0;
    std::string error; // the system's text, with the failing path
};
// Copies a record file with a 1 MiB buffer; success when more than 0 bytes were copied.
// Refuses to copy a file onto itself.
[[nodiscard]] CopyResult SaveRecordFileAs(const std::string &source, const std::string &target);

} // namespace kestrel
