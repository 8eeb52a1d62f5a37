#include "platform/graphics/ImageSize.h"

#include <string>

#include <gtest/gtest.h>

namespace platform {

namespace {

std::string bytes(std::string_view literal) {
    return std::string(literal);
}

using namespace std::string_view_literals;

TEST(ImageSize, ReadsTheHeadsOfThreeFormats) {
    EXPECT_EQ(imageSize("\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\1\2\0\0\0\x18"sv), (ImageSize{258, 24}));
    EXPECT_EQ(imageSize("GIF87a\x40\1\x10\0"sv), (ImageSize{320, 16}));
    EXPECT_EQ(imageSize("\xFF\xD8\xFF\xE0\0\4JF\xFF\xFF\xC2\0\x11\x08\0\x20\1\0\3"sv), (ImageSize{256, 32}));
}

TEST(ImageSize, SkipsTheTablesThatStandBeforeAFrame) {
    EXPECT_EQ(imageSize("\xFF\xD8\xFF\xC4\0\3x\xFF\xDB\0\2\xFF\xC0\0\x11\x08\0\1\0\2\3"sv), (ImageSize{2, 1}));
}

TEST(ImageSize, SaysNothingOfDamagedHeads) {
    for (const std::string& head : {
             bytes(""sv),
             bytes("plain text"sv),
             bytes("\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\0\1"sv),
             bytes("\x89PNG\r\n\x1A\n\0\0\0\rIDAT\0\0\0\1\0\0\0\1"sv),
             bytes("GIF89a\1"sv),
             bytes("GIF89a\0\0\1\0"sv),
             bytes("\xFF\xD8\xFF\xE0\0\1"sv),
             bytes("\xFF\xD8\xFF\xE0\xFF\xFF"sv),
             bytes("\xFF\xD8\xFF\xC0\0\x11\x08"sv),
             bytes("\xFF\xD8\xFF\xE0\0\2zzzz"sv),
         })
        EXPECT_FALSE(imageSize(head)) << head.size();
}

} // namespace

} // namespace platform
