// Golden cases: directories tests/golden/<stage>/<case>/ with input.* and expected.* files, found by glob.
// QUILLET_ACCEPT=1 in the environment (scripts/accept) rewrites the expected files with what the program made;
// they are then reviewed like code.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace tests {

struct GoldenCase {
    std::string name; // of the directory
    std::filesystem::path directory;
};

// The stage's cases, sorted by name. A stage without cases fails the calling test.
std::vector<GoldenCase> goldenCases(std::string_view stage);

// Holds `actual` against the case's file of that name; with QUILLET_ACCEPT the file is rewritten instead.
void expectGolden(const GoldenCase& golden, std::string_view fileName, std::string_view actual);

} // namespace tests
