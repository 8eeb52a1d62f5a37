#include "platform/html/HTMLReader.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/base/SystemLog.h"
#include "platform/text/TextDump.h"
#include "tests/support/Golden.h"
#include "tests/support/ScratchDirectory.h"

namespace platform {
namespace {

TEST(HTMLReader, ReadsTheGoldenPages) {
    for (const auto& golden : tests::goldenCases("html")) {
        SCOPED_TRACE(golden.name);
        const URL directory = URL::fileURLWithPath(golden.directory.string(), true);
        const URL page = directory.appendingPathComponent("input.html");
        const auto read = attributedStringFromHTMLFile(page, {.baseURL = directory, .readAccessURL = directory});
        ASSERT_TRUE(read.has_value());
        tests::expectGolden(golden, "expected.dump", textDump(read->text));
    }
}

TEST(HTMLReader, ResolvesAddressesAgainstTheBase) {
    const URL base = *URL::fromString("https://e.org/a/page.html");
    const auto read =
        attributedStringFromHTMLData("<base href='../b/'><a href='c?d'>x</a>", {.baseURL = base, .readAccessURL = {}});
    ASSERT_TRUE(read.has_value());
    const URL* link = read->text.attributesAt(0).find<URL>(kLinkAttributeName);
    ASSERT_NE(link, nullptr);
    EXPECT_EQ(link->absoluteString(), "https://e.org/b/c?d");
}

TEST(HTMLReader, SaysOnceInTheLogWhatItDoesNotFetch) {
    std::vector<std::string> entries;
    const auto before = setSystemLogSink([&](std::string_view entry) { entries.emplace_back(entry); });
    const auto read = attributedStringFromHTMLData("<img src='https://e.org/x.png'>");
    setSystemLogSink(before);
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(entries, std::vector<std::string>{"Not fetched: https://e.org/x.png"});
}

TEST(HTMLReader, GivesTheDocumentAttributesOfThePage) {
    const auto read = attributedStringFromHTMLData(
        "<title>T</title><meta name=AUTHOR content=me><meta name=keywords content='a, b'>"
        "<meta name=CreationTime content=2024-05-01T09:15:02Z><meta name=ModificationTime content=yesterday>"
        "<body bgcolor=#ff0000>x");
    ASSERT_TRUE(read.has_value());
    const Dictionary& found = read->documentAttributes;
    EXPECT_EQ(found.at("DocumentType").utf8(), "NSHTML");
    EXPECT_EQ(found.at("NSTitleDocumentAttribute").utf8(), "T");
    EXPECT_EQ(found.at("NSAuthorDocumentAttribute").utf8(), "me");
    EXPECT_EQ(found.at("NSKeywordsDocumentAttribute"), Value(Array{Value("a"), Value("b")}));
    EXPECT_EQ(found.at("NSCreationTimeDocumentAttribute").as<Date>()->iso8601(), "2024-05-01T09:15:02Z");
    EXPECT_FALSE(found.contains("NSModificationTimeDocumentAttribute"));
    EXPECT_EQ(found.at("BackgroundColor").utf8(), "#ff0000");
    EXPECT_EQ(read->text.attributesAt(0).find(kBackgroundColorAttributeName), nullptr);
}

TEST(HTMLReader, NamesTheFileThatItCannotRead) {
    const auto read = attributedStringFromHTMLFile(URL::fileURLWithPath("/no/such/page.html"));
    ASSERT_FALSE(read.has_value());
    EXPECT_NE(read.error().description().find("page.html"), std::string::npos);
}

TEST(HTMLReader, ReadsDeepPagesInBoundedTime) {
    std::string page;
    for (int i = 0; i < 100'000; ++i) page += i % 3 == 0 ? "<div>" : i % 3 == 1 ? "<ul><li>" : "<table><tr><td>";
    const auto read = attributedStringFromHTMLData(page + "x");
    ASSERT_TRUE(read.has_value());
    EXPECT_NE(read->text.string().find(u'x'), std::u16string::npos);
}

} // namespace
} // namespace platform
