#include "platform/files/FileManager.h"

#include <cerrno>
#include <csignal>
#include <iterator>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include "platform/files/FileDescriptor.h"
#include "platform/files/ResourceValues.h"
#include "platform/foundation/URL.h"
#include "tests/support/ScratchDirectory.h"

using namespace platform;

namespace {

URL urlOf(const std::filesystem::path& path) {
    return URL::fileURLWithPath(path.string());
}

} // namespace

TEST(FileManager, TakesADanglingLinkForPresent) {
    const tests::ScratchDirectory scratch;
    std::filesystem::create_symlink("nowhere", scratch / "link");
    EXPECT_TRUE(resourceIsReachable(urlOf(scratch / "link")));
    EXPECT_FALSE(resourceIsReachable(urlOf(scratch / "nowhere")));
    EXPECT_TRUE(isDirectory(urlOf(scratch.path())));
    EXPECT_FALSE(isDirectory(urlOf(scratch / "link")));
}

TEST(FileManager, ReadsAndWritesRegularFilesOnly) {
    const tests::ScratchDirectory scratch;
    ASSERT_TRUE(writeContents("a longer text", urlOf(scratch / "file")));
    ASSERT_TRUE(writeContents("short", urlOf(scratch / "file")));
    EXPECT_EQ(contentsAtURL(urlOf(scratch / "file"))->bytes(), "short");
    EXPECT_EQ(contentsAtURL(urlOf(scratch / "file"), 4).error().underlyingError()->code, EFBIG);
    ASSERT_EQ(::mkfifo((scratch / "fifo").c_str(), 0600), 0);
    std::filesystem::create_symlink("file", scratch / "link");
    EXPECT_TRUE(contentsAtURL(urlOf(scratch / "link")));
    EXPECT_FALSE(contentsAtURL(urlOf(scratch / "fifo")));
    EXPECT_FALSE(contentsAtURL(urlOf(scratch.path())));
    EXPECT_EQ(contentsAtURL(urlOf(scratch / "none")).error().code, 260);
    for (const auto* name : {"fifo", "link"}) EXPECT_FALSE(writeContents("x", urlOf(scratch / name))) << name;
    EXPECT_FALSE(writeContents("x", urlOf(scratch.path())));
    EXPECT_EQ(writeContents("x", urlOf(scratch / "no" / "file")).error().code, 4);
    EXPECT_EQ(tests::readFile(scratch / "file"), "short");
}

TEST(FileManager, AFailedWriteLeavesTheOldFile) {
    const tests::ScratchDirectory scratch;
    tests::writeFile(scratch / "file", "old");
    ASSERT_EQ(::chmod((scratch / "file").c_str(), 0640), 0);
    struct rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const struct rlimit narrow{4096, before.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &narrow), 0);
    const auto written = writeContents(std::string(100'000, 'x'), urlOf(scratch / "file"));
    const auto madeNew = writeContents(std::string(100'000, 'x'), urlOf(scratch / "new"));
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    ASSERT_FALSE(written);
    EXPECT_FALSE(madeNew);
    EXPECT_EQ(written.error().underlyingError()->code, EFBIG);
    EXPECT_NE(written.error().localizedDescription().find("/file”: "), std::string::npos);
    EXPECT_EQ(tests::readFile(scratch / "file"), "old");
    const auto entries = std::filesystem::directory_iterator(scratch.path());
    EXPECT_EQ(std::distance(begin(entries), end(entries)), 1) << "nothing half written is left";

    ASSERT_TRUE(writeContents("new", urlOf(scratch / "file")));
    struct stat status{};
    ASSERT_EQ(::stat((scratch / "file").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640u);
}

TEST(FileManager, ReportsAFullDisk) {
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no /dev/full here";
    const FileDescriptor full = openAt(-1, "/dev/full", O_WRONLY);
    const auto written = writeAll(full.get(), "x", "/dev/full");
    ASSERT_FALSE(written);
    EXPECT_EQ(written.error().code, 640);
    EXPECT_EQ(written.error().underlyingError()->code, ENOSPC);
}

TEST(FileManager, MakesAndRemovesDirectories) {
    const tests::ScratchDirectory scratch;
    ASSERT_TRUE(createDirectoryAtURL(urlOf(scratch / "d")));
    EXPECT_EQ(createDirectoryAtURL(urlOf(scratch / "d")).error().code, 516);
    EXPECT_EQ(createDirectoryAtURL(urlOf(scratch / "x" / "d")).error().code, 4);
    tests::writeFile(scratch / "d" / "file", "");
    EXPECT_TRUE(removeItemAtURL(urlOf(scratch / "d")));
    EXPECT_TRUE(removeItemAtURL(urlOf(scratch / "d")));
    EXPECT_TRUE(std::filesystem::is_empty(scratch.path()));
}

TEST(FileManager, ShowsNamesWithoutAHiddenExtension) {
    const tests::ScratchDirectory scratch;
    tests::writeFile(scratch / "Report.pdf", "");
    const std::string path = (scratch / "Report.pdf").string();
    EXPECT_EQ(displayNameAtPath(path), "Report.pdf");
    ASSERT_TRUE(setResourceValuesOfItemAtURL({true, {}, {}, {}, {}}, URL::fileURLWithPath(path)));
    EXPECT_EQ(displayNameAtPath(path), "Report");
    EXPECT_EQ(displayNameAtPath("/nowhere/a.b"), "a.b");
    EXPECT_EQ(displayNameAtPath(path + std::string("\0.x", 3)), "Report.pdf" + std::string("\0.x", 3));
}

TEST(FileManager, NothingIsUnderANameWithNUL) {
    const tests::ScratchDirectory scratch;
    tests::writeFile(scratch / "a", "");
    EXPECT_TRUE(resourceIsReachable(urlOf(scratch / "a")));
    EXPECT_FALSE(resourceIsReachable(urlOf(scratch.path()).appendingPathComponent(std::string("a\0b", 3))));
}
