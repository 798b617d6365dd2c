// A scratch directory for one test, removed with all it holds when the test
// ends, and a file's bytes as a string for comparing written files.
#pragma once

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace lv::test {

struct TempDir {
    std::filesystem::path path;

    TempDir()
    {
        // The process id and a count keep two tests, or two directories in
        // one test, from sharing files.
        static int made = 0;
        path = std::filesystem::temp_directory_path() /
               ("lumivue-test-" + std::to_string(::getpid()) + "-" + std::to_string(++made));
        std::filesystem::create_directories(path);
    }
    ~TempDir()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    std::string operator/(const char* name) const { return (path / name).string(); }
};

inline std::string Contents(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

}  // namespace lv::test
