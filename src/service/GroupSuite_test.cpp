#include "service/GroupSuite.h"

#include "platform/plist/PropertyList.h"
#include "styles/UserDefaultsArchiving.h"
#include "tests/support/StylesFixture.h"

using namespace quillet;
using platform::Font;
using Style = QLTNoteTextStyle;

namespace {

class GroupSuiteTest : public StylesFixture {
  protected:
    // What the application does when the user changes the font of Body.
    static void saveBodyFont(const Font& font) {
        const Style::Reference body = Style::defaultBodyNoteTextStyle();
        body->setFont(font);
        platform::UserDefaults application{std::string(kGroupSuite)};
        const auto styles = std::make_shared<platform::ObjectArray>(1, body);
        ASSERT_TRUE(archiveObject(application, platform::ArchivedObject(styles), QLTNoteTextStylesDefaultsKey));
    }
    std::filesystem::path suiteFile() const { return scratch_ / (std::string(kGroupSuite) + ".plist"); }
};

} // namespace

TEST_F(GroupSuiteTest, AChangedStyleShowsWhenTheSuiteIsReadAgain) {
    readGroupSuite();
    EXPECT_EQ(Style::bodyNoteTextStyle()->font(), Font("HelveticaNeue", 12));
    saveBodyFont(Font("Georgia", 19));
    EXPECT_EQ(Style::bodyNoteTextStyle()->font(), Font("HelveticaNeue", 12)) << "an import under way keeps its styles";
    readGroupSuite();
    EXPECT_EQ(Style::bodyNoteTextStyle()->font(), Font("Georgia", 19));
    saveBodyFont(Font("Verdana-Bold", 9));
    readGroupSuite();
    EXPECT_EQ(Style::bodyNoteTextStyle()->font(), Font("Verdana-Bold", 9));
    std::filesystem::remove(suiteFile());
    readGroupSuite();
    EXPECT_EQ(Style::bodyNoteTextStyle()->font(), Font("HelveticaNeue", 12));
    EXPECT_TRUE(log_.empty());
}

TEST_F(GroupSuiteTest, ReadsTheSuiteInXMLToo) {
    saveBodyFont(Font("Georgia", 19));
    const auto values = platform::propertyListFromData(tests::readFile(suiteFile()));
    ASSERT_TRUE(values);
    tests::writeFile(suiteFile(), *platform::xmlDataFromPropertyList(*values));
    readGroupSuite();
    EXPECT_EQ(Style::bodyNoteTextStyle()->font(), Font("Georgia", 19));
}

TEST_F(GroupSuiteTest, ADamagedSuiteGivesFactoryStylesAndOneLine) {
    tests::writeFile(suiteFile(), "bplist00 and then nothing");
    for (int i = 0; i < 3; ++i) {
        readGroupSuite();
        EXPECT_EQ(Style::bodyNoteTextStyle()->font(), Font("HelveticaNeue", 12));
    }
    EXPECT_EQ(log_.size(), 1u);
}
