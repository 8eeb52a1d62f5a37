#include "platform/files/FileWrapper.h"

#include <sys/stat.h>

#include <gtest/gtest.h>

#include "platform/foundation/URL.h"
#include "tests/support/ScratchDirectory.h"

using namespace platform;
using namespace std::string_literals;

namespace {

std::shared_ptr<FileWrapper> file(std::string bytes, std::string preferredName = {}) {
    auto wrapper = FileWrapper::regularFile(Data(std::move(bytes)));
    wrapper->setPreferredFilename(std::move(preferredName));
    return wrapper;
}

std::string number(std::uint32_t value) {
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(value >> shift & 0xFF);
    return bytes;
}

std::string blob(const std::string& bytes) {
    return number(static_cast<std::uint32_t>(bytes.size())) + bytes;
}

std::string block(const std::string& bytes) {
    return number(1) + blob(bytes);
}

struct NamedBlock {
    std::string name, block;
};

std::string directory(const std::vector<NamedBlock>& blocks) {
    std::string names, sizes, bodies;
    for (const NamedBlock& each : blocks) {
        names += blob(each.name);
        sizes += number(static_cast<std::uint32_t>(each.block.size()));
        bodies += each.block;
    }
    return number(static_cast<std::uint32_t>(blocks.size())) + names + sizes + bodies;
}

std::string container(const std::vector<NamedBlock>& blocks) {
    return "rtfd" + number(0) + number(3) + directory(blocks);
}

std::string attributeEntry(const std::string& name, std::uint32_t time, std::uint32_t mode, std::uint32_t third,
                           std::uint32_t fourth) {
    return blob(name) + blob(number(time) + number(mode) + number(third) + number(fourth));
}

std::string errorOf(std::string_view bytes) {
    const auto result = FileWrapper::fromSerializedRepresentation(bytes);
    if (result) return "no error";
    EXPECT_EQ(result.error().code, 4864);
    EXPECT_EQ(result.error().domain, kCocoaErrorDomain);
    return result.error().localizedDescription();
}

} // namespace

TEST(FileWrapper, NumbersChildrenOfTheSameName) {
    auto package = FileWrapper::directory();
    EXPECT_EQ(package->addFileWrapper(file("1", "a.png")), "a.png");
    EXPECT_EQ(package->addFileWrapper(file("2", "a.png")), "1__#$!@%!#__a.png");
    EXPECT_EQ(package->addFileWrapper(file("3", "a.png")), "2__#$!@%!#__a.png");
    EXPECT_EQ(package->childNamed("1__#$!@%!#__a.png")->preferredFilename(), "a.png");
    package->removeFileWrapper("1__#$!@%!#__a.png");
    EXPECT_EQ(package->addFileWrapper(file("4", "a.png")), "1__#$!@%!#__a.png");
    EXPECT_EQ(package->childNamed("nothing"), nullptr);
}

TEST(FileWrapper, ReplacesAChildOfTheSameKeyInItsPlace) {
    auto package = FileWrapper::directory();
    package->addFileWrapper(file("old", "NoteText"));
    package->addFileWrapper(file("other", "b"));
    package->setFileWrapper("NoteText", file("new", "else"));
    ASSERT_EQ(package->fileWrappers().size(), 2U);
    EXPECT_EQ(package->fileWrappers()[0].second->regularFileContents().bytes(), "new");
    EXPECT_EQ(package->fileWrappers()[0].second->preferredFilename(), "NoteText");
}

TEST(FileWrapper, FindsTheChildrenBehindARemovedOne) {
    auto package = FileWrapper::directory({{"a", file("1")}, {"b", file("2")}, {"c", file("3")}});
    package->removeFileWrapper("a");
    package->removeFileWrapper("nothing");
    EXPECT_EQ(package->childNamed("a"), nullptr);
    EXPECT_EQ(package->childNamed("c")->regularFileContents().bytes(), "3");
}

TEST(FileWrapper, AddsThousandsOfTheSameNameInLinearTime) {
    auto package = FileWrapper::directory();
    for (int i = 0; i < 20000; ++i) package->addFileWrapper(file({}, "image.png"));
    EXPECT_EQ(package->fileWrappers().back().first, "19999__#$!@%!#__image.png");
}

TEST(FileWrapper, SerializesAPlaceholderInFourRecords) {
    auto placeholder = file({}, "photo.png");
    placeholder->setFileAttributes({{}, 0666, false});
    const std::string bytes = placeholder->serializedRepresentation();
    EXPECT_EQ(bytes.size(), 173U);
    EXPECT_EQ(bytes, container({{"..", block({})},
                                {"__@PreferredName@__", block("photo.png")},
                                {"__@UTF8PreferredName@__", block("photo.png")},
                                {".", block(number(1) + attributeEntry("..", 0, 0666, 2, 1))}}));
}

TEST(FileWrapper, SerializesADirectoryWithItsChildrensAttributes) {
    auto text = file("{\\rtf1}");
    text->setFileAttributes({Date::fromUnixTime(1700000000.75), 0666, false});
    const std::string bytes = FileWrapper::directory({{"TXT.rtf", text}})->serializedRepresentation();
    EXPECT_EQ(bytes, container({{"TXT.rtf", block("{\\rtf1}")},
                                {".", block(number(1) + attributeEntry("TXT.rtf", 1700000000, 0666, 0, 0))}}));
}

TEST(FileWrapper, KeepsOnlyTheNamesOfAnEmptyNamedDirectory) {
    auto empty = FileWrapper::directory();
    empty->setPreferredFilename("ä");
    EXPECT_EQ(empty->serializedRepresentation(),
              container({{"__@PreferredName@__", block("?")}, {"__@UTF8PreferredName@__", block("ä")}}));
}

TEST(FileWrapper, ReadsBackWhatItSerialized) {
    auto inner = FileWrapper::directory({{"deep.txt", file("deep")}, {"empty", FileWrapper::directory()}});
    auto outer = FileWrapper::directory({{"TXT.rtf", file("text")}, {"folder", inner}, {"é😀", file({})}});
    outer->setPreferredFilename("Note é.rtfd");
    const std::string bytes = outer->serializedRepresentation();
    const auto read = FileWrapper::fromSerializedRepresentation(bytes);
    ASSERT_TRUE(read) << read.error().description();
    EXPECT_EQ((*read)->preferredFilename(), "Note é.rtfd");
    EXPECT_EQ((*read)->childNamed("folder")->childNamed("deep.txt")->regularFileContents().bytes(), "deep");
    EXPECT_TRUE((*read)->childNamed("folder")->childNamed("empty")->isDirectory());
    EXPECT_EQ((*read)->childNamed("é😀")->preferredFilename(), "é😀");
    EXPECT_EQ((*read)->serializedRepresentation(), bytes);
}

TEST(FileWrapper, TakesTheUTF8NameBeforeTheASCIIOne) {
    const std::string bytes = container({{"..", block("x")},
                                         {"__@PreferredName@__", block("a?")},
                                         {"__@UTF8PreferredName@__", block("aé")},
                                         {".", block(number(1) + attributeEntry("..", 7, 0600, 2, 1))}});
    const auto read = FileWrapper::fromSerializedRepresentation(bytes);
    ASSERT_TRUE(read);
    EXPECT_FALSE((*read)->isDirectory());
    EXPECT_EQ((*read)->preferredFilename(), "aé");
    EXPECT_EQ((*read)->fileAttributes(), (FileAttributes{Date::fromUnixTime(7), 0600, false}));
    const auto old = FileWrapper::fromSerializedRepresentation(
        container({{"..", block("x")}, {"__@PreferredName@__", block("a?")}}));
    ASSERT_TRUE(old);
    EXPECT_EQ((*old)->preferredFilename(), "a?");
}

TEST(FileWrapper, ReadsTheAlignedFormOfLargeData) {
    const std::string aligned = number(1) + number(0x80000000) + number(4) + number(3) + "\0\0\0"s + "DATA";
    const auto read = FileWrapper::fromSerializedRepresentation(container({{"big.bin", aligned}}));
    ASSERT_TRUE(read) << read.error().description();
    EXPECT_EQ((*read)->childNamed("big.bin")->regularFileContents().bytes(), "DATA");
}

TEST(FileWrapper, SaysWhereASerializedFormIsDamaged) {
    const std::string good = container({{"a", block("x")}});
    EXPECT_NE(errorOf("").find("does not begin with"), std::string::npos);
    EXPECT_NE(errorOf("rtfd" + number(1) + number(3)).find("version 1"), std::string::npos);
    EXPECT_NE(errorOf("rtfd" + number(0) + number(3) + number(0xFFFFFFFF)).find("records pass the end"),
              std::string::npos);
    EXPECT_NE(errorOf(container({{"a", block("x")}, {"a", block("y")}})).find("occurs twice"), std::string::npos);
    EXPECT_NE(errorOf(container({{"a", number(2) + number(0)}})).find("unknown type"), std::string::npos);
    EXPECT_NE(errorOf(container({{"a", number(1) + number(9) + "x"}})).find("bytes pass the end"), std::string::npos);
    EXPECT_NE(errorOf(good + "x").find("another size"), std::string::npos);
    EXPECT_NE(errorOf(container({{"..", block({})}, {".", block(number(1) + blob("..") + blob("abc"))}})).find("short"),
              std::string::npos);
    for (std::size_t length = 0; length < good.size(); ++length)
        EXPECT_NE(errorOf(good.substr(0, length)), "no error") << length;
}

TEST(FileWrapper, RefusesDirectoriesNestedWithoutEnd) {
    std::string bytes = directory({});
    for (int i = 0; i < 63; ++i) bytes = directory({{"d", number(3) + bytes}});
    EXPECT_TRUE(FileWrapper::fromSerializedRepresentation("rtfd" + number(0) + number(3) + bytes));
    bytes = directory({{"d", number(3) + bytes}});
    EXPECT_NE(errorOf("rtfd" + number(0) + number(3) + bytes).find("directories deep"), std::string::npos);
}

TEST(FileWrapperFiles, WritesAndReadsATree) {
    const tests::ScratchDirectory scratch;
    auto text = file("text");
    text->setFileAttributes({Date::fromUnixTime(1000.5), 0600, false});
    auto package = FileWrapper::directory({{"TXT.rtf", text}, {"folder", FileWrapper::directory({{"x", file("y")}})}});
    const URL url = URL::fileURLWithPath((scratch / "Note é.rtfd").string(), true);
    const auto written = package->writeToURL(url);
    ASSERT_TRUE(written) << written.error().description();
    const auto read = FileWrapper::readingURL(url);
    ASSERT_TRUE(read) << read.error().description();
    EXPECT_EQ((*read)->preferredFilename(), "Note é.rtfd");
    EXPECT_EQ((*read)->filename(), "Note é.rtfd");
    const auto child = (*read)->childNamed("TXT.rtf");
    ASSERT_NE(child, nullptr);
    EXPECT_EQ(child->regularFileContents().bytes(), "text");
    EXPECT_EQ(child->fileAttributes(), text->fileAttributes());
    EXPECT_EQ((*read)->childNamed("folder")->childNamed("x")->regularFileContents().bytes(), "y");
}

TEST(FileWrapperFiles, RefusesToReplaceWhatExists) {
    const tests::ScratchDirectory scratch;
    tests::writeFile(scratch / "a", "mine");
    const auto written = file("other")->writeToURL(URL::fileURLWithPath((scratch / "a").string()));
    ASSERT_FALSE(written);
    EXPECT_EQ(written.error().code, 516);
    EXPECT_EQ(tests::readFile(scratch / "a"), "mine");
}

TEST(FileWrapperFiles, LeavesNothingBehindWhenAChildCannotBeWritten) {
    const tests::ScratchDirectory scratch;
    for (const std::string& name : {"a/b"s, ".."s, "."s, ""s, "a\0b"s}) {
        auto package = FileWrapper::directory({{"good", file("1")}, {name, file("2")}});
        const auto written = package->writeToURL(URL::fileURLWithPath((scratch / "package").string(), true));
        ASSERT_FALSE(written) << name;
        EXPECT_EQ(written.error().code, 514);
        EXPECT_TRUE(std::filesystem::is_empty(scratch.path())) << name;
    }
}

TEST(FileWrapperFiles, RefusesLinksAndFifosInsideADirectory) {
    const tests::ScratchDirectory scratch;
    const auto directory = scratch / "a";
    const auto refusal = [&] {
        const auto read = FileWrapper::readingURL(URL::fileURLWithPath(directory.string(), true));
        return read ? "(none)" : read.error().localizedDescription();
    };
    std::filesystem::create_directory(directory);
    std::filesystem::create_symlink("/etc/passwd", directory / "link");
    EXPECT_EQ(refusal(), "Cannot read “" + (directory / "link").string() + "”: it is a symbolic link.");
    std::filesystem::remove(directory / "link");
    ASSERT_EQ(::mkfifo((directory / "fifo").c_str(), 0600), 0);
    EXPECT_EQ(refusal(), "Cannot read “" + (directory / "fifo").string() + "”: it is neither a file nor a directory.");
    std::filesystem::remove(directory / "fifo");
    EXPECT_EQ(refusal(), "(none)");
}

TEST(FileWrapperFiles, RefusesDirectoriesNestedWithoutEnd) {
    const tests::ScratchDirectory scratch;
    std::filesystem::path deepest = scratch / "a";
    std::shared_ptr<FileWrapper> tree = FileWrapper::directory();
    for (int depth = 0; depth < 63; ++depth) {
        deepest /= "d";
        tree = FileWrapper::directory({{"d", tree}});
    }
    std::filesystem::create_directories(deepest);
    const URL top = URL::fileURLWithPath((scratch / "a").string(), true);
    EXPECT_TRUE(FileWrapper::readingURL(top)) << "64 directories";
    EXPECT_TRUE(tree->writeToURL(URL::fileURLWithPath((scratch / "b").string(), true)));

    std::filesystem::create_directory(deepest / "d");
    const auto read = FileWrapper::readingURL(top);
    ASSERT_FALSE(read);
    EXPECT_EQ(read.error().localizedDescription(),
              "Cannot read “" + (deepest / "d").string() + "”: directories are nested deeper than 64.");
    const auto written =
        FileWrapper::directory({{"d", tree}})->writeToURL(URL::fileURLWithPath((scratch / "c").string(), true));
    ASSERT_FALSE(written);
    EXPECT_TRUE(written.error().localizedDescription().ends_with("”: directories are nested deeper than 64."));
    EXPECT_FALSE(std::filesystem::exists(scratch / "c"));
}

TEST(FileWrapperFiles, SaysThatAMissingFileIsMissing) {
    const auto read = FileWrapper::readingURL(URL::fileURLWithPath("/nowhere/at all"));
    ASSERT_FALSE(read);
    EXPECT_EQ(read.error().code, 260);
}
