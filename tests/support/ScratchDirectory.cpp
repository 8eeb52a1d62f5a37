#include "tests/support/ScratchDirectory.h"

#include <cstdlib>
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>

namespace tests {

ScratchDirectory::ScratchDirectory() {
    std::string name = (std::filesystem::temp_directory_path() / "quillet-test-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) std::abort();
    path_ = name;
}

ScratchDirectory::~ScratchDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string readFile(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    EXPECT_TRUE(stream) << "cannot read " << path;
    return {std::istreambuf_iterator<char>(stream), {}};
}

void writeFile(const std::filesystem::path& path, std::string_view bytes) {
    std::ofstream stream(path, std::ios::binary);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    EXPECT_TRUE(stream) << "cannot write " << path;
}

std::filesystem::path sourceDirectory() {
    return QUILLET_SOURCE_DIR;
}

} // namespace tests
