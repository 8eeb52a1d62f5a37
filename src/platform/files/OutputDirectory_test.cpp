#include "platform/files/OutputDirectory.h"

#include <array>
#include <cerrno>
#include <chrono>

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/files/FileWrapper.h"
#include "platform/files/MoveIntoPlace.h"
#include "platform/foundation/URL.h"
#include "tests/support/ScratchDirectory.h"

using namespace platform;

namespace {

OutputDirectory opened(const std::filesystem::path& path) {
    auto directory = OutputDirectory::openURL(URL::fileURLWithPath(path.string(), true));
    EXPECT_TRUE(directory) << directory.error().description();
    return *std::move(directory);
}

std::size_t entriesIn(const std::filesystem::path& path) {
    return static_cast<std::size_t>(
        std::distance(std::filesystem::directory_iterator(path), std::filesystem::directory_iterator()));
}

// Runs the function in a child process as nobody; answers what it answers.
template<class Function>
int asNobody(Function function) {
    constexpr uid_t kNobody = 65534;
    const pid_t child = ::fork();
    if (child == 0) ::_exit(::setgid(kNobody) == 0 && ::setuid(kNobody) == 0 ? function() : 99);
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace

TEST(OutputDirectory, MovesAFileIntoPlaceAndNeverReplaces) {
    const tests::ScratchDirectory scratch;
    OutputDirectory directory = opened(scratch.path());
    tests::writeFile(scratch / "taken", "mine");
    std::filesystem::create_symlink("nowhere", scratch / "dangling");
    std::filesystem::create_directory(scratch / "folder");
    auto output = directory.createFile();
    ASSERT_TRUE(output) << output.error().description();
    ASSERT_TRUE(output->write("new"));
    for (const auto* name : {"taken", "dangling", "folder"}) {
        EXPECT_TRUE(directory.isReachable(name));
        const auto moved = output->moveIntoPlace(name);
        ASSERT_FALSE(moved) << name;
        EXPECT_EQ(moved.error().code, 516);
        EXPECT_EQ(moved.error().underlyingError()->code, EEXIST);
    }
    ASSERT_TRUE(output->moveIntoPlace("free"));
    EXPECT_EQ(tests::readFile(scratch / "free"), "new");
    EXPECT_EQ(tests::readFile(scratch / "taken"), "mine");
    EXPECT_EQ(entriesIn(scratch.path()), 4U);
}

TEST(OutputDirectory, MovesAPackageIntoPlace) {
    const tests::ScratchDirectory scratch;
    OutputDirectory directory = opened(scratch.path());
    auto output = directory.createPackage();
    ASSERT_TRUE(output);
    ASSERT_TRUE(output->writeChildren(
        *FileWrapper::directory({{"TXT.rtf", FileWrapper::regularFile(Data(std::string("x")))}})));
    ASSERT_TRUE(output->moveIntoPlace("Note.qltnote"));
    EXPECT_EQ(tests::readFile(scratch / "Note.qltnote" / "TXT.rtf"), "x");
    EXPECT_EQ(entriesIn(scratch.path()), 1U);
}

TEST(OutputDirectory, FillsTheEmptyFilesOfAPackageAndRemovesTheOthers) {
    const tests::ScratchDirectory scratch;
    OutputDirectory directory = opened(scratch.path());
    auto output = directory.createPackage();
    ASSERT_TRUE(output);
    constexpr std::array<std::string_view, 7> kNames{"filled",  "absent", "directory", "as a file",
                                                     "private", "filled", "a/b"};
    output->createEmptyFiles(kNames); // the second of one name cannot be made, nor what is no name
    EXPECT_EQ(entriesIn(output->path()), 5U);
    const auto file = [](std::string_view text) { return FileWrapper::regularFile(Data(std::string(text))); };
    const auto ownersOnly = file("p");
    ownersOnly->setFileAttributes({.modificationDate = {}, .posixPermissions = 0600});
    const auto likeAFile = FileWrapper::directory();
    likeAFile->setFileAttributes({});
    ASSERT_TRUE(output->writeChildren(*FileWrapper::directory({
        {"directory", FileWrapper::directory({{"filled", file("inner")}})}, // while the outer one is still empty
        {"as a file", likeAFile},
        {"more", file("m")},
        {"filled", file("f")},
        {"private", ownersOnly},
    })));
    ASSERT_TRUE(output->moveIntoPlace("Note.qltnote"));
    const auto note = scratch / "Note.qltnote";
    EXPECT_EQ(entriesIn(note), 5U);
    EXPECT_TRUE(std::filesystem::is_directory(note / "as a file"));
    EXPECT_EQ(tests::readFile(note / "filled"), "f");
    EXPECT_EQ(tests::readFile(note / "more"), "m");
    EXPECT_EQ(tests::readFile(note / "directory" / "filled"), "inner");
    EXPECT_EQ(tests::readFile(note / "private"), "p");
    EXPECT_EQ(std::filesystem::status(note / "private").permissions(), std::filesystem::perms(0600));
    EXPECT_EQ(std::filesystem::status(note / "filled").permissions(),
              std::filesystem::status(note / "more").permissions());
}

// The package's own times and permissions are set when all is in it, by whoever makes it.
TEST(OutputDirectory, LeavesAPackagesOwnAttributesToItsMaker) {
    const tests::ScratchDirectory scratch;
    OutputDirectory directory = opened(scratch.path());
    auto output = directory.createPackage();
    ASSERT_TRUE(output);
    const auto dated = [](FileWrapper::Children children) {
        auto made = FileWrapper::directory(std::move(children));
        made->setFileAttributes({.modificationDate = Date::fromUnixTime(1000)});
        return made;
    };
    const auto old = std::filesystem::file_time_type(
        std::chrono::file_clock::from_sys(std::chrono::sys_seconds(std::chrono::seconds(1000))));
    ASSERT_TRUE(output->writeChildren(*dated({{"folder", dated({{"x", FileWrapper::regularFile(Data())}})}})));
    ASSERT_TRUE(output->moveIntoPlace("Note.qltnote"));
    EXPECT_EQ(std::filesystem::last_write_time(scratch / "Note.qltnote" / "folder"), old);
    EXPECT_NE(std::filesystem::last_write_time(scratch / "Note.qltnote"), old);
}

TEST(OutputDirectory, RefusesNamesThatLeaveTheDirectory) {
    const tests::ScratchDirectory scratch;
    std::filesystem::create_directory(scratch / "out");
    OutputDirectory directory = opened(scratch / "out");
    using namespace std::string_literals;
    for (const std::string& name : {"../x"s, "/tmp/x"s, "a/b"s, ".."s, "."s, ""s, "a\0b"s}) {
        auto output = directory.createFile();
        ASSERT_TRUE(output);
        EXPECT_FALSE(directory.isReachable(name));
        const auto moved = output->moveIntoPlace(name);
        ASSERT_FALSE(moved);
        EXPECT_EQ(moved.error().code, 514);
        EXPECT_FALSE(output->moveReplacing(name));
        EXPECT_FALSE(directory.openLogFile(name));
        EXPECT_FALSE(directory.createScratchDirectory(name));
    }
    EXPECT_EQ(entriesIn(scratch.path()), 1U);
    EXPECT_EQ(entriesIn(scratch / "out"), 0U);
}

TEST(OutputDirectory, ReportsANameThatIsTooLong) {
    const tests::ScratchDirectory scratch;
    OutputDirectory directory = opened(scratch.path());
    auto output = directory.createFile();
    const auto moved = output->moveIntoPlace(std::string(256, 'x'));
    ASSERT_FALSE(moved);
    EXPECT_EQ(moved.error().underlyingError()->code, ENAMETOOLONG);
    EXPECT_TRUE(output->moveIntoPlace(std::string(255, 'x')));
}

TEST(OutputDirectory, RemovesWhatWasNotMovedIntoPlace) {
    const tests::ScratchDirectory scratch;
    OutputDirectory directory = opened(scratch.path());
    {
        const auto file = directory.createFile();
        auto package = directory.createPackage();
        ASSERT_TRUE(file && package);
        ASSERT_TRUE(package->writeChildren(*FileWrapper::directory({{"d", FileWrapper::directory()}})));
        EXPECT_EQ(entriesIn(scratch.path()), 2U);
    }
    EXPECT_EQ(entriesIn(scratch.path()), 0U);
}

TEST(OutputDirectory, ReplacesAPackageInOneStepWhenAsked) {
    const tests::ScratchDirectory scratch;
    OutputDirectory directory = opened(scratch.path());
    for (const std::string text : {"first", "second"}) {
        auto output = directory.createPackage();
        ASSERT_TRUE(output->writeChildren(*FileWrapper::directory({{text, FileWrapper::regularFile(Data(text))}})));
        const auto moved = output->moveReplacing("Note.qltnote");
        ASSERT_TRUE(moved) << moved.error().description();
    }
    EXPECT_EQ(entriesIn(scratch.path()), 1U);
    EXPECT_EQ(entriesIn(scratch / "Note.qltnote"), 1U);
    EXPECT_EQ(tests::readFile(scratch / "Note.qltnote" / "second"), "second");
}

TEST(OutputDirectory, CountsUpToTheFirstFreeNumber) {
    const tests::ScratchDirectory scratch;
    OutputDirectory directory = opened(scratch.path());
    std::size_t candidates = 0;
    const auto candidate = [&](std::size_t n) {
        ++candidates;
        return fmt::format("Note {}.txt", n);
    };
    tests::writeFile(scratch / "Note 2.txt", "");
    for (const auto* expected : {"Note.txt", "Note 1.txt", "Note 3.txt"}) {
        EXPECT_EQ(directory.firstFreeName("Note.txt", candidate), expected);
        tests::writeFile(scratch / expected, "");
    }
    candidates = 0;
    for (int i = 0; i < 1000; ++i) tests::writeFile(scratch / directory.firstFreeName("Note.txt", candidate), "");
    EXPECT_LE(candidates, 2001U);
}

TEST(OutputDirectory, OverwritesOnlyARegularLogFile) {
    const tests::ScratchDirectory scratch;
    OutputDirectory directory = opened(scratch.path());
    tests::writeFile(scratch / "victim", "mine");
    tests::writeFile(scratch / "Export.log", "an older, longer log");
    std::filesystem::create_symlink("victim", scratch / "link.log");
    std::filesystem::create_directory(scratch / "folder.log");
    ASSERT_EQ(::mkfifo((scratch / "fifo.log").c_str(), 0600), 0);
    for (const auto* name : {"link.log", "folder.log", "fifo.log"}) EXPECT_FALSE(directory.openLogFile(name)) << name;
    EXPECT_EQ(tests::readFile(scratch / "victim"), "mine");
    const auto log = directory.openLogFile("Export.log");
    ASSERT_TRUE(log);
    ASSERT_TRUE(writeAll(log->get(), "new", "Export.log"));
    EXPECT_EQ(tests::readFile(scratch / "Export.log"), "new");
}

TEST(OutputDirectory, SweepsOnlyTheRemainsOfDeadProcesses) {
    const tests::ScratchDirectory scratch;
    OutputDirectory directory = opened(scratch.path());
    const std::string deadScratch = "11111111-2222-3333-4444-555555555555";
    const pid_t child = ::fork();
    if (child == 0) {
        auto package = directory.createPackage();
        auto file = directory.createFile();
        const auto work = directory.createScratchDirectory(deadScratch);
        ::_exit(package && file && work ? 0 : 1); // no destructors, as when killed
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_EQ(status, 0);
    const auto alive = directory.createPackage();
    const auto work = directory.createScratchDirectory("AAAAAAAA-2222-3333-4444-555555555555");
    std::filesystem::create_directory(scratch / "99999999-2222-3333-4444-555555555555"); // somebody else's
    EXPECT_EQ(entriesIn(scratch.path()), 6U);
    EXPECT_EQ(opened(scratch.path()).removeLeftovers(), 3U);
    EXPECT_EQ(entriesIn(scratch.path()), 3U);
    EXPECT_FALSE(directory.isReachable(deadScratch));
    EXPECT_EQ(opened(scratch.path()).removeLeftovers(), 0U);
}

TEST(OutputDirectory, MakesAndRemovesScratchDirectories) {
    const tests::ScratchDirectory scratch;
    OutputDirectory directory = opened(scratch.path());
    {
        const auto made = directory.createScratchDirectory("work");
        ASSERT_TRUE(made);
        tests::writeFile(scratch / "work" / "page.html", "x");
        const auto again = directory.createScratchDirectory("work");
        ASSERT_FALSE(again);
        EXPECT_EQ(again.error().code, 516);
    }
    EXPECT_TRUE(directory.remove("work"));
    EXPECT_EQ(entriesIn(scratch.path()), 0U);
    EXPECT_TRUE(directory.flush());
}

TEST(OutputDirectory, UsesAScratchDirectoryAgain) {
    const tests::ScratchDirectory scratch;
    {
        OutputDirectory directory = opened(scratch.path());
        auto first = directory.createScratchDirectory("first");
        ASSERT_TRUE(first);
        struct stat before{}, after{};
        ASSERT_EQ(::fstat(first->get(), &before), 0);
        tests::writeFile(scratch / "first" / "page.html", "x");
        std::filesystem::create_directory(scratch / "first" / "folder");
        tests::writeFile(scratch / "first" / "folder" / "file", "x");
        ASSERT_TRUE(directory.retireScratchDirectory("first", *std::move(first)));
        EXPECT_FALSE(directory.isReachable("first"));

        auto second = directory.createScratchDirectory("second");
        ASSERT_TRUE(second);
        ASSERT_EQ(::fstat(second->get(), &after), 0);
        EXPECT_EQ(before.st_ino, after.st_ino);
        EXPECT_EQ(entriesIn(scratch / "second"), 0U);
        EXPECT_EQ(entriesIn(scratch.path()), 1U);

        // While one is in use another is made, and of two that come back one is kept.
        auto third = directory.createScratchDirectory("third");
        ASSERT_TRUE(third);
        ASSERT_TRUE(directory.retireScratchDirectory("second", *std::move(second)));
        ASSERT_TRUE(directory.retireScratchDirectory("third", *std::move(third)));
        EXPECT_EQ(entriesIn(scratch.path()), 1U);
        EXPECT_EQ(opened(scratch.path()).removeLeftovers(), 0U); // it is locked

        // A name that is taken is reported, spare directory or not.
        tests::writeFile(scratch / "taken", "mine");
        const auto taken = directory.createScratchDirectory("taken");
        ASSERT_FALSE(taken);
        EXPECT_EQ(taken.error().code, 516);
        EXPECT_EQ(tests::readFile(scratch / "taken"), "mine");

        auto last = directory.createScratchDirectory("last");
        ASSERT_TRUE(last);
        ASSERT_TRUE(directory.retireScratchDirectory("last", *std::move(last)));
        EXPECT_EQ(entriesIn(scratch.path()), 2U);
    }
    EXPECT_EQ(entriesIn(scratch.path()), 1U);
}

TEST(OutputDirectory, LeavesAloneWhatTookTheNameOfAScratchDirectory) {
    const tests::ScratchDirectory scratch;
    OutputDirectory directory = opened(scratch.path());
    auto made = directory.createScratchDirectory("work");
    ASSERT_TRUE(made);
    std::filesystem::remove(scratch / "work");
    ASSERT_TRUE(directory.retireScratchDirectory("work", *std::move(made)));
    EXPECT_EQ(entriesIn(scratch.path()), 0U);
    EXPECT_TRUE(directory.createScratchDirectory("next"));
}

TEST(OutputDirectory, ReportsWhyItCannotWrite) {
    const auto missing = OutputDirectory::openURL(URL::fileURLWithPath("/nowhere/at/all", true));
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error().code, 4);
    const tests::ScratchDirectory scratch;
    tests::writeFile(scratch / "file", "");
    EXPECT_FALSE(OutputDirectory::openURL(URL::fileURLWithPath((scratch / "file").string())));
    OutputDirectory directory = opened(scratch.path());
    rlimit saved{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &saved), 0);
    const rlimit none{0, saved.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    const auto output = directory.createFile();
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &saved), 0);
    ASSERT_FALSE(output);
    EXPECT_EQ(output.error().underlyingError()->code, EMFILE);
}

TEST(OutputDirectory, ReportsAMissingPermission) {
    if (::getuid() != 0) GTEST_SKIP() << "needs root to become nobody";
    const tests::ScratchDirectory scratch;
    ASSERT_EQ(::chmod(scratch.path().c_str(), 0755), 0);
    OutputDirectory directory = opened(scratch.path());
    EXPECT_EQ(asNobody([&] {
                  const auto output = directory.createFile();
                  return !output && output.error().code == 513 && output.error().underlyingError()->code == EACCES ? 0
                                                                                                                   : 1;
              }),
              0);
}

TEST(MoveIntoPlace, NeverReplacesWithoutTheFlagsEither) {
    const tests::ScratchDirectory scratch;
    const OutputDirectory directory = opened(scratch.path());
    const int descriptor = directory.descriptor();
    for (const EntryKind kind : {EntryKind::file, EntryKind::directory}) {
        if (kind == EntryKind::file) {
            tests::writeFile(scratch / "new", "new");
        } else {
            std::filesystem::create_directory(scratch / "new");
        }
        tests::writeFile(scratch / "taken", "mine");
        std::filesystem::create_directories(scratch / "folder");
        EXPECT_EQ(moveWithoutReplacing(descriptor, "new", "taken", kind, RenameFlags::without), EEXIST);
        EXPECT_EQ(moveWithoutReplacing(descriptor, "new", "folder", kind, RenameFlags::without), EEXIST);
        EXPECT_EQ(moveWithoutReplacing(descriptor, "new", "free", kind, RenameFlags::without), 0);
        EXPECT_FALSE(directory.isReachable("new"));
        EXPECT_TRUE(directory.isReachable("free"));
        EXPECT_EQ(tests::readFile(scratch / "taken"), "mine");
        std::filesystem::remove_all(scratch / "free");
        EXPECT_EQ(moveWithoutReplacing(descriptor, "new", "free", kind, RenameFlags::without), ENOENT);
        EXPECT_FALSE(directory.isReachable("free"));
    }
}

TEST(MoveIntoPlace, ExchangesWithAndWithoutTheFlags) {
    for (const RenameFlags flags : {RenameFlags::tryThem, RenameFlags::without}) {
        const tests::ScratchDirectory scratch;
        const OutputDirectory directory = opened(scratch.path());
        std::filesystem::create_directory(scratch / "new");
        tests::writeFile(scratch / "new" / "a", "");
        EXPECT_EQ(exchange(directory.descriptor(), "new", "old", flags), ENOENT);
        std::filesystem::create_directory(scratch / "old");
        tests::writeFile(scratch / "old" / "b", "");
        EXPECT_EQ(exchange(directory.descriptor(), "new", "old", flags), 0);
        EXPECT_TRUE(std::filesystem::exists(scratch / "old" / "a"));
        EXPECT_TRUE(std::filesystem::exists(scratch / "new" / "b"));
        EXPECT_EQ(entriesIn(scratch.path()), 2U);
    }
}
