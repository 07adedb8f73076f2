#pragma once
// A fresh folder under the system temp folder, removed with everything in it.

#include <filesystem>
#include <fstream>
#include <sstream>
#include <random>
#include <string>

namespace kestrel::test {

class TempDir {
public:
    TempDir()
    {
        std::random_device rd;
        path_ = std::filesystem::temp_directory_path() / ("kestrel-test-" + std::to_string(rd()) + std::to_string(rd()));
        std::filesystem::create_directories(path_);
    }
    ~TempDir()
    {
        std::error_code ec;
        std::filesystem::remove_all(path_, ec);
    }
    TempDir(const TempDir &) = delete;
    TempDir &operator=(const TempDir &) = delete;

    [[nodiscard]] const std::filesystem::path &path() const { return path_; }
    [[nodiscard]] std::string file(const std::string &name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};

// The whole content of a file (empty when it cannot be read).
inline std::string ReadWholeFile(const std::string &path)
{
    std::ifstream f(path, std::ios::binary);
    std::stringstream s;
    s << f.rdbuf();
    return s.str();
}

} // namespace kestrel::test
