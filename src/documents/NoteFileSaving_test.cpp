#include <fstream>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "documents/QLTNoteFile.h"
#include "platform/files/ResourceValues.h"
#include "platform/foundation/URL.h"
#include "tests/support/NoteFileFixture.h"

namespace quillet {
namespace {

using platform::ResourceValues;
using platform::URL;

class NoteFileSaving : public NoteFileFixture {
  protected:
    URL noteURL() const { return URL::fileURLWithPath((scratch_ / "folder" / "Note.qltnote").string(), true); }
    void SetUp() override {
        NoteFileFixture::SetUp();
        std::filesystem::create_directory(scratch_ / "folder");
    }
    std::vector<std::string> folder() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(scratch_ / "folder"))
            names.push_back(entry.path().filename().string());
        return names;
    }
    static QLTNoteFile note(std::u16string_view text) {
        QLTNoteFile made;
        made.setNoteText(plain(text));
        return made;
    }
    ResourceValues values() const {
        const auto read = platform::resourceValuesOfItemAtURL(noteURL());
        EXPECT_TRUE(read) << read.error().description();
        return read.value_or(ResourceValues());
    }
};

TEST_F(NoteFileSaving, WritesAPackageThatReadsBack) {
    const auto saved = note(u"first").saveToFileURL(noteURL());
    ASSERT_TRUE(saved) << saved.error().description();
    const auto read = QLTNoteFile::initWithFileURL(noteURL());
    ASSERT_TRUE(read) << read.error().description();
    EXPECT_EQ((*read)->noteText().string(), u"first");
    EXPECT_EQ(values().isPackage, true);
    EXPECT_NE(values().hasHiddenExtension, true);
}

TEST_F(NoteFileSaving, ReplacesAPackageAndKeepsItsFlagAndCreationDate) {
    ASSERT_TRUE(note(u"first").saveToFileURL(noteURL()));
    tests::writeFile(scratch_ / "folder" / "Note.qltnote" / "old.png", "old");
    ResourceValues set;
    set.hasHiddenExtension = true;
    set.creationDate = platform::Date::fromUnixTime(1'000'000'000);
    ASSERT_TRUE(platform::setResourceValuesOfItemAtURL(set, noteURL()));

    const auto saved = note(u"second").saveToFileURL(noteURL());
    ASSERT_TRUE(saved) << saved.error().description();
    EXPECT_EQ((*QLTNoteFile::initWithFileURL(noteURL()))->noteText().string(), u"second");
    EXPECT_EQ(values().hasHiddenExtension, true);
    EXPECT_EQ(values().creationDate, set.creationDate);
    EXPECT_EQ(values().isPackage, true);
    EXPECT_FALSE(std::filesystem::exists(scratch_ / "folder" / "Note.qltnote" / "old.png"));
    EXPECT_EQ(folder(), std::vector<std::string>{"Note.qltnote"}) << "nothing else is left behind";
}

TEST_F(NoteFileSaving, ReplacesAPlainFileOfThatName) {
    tests::writeFile(scratch_ / "folder" / "Note.qltnote", "a file");
    ASSERT_TRUE(note(u"text").saveToFileURL(noteURL()));
    EXPECT_TRUE(std::filesystem::is_directory(scratch_ / "folder" / "Note.qltnote"));
}

TEST_F(NoteFileSaving, AFailureLeavesTheOldPackageAsItWas) {
    ASSERT_TRUE(note(u"first").saveToFileURL(noteURL()));
    // A name inside the attachment's directory that no file can have makes writing fail half way.
    const auto folderWrapper = platform::FileWrapper::directory();
    folderWrapper->setFileWrapper(std::string(300, 'x'), platform::FileWrapper::regularFile(platform::Data("x")));
    folderWrapper->setPreferredFilename("Folder");
    QLTNoteFile second;
    second.setNoteText(platform::AttributedString::withAttachment(std::make_shared<QLTFileAttachment>(folderWrapper)));
    const auto saved = second.saveToFileURL(noteURL());
    ASSERT_FALSE(saved);
    EXPECT_EQ((*QLTNoteFile::initWithFileURL(noteURL()))->noteText().string(), u"first");
    EXPECT_EQ(folder(), std::vector<std::string>{"Note.qltnote"});
}

TEST_F(NoteFileSaving, AMissingFolderIsTheFileSystemsError) {
    const auto saved = note(u"text").saveToFileURL(URL::fileURLWithPath((scratch_ / "none" / "Note.qltnote").string()));
    ASSERT_FALSE(saved);
    EXPECT_EQ(saved.error().domain, platform::kCocoaErrorDomain);
    EXPECT_EQ(saved.error().code, 4);
}

} // namespace
} // namespace quillet
