#include "programs/export/PackageCheck.h"

#include <gtest/gtest.h>

#include "tests/support/NoteFileFixture.h"

namespace quillet {

namespace {

using platform::Array;
using platform::Data;
using platform::Dictionary;
using platform::FileWrapper;
using platform::Value;

class PackageCheck : public NoteFileFixture {
  protected:
    static std::shared_ptr<FileWrapper> sample() {
        return packageOf(joined(plain(u"Hello "), attached<QLTFileAttachment>("a.zip", "zipped"),
                                attached("a.zip", "two"), plain(u"\n"), divider(), plain(u"\n"), checkbox(true, 0),
                                plain(u"done\n")));
    }
    static void put(FileWrapper& package, std::string_view name, std::string_view contents) {
        package.setFileWrapper(std::string(name), FileWrapper::regularFile(Data(std::string(contents))));
    }
    static void putAttributes(FileWrapper& package, const Value& attributes) {
        put(package, kNoteAttributesEntry, *platform::binaryDataFromPropertyList(attributes));
    }
    // Each problem as one text.
    static std::vector<std::string> problems(const FileWrapper& package) {
        std::vector<std::string> texts;
        for (const PackageProblem& problem : problemsOfPackage(package))
            texts.push_back(problem.entry.empty() ? problem.message : problem.entry + ": " + problem.message);
        return texts;
    }
};
using Problems = std::vector<std::string>;

TEST_F(PackageCheck, FindsNothingInASoundPackage) {
    EXPECT_EQ(problems(*sample()), Problems{});
    EXPECT_EQ(problems(*packageOf(platform::AttributedString())), Problems{});
    const auto emptied = packageOf(plain(u"\n"));
    put(*emptied, kNoteTextEntry, "");
    EXPECT_EQ(problems(*emptied), Problems{});
}

TEST_F(PackageCheck, NamesMissingParts) {
    EXPECT_EQ(problems(*FileWrapper::regularFile(Data())), Problems{"is not a file package"});
    EXPECT_EQ(problems(*FileWrapper::directory()),
              (Problems{"TXT.rtf: is missing", "NoteText: is missing", "NoteAttributes: is missing"}));
    for (const std::string_view part : {kRTFDTextEntry, kNoteTextEntry, kNoteAttributesEntry}) {
        const auto package = sample();
        package->removeFileWrapper(part);
        EXPECT_EQ(problems(*package), Problems{std::string(part) + ": is missing"});
        package->setFileWrapper(std::string(part), FileWrapper::directory());
        EXPECT_EQ(problems(*package), Problems{std::string(part) + ": is a directory"});
    }
}

TEST_F(PackageCheck, NamesPartsThatCannotBeRead) {
    for (const std::string_view part : {kRTFDTextEntry, kNoteTextEntry, kNoteAttributesEntry}) {
        const auto package = sample();
        put(*package, part, "junk");
        const Problems found = problems(*package);
        ASSERT_EQ(found.size(), 1u) << part;
        EXPECT_TRUE(found[0].starts_with(std::string(part) + ": cannot be read: ")) << found[0];
    }
    const auto otherRoot = sample();
    putAttributes(*otherRoot, Value(Array()));
    EXPECT_EQ(problems(*otherRoot), Problems{"NoteAttributes: is no dictionary"});
}

TEST_F(PackageCheck, NamesWhatIsWrongWithTheAttributes) {
    const std::pair<Dictionary, Problems> cases[] = {
        {{{"dividerRanges", Value(Array{Value("{9, 3}")})}}, {}},
        {{{"dividerRanges", Value(Array{Value("{18, 1}")})}}, {}},
        {{{"dividerRanges", Value(Array{Value("{18, 2}"), Value("{20, 0}")})}},
         {"NoteAttributes: divider range {18, 2} is out of bounds: the text has 19 units",
          "NoteAttributes: divider range {20, 0} is out of bounds: the text has 19 units"}},
        {{{"dividerRanges", Value(Array{Value("{18446744073709551615, 18446744073709551615}")})}},
         {"NoteAttributes: divider range {18446744073709551615, 18446744073709551615} is out of bounds: the text has "
          "19 "
          "units"}},
        {{{"dividerRanges", Value("{9, 3}")}}, {"NoteAttributes: dividerRanges is no array"}},
        {{{"dividerRanges", Value(Array{Value(9)})}}, {"NoteAttributes: a divider range is no string"}},
        {{{"backgroundColor", Value("white")}}, {"NoteAttributes: backgroundColor is no dictionary"}},
        {{{"drawingsData", Value(1)}}, {"NoteAttributes: drawingsData is no dictionary"}},
    };
    for (const auto& [attributes, expected] : cases) {
        const auto package = sample();
        putAttributes(*package, Value(attributes));
        EXPECT_EQ(problems(*package), expected);
    }
}

// The text may be named by the part that cannot be read.
TEST_F(PackageCheck, CallsNoFileUnnamedBeforeBothTextsAreRead) {
    for (const std::string_view part : {kRTFDTextEntry, kNoteTextEntry}) {
        const auto package = sample();
        put(*package, "stray.png", "pixels");
        put(*package, part, "junk");
        EXPECT_EQ(problems(*package).size(), 1u) << part;
    }
}

TEST_F(PackageCheck, NamesAMissingFileOnce) {
    const auto package = sample();
    put(*package, kNoteTextEntry,
        archivedNoteText(joined(attached("b.zip", ""), plain(u" "), attached("b.zip", "")))->bytes());
    package->removeFileWrapper(kRTFDTextEntry);
    putAttributes(*package, Value(Dictionary()));
    EXPECT_EQ(problems(*package), (Problems{"TXT.rtf: is missing", "b.zip: is named in the text but missing"}));
}

TEST_F(PackageCheck, NamesFilesThatAreMissingAndFilesTooMany) {
    const auto package = sample();
    package->removeFileWrapper("a.zip");
    put(*package, "stray.png", "pixels");
    EXPECT_EQ(problems(*package),
              (Problems{"a.zip: is named in the text but missing", "stray.png: is not named in the text"}));
}

} // namespace
} // namespace quillet
