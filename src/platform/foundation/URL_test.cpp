#include "platform/foundation/URL.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <filesystem>

namespace platform {
namespace {

URL url(std::string_view text) {
    return URL::fromString(text).value();
}

TEST(URL, RefusesWhatIsNoReference) {
    for (const char* text :
         {"", "a b", "http://a/%", "http://a/%4", "http://a/%4g", "http://a/\n", "http://a/é", "a#b#c", "http://a:8x/",
          "http://[::1/", "http://a]/", "1:2", ":a", "http://a/<b>", "a\"b", "a\\b"})
        EXPECT_FALSE(URL::fromString(text)) << text;
    for (const char* text : {"a", "?q", "#f", "//h", "http:", "http://a:80/", "http://[::1]:80/x", "mailto:a@b",
                             "http://a/?b[]=c", "./1:2", "a%20b", "HTTP://A/;p=1"})
        EXPECT_TRUE(URL::fromString(text)) << text;
}

TEST(URL, SplitsIntoItsParts) {
    const URL whole = url("HTTPS://user:pw@ex%61mple.org:8080/a%20b/c.d/?x=1&y#frag");
    EXPECT_EQ(whole.scheme(), "https");
    EXPECT_EQ(whole.host(), "example.org");
    EXPECT_EQ(whole.path(), "/a b/c.d");
    EXPECT_EQ(whole.query(), "x=1&y");
    EXPECT_EQ(whole.fragment(), "frag");
    const URL relative = url("a/b");
    EXPECT_EQ(relative.scheme(), "");
    EXPECT_EQ(relative.host(), std::nullopt);
    EXPECT_EQ(relative.query(), std::nullopt);
    EXPECT_EQ(relative.fragment(), std::nullopt);
    EXPECT_EQ(url("about:reader?url=x").path(), "reader");
    EXPECT_EQ(url("http://[::1]:80/").host(), "::1");
    EXPECT_EQ(url("file:///a").host(), "");
}

TEST(URL, QueryItemsAreDecodedAndKeepMissingValues) {
    const auto items = url("about:reader?url=https%3A%2F%2Fa.org%2F%3Fb%3Dc%26d&=e&f&g=").queryItems();
    ASSERT_EQ(items.size(), 4u);
    EXPECT_EQ(items[0].first, "url");
    EXPECT_EQ(items[0].second, "https://a.org/?b=c&d");
    EXPECT_EQ(items[1].first, "");
    EXPECT_EQ(items[2].second, std::nullopt);
    EXPECT_EQ(items[3].second, "");
    EXPECT_TRUE(url("a?").queryItems().empty());
    EXPECT_TRUE(url("a").queryItems().empty());
}

// The examples of RFC 3986, sections 5.4.1 and 5.4.2.
TEST(URL, ResolvesTheExamplesOfTheStandard) {
    struct Row {
        const char *reference, *target;
    };
    const std::vector<Row> rows{
        {"g:h", "g:h"},
        {"g", "http://a/b/c/g"},
        {"./g", "http://a/b/c/g"},
        {"g/", "http://a/b/c/g/"},
        {"/g", "http://a/g"},
        {"//g", "http://g"},
        {"?y", "http://a/b/c/d;p?y"},
        {"g?y", "http://a/b/c/g?y"},
        {"#s", "http://a/b/c/d;p?q#s"},
        {"g#s", "http://a/b/c/g#s"},
        {"g?y#s", "http://a/b/c/g?y#s"},
        {";x", "http://a/b/c/;x"},
        {"g;x", "http://a/b/c/g;x"},
        {"g;x?y#s", "http://a/b/c/g;x?y#s"},
        {"", "http://a/b/c/d;p?q"},
        {".", "http://a/b/c/"},
        {"./", "http://a/b/c/"},
        {"..", "http://a/b/"},
        {"../", "http://a/b/"},
        {"../g", "http://a/b/g"},
        {"../..", "http://a/"},
        {"../../", "http://a/"},
        {"../../g", "http://a/g"},
        {"../../../g", "http://a/g"},
        {"../../../../g", "http://a/g"},
        {"/./g", "http://a/g"},
        {"/../g", "http://a/g"},
        {"g.", "http://a/b/c/g."},
        {".g", "http://a/b/c/.g"},
        {"g..", "http://a/b/c/g.."},
        {"..g", "http://a/b/c/..g"},
        {"./../g", "http://a/b/g"},
        {"./g/.", "http://a/b/c/g/"},
        {"g/./h", "http://a/b/c/g/h"},
        {"g/../h", "http://a/b/c/h"},
        {"g;x=1/./y", "http://a/b/c/g;x=1/y"},
        {"g;x=1/../y", "http://a/b/c/y"},
        {"g?y/./x", "http://a/b/c/g?y/./x"},
        {"g#s/../x", "http://a/b/c/g#s/../x"},
        {"http:g", "http:g"},
    };
    const URL base = url("http://a/b/c/d;p?q");
    for (const Row& row : rows)
        EXPECT_EQ(URL::fromString(row.reference, base).value().absoluteString(), row.target) << row.reference;
    EXPECT_EQ(URL::fromString("g", url("http://a")).value().absoluteString(), "http://a/g");
    EXPECT_EQ(URL::fromString("/..//g", url("x:/a")).value().absoluteString(), "x:/.//g");
    EXPECT_FALSE(URL::fromString("a b", base));
}

TEST(URL, FileURLsRoundTripEveryPath) {
    EXPECT_TRUE(rc::check([](const std::string& bytes) {
        std::string path = "/" + bytes;
        while (path.size() > 1 && path.ends_with('/')) path.pop_back();
        const URL made = URL::fileURLWithPath(path);
        RC_ASSERT(made.isFileURL());
        RC_ASSERT(made.path() == path);
        RC_ASSERT(URL::fromString(made.absoluteString()) == made);
        RC_ASSERT(URL::fileURLWithPath(path, true).absoluteString().ends_with('/'));
    }));
}

TEST(URL, FileURLsEncodeWhatAPathMayNotHold) {
    EXPECT_EQ(URL::fileURLWithPath("/a b/ü;%?#.txt").absoluteString(), "file:///a%20b/%C3%BC%3B%25%3F%23.txt");
    EXPECT_EQ(URL::fileURLWithPath("/a", true).absoluteString(), "file:///a/");
    EXPECT_EQ(URL::fileURLWithPath("/", true).absoluteString(), "file:///");
    EXPECT_EQ(URL::fileURLWithPath("x/y").path(), std::filesystem::current_path().string() + "/x/y");
    EXPECT_EQ(URL::fileURLWithPath("").path(), std::filesystem::current_path().string());
}

TEST(URL, DataRepresentationEncodesOnlyWhatIsNotAllowed) {
    EXPECT_EQ(URL::fromDataRepresentation("http://a/b c?ü=<1>#x#y").absoluteString(),
              "http://a/b%20c?%C3%BC=%3C1%3E#x%23y");
    EXPECT_EQ(URL::fromDataRepresentation("100% %41").absoluteString(), "100%25%20%41");
    EXPECT_EQ(URL::fromDataRepresentation("").absoluteString(), "");
}

TEST(URL, PathOperationsKeepTheRest) {
    EXPECT_EQ(url("http://h?q").appendingPathComponent("a b").absoluteString(), "http://h/a%20b?q");
    EXPECT_EQ(url("file:///a/").appendingPathComponent("b").absoluteString(), "file:///a/b");
    EXPECT_EQ(url("file:///a").appendingPathComponent("b", true).absoluteString(), "file:///a/b/");
    EXPECT_EQ(url("file:///").appendingPathComponent("/b").absoluteString(), "file:///b");
    EXPECT_EQ(url("file:///a.b/").appendingPathExtension("c").absoluteString(), "file:///a.b.c/");
    EXPECT_EQ(url("file:///").appendingPathExtension("c").absoluteString(), "file:///");
    EXPECT_EQ(url("file:///a.b/c.d.e").deletingPathExtension().absoluteString(), "file:///a.b/c.d");
    EXPECT_EQ(url("file:///a.b/.c").deletingPathExtension().absoluteString(), "file:///a.b/.c");
    EXPECT_EQ(url("file:///a/b").deletingLastPathComponent().absoluteString(), "file:///a/");
    EXPECT_EQ(url("file:///a/b/").deletingLastPathComponent().absoluteString(), "file:///a/");
    EXPECT_EQ(url("file:///").deletingLastPathComponent().absoluteString(), "file:///");
    EXPECT_EQ(url("a").deletingLastPathComponent().absoluteString(), "./");
    EXPECT_EQ(url("safari-reader://a/b?c#d").withScheme("http").absoluteString(), "http://a/b?c#d");
}

TEST(URL, PathQuestionsAnswerDecoded) {
    EXPECT_EQ(url("file:///a/b%20c.t%20x/").lastPathComponent(), "b c.t x");
    EXPECT_EQ(url("file:///a/b%20c.t%20x/").pathExtension(), "t x");
    EXPECT_EQ(url("file:///").lastPathComponent(), "/");
    EXPECT_EQ(url("http://h").lastPathComponent(), "");
    EXPECT_EQ(url("file:///.hidden").pathExtension(), "");
    EXPECT_EQ(url("http://h/a%2Fb/c/").pathComponents(), (std::vector<std::string>{"/", "a/b", "c"}));
    EXPECT_EQ(url("file:///").path(), "/");
}

} // namespace
} // namespace platform
