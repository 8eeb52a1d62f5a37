// Packages that are not as they were written: recovery from the RTFD part, the errors where there is none, and files
// cut short or changed at every place.
#include <gtest/gtest.h>

#include "documents/QLTNoteFile.h"
#include "platform/base/SystemLog.h"
#include "platform/rtf/RTFWriter.h"
#include "richtext/highlights/Highlights.h"
#include "tests/support/NoteFileFixture.h"

namespace quillet {
namespace {

using platform::AttributedString;
using platform::Color;
using platform::Data;
using platform::Dictionary;
using platform::FileWrapper;
using platform::Result;
using platform::URL;
using platform::Value;

class DamagedPackages : public NoteFileFixture {
  protected:
    URL noteURL() const { return URL::fileURLWithPath((scratch_ / "Note.qltnote").string(), true); }

    Result<std::unique_ptr<QLTNoteFile>> readFromDisk(const FileWrapper& package) {
        std::filesystem::remove_all(scratch_ / "Note.qltnote");
        EXPECT_TRUE(package.writeToURL(noteURL()));
        log_.clear();
        return QLTNoteFile::initWithFileURL(noteURL());
    }
    static void put(FileWrapper& package, std::string_view name, std::string_view contents) {
        package.setFileWrapper(std::string(name), FileWrapper::regularFile(Data(std::string(contents))));
    }
    static std::shared_ptr<FileWrapper> sample() {
        return packageOf(joined(plain(u"Hello "), attached<QLTFileAttachment>("a.zip", "zipped"), plain(u" and "),
                                attached("p.png", "pixels"), plain(u"\n"), checkbox(true, 0), plain(u"done\n")));
    }
    static std::shared_ptr<FileWrapper> copyOf(const FileWrapper& package) {
        return FileWrapper::directory(package.fileWrappers());
    }
};

TEST_F(DamagedPackages, AnUnreadableTextIsRecoveredFromRTFD) {
    const auto package = sample();
    put(*package, kNoteTextEntry, "no archive");
    const auto wrapper = QLTNoteFile::initWithFileWrapper(*package);
    ASSERT_FALSE(wrapper);
    EXPECT_EQ(wrapper.error().domain, QLTNoteFileErrorDomain);
    EXPECT_EQ(wrapper.error().code, 10002);
    EXPECT_EQ(wrapper.error().localizedDescription(), "The note file could not be read.");

    const auto note = readFromDisk(*package);
    ASSERT_TRUE(note) << note.error().description();
    EXPECT_EQ((*note)->noteText().string(), u"Hello \uFFFC and \uFFFC\n\t✓\tdone\n");
    EXPECT_EQ(attachmentAt((*note)->noteText(), 6)->className(), "QLTFileAttachment");
    EXPECT_EQ(attachmentAt((*note)->noteText(), 12)->className(), "NSTextAttachment") << "images stay as they are";
    ASSERT_EQ(log_.size(), 2u);
    EXPECT_TRUE(log_[0].starts_with("Could not decode note text: ")) << log_[0];
    EXPECT_EQ(log_[1], "Attempting to recover note from RTFD: " + noteURL().absoluteString());
}

TEST_F(DamagedPackages, AMissingTextIsRecoveredToo) {
    const auto package = sample();
    package->removeFileWrapper(kNoteTextEntry);
    const auto note = readFromDisk(*package);
    ASSERT_TRUE(note) << note.error().description();
    EXPECT_TRUE((*note)->noteText().string().starts_with(u"Hello "));
    ASSERT_EQ(log_.size(), 1u);
    EXPECT_TRUE(log_[0].starts_with("Attempting to recover note from RTFD: "));
}

TEST_F(DamagedPackages, RecoveryKeepsTheAttributesAndMakesColorsAndHighlightsTheNotesOwn) {
    QLTNoteFile written;
    written.setShowSmallImages(true);
    written.setBackgroundColor(Color::deviceRGB(0, 1, 0));
    written.setNoteText(joined(plain(u"plain "), with(QLTHighlightTextAttributeName, std::int64_t{4}, u"marked")));
    const auto package = packageOf(written);
    package->removeFileWrapper(kNoteTextEntry);
    const auto note = readFromDisk(*package);
    ASSERT_TRUE(note);
    EXPECT_TRUE((*note)->showSmallImages());
    EXPECT_TRUE(isEqualToColorQLTVersion(*(*note)->backgroundColor(), Color::deviceRGB(0, 1, 0)));
    const AttributedString& text = (*note)->noteText();
    EXPECT_EQ(*text.attributesAt(0).find<Color>(platform::kForegroundColorAttributeName), Color::textColor());
    const auto* type = text.attributeAt(QLTHighlightTextAttributeName, 6);
    ASSERT_TRUE(type);
    EXPECT_EQ(platform::integerValue(*type), 4);
}

TEST_F(DamagedPackages, WithoutAReadableRTFDPartRecoveryFails) {
    const auto package = sample();
    put(*package, kNoteTextEntry, "no archive");
    put(*package, kRTFDTextEntry, "no RTF");
    const auto note = readFromDisk(*package);
    ASSERT_FALSE(note);
    EXPECT_EQ(note.error().domain, QLTNoteFileErrorDomain);
    EXPECT_EQ(note.error().code, 10001);
    EXPECT_EQ(note.error().localizedDescription(), "File is not a valid note file.");
    EXPECT_TRUE(note.error().underlyingError());
}

TEST_F(DamagedPackages, WithoutAnRTFDPartTheErrorIsTheArchives) {
    auto package = FileWrapper::directory();
    put(*package, kNoteTextEntry, "no archive");
    const auto undecodable = readFromDisk(*package);
    ASSERT_FALSE(undecodable);
    EXPECT_NE(undecodable.error().domain, QLTNoteFileErrorDomain);
    EXPECT_EQ(log_.size(), 1u);

    const auto empty = readFromDisk(*FileWrapper::directory());
    ASSERT_FALSE(empty);
    EXPECT_EQ(empty.error().code, 10001);
    EXPECT_TRUE(log_.empty());
}

TEST_F(DamagedPackages, AFileThatIsNotThereIsTheFileSystemsError) {
    const auto note = QLTNoteFile::initWithFileURL(noteURL());
    ASSERT_FALSE(note);
    EXPECT_EQ(note.error().domain, platform::kCocoaErrorDomain);
    EXPECT_EQ(note.error().code, 260);
}

TEST_F(DamagedPackages, APlainFileIsNoPackage) {
    tests::writeFile(scratch_ / "Note.qltnote", "text");
    const auto note = QLTNoteFile::initWithFileURL(URL::fileURLWithPath((scratch_ / "Note.qltnote").string()));
    ASSERT_FALSE(note);
    EXPECT_EQ(note.error().localizedDescription(), "Note file is not a file package.");
}

// A directory where a file should be, for each part in turn.
TEST_F(DamagedPackages, DirectoriesInPlaceOfFilesAreNoCrash) {
    struct Case {
        std::string_view entry;
        bool hasRTFD;
        std::optional<std::int64_t> error;
    };
    const Case cases[] = {
        {kNoteTextEntry, true, std::nullopt}, // recovered
        {kNoteTextEntry, false, 3840},        {kNoteAttributesEntry, true, std::nullopt},
        {kRTFDTextEntry, true, std::nullopt}, {"a.zip", true, std::nullopt},
    };
    for (const Case& each : cases) {
        const auto package = sample();
        if (!each.hasRTFD) package->removeFileWrapper(kRTFDTextEntry);
        package->setFileWrapper(std::string(each.entry), FileWrapper::directory({{"inside", file("inside", "x")}}));
        const auto note = readFromDisk(*package);
        ASSERT_EQ(note.has_value(), !each.error) << each.entry;
        if (!note) {
            EXPECT_EQ(note.error().code, *each.error) << each.entry;
        } else {
            EXPECT_TRUE((*note)->noteText().string().starts_with(u"Hello ")) << each.entry;
        }
    }
}

// Every way in which the parts can be missing.
TEST_F(DamagedPackages, MissingEntriesGiveTheTextOrAnError) {
    const auto whole = sample();
    const std::vector<std::string> names = entryNames(*whole);
    for (std::size_t missing = 0; missing < std::size_t{1} << names.size(); ++missing) {
        const auto package = copyOf(*whole);
        for (std::size_t i = 0; i < names.size(); ++i)
            if (missing >> i & 1) package->removeFileWrapper(names[i]);
        const bool hasText = package->childNamed(kNoteTextEntry) || package->childNamed(kRTFDTextEntry);
        const auto note = readFromDisk(*package);
        ASSERT_EQ(note.has_value(), hasText) << missing;
        if (note) {
            EXPECT_TRUE((*note)->noteText().string().starts_with(u"Hello ")) << missing;
        }
    }
}

// What comes of a damaged archive: a text, or the one error that asks for recovery; recovery itself succeeds.
TEST_F(DamagedPackages, ArchivesCutShortAreRecovered) {
    const auto whole = sample();
    const std::string archive = contentsOf(*whole, kNoteTextEntry);
    for (std::size_t length = 1; length < archive.size(); length += 7) {
        const auto package = copyOf(*whole);
        put(*package, kNoteTextEntry, archive.substr(0, length));
        const auto note = QLTNoteFile::initWithFileWrapper(*package);
        ASSERT_FALSE(note) << length;
        EXPECT_EQ(note.error().code, 10002) << length;
    }
}

TEST_F(DamagedPackages, ArchivesWithChangedBitsAreReadOrRecovered) {
    const auto whole = sample();
    const std::string archive = contentsOf(*whole, kNoteTextEntry);
    for (std::size_t at = 0; at < archive.size(); ++at) {
        const auto package = copyOf(*whole);
        std::string changed = archive;
        changed[at] = static_cast<char>(changed[at] ^ (1 << at % 8));
        put(*package, kNoteTextEntry, changed);
        const auto note = QLTNoteFile::initWithFileWrapper(*package);
        if (!note) {
            EXPECT_EQ(note.error().code, 10002) << at;
        }
    }
}

TEST_F(DamagedPackages, DamagedAttributesAreLeftOut) {
    const auto whole = sample();
    const std::string plist = contentsOf(*whole, kNoteAttributesEntry);
    for (std::size_t at = 0; at < plist.size(); ++at) {
        for (const bool cut : {true, false}) {
            const auto package = copyOf(*whole);
            std::string changed = cut ? plist.substr(0, at) : plist;
            if (!cut) changed[at] = static_cast<char>(changed[at] ^ (1 << at % 8));
            put(*package, kNoteAttributesEntry, changed);
            const auto note = QLTNoteFile::initWithFileWrapper(*package);
            ASSERT_TRUE(note) << at;
            EXPECT_EQ((*note)->noteText().length(), noteFrom(*whole)->noteText().length()) << at;
        }
    }
}

TEST_F(DamagedPackages, DamagedRTFIsReadOrAnError) {
    const auto whole = sample();
    const std::string rtf = contentsOf(*whole, kRTFDTextEntry);
    QLTNoteFile scratch;
    for (std::size_t at = 0; at < rtf.size(); at += 3) {
        for (const bool cut : {true, false}) {
            const auto package = FileWrapper::directory({{"a.zip", whole->childNamed("a.zip")}});
            std::string changed = cut ? rtf.substr(0, at) : rtf;
            if (!cut) changed[at] = static_cast<char>(changed[at] ^ (1 << at % 8));
            put(*package, kRTFDTextEntry, changed);
            const auto note = readFromDisk(*package);
            if (!note) {
                EXPECT_EQ(note.error().code, 10001) << at;
                EXPECT_EQ(note.error().localizedDescription(), "File is not a valid note file.") << at;
            }
        }
    }
}

} // namespace
} // namespace quillet
