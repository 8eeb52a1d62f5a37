#include "platform/files/FileTree.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include "platform/files/FileDescriptor.h"
#include "tests/support/ScratchDirectory.h"

using namespace platform;

namespace {

FileDescriptor opened(const std::filesystem::path& path) {
    return openAt(AT_FDCWD, path.c_str(), O_PATH | O_DIRECTORY);
}

} // namespace

TEST(FileTree, RemovesAFileAndATreeAndTakesAnAbsentEntryForRemoved) {
    const tests::ScratchDirectory scratch;
    const FileDescriptor top = opened(scratch.path());
    tests::writeFile(scratch / "file", "x");
    std::filesystem::create_directories(scratch / "tree/a/b");
    tests::writeFile(scratch / "tree/a/b/c", "x");
    tests::writeFile(scratch / "tree/z", "x");
    std::filesystem::create_directories(scratch / "tree/y/w");
    for (const auto* name : {"file", "tree", "absent"}) EXPECT_TRUE(removeTree(top.get(), name, "here"));
    EXPECT_TRUE(std::filesystem::is_empty(scratch.path()));
}

TEST(FileTree, RemovesLinksWithoutFollowingThem) {
    const tests::ScratchDirectory scratch;
    std::filesystem::create_directories(scratch / "kept");
    tests::writeFile(scratch / "kept/file", "x");
    std::filesystem::create_directories(scratch / "tree");
    std::filesystem::create_directory_symlink(scratch / "kept", scratch / "tree/link");
    std::filesystem::create_directory_symlink(scratch / "kept", scratch / "link");
    const FileDescriptor top = opened(scratch.path());
    EXPECT_TRUE(removeTree(top.get(), "tree", "here"));
    EXPECT_TRUE(removeTree(top.get(), "link", "here"));
    EXPECT_EQ(tests::readFile(scratch / "kept/file"), "x");
    EXPECT_FALSE(std::filesystem::exists(scratch / "tree"));
}

TEST(FileTree, RemovesATreeDeeperThanAnyPath) {
    const tests::ScratchDirectory scratch;
    FileDescriptor current = opened(scratch.path());
    for (int depth = 0; depth < 3000; ++depth) {
        ASSERT_EQ(::mkdirat(current.get(), "deep", 0700), 0);
        current = openAt(current.get(), "deep", O_PATH | O_DIRECTORY);
        ASSERT_TRUE(current);
    }
    const auto removed = removeTree(opened(scratch.path()).get(), "deep", "here");
    EXPECT_TRUE(removed) << removed.error().description();
    EXPECT_TRUE(std::filesystem::is_empty(scratch.path()));
}

TEST(FileTree, RemovesWideTrees) {
    const tests::ScratchDirectory scratch;
    for (int i = 0; i < 300; ++i) {
        std::filesystem::create_directories(scratch / ("tree/" + std::to_string(i)));
        tests::writeFile(scratch / ("tree/" + std::to_string(i) + "/file"), "x");
    }
    EXPECT_TRUE(removeTree(opened(scratch.path()).get(), "tree", "here"));
    EXPECT_TRUE(std::filesystem::is_empty(scratch.path()));
}

TEST(FileTree, RefusesNamesThatAreNoSingleComponent) {
    const tests::ScratchDirectory scratch;
    std::filesystem::create_directories(scratch / "a/b");
    const FileDescriptor top = opened(scratch / "a");
    for (const auto* name : {"..", ".", "", "../a", "/tmp"}) EXPECT_FALSE(removeTree(top.get(), name, "here")) << name;
    EXPECT_TRUE(std::filesystem::exists(scratch / "a/b"));
}
