#include "platform/html/HTMLReader.h"

#include <gtest/gtest.h>

#include "platform/text/TextDump.h"
#include "tests/support/Golden.h"
#include "tests/support/ScratchDirectory.h"

namespace platform {
namespace {

TEST(HTMLReader, ReadsTheGoldenPages) {
    for (const auto& golden : tests::goldenCases("html")) {
        SCOPED_TRACE(golden.name);
        const URL directory = URL::fileURLWithPath(golden.directory.string(), true);
        const URL page = directory.appendingPathComponent("input.html");
        const auto read = attributedStringFromHTMLFile(page, {.baseURL = directory, .readAccessURL = directory});
        ASSERT_TRUE(read.has_value());
        tests::expectGolden(golden, "expected.dump", textDump(read->text));
    }
}

} // namespace
} // namespace platform
