#pragma once
// The hand-written golden settings files in tests/config/golden/.

#include <filesystem>

namespace kestrel::test {

inline std::filesystem::path GoldenFile(const char *name) { return std::filesystem::path(KESTREL_GOLDEN_DIR) / name; }

} // namespace kestrel::test
