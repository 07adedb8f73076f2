#pragma once
// The hand-written golden settings files in tests/config/golden/.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace kestrel::test {

inline std::filesystem::path GoldenFile(const char *name) { return std::filesystem::path(KESTREL_GOLDEN_DIR) / name; }

inline std::string FileBytes(const std::filesystem::path &path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

} // namespace kestrel::test
