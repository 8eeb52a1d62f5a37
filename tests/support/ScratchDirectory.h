// A directory of one test's own, removed with all in it at the end.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tests {

class ScratchDirectory {
  public:
    ScratchDirectory();
    ~ScratchDirectory();
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(std::string_view name) const { return path_ / name; }

  private:
    std::filesystem::path path_;
};

// Whole-file helpers for tests; a failure fails the test and gives "" or nothing.
std::string readFile(const std::filesystem::path& path);
void writeFile(const std::filesystem::path& path, std::string_view bytes);

// The project's root, to find golden cases and examples.
std::filesystem::path sourceDirectory();

} // namespace tests
