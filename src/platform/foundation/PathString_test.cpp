#include "platform/foundation/PathString.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include "platform/base/UTF16.h"
#include "platform/foundation/Percent.h"

namespace platform {
namespace {

TEST(PathString, ExtensionFollowsTheLastDotOfTheLastComponent) {
    struct Row {
        const char *path, *extension, *without;
    };
    for (const Row& row :
         {Row{"/tmp/a.tiff", "tiff", "/tmp/a"}, Row{"a.tar.gz", "gz", "a.tar"}, Row{"/tmp/a", "", "/tmp/a"},
          Row{".hidden", "", ".hidden"}, Row{"/tmp/.hidden", "", "/tmp/.hidden"}, Row{".a.tiff", "tiff", ".a"},
          Row{"a.", "", "a"}, Row{"a..tiff", "tiff", "a."}, Row{"a.bundle/", "bundle", "a"}, Row{"a.b/c", "", "a.b/c"},
          Row{"Vol. 2", " 2", "Vol"}, Row{"/", "", "/"}, Row{"", "", ""}, Row{"//", "", "/"}, Row{".", "", "."},
          Row{"/tmp/", "", "/tmp"}, Row{"é.ü", "ü", "é"}}) {
        EXPECT_EQ(pathExtension(row.path), row.extension) << row.path;
        EXPECT_EQ(deletingPathExtension(row.path), row.without) << row.path;
        EXPECT_EQ(pathExtension(utf16FromUTF8(row.path)), utf16FromUTF8(row.extension)) << row.path;
        EXPECT_EQ(deletingPathExtension(utf16FromUTF8(row.path)), utf16FromUTF8(row.without)) << row.path;
    }
}

TEST(PathString, AppendsAnExtensionBehindSlashes) {
    struct Row {
        const char *path, *extension, *result;
    };
    for (const Row& row : {Row{"/tmp/a.old", "tiff", "/tmp/a.old.tiff"}, Row{"/tmp/a.", "tiff", "/tmp/a..tiff"},
                           Row{"/tmp/", "tiff", "/tmp.tiff"}, Row{"a", "", "a"}, Row{"/", "tiff", "/"},
                           Row{"", "tiff", ""}, Row{"a", "b/c", "a"}}) {
        EXPECT_EQ(appendingPathExtension(row.path, row.extension), row.result) << row.path;
        EXPECT_EQ(appendingPathExtension(utf16FromUTF8(row.path), utf16FromUTF8(row.extension)),
                  utf16FromUTF8(row.result));
    }
}

TEST(PathString, TheLastComponentIgnoresSlashesBehindIt) {
    struct Row {
        const char *path, *last;
    };
    for (const Row& row :
         {Row{"/tmp/a.tiff", "a.tiff"}, Row{"/tmp/lock/", "lock"}, Row{"/tmp/", "tmp"}, Row{"/tmp", "tmp"},
          Row{"/", "/"}, Row{"a", "a"}, Row{"a///", "a"}, Row{"", ""}, Row{"a//b", "b"}, Row{"//", "/"}}) {
        EXPECT_EQ(lastPathComponent(row.path), row.last) << row.path;
        EXPECT_EQ(lastPathComponent(utf16FromUTF8(row.path)), utf16FromUTF8(row.last)) << row.path;
    }
}

TEST(PathString, ComponentsKeepOuterSlashes) {
    using Components = std::vector<std::string>;
    EXPECT_EQ(pathComponents("/a//b/"), (Components{"/", "a", "b", "/"}));
    EXPECT_EQ(pathComponents("a/b"), (Components{"a", "b"}));
    EXPECT_EQ(pathComponents("/"), (Components{"/"}));
    EXPECT_EQ(pathComponents("//"), (Components{"/"}));
    EXPECT_EQ(pathComponents(""), Components{});
}

TEST(Percent, EncodesWhatAPathMayNotHold) {
    EXPECT_EQ(percentEncodedForURLPath("AZaz09-._~!$&'()*+,:=@/"), "AZaz09-._~!$&'()*+,:=@/");
    EXPECT_EQ(percentEncodedForURLPath(" \"#%;<>?[\\]^`{|}ü\x7f"),
              "%20%22%23%25%3B%3C%3E%3F%5B%5C%5D%5E%60%7B%7C%7D%C3%BC%7F");
}

TEST(Percent, DecodingRefusesBadSequencesAndBadUTF8) {
    EXPECT_EQ(removingPercentEncoding("a%20%c3%BC+"), "a ü+");
    EXPECT_EQ(removingPercentEncoding(""), "");
    for (const char* text : {"%", "%2", "%2g", "a%", "%FF", "%ED%A0%80"})
        EXPECT_EQ(removingPercentEncoding(text), std::nullopt) << text;
    EXPECT_EQ(percentDecodedBytes("%FF%2g%"), "\xFF%2g%");
}

TEST(Percent, DecodingUndoesEncoding) {
    EXPECT_TRUE(rc::check(
        [](const std::string& bytes) { RC_ASSERT(percentDecodedBytes(percentEncodedForURLPath(bytes)) == bytes); }));
}

} // namespace
} // namespace platform
