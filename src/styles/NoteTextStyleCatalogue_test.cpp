// The catalogue: what is saved, what is read back, what is cached, and who hears of it.
#include "platform/archive/KeyedArchiver.h"
#include "platform/text/TextList.h"
#include "platform/text/TextTable.h"
#include "styles/UserDefaultsArchiving.h"
#include "tests/support/StylesFixture.h"

using namespace quillet;
using platform::ArchivedObject;
using platform::Color;
using platform::Data;
using platform::Font;

namespace {

using Style = QLTNoteTextStyle;

class NoteTextStyleCatalogue : public StylesFixture {
  protected:
    static Style::Reference custom(const char16_t* name) {
        auto style = Style::customStyleFromAttributes(Style::defaultBodyNoteTextStyle()->attributes());
        style->setName(name);
        return style;
    }
    static std::vector<std::u16string> namesOf(const std::vector<Style::Reference>& styles) {
        std::vector<std::u16string> names;
        for (const auto& style : styles) names.push_back(style->name().value_or(u"-"));
        return names;
    }
    static std::string savedBytes() {
        const auto data = defaults().dataForKey(QLTNoteTextStylesDefaultsKey);
        return data ? std::string(data->bytes()) : std::string();
    }
};

using Names = std::vector<std::u16string>;
const Names kStandardNames{u"Title", u"Heading", u"Subheading", u"Body", u"Monospaced"};

} // namespace

TEST_F(NoteTextStyleCatalogue, WithoutSavedStylesHasTheFactoryOnes) {
    EXPECT_EQ(namesOf(Style::standardStyles()), kStandardNames);
    EXPECT_EQ(namesOf(Style::allStyles()), kStandardNames);
    EXPECT_TRUE(Style::customStyles().empty());
    for (const auto& style : Style::standardStyles()) EXPECT_FALSE(style->shouldSaveToDefaults());
    EXPECT_TRUE(log_.empty());
}

TEST_F(NoteTextStyleCatalogue, CachesTheCurrentStylesUntilAReload) {
    const Style::Reference body = Style::bodyNoteTextStyle();
    EXPECT_EQ(Style::bodyNoteTextStyle(), body);
    EXPECT_EQ(Style::standardStyles()[3], body);
    EXPECT_EQ(Style::standardStyles()[0], Style::titleNoteTextStyle());
    EXPECT_EQ(Style::standardStyles()[1], Style::headingNoteTextStyle());
    EXPECT_EQ(Style::standardStyles()[2], Style::subheadingNoteTextStyle());
    EXPECT_EQ(Style::standardStyles()[4], Style::monospacedNoteTextStyle());
    Style::reloadStylesFromDefaults();
    EXPECT_EQ(notifications_, 1);
    EXPECT_NE(Style::bodyNoteTextStyle(), body);
}

TEST_F(NoteTextStyleCatalogue, SavingNothingButFactoryStylesRemovesTheKey) {
    ASSERT_TRUE(defaults().setObject(QLTNoteTextStylesDefaultsKey, Data("old")));
    Style::saveStylesToDefaults(Style::standardStyles());
    EXPECT_FALSE(defaults().objectForKey(QLTNoteTextStylesDefaultsKey));
    EXPECT_EQ(notifications_, 2);
}

TEST_F(NoteTextStyleCatalogue, OneSaveIsHeardTwice) {
    Style::saveStylesToDefaults({custom(u"Quote")});
    EXPECT_EQ(notifications_, 2);
}

TEST_F(NoteTextStyleCatalogue, SavedStylesReplaceFactoryOnes) {
    const Style::Reference heading = Style::headingNoteTextStyle();
    heading->setFontSize(30);
    heading->setForegroundColor(Color::sRGB(1, 0, 0));
    Style::saveStylesToDefaults(Style::allStyles());
    ASSERT_NE(Style::headingNoteTextStyle(), heading) << "read again";
    EXPECT_EQ(Style::headingNoteTextStyle()->font(), Font("HelveticaNeue-Bold", 30));
    EXPECT_EQ(Style::headingNoteTextStyle()->foregroundColor(), Color::sRGB(1, 0, 0));
    EXPECT_TRUE(Style::headingNoteTextStyle()->applyToParagraph());
    EXPECT_EQ(Style::headingNoteTextStyle()->paragraphStyle()->headerLevel, 2);
    EXPECT_TRUE(Style::savedStyleForType(Style::kHeadingType));
    EXPECT_FALSE(Style::savedStyleForType(Style::kBodyType));
    EXPECT_FALSE(Style::savedStyleForType(Style::kCustomType));
    EXPECT_FALSE(Style::bodyNoteTextStyle()->shouldSaveToDefaults());
}

TEST_F(NoteTextStyleCatalogue, CustomStylesAreSortedAsAFileManagerWould) {
    for (const char16_t* name : {u"note 10", u"Zebra", u"Note 2", u"apple", u"\u00C4pfel"})
        Style::addCustomStyle(custom(name));
    EXPECT_EQ(namesOf(Style::customStyles()), (Names{u"\u00C4pfel", u"apple", u"Note 2", u"note 10", u"Zebra"}));
    EXPECT_EQ(Style::allStyles().size(), 10u);
    EXPECT_EQ(notifications_, 10);
    EXPECT_EQ(Style::customStyles()[0], Style::customStyles()[0]) << "cached";
}

TEST_F(NoteTextStyleCatalogue, FindsStylesByIdentifierAndAttributes) {
    Style::addCustomStyle(custom(u"Like Body"));
    const Style::Reference added = Style::customStyles().at(0);
    EXPECT_EQ(Style::styleWithIdentifier(*added->identifier()), added);
    EXPECT_EQ(Style::styleWithIdentifier(u"QLTNoteStyleIdentifierSubheading"), Style::subheadingNoteTextStyle());
    EXPECT_FALSE(Style::styleWithIdentifier(u"Body"));
    EXPECT_FALSE(Style::styleWithIdentifier(u""));
    EXPECT_EQ(Style::styleThatMatchesAttributes(added->attributes()), Style::bodyNoteTextStyle())
        << "standard styles win";
    EXPECT_EQ(Style::styleThatMatchesAttributes(Style::titleNoteTextStyle()->attributes()),
              Style::titleNoteTextStyle());
    EXPECT_FALSE(Style::styleThatMatchesAttributes({}));
    EXPECT_FALSE(Style::styleThatMatchesAttributes({{platform::kFontAttributeName, Font("Menlo-Bold", 99)}}));
}

TEST_F(NoteTextStyleCatalogue, HeaderLevelsStandForTitleHeadingSubheading) {
    EXPECT_EQ(Style::styleForParagraphHeaderLevel(1), Style::titleNoteTextStyle());
    EXPECT_EQ(Style::styleForParagraphHeaderLevel(2), Style::headingNoteTextStyle());
    EXPECT_EQ(Style::styleForParagraphHeaderLevel(3), Style::subheadingNoteTextStyle());
    for (const std::int64_t level : {-1, 0, 4}) EXPECT_FALSE(Style::styleForParagraphHeaderLevel(level)) << level;
}

TEST_F(NoteTextStyleCatalogue, DefaultStyleIsNamedByTheDefaultsElseBody) {
    EXPECT_EQ(Style::defaultStyle(), Style::bodyNoteTextStyle());
    ASSERT_TRUE(defaults().setObject(QLTNoteTextStyleDefaultIdentifierKey, "QLTNoteStyleIdentifierMonospace"));
    EXPECT_EQ(Style::defaultStyle(), Style::monospacedNoteTextStyle());
    ASSERT_TRUE(defaults().setObject(QLTNoteTextStyleDefaultIdentifierKey, "gone"));
    EXPECT_EQ(Style::defaultStyle(), Style::bodyNoteTextStyle());
}

TEST_F(NoteTextStyleCatalogue, UnreadableSavedStylesAreLoggedAndLeftOut) {
    const auto archive = [](const ArchivedObject& root) {
        return *platform::KeyedArchiver::archivedData(root, platform::KeyedArchiver::Coding::secure);
    };
    const Data kCases[] = {Data("junk"), archive(platform::Value("text")),
                           archive(std::make_shared<platform::ObjectArray>(1, platform::Value("text")))};
    for (const Data& data : kCases) {
        log_.clear();
        ASSERT_TRUE(defaults().setObject(QLTNoteTextStylesDefaultsKey, data));
        Style::reloadStylesFromDefaults();
        EXPECT_FALSE(Style::bodyNoteTextStyle()->shouldSaveToDefaults());
        EXPECT_TRUE(Style::customStyles().empty());
        ASSERT_EQ(log_.size(), 2u) << "each reading";
        for (const std::string& line : log_)
            EXPECT_TRUE(line.starts_with("Error unarchiving saved note styles: ")) << line;
    }
}

TEST_F(NoteTextStyleCatalogue, ArchivesAreStableFromTheSecondOnByteForByte) {
    const Style::Reference quote = custom(u"Quote \U0001F58B");
    quote->setForegroundColor(Color::sRGB(0.1, 0.2, 0.3));
    quote->setFontSize(12.1);
    Style::titleNoteTextStyle()->setUnderlineStyle(1);
    std::vector<std::string> archives;
    Style::addCustomStyle(quote);
    for (int i = 0; i < 3; ++i) {
        archives.push_back(savedBytes());
        Style::saveStylesToDefaults(Style::allStyles());
    }
    EXPECT_NE(archives[0], archives[1]) << "components and sizes become single precision once";
    EXPECT_EQ(archives[1], archives[2]);
    EXPECT_EQ(savedBytes(), archives[2]);
    const Style::Reference read = Style::customStyles().at(0);
    EXPECT_EQ(read->name(), quote->name());
    EXPECT_EQ(read->identifier(), quote->identifier());
    EXPECT_EQ(read->foregroundColor().rgba(), (Color::RGBA{0.1f, 0.2f, 0.3f, 1}));
    EXPECT_EQ(read->fontSize(), 12.1f);
}

TEST_F(NoteTextStyleCatalogue, ReadsBackWhateverAParagraphStyleHolds) {
    const auto table = std::make_shared<platform::TextTable>();
    const auto cell = std::make_shared<platform::TextTableBlock>(table, 0, 1, 0, 1);
    cell->backgroundColor = Color::sRGB(1, 0, 0);
    cell->borderColors[2] = Color::black(); // the others are null
    platform::ParagraphStyle paragraph;
    paragraph.textBlocks = {cell};
    paragraph.textLists = {std::make_shared<platform::TextList>("{decimal}.", 1, 5)};
    paragraph.tabStops = {{platform::TextAlignment::right, 36}};
    paragraph.lineSpacing = 3;
    const Style::Reference style = custom(u"Everything");
    style->setParagraphStyle(std::make_shared<const platform::ParagraphStyle>(paragraph));
    Style::saveStylesToDefaults({style});
    ASSERT_EQ(Style::customStyles().size(), 1u);
    const auto& read = *Style::customStyles()[0]->paragraphStyle();
    EXPECT_EQ(read.textBlocks.size(), 1u);
    EXPECT_EQ(read.textLists.size(), 1u);
    EXPECT_EQ(read.tabStops, paragraph.tabStops);
    EXPECT_EQ(read.lineSpacing, 3);
    EXPECT_TRUE(log_.empty());
}

TEST_F(NoteTextStyleCatalogue, AStringInPlaceOfAStyleIsNothing) {
    ASSERT_TRUE(archiveObject(defaults(), platform::Value("text"), "style"));
    const auto read = unarchiveObjectOfClass(defaults(), "QLTNoteTextStyle", "style");
    ASSERT_TRUE(read);
    EXPECT_TRUE(read->isNull());
    EXPECT_EQ(log_, std::vector<std::string>{"Error unarchiving defaults object style: (null)"});
}

TEST_F(NoteTextStyleCatalogue, ArchivesObjectsUnderAnyKey) {
    ASSERT_TRUE(archiveObject(defaults(), Style::defaultTitleNoteTextStyle(), "style"));
    const auto read = unarchiveObjectOfClass(defaults(), "QLTNoteTextStyle", "style",
                                             {"NSParagraphStyle", "NSTextTab", "NSArray", "NSDictionary"});
    ASSERT_TRUE(read);
    ASSERT_TRUE(read->as<Style>());
    EXPECT_TRUE(read->as<Style>()->matchesStyle(*Style::defaultTitleNoteTextStyle()));
    EXPECT_TRUE(log_.empty());
}

TEST_F(NoteTextStyleCatalogue, AMissingValueIsAnErrorThatIsNotLogged) {
    const auto read = unarchiveObjectOfClass(defaults(), "QLTNoteTextStyle", "nothing");
    ASSERT_FALSE(read);
    EXPECT_EQ(read.error().domain, "QLTUserDefaultsArchivingErrorDomain");
    EXPECT_EQ(read.error().code, 10001);
    EXPECT_EQ(read.error().localizedDescription(), "No such value.");
    EXPECT_TRUE(log_.empty());
}

TEST_F(NoteTextStyleCatalogue, BytesThatAreNoArchiveAreAnErrorInTheLog) {
    ASSERT_TRUE(defaults().setObject("junk", Data("junk")));
    const auto read = unarchiveObjectOfClass(defaults(), "QLTNoteTextStyle", "junk");
    ASSERT_FALSE(read);
    EXPECT_EQ(log_, std::vector{"Error unarchiving defaults object junk: " + read.error().description()});
}

TEST_F(NoteTextStyleCatalogue, AnArchiveOfAnotherClassGivesNothingAndALineWithoutError) {
    ASSERT_TRUE(archiveObject(defaults(), std::make_shared<platform::ObjectArray>(), "list"));
    const auto read = unarchiveObjectOfClass(defaults(), "QLTNoteTextStyle", "list");
    ASSERT_TRUE(read);
    EXPECT_TRUE(read->isNull());
    EXPECT_EQ(log_, std::vector<std::string>{"Error unarchiving defaults object list: (null)"});
}

TEST_F(NoteTextStyleCatalogue, WhatCannotBeArchivedLeavesNoValue) {
    struct Unknown {};
    ASSERT_TRUE(defaults().setObject("key", "before"));
    EXPECT_FALSE(archiveObject(defaults(), std::make_shared<Unknown>(), "key"));
    EXPECT_FALSE(defaults().objectForKey("key"));
}
