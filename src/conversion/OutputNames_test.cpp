// Free names: numbering within what a file system takes.
#include "conversion/OutputNames.h"

#include <optional>

#include "platform/files/OutputDirectory.h"
#include "tests/support/NoteFixture.h"

namespace quillet {
namespace {

class OutputNames : public NoteFixture {
  protected:
    void SetUp() override {
        NoteFixture::SetUp();
        directory_.emplace(platform::OutputDirectory::openURL(destinationURL()).value());
    }
    // A free name, taken at once.
    std::string take(std::u16string_view name) {
        std::string free = freeNameInDirectory(*directory_, name);
        tests::writeFile(destination_ / free, "");
        return free;
    }
    std::optional<platform::OutputDirectory> directory_;
};

TEST_F(OutputNames, NumbersTakenNames) {
    const struct {
        std::u16string name;
        std::string first, second, third;
    } rows[] = {
        {u"Note.qltnote", "Note.qltnote", "Note 1.qltnote", "Note 2.qltnote"},
        {u"plain", "plain", "plain 1", "plain 2"},
        {u"a.tar.gz", "a.tar.gz", "a.tar 1.gz", "a.tar 2.gz"},
        {u".hidden", ".hidden", "-hidden 1", "-hidden 2"}, // a numbered name is sanitized, a free one is not
        {u"…a…", "…a…", "a… 1", "a… 2"},
        {u"Vol. 2", "Vol. 2", "Vol 1. 2", "Vol 2. 2"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(take(row.name), row.first);
        EXPECT_EQ(take(row.name), row.second);
        EXPECT_EQ(take(row.name), row.third);
    }
}

TEST_F(OutputNames, CutsToWhatAFileSystemTakes) {
    const struct {
        std::u16string unit;
        std::size_t bytes;
    } rows[] = {{u"a", 1}, {u"ü", 2}, {u"京", 3}, {u"🍵", 4}};
    for (const auto& row : rows) {
        for (const std::size_t count : {254U, 255U, 256U, 300U, 5000U}) {
            std::u16string name;
            while (name.size() < count) name += row.unit;
            for (const std::u16string extension : {u"", u".qltnote"}) {
                const std::string first = take(name + extension);
                const std::string second = take(name + extension);
                EXPECT_LE(first.size(), 255U);
                EXPECT_LE(second.size(), 255U);
                EXPECT_NE(first, second);
                EXPECT_TRUE(first.ends_with(platform::utf8FromUTF16(extension))) << first;
                EXPECT_TRUE(second.ends_with(platform::utf8FromUTF16(extension))) << second;
                EXPECT_EQ(platform::utf8FromUTF16(platform::utf16FromUTF8(second)), second);
                std::filesystem::remove(destination_ / first);
                std::filesystem::remove(destination_ / second);
            }
        }
    }
}

TEST_F(OutputNames, TakesALinkToNothingForTaken) {
    std::filesystem::create_symlink("nothing", destination_ / "a.txt");
    EXPECT_EQ(take(u"a.txt"), "a 1.txt");
}

TEST_F(OutputNames, NumbersManyInLinearTime) {
    for (int index = 0; index < 2'000; ++index) take(u"same.txt");
    EXPECT_EQ(freeNameInDirectory(*directory_, u"same.txt"), "same 2000.txt");
}

TEST_F(OutputNames, MakesOneComponentOfAnyName) {
    const struct {
        std::u16string name, expected;
    } rows[] = {
        {u"a.txt", u"a.txt"},
        {u"a:b~c", u"a:b~c"}, // one component as it stands
        {u".a", u".a"},
        {u"a/b", u"a-b"},
        {u"/", u"-"},
        {u".", u"-"},
        {u"..", u"--"},
        {u"../x", u"---x"},
        {std::u16string(u"a\0b", 3), u"ab"},
    };
    for (const auto& row : rows) EXPECT_EQ(namedAsOneComponent(row.name), row.expected);
}

} // namespace
} // namespace quillet
