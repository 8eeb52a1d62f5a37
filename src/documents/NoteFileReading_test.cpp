#include <gtest/gtest.h>

#include "documents/QLTNoteFile.h"
#include "platform/graphics/Font.h"
#include "platform/rtf/RTFWriter.h"
#include "platform/text/TextList.h"
#include "richtext/highlights/Highlights.h"
#include "styles/base/ParagraphStyles.h"
#include "tests/support/Golden.h"
#include "tests/support/NoteFileFixture.h"

namespace quillet {
namespace {

using platform::Array;
using platform::AttributedString;
using platform::Color;
using platform::Data;
using platform::Dictionary;
using platform::FileWrapper;
using platform::TextAttachment;
using platform::Value;

class NoteFileReading : public NoteFileFixture {
  protected:
    static std::string data(std::string_view name) {
        return tests::readFile(tests::sourceDirectory() / "tests/data" / name);
    }

    // A package whose text is one placeholder with that name, and the file.
    template<class Attachment>
    static std::shared_ptr<FileWrapper> packageWithFile(const std::shared_ptr<Attachment>& attachment,
                                                        std::string_view name, std::string_view contents) {
        attachment->setFileWrapper(file(name, ""));
        auto package = packageWithArchive(AttributedString::withAttachment(attachment));
        package->setFileWrapper(std::string(name), file(name, contents));
        return package;
    }
    static std::shared_ptr<QLTFileAttachment> shownInPlace() {
        auto attachment = std::make_shared<QLTFileAttachment>();
        attachment->setConvertToInPlaceOnMac(true);
        return attachment;
    }
    static const Color* color(const AttributedString& text, platform::AttributeName name, std::size_t position) {
        return text.attributesAt(position).find<Color>(name);
    }
};

TEST_F(NoteFileReading, RefusesWhatIsNoPackage) {
    const auto note = QLTNoteFile::initWithFileWrapper(*FileWrapper::regularFile(Data("text")));
    ASSERT_FALSE(note);
    EXPECT_EQ(note.error().domain, QLTNoteFileErrorDomain);
    EXPECT_EQ(note.error().code, 10001);
    EXPECT_EQ(note.error().localizedDescription(), "Note file is not a file package.");
}

TEST_F(NoteFileReading, TakesTheAttributes) {
    const Dictionary drawings{{"key", Value(Data("drawing"))}};
    const auto note = noteFrom(*packageWithArchive(
        plain(u"text"), {{"showSmallImages", Value(true)},
                         {"drawingsData", Value(drawings)},
                         {"backgroundColor", Value(propertyListRepresentation(Color::deviceRGB(0, 1, 0)))},
                         {"appIdentifier", Value("org.example.other")}}));
    EXPECT_TRUE(note->showSmallImages());
    EXPECT_EQ(note->drawingDataByAttachmentKey(), drawings);
    EXPECT_TRUE(isEqualToColorQLTVersion(*note->backgroundColor(), Color::deviceRGB(0, 1, 0)));
    EXPECT_TRUE(note->documentAttributes().empty()) << "a note that is read has none of a new one's settings";
}

TEST_F(NoteFileReading, AbsentOrOddAttributesLeaveTheirDefaults) {
    const Dictionary cases[] = {
        {},
        {{"showSmallImages", Value("no number")},
         {"backgroundColor", Value("white")},
         {"drawingsData", Value(1)},
         {"dividerRanges", Value("{0, 1}")},
         {"usesColorTypes", Value(Array())}},
        {{"dividerRanges", Value(Array{Value(7), Value(Array()), Value(true), Value("{9, 0}"), Value("{1, 8}")})}},
    };
    for (const Dictionary& attributes : cases) {
        const auto package = packageWithArchive(plain(u"some text"));
        const auto plist = platform::binaryDataFromPropertyList(attributes);
        ASSERT_TRUE(plist) << plist.error().description();
        package->setFileWrapper("NoteAttributes", FileWrapper::regularFile(Data(*plist)));
        const auto note = noteFrom(*package);
        EXPECT_EQ(note->noteText().string(), u"some text");
        EXPECT_FALSE(note->showSmallImages());
        EXPECT_FALSE(note->backgroundColor());
        EXPECT_FALSE(note->drawingDataByAttachmentKey());
    }
}

TEST_F(NoteFileReading, AFailureEmptiesTheTextUnlessTheRTFDPartMayGiveIt) {
    QLTNoteFile note;
    note.setNoteText(plain(u"before"));
    const auto damaged = packageWithArchive(plain(u"text"));
    damaged->setFileWrapper(std::string(kNoteTextEntry), FileWrapper::regularFile(Data("no archive")));
    damaged->setFileWrapper(std::string(kRTFDTextEntry), FileWrapper::regularFile(Data("{\\rtf1 other}")));
    ASSERT_FALSE(note.readFileWrapper(*damaged));
    EXPECT_EQ(note.noteText().string(), u"before");
    damaged->removeFileWrapper(kRTFDTextEntry);
    ASSERT_FALSE(note.readFileWrapper(*damaged));
    EXPECT_TRUE(note.noteText().empty());
}

// A document that reads another package: what that one says nothing of stays only where it has no attributes at all.
TEST_F(NoteFileReading, ASecondPackageReplacesWhatTheFirstOneSaid) {
    const Dictionary drawings{{"key", Value(Data("drawing"))}};
    const auto first =
        packageWithArchive(plain(u"first"), {{"showSmallImages", Value(true)}, {"drawingsData", Value(drawings)}});
    const auto bare = packageWithArchive(plain(u"bare"));
    bare->removeFileWrapper(kNoteAttributesEntry);
    QLTNoteFile note;
    ASSERT_TRUE(note.readFileWrapper(*first));
    ASSERT_TRUE(note.readFileWrapper(*bare));
    EXPECT_EQ(note.noteText().string(), u"bare");
    EXPECT_TRUE(note.showSmallImages());
    EXPECT_EQ(note.drawingDataByAttachmentKey(), drawings);
    ASSERT_TRUE(note.readFileWrapper(*packageWithArchive(plain(u"second"), {{"usesColorTypes", Value(true)}})));
    EXPECT_EQ(note.noteText().string(), u"second");
    EXPECT_FALSE(note.showSmallImages());
    EXPECT_FALSE(note.drawingDataByAttachmentKey());
}

TEST_F(NoteFileReading, AnEmptyTextIsAnEmptyNoteWhateverFollows) {
    const auto attributes = FileWrapper::regularFile(
        Data(*platform::binaryDataFromPropertyList(Dictionary{{"showSmallImages", Value(true)}})));
    const auto empty = FileWrapper::regularFile(Data());
    for (const bool attributesFirst : {true, false}) {
        const auto package = attributesFirst
                                 ? FileWrapper::directory({{"NoteAttributes", attributes}, {"NoteText", empty}})
                                 : FileWrapper::directory({{"NoteText", empty}, {"NoteAttributes", attributes}});
        package->setFileWrapper("TXT.rtf", FileWrapper::regularFile(Data("{\\rtf1 other}")));
        const auto note = noteFrom(*package);
        EXPECT_TRUE(note->noteText().empty());
        EXPECT_EQ(note->showSmallImages(), attributesFirst);
    }
}

TEST_F(NoteFileReading, FillsAttachmentsFromTheFilesOfThePackage) {
    const auto package =
        packageOf(joined(attached("photo.png", "pixels"), attached<QLTFileAttachment>("a.zip", "zipped")));
    const auto note = noteFrom(*package);
    const auto image = attachmentAt(note->noteText(), 0), archive = attachmentAt(note->noteText(), 1);
    EXPECT_EQ(image->className(), "NSTextAttachment");
    EXPECT_EQ(image->fileWrapper()->regularFileContents().bytes(), "pixels");
    EXPECT_EQ(archive->className(), "QLTFileAttachment");
    EXPECT_EQ(archive->fileWrapper()->regularFileContents().bytes(), "zipped");
}

TEST_F(NoteFileReading, AnAttachmentWhoseFileIsMissingStaysAPlaceholder) {
    const auto package = packageOf(attached("photo.png", "pixels"));
    package->removeFileWrapper("photo.png");
    const auto note = noteFrom(*package);
    const auto image = attachmentAt(note->noteText(), 0);
    ASSERT_TRUE(image && image->fileWrapper());
    EXPECT_TRUE(image->fileWrapper()->regularFileContents().empty());
}

TEST_F(NoteFileReading, ChoosesTheClassOfAttachment) {
    const auto inPlace = shownInPlace();
    const std::string locked = data("pdf/user-password.pdf"), open = data("pdf/open.pdf");
    struct Case {
        std::string what;
        std::shared_ptr<TextAttachment> attachment;
        std::string name, contents, expectedClass;
    };
    const Case cases[] = {
        {"to be shown in place", inPlace, "a.zip", "zipped", "NSTextAttachment"},
        {"sound to be shown in place", shownInPlace(), "sound.mp3", "noise", "QLTFileAttachment"},
        {"protected, to be shown in place", shownInPlace(), "a.pdf", locked, "QLTFileAttachment"},
        {"open, to be shown in place", shownInPlace(), "a.pdf", open, "NSTextAttachment"},
        {"a file", std::make_shared<QLTFileAttachment>(), "a.zip", "zipped", "QLTFileAttachment"},
        {"sound", std::make_shared<TextAttachment>(), "sound.mp3", "noise", "QLTFileAttachment"},
        {"a file of sound", std::make_shared<QLTFileAttachment>(), "sound.wav", "noise", "QLTFileAttachment"},
        {"protected", std::make_shared<TextAttachment>(), "a.pdf", locked, "QLTFileAttachment"},
        {"open", std::make_shared<TextAttachment>(), "a.pdf", open, "NSTextAttachment"},
        {"damaged", std::make_shared<TextAttachment>(), "a.pdf", "%PDF-junk", "NSTextAttachment"},
        {"image", std::make_shared<TextAttachment>(), "a.png", "pixels", "NSTextAttachment"},
        {"a file as such", std::make_shared<TextAttachment>(), "a.zip", "zipped", "NSTextAttachment"},
    };
    for (const Case& each : cases) {
        const auto note = noteFrom(*packageWithFile(each.attachment, each.name, each.contents));
        const auto restored = attachmentAt(note->noteText(), 0);
        ASSERT_TRUE(restored) << each.what;
        EXPECT_EQ(restored->className(), each.expectedClass) << each.what;
        EXPECT_EQ(restored->fileWrapper()->regularFileContents().bytes(), each.contents) << each.what;
    }
}

TEST_F(NoteFileReading, ReadingLosesTheWishToShowInPlaceOnceItIsGranted) {
    const auto note = noteFrom(*packageWithFile(shownInPlace(), "a.mov", "moving"));
    const auto again = noteFrom(*packageOf(*note));
    EXPECT_EQ(attachmentAt(again->noteText(), 0)->className(), "NSTextAttachment");
}

TEST_F(NoteFileReading, RestoresDividersThatDoNotReachTheEnd) {
    struct Case {
        std::u16string text;
        std::vector<const char*> ranges;
        std::u16string expected;
    };
    const Case cases[] = {
        {u"a\n***\nb", {"{2, 3}"}, u"a\n\uFFFC\nb"},
        {u"a\n***", {"{2, 3}"}, u"a\n***"},
        {u"***\n***\n", {"{0, 3}", "{4, 3}"}, u"\uFFFC\n\uFFFC\n"},
        {u"***\n***", {"{0, 3}", "{4, 3}"}, u"\uFFFC\n***"},
        {u"a\n***\nb", {"{2, 300}"}, u"a\n***\nb"},
        {u"a\n***\nb", {"{18446744073709551615, 3}"}, u"a\n***\nb"},
        {u"a\n***\nb", {"{2, 18446744073709551615}"}, u"a\n***\nb"},
        {u"a\n***\nb", {}, u"a\n***\nb"},
    };
    for (const Case& each : cases) {
        Array ranges;
        for (const char* range : each.ranges) ranges.emplace_back(range);
        const auto note = noteFrom(*packageWithArchive(plain(each.text), {{"dividerRanges", Value(ranges)}}));
        EXPECT_EQ(note->noteText().string(), each.expected);
        for (std::size_t at = 0; at < each.expected.size(); ++at)
            if (each.expected[at] == platform::kAttachmentCharacter) {
                EXPECT_EQ(attachmentAt(note->noteText(), at)->className(), "QLTDividerTextAttachment");
            }
    }
}

TEST_F(NoteFileReading, ADividerSurvivesUnlessItEndsTheText) {
    EXPECT_EQ(noteFrom(*packageOf(joined(plain(u"a\n"), divider(), plain(u"\n"))))->noteText().string(),
              u"a\n\uFFFC\n");
    EXPECT_EQ(noteFrom(*packageOf(joined(plain(u"a\n"), divider())))->noteText().string(), u"a\n***");
}

TEST_F(NoteFileReading, RemovesWhiteBackgrounds) {
    const auto note = noteFrom(
        *packageWithArchive(joined(with(platform::kBackgroundColorAttributeName, Color::white(), u"white"),
                                   with(platform::kBackgroundColorAttributeName, Color::deviceRGB(1, 0, 0), u"red"))));
    EXPECT_FALSE(color(note->noteText(), platform::kBackgroundColorAttributeName, 0));
    EXPECT_TRUE(color(note->noteText(), platform::kBackgroundColorAttributeName, 5));
}

TEST_F(NoteFileReading, MakesFixedColorsAdaptive) {
    const auto note = noteFrom(*packageWithArchive(
        joined(with(platform::kForegroundColorAttributeName, Color::black(), u"black"), plain(u"plain"),
               with(platform::kForegroundColorAttributeName, Color::deviceRGB(1, 0, 0), u"red"))));
    EXPECT_EQ(*color(note->noteText(), platform::kForegroundColorAttributeName, 0), Color::textColor());
    EXPECT_EQ(*color(note->noteText(), platform::kForegroundColorAttributeName, 5), Color::textColor());
    EXPECT_EQ(*color(note->noteText(), platform::kForegroundColorAttributeName, 10), Color::deviceRGB(1, 0, 0));
}

TEST_F(NoteFileReading, MakesListsOfTypedMarkers) {
    const platform::ParagraphStyleReference list =
        std::make_shared<const platform::ParagraphStyle>(listParagraphStyle());
    AttributedString items = plain(u"\t•\tbread\n\t2.\tmilk\n");
    items.addAttribute(platform::kParagraphStyleAttributeName, list, {0, items.length()});
    const auto note = noteFrom(*packageWithArchive(joined(items, plain(u"\t•\tno item\n"))));
    const AttributedString& text = note->noteText();
    ASSERT_EQ(paragraphStyleAt(text, 3).textLists.size(), 1u);
    EXPECT_EQ(paragraphStyleAt(text, 3).textLists[0]->markerFormat(), "{disc}");
    ASSERT_EQ(paragraphStyleAt(text, 14).textLists.size(), 1u);
    EXPECT_EQ(paragraphStyleAt(text, 14).textLists[0]->markerFormat(), "{decimal}.");
    EXPECT_TRUE(paragraphStyleAt(text, text.length() - 2).textLists.empty());
}

TEST_F(NoteFileReading, StylesTheParagraphsOfCheckboxes) {
    AttributedString box = checkbox(false, 2);
    box.removeAttribute(platform::kParagraphStyleAttributeName, {0, 1});
    const auto note = noteFrom(*packageWithArchive(joined(plain(u"before\n"), box, plain(u"item\n"), plain(u"after"))));
    const auto style = [&](std::size_t position) {
        const auto* value = note->noteText().attributeAt(platform::kParagraphStyleAttributeName, position);
        return value ? std::get<platform::ParagraphStyleReference>(*value) : nullptr;
    };
    EXPECT_FALSE(style(0));
    for (std::size_t position = 7; position < 13; ++position) {
        ASSERT_TRUE(style(position)) << position;
        EXPECT_EQ(style(position)->headIndent, 56);
        EXPECT_EQ(style(position)->firstLineHeadIndent, -56);
    }
    EXPECT_FALSE(style(13));
}

TEST_F(NoteFileReading, TheLastOfSeveralBoxesStylesTheirParagraph) {
    const auto note = noteFrom(*packageWithArchive(
        joined(checkbox(false, 0), checkbox(false, 1), checkbox(false, 3), plain(u"item\n"), checkbox(false, 1))));
    for (std::size_t position = 0; position < 9; ++position) {
        const auto& style = paragraphStyleAt(note->noteText(), position);
        EXPECT_EQ(style.headIndent, position < 8 ? 74 : 38) << position;
    }
}

// One paragraph of this many boxes: work on the whole paragraph for each of them would take minutes.
TEST_F(NoteFileReading, ManyBoxesInOneParagraphAreReadInOnePass) {
    constexpr std::size_t kBoxes = 50'000;
    AttributedString text;
    for (std::size_t box = 0; box < kBoxes; ++box)
        text.append(AttributedString::withAttachment(std::make_shared<QLTChecklistTextAttachment>()));
    const auto note = noteFrom(*packageWithArchive(text));
    EXPECT_EQ(note->noteText().length(), kBoxes);
    EXPECT_EQ(paragraphStyleAt(note->noteText(), 0).headIndent, 20);
    EXPECT_EQ(paragraphStyleAt(note->noteText(), kBoxes - 1).headIndent, 20);
}

TEST_F(NoteFileReading, PaintsHighlightsByTheirColorType) {
    AttributedString text;
    for (const std::int64_t type : {1, 2, 3, 4, 5, 999, 77})
        text.append(with(QLTHighlightTextAttributeName, type, u"x"));
    const auto note = noteFrom(*packageWithArchive(text, {{"usesColorTypes", Value(true)}}));
    for (std::size_t i = 0; i < text.length(); ++i) {
        const auto type = platform::integerValue(*text.attributeAt(QLTHighlightTextAttributeName, i));
        const auto* kept = note->noteText().attributeAt(QLTHighlightTextAttributeName, i);
        ASSERT_TRUE(kept);
        EXPECT_EQ(platform::integerValue(*kept), type);
        const Color* background = color(note->noteText(), platform::kBackgroundColorAttributeName, i);
        const auto expected = colorForHighlightColorType(static_cast<HighlightColorType>(type));
        ASSERT_EQ(background != nullptr, expected.has_value()) << type;
        if (!expected) continue;
        EXPECT_EQ(*background, highlightBackgroundColor(*expected));
        EXPECT_EQ(*color(note->noteText(), platform::kForegroundColorAttributeName, i),
                  highlightForegroundColor(*expected));
    }
}

TEST_F(NoteFileReading, OlderHighlightsTakeTheirTypeFromTheBackground) {
    const Color green = greenHighlightColor(), other = Color::deviceRGB(0.1, 0.2, 0.3);
    AttributedString text = joined(with(platform::kBackgroundColorAttributeName, green, u"g"),
                                   with(platform::kBackgroundColorAttributeName, other, u"o"), plain(u"n"));
    text.addAttribute(QLTHighlightTextAttributeName, std::int64_t{1}, {0, 3});
    text.append(with(platform::kBackgroundColorAttributeName, green, u"u")); // not highlighted at all
    AttributedString off = with(platform::kBackgroundColorAttributeName, green, u"z");
    off.addAttribute(QLTHighlightTextAttributeName, std::int64_t{0}, {0, 1});
    text.append(off);
    const auto note = noteFrom(*packageWithArchive(text, {{"usesColorTypes", Value(false)}}));
    const auto type = [&](std::size_t position) {
        const auto* value = note->noteText().attributeAt(QLTHighlightTextAttributeName, position);
        return value ? platform::integerValue(*value) : -1;
    };
    EXPECT_EQ(type(0), 2);
    EXPECT_EQ(type(1), 1) << "a color of no type changes nothing";
    EXPECT_EQ(type(2), 1);
    EXPECT_EQ(type(3), -1);
    EXPECT_EQ(type(4), 0) << "0 is no highlight";
}

// What reading changes in a text as it was archived, and nothing else.
TEST_F(NoteFileReading, ChangesWhatItShouldAndWritesTheRestAgain) {
    const AttributedString text = joined(
        plain(u"Plain\n"), with(platform::kForegroundColorAttributeName, Color::black(), u"Black\n"),
        with(platform::kBackgroundColorAttributeName, Color::white(), u"On white\n"), checkbox(true, 1),
        plain(u"Item\n"), divider(), plain(u"\n"), with(QLTHighlightTextAttributeName, std::int64_t{3}, u"Marked\n"),
        attached("sound.mp3", "noise"), attached("photo.png", "pixels"), attached("photo.png", "others"), plain(u"\n"));
    const auto first = packageOf(text);
    const auto read = noteFrom(*first);
    tests::expectGolden({"reading", tests::sourceDirectory() / "tests/golden/note-reading/everything"}, "expected.txt",
                        platform::textDump(read->noteText()));

    const auto second = packageOf(*read);
    const auto third = packageOf(*noteFrom(*second));
    EXPECT_EQ(entryNames(*second), entryNames(*third));
    for (const auto& [name, child] : second->fileWrappers())
        EXPECT_EQ(contentsOf(*third, name), contentsOf(*second, name)) << name;
}

} // namespace
} // namespace quillet
