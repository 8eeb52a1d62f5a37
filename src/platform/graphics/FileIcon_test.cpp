#include "platform/graphics/FileIcon.h"

#include <gtest/gtest.h>

#include "platform/files/FileWrapper.h"
#include "platform/graphics/GraphicsContext.h"
#include "platform/graphics/TextDrawing.h"

using namespace platform;

namespace {

Image iconOf(std::string name) {
    const auto wrapper = FileWrapper::regularFile(Data("x"));
    wrapper->setPreferredFilename(std::move(name));
    return iconForFileWrapper(*wrapper);
}

} // namespace

TEST(FileIcon, KindsOfFilesLookDifferent) {
    const Image plain = iconOf("name"), pdf = iconOf("Report.pdf"), text = iconOf("a.txt");
    EXPECT_EQ(plain.size(), (Size{32, 32}));
    EXPECT_NE(pdf.pixelAt(16, 24), plain.pixelAt(16, 24));
    EXPECT_NE(pdf.pixelAt(16, 24), text.pixelAt(16, 24));
    EXPECT_EQ(iconOf("b.TXT").pixelAt(16, 24), text.pixelAt(16, 24));
    EXPECT_EQ(iconOf("b.unheardof").pixelAt(16, 24), plain.pixelAt(16, 24));
    EXPECT_EQ(iconForContentType("com.adobe.pdf").pixelAt(16, 24), pdf.pixelAt(16, 24));
    EXPECT_NE(iconForFileWrapper(*FileWrapper::directory()).pixelAt(16, 24), plain.pixelAt(16, 24));
}

TEST(FileIcon, TheDiskNameCountsBeforeThePreferredOne) {
    const auto wrapper = FileWrapper::regularFile(Data("x"));
    wrapper->setPreferredFilename("a.txt");
    wrapper->setFilename("a.pdf");
    EXPECT_EQ(iconForFileWrapper(*wrapper).pixelAt(16, 24), iconOf("a.pdf").pixelAt(16, 24));
}

TEST(TextDrawing, LongerTextIsWiderAndLargerTextHigher) {
    const Size word = sizeOfText("name", Font("Helvetica", 12)), two = sizeOfText("name name", Font("Helvetica", 12));
    EXPECT_GT(word.width, 0);
    EXPECT_GT(two.width, word.width);
    EXPECT_EQ(two.height, word.height);
    EXPECT_GT(sizeOfText("name", Font("Helvetica", 24)).height, word.height);
    EXPECT_EQ(sizeOfText("", Font("Helvetica", 12)).width, 0);
}

TEST(TextDrawing, DrawsInsideTheRectangle) {
    const Image image = Image::drawn({60, 40}, [](GraphicsContext& context) {
        drawText(context, "a name that is much too long for this", Font("Helvetica", 12), Color::sRGB(1, 0, 0),
                 {{10, 10}, {40, 20}});
    });
    double inside = 0, outside = 0;
    for (std::size_t y = 0; y < 40; ++y)
        for (std::size_t x = 0; x < 60; ++x)
            (x >= 10 && x < 50 && y >= 10 ? inside : outside) += image.pixelAt(x, y).alpha;
    EXPECT_GT(inside, 10);
    EXPECT_LT(outside, inside / 20);
}
