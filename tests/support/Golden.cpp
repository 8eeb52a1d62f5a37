#include "tests/support/Golden.h"

#include <algorithm>
#include <cstdlib>

#include <gtest/gtest.h>

#include "tests/support/ScratchDirectory.h"

namespace tests {

std::vector<GoldenCase> goldenCases(std::string_view stage) {
    std::vector<GoldenCase> cases;
    const auto root = sourceDirectory() / "tests/golden" / stage;
    std::error_code none;
    for (const auto& entry : std::filesystem::directory_iterator(root, none))
        if (entry.is_directory()) cases.push_back({entry.path().filename().string(), entry.path()});
    EXPECT_FALSE(cases.empty()) << "no golden cases in " << root;
    std::ranges::sort(cases, {}, &GoldenCase::name);
    return cases;
}

void expectGolden(const GoldenCase& golden, std::string_view fileName, std::string_view actual) {
    const auto path = golden.directory / fileName;
    if (std::getenv("QUILLET_ACCEPT") != nullptr) {
        writeFile(path, actual);
        return;
    }
    ASSERT_TRUE(std::filesystem::exists(path)) << path << " is missing; scripts/accept writes it. Made:\n" << actual;
    EXPECT_EQ(readFile(path), actual) << "golden case " << golden.name;
}

} // namespace tests
