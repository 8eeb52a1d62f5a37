#include "platform/files/FileDescriptor.h"

#include <gtest/gtest.h>

namespace platform {
namespace {

TEST(FileDescriptor, ReadsAFileThatDoesNotTellItsSize) {
    const auto read = contentsOfFile("/proc/self/status");
    ASSERT_TRUE(read);
    EXPECT_GT(read->size(), 100U);
    EXPECT_TRUE(read->ends_with('\n'));
}

} // namespace
} // namespace platform
