// A resource's bytes and their digest; what a new note has.
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>

#include <gtest/gtest.h>

#include "enex/EvernoteXMLItem.h"
#include "enex/EvernoteXMLResource.h"
#include "tests/support/ScratchDirectory.h"

namespace quillet {
namespace {

using platform::URL;

EvernoteXMLResource resourceWith(std::string_view base64) {
    EvernoteXMLResource resource;
    resource.appendBase64Data(base64);
    return resource;
}

TEST(EvernoteXMLResource, DecodesWhateverStandsBetweenTheCharacters) {
    const std::pair<std::string_view, std::string_view> rows[] = {
        {"YWJj", "abc"}, {"\nYW\r\nJj\n", "abc"}, {"Y W\tJ j", "abc"}, {"YQ==", "a"},
        {"YWI=", "ab"},  {"Y-W_J.j", "abc"},      {"\n", ""},          {"YWJjZGVm", "abcdef"},
    };
    for (const auto& [text, bytes] : rows) {
        auto resource = resourceWith(text);
        const auto data = resource.getContentData();
        ASSERT_TRUE(data) << text;
        EXPECT_EQ(data->bytes(), bytes) << text;
    }
}

TEST(EvernoteXMLResource, FailsAgainWithTheSameError) {
    for (const auto& [text, code] : {std::pair<std::string_view, int>{"", 1001}, {"YWJ", 1002}, {"Y=Jj", 1002}}) {
        auto resource = resourceWith(text);
        for (int i = 0; i < 2; ++i) {
            const auto data = resource.getContentData();
            ASSERT_FALSE(data) << text;
            EXPECT_EQ(data.error().domain, EvernoteXMLResourceErrorDomain);
            EXPECT_EQ(data.error().code, code);
            EXPECT_FALSE(resource.md5Hash());
            EXPECT_FALSE(resource.writeToURL(URL::fileURLWithPath("/dev/null/x")));
            EXPECT_EQ(resource.base64Data(), text);
        }
    }
}

TEST(EvernoteXMLResource, GivesItsTextAsReadUntilItHasBeenDecoded) {
    auto resource = resourceWith(" YWJj\nZA==\n");
    EXPECT_EQ(resource.base64Data(), " YWJj\nZA==\n");
    ASSERT_TRUE(resource.getContentData());
    EXPECT_EQ(resource.base64Data(), "YWJjZA==");
    std::string url = "data:image/png;base64,";
    resource.appendBase64DataTo(url);
    EXPECT_EQ(url, "data:image/png;base64,YWJjZA==");
}

TEST(EvernoteXMLResource, HashesItsBytesInLowerCase) {
    auto resource = resourceWith("YWJj");
    EXPECT_EQ(resource.md5Hash(), "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(resource.md5Hash(), "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(resourceWith("\n").md5Hash(), "d41d8cd98f00b204e9800998ecf8427e");
}

TEST(EvernoteXMLResource, DecodesAndHashesOnce) {
    auto resource = resourceWith("YWJj");
    const auto first = resource.getContentData();
    ASSERT_TRUE(first);
    ASSERT_TRUE(resource.md5Hash());
    resource.appendBase64Data("not base64"); // would fail if it were decoded again
    const auto second = resource.getContentData();
    ASSERT_TRUE(second);
    EXPECT_EQ(second->bytes().data(), first->bytes().data()); // the very same bytes
    EXPECT_EQ(resource.md5Hash(), "900150983cd24fb0d6963f7d28e17f72");
}

TEST(EvernoteXMLResource, WritesItsBytesOverAFileButNotThroughALink) {
    tests::ScratchDirectory scratch;
    auto resource = resourceWith("YWJj");
    const auto path = scratch / "a.txt";
    tests::writeFile(path, "longer than before");
    EXPECT_TRUE(resource.writeToURL(URL::fileURLWithPath(path.string())));
    EXPECT_EQ(tests::readFile(path), "abc");
    std::filesystem::create_symlink(scratch / "target", scratch / "link");
    EXPECT_FALSE(resource.writeToURL(URL::fileURLWithPath((scratch / "link").string())));
    EXPECT_FALSE(std::filesystem::exists(scratch / "target"));
    const auto missing = resource.writeToURL(URL::fileURLWithPath((scratch / "no" / "x").string()));
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error().domain, platform::kCocoaErrorDomain);
}

TEST(EvernoteXMLItem, StartsEmptyWithAnIdentifierOfItsOwn) {
    const URL directory = URL::fileURLWithPath("/tmp", true);
    const EvernoteXMLItem a(directory);
    const EvernoteXMLItem b(directory);
    EXPECT_NE(a.identifier, b.identifier);
    EXPECT_EQ(a.directoryURL, directory);
    EXPECT_TRUE(a.title.empty() && a.contentData.empty() && a.tags.empty() && a.resources.empty());
    EXPECT_FALSE(a.created || a.updated || a.intermediateHTMLDirectoryURL || a.saveWebClippingsAsNotes);
}

} // namespace
} // namespace quillet
