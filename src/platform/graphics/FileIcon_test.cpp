#include "platform/graphics/FileIcon.h"

#include <set>
#include <string>
#include <utility>

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
    std::set<std::string> pictures{iconForFileWrapper(*FileWrapper::directory()).pngData()};
    for (const auto* name : {"name", "a.pdf", "a.png", "a.mov", "a.mp3", "a.zip", "a.xlsx", "a.pptx", "a.txt"}) {
        const Image icon = iconOf(name);
        EXPECT_EQ(icon.size(), (Size{32, 32})) << name;
        EXPECT_TRUE(pictures.insert(icon.pngData()).second) << name << " looks like another kind";
    }
}

TEST(FileIcon, FilesOfOneKindLookTheSame) {
    const std::pair<const char*, const char*> cases[] = {
        {"a.txt", "b.TXT"}, {"a.txt", "a.html"},     {"a.txt", "a.docx"}, {"a.png", "a.jpeg"},
        {"a.mov", "a.mp4"}, {"name", "b.unheardof"}, {"a.zip", "a.tar"},  {"a.mp3", "a.wav"},
    };
    for (const auto& [one, other] : cases)
        EXPECT_EQ(iconOf(one).pngData(), iconOf(other).pngData()) << one << " and " << other;
    EXPECT_EQ(iconForContentType("com.adobe.pdf").pngData(), iconOf("a.pdf").pngData());
    EXPECT_EQ(iconForContentType("no.such.type").pngData(), iconOf("name").pngData());
}

TEST(FileIcon, IsASheetWithATransparentCorner) {
    const Image icon = iconOf("a.pdf");
    EXPECT_EQ(icon.pixelAt(25, 1).alpha, 0) << "beside the turned-down corner";
    EXPECT_EQ(icon.pixelAt(10, 10), (Color::RGBA{1, 1, 1, 1})) << "paper";
    EXPECT_EQ(icon.pixelAt(2, 16).alpha, 0) << "beside the sheet";
    EXPECT_GT(icon.pixelAt(8, 17).red, icon.pixelAt(8, 17).green + 0.5) << "the band of a PDF";
}

TEST(FileIcon, TheDiskNameCountsBeforeThePreferredOne) {
    const auto wrapper = FileWrapper::regularFile(Data("x"));
    wrapper->setPreferredFilename("a.txt");
    wrapper->setFilename("a.pdf");
    EXPECT_EQ(iconForFileWrapper(*wrapper).pngData(), iconOf("a.pdf").pngData());
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
