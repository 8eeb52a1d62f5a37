#include "platform/files/ByteLimit.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "platform/base/UTF16.h"

using platform::nameLimitedInBytes;

namespace {

std::string repeated(std::string_view text, int count) {
    std::string result;
    for (int i = 0; i < count; ++i) result += text;
    return result;
}

} // namespace

TEST(ByteLimit, KeepsNamesThatFit) {
    EXPECT_EQ(nameLimitedInBytes("Note.qltnote"), "Note.qltnote");
    EXPECT_EQ(nameLimitedInBytes(repeated("x", 255)), repeated("x", 255));
    EXPECT_EQ(nameLimitedInBytes(""), "");
}

TEST(ByteLimit, CutsAtACharacterAndKeepsTheExtension) {
    EXPECT_EQ(nameLimitedInBytes(repeated("語", 128) + ".qltnote"), repeated("語", 82) + ".qltnote");
    EXPECT_EQ(nameLimitedInBytes(repeated("😀", 100) + ".html"), repeated("😀", 62) + ".html");
    EXPECT_EQ(nameLimitedInBytes(repeated("x", 300)), repeated("x", 255));
    EXPECT_EQ(nameLimitedInBytes("." + repeated("x", 300)), "." + repeated("x", 254));
    EXPECT_EQ(nameLimitedInBytes(repeated("x", 300) + "."), repeated("x", 255));
}

TEST(ByteLimit, LeavesRoomForANumber) {
    EXPECT_EQ(nameLimitedInBytes(repeated("x", 255), 8), repeated("x", 247));
    EXPECT_EQ(nameLimitedInBytes(repeated("x", 250) + ".txt", 8), repeated("x", 243) + ".txt");
    EXPECT_EQ(nameLimitedInBytes(repeated("x", 247), 8), repeated("x", 247));
}

TEST(ByteLimit, DropsAnExtensionThatTakesAllTheRoom) {
    EXPECT_EQ(nameLimitedInBytes("name." + repeated("e", 300)), "name." + repeated("e", 250));
    EXPECT_EQ(nameLimitedInBytes("n." + repeated("e", 254)), "n." + repeated("e", 253));
}

TEST(ByteLimit, KeepsCombiningSequencesWhole) {
    EXPECT_EQ(nameLimitedInBytes("abe\u0301", 0, 4), "ab");
    EXPECT_EQ(nameLimitedInBytes("ab\U0001F44D\U0001F3FD", 0, 7), "ab");
    EXPECT_EQ(nameLimitedInBytes("ab\U0001F468\u200D\U0001F469", 0, 9), "ab");
    EXPECT_EQ(nameLimitedInBytes("e" + repeated("\u0301", 200), 0, 10), "e" + repeated("\u0301", 4));
}

TEST(ByteLimit, CutsStrayBytesToo) {
    EXPECT_EQ(nameLimitedInBytes(repeated("\x80", 300)), repeated("\x80", 255));
}

RC_GTEST_PROP(ByteLimit, NeverPassesTheLimitNorBreaksUTF8, (const std::string& seed, bool withExtension)) {
    std::string name = platform::utf8FromUTF16(platform::utf16FromUTF8(seed));
    name = repeated(name + "ü語😀e\u0301", 20) + (withExtension ? ".txt" : "");
    for (const std::size_t limit : {20, 21, 22, 23, 24}) {
        const std::string cut = nameLimitedInBytes(name, 0, limit);
        RC_ASSERT(cut.size() <= limit);
        RC_ASSERT(platform::isValidUTF8(cut));
        RC_ASSERT(!cut.empty());
    }
}
