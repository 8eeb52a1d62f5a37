#include "platform/graphics/Image.h"

#include <span>

#include <gtest/gtest.h>

#include "platform/graphics/ColorList.h"
#include "platform/graphics/GraphicsContext.h"

using namespace platform;

namespace {

constexpr Color::RGBA kClear{0, 0, 0, 0}, kRed{1, 0, 0, 1}, kBlue{0, 0, 1, 1};
const Color kRedColor = Color::sRGB(1, 0, 0), kBlueColor = Color::sRGB(0, 0, 1);

} // namespace

TEST(Image, FillsPolygons) {
    const Point corners[] = {{0, 0}, {20, 0}, {0, 20}};
    const Image image = Image::drawn({20, 20}, [&](GraphicsContext& context) {
        context.fillPolygon(corners, Color::sRGB(1, 0, 0));
        context.fillPolygon(std::span(corners).first(2), Color::sRGB(0, 1, 0));
        context.fillPolygon({}, Color::sRGB(0, 1, 0));
    });
    EXPECT_EQ(image.pixelAt(5, 5), (Color::RGBA{1, 0, 0, 1}));
    EXPECT_EQ(image.pixelAt(15, 15).alpha, 0);
}

TEST(Image, FillsRectanglesOverTransparency) {
    const Image image = Image::drawn({4, 3}, [](GraphicsContext& context) {
        context.fillRect({{1, 1}, {2, 1}}, kRedColor);
        context.fillRect({{0, 2}, {4, 1}}, Color::pattern());
        context.fillRect({{0, 0}, {0, 3}}, kBlueColor);
        context.fillRect({{3, 0}, {-2, 3}}, kBlueColor);
    });
    EXPECT_EQ(image.size(), (Size{4, 3}));
    for (std::size_t y = 0; y < 3; ++y)
        for (std::size_t x = 0; x < 4; ++x)
            EXPECT_EQ(image.pixelAt(x, y), y == 1 && (x == 1 || x == 2) ? kRed : kClear) << x << "," << y;
    EXPECT_EQ(image.pixelAt(4, 0), kClear);
}

TEST(Image, OvalTouchesTheMiddlesOfItsEdgesAndLeavesTheCorners) {
    const Image image =
        Image::drawn({20, 10}, [](GraphicsContext& context) { context.fillOval({{0, 0}, {20, 10}}, kRedColor); });
    EXPECT_EQ(image.pixelAt(10, 5), kRed);
    EXPECT_EQ(image.pixelAt(0, 0), kClear);
    EXPECT_EQ(image.pixelAt(19, 9), kClear);
    EXPECT_GT(image.pixelAt(10, 0).alpha, 0.9);
    EXPECT_GT(image.pixelAt(0, 5).alpha, 0.5);
}

TEST(Image, StrokeIsAsThickEverywhereAndLeavesTheInside) {
    const Image image = Image::drawn({40, 20}, [](GraphicsContext& context) {
        context.strokeOval(Rect{{0, 0}, {40, 20}}.inset(1, 1), 2, kBlueColor);
    });
    EXPECT_GT(image.pixelAt(20, 1).alpha, 0.9);
    EXPECT_GT(image.pixelAt(1, 10).alpha, 0.8);
    EXPECT_EQ(image.pixelAt(20, 4), kClear);
    EXPECT_EQ(image.pixelAt(4, 10), kClear);
}

TEST(Image, DrawsOneImageScaledIntoAnother) {
    const Image small =
        Image::drawn({1, 1}, [](GraphicsContext& context) { context.fillRect({{0, 0}, {1, 1}}, kRedColor); });
    const Image large =
        Image::drawn({9, 9}, [&](GraphicsContext& context) { context.drawImage(small, {{0, 0}, {9, 9}}); });
    EXPECT_EQ(large.pixelAt(4, 4).red, 1);
    EXPECT_GT(large.pixelAt(4, 4).alpha, 0.9);
}

TEST(Image, SurvivesPNG) {
    const Image image = Image::drawn({2, 1}, [](GraphicsContext& context) {
        context.fillRect({{0, 0}, {1, 1}}, kRedColor);
        context.fillRect({{1, 0}, {1, 1}}, kBlueColor);
    });
    const std::string bytes = image.pngData();
    EXPECT_TRUE(bytes.starts_with("\x89PNG"));
    const auto read = Image::fromPNGData(bytes);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->size(), (Size{2, 1}));
    EXPECT_EQ(read->pixelAt(0, 0), kRed);
    EXPECT_EQ(read->pixelAt(1, 0), kBlue);
    EXPECT_FALSE(Image::fromPNGData(bytes.substr(0, bytes.size() / 2)));
    EXPECT_FALSE(Image::fromPNGData("no image"));
    EXPECT_FALSE(Image::fromPNGData(""));
}

TEST(Image, SizesOfNothingAndSizesTooLargeAreEmpty) {
    const auto nothing = [](GraphicsContext&) { ADD_FAILURE() << "drawn"; };
    for (const Size size : {Size{0, 5}, Size{5, -1}, Size{1e9, 1}}) EXPECT_TRUE(Image::drawn(size, nothing).empty());
    EXPECT_EQ(Image().pngData(), "");
    EXPECT_EQ(Image::drawn({1.2, 1}, [](GraphicsContext&) {}).size(), (Size{2, 1}));
}

TEST(ColorList, KnowsTheEndsOfItsLists) {
    const struct {
        const char *list, *key;
        std::optional<double> white;
    } kCases[] = {
        {"Apple", "White", 1},     {"Apple", "Black", 0}, {"Crayons", "Snow", 1}, {"Crayons", "Licorice", 0},
        {"Crayons", "Steel", 0.4}, {"Apple", "Snow", {}}, {"Crayons", "", {}},    {"Web Safe Colors", "White", {}},
    };
    for (const auto& each : kCases) {
        const auto color = colorWithKey(each.list, each.key);
        ASSERT_EQ(color.has_value(), each.white.has_value()) << each.list << " " << each.key;
        if (!color) continue;
        EXPECT_EQ(color->rgba(), (Color::RGBA{*each.white, *each.white, *each.white, 1}));
    }
}
