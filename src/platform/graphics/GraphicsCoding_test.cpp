#include "platform/graphics/GraphicsCoding.h"

#include <gtest/gtest.h>

#include "platform/archive/KeyedArchiver.h"
#include "platform/archive/KeyedUnarchiver.h"
#include "platform/graphics/Color.h"
#include "platform/graphics/Font.h"
#include "platform/plist/PropertyList.h"

namespace platform {
namespace {

class GraphicsCoding : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        registerFoundationClasses();
        registerArchivableGraphicsClasses();
    }
};

template<class T>
std::string archiveOf(const T& value) {
    const auto archive = KeyedArchiver::archivedData(std::make_shared<const T>(value), KeyedArchiver::Coding::secure);
    EXPECT_TRUE(archive.has_value()) << archive.error().description();
    return archive ? std::string(archive->bytes()) : std::string();
}

template<class T>
std::shared_ptr<const T> readBack(std::string_view archive, std::vector<std::string> allowed) {
    const auto object = unarchivedObject(archive, {.requiresSecureCoding = true, .allowedClasses = std::move(allowed)});
    EXPECT_TRUE(object.has_value()) << object.error().description();
    return object ? object->template as<T>() : nullptr;
}

std::shared_ptr<const Color> colorFrom(std::string_view archive) {
    return readBack<Color>(archive, {"NSColor", "NSColorSpace"});
}

// The dictionary of the archive's root object.
Dictionary rootFields(std::string_view archive) {
    const auto plist = propertyListFromData(archive);
    const Array& objects = *find(*plist->as<Dictionary>(), "$objects")->as<Array>();
    return *objects.at(1).as<Dictionary>();
}

std::string bytesUnder(const Dictionary& fields, std::string_view key) {
    const Value* value = find(fields, key);
    const Data* data = value ? value->as<Data>() : nullptr;
    return data ? std::string(data->bytes()) : "(none)";
}

TEST_F(GraphicsCoding, ColorsOfEverySpaceComeBackEqualAndBytesStayTheSame) {
    registerColorAsset("GraphicsCodingAsset", {1, 0, 0, 1}, {0, 1, 0, 1});
    const Color kColors[] = {
        Color::sRGB(0.2, 238.0 / 255, 1.0 / 3),
        Color::sRGB(1, 0, 0, 0.15),
        Color::deviceRGB(0.1, 0.2, 0.3),
        Color::calibratedRGB(0.1, 0.2, 0.3, 0.4),
        Color::black(),
        Color::calibratedWhite(0.5, 0.5),
        Color::deviceWhite(1.0 / 7),
        Color::deviceCMYK(0.1, 0.2, 0.3, 0.4),
        Color::deviceCMYK(0.1, 0.2, 0.3, 0.4, 0.5),
        Color::textColor(),
        *Color::colorNamed("GraphicsCodingAsset"),
        Color::catalog("System", "unknownColor", {0.25, 0.5, 0.75, 1}),
        Color::pattern(),
    };
    int number = 0;
    for (const Color& color : kColors) {
        const std::string archive = archiveOf(color);
        const auto back = colorFrom(archive);
        ASSERT_TRUE(back) << number;
        EXPECT_EQ(*back, color) << number;
        EXPECT_EQ(archiveOf(*back), archive) << number;
        ++number;
    }
}

TEST_F(GraphicsCoding, ComponentsAreTextThatEndsInNUL) {
    EXPECT_EQ(bytesUnder(rootFields(archiveOf(Color::deviceRGB(1, 0.6, 0.25))), "NSRGB"),
              std::string("1 0.6 0.25\0", 11));
    EXPECT_EQ(bytesUnder(rootFields(archiveOf(Color::deviceRGB(1, 0, 0, 0.5))), "NSRGB"),
              std::string("1 0 0 0.5\0", 10));
    EXPECT_EQ(bytesUnder(rootFields(archiveOf(Color::black())), "NSWhite"), std::string("0\0", 2));
    EXPECT_EQ(bytesUnder(rootFields(archiveOf(Color::deviceCMYK(0, 0, 0, 1))), "NSCMYK"), std::string("0 0 0 1\0", 8));
}

TEST_F(GraphicsCoding, SRGBIsACustomSpaceWithGenericComponentsForOldReaders) {
    const Dictionary fields = rootFields(archiveOf(Color::sRGB(0, 0.5, 1, 0.5)));
    EXPECT_EQ(find(fields, "NSColorSpace")->integerValue(), 1);
    EXPECT_EQ(bytesUnder(fields, "NSComponents"), "0 0.5 1 0.5");
    const std::string generic = bytesUnder(fields, "NSRGB");
    EXPECT_EQ(generic.back(), '\0');
    EXPECT_NE(generic.find(" 0.5"), std::string::npos);
    EXPECT_TRUE(find(fields, "NSCustomColorSpace"));
}

// An archive whose root has the given fields and the class NSColor.
std::string handmadeColor(Dictionary fields) {
    fields["$class"] = UID{2};
    const Dictionary color{{"$classname", "NSColor"}, {"$classes", Array{"NSColor", "NSObject"}}};
    const Dictionary top{{"$version", 100000},
                         {"$archiver", "NSKeyedArchiver"},
                         {"$top", Dictionary{{"root", UID{1}}}},
                         {"$objects", Array{"$null", fields, color}}};
    return *binaryDataFromPropertyList(top);
}

TEST_F(GraphicsCoding, ReadsColorsOfOtherWriters) {
    const auto bytes = [](std::string_view text) { return Value(Data(std::string(text))); };
    struct Row {
        Dictionary fields;
        Color expected;
    };
    const Row kRows[] = {
        {{{"NSColorSpace", 1}, {"NSRGB", bytes("0.1878413977 0.5 1")}}, Color::calibratedRGB(0.1878413977, 0.5, 1)},
        {{{"NSColorSpace", 2}, {"NSRGB", bytes({"1 0 0 0.25\0", 11})}}, Color::deviceRGB(1, 0, 0, 0.25)},
        {{{"NSColorSpace", 3}, {"NSWhite", bytes({"0.5\0", 4})}}, Color::calibratedWhite(0.5)},
        {{{"NSColorSpace", 4}, {"NSWhite", bytes("1 0.5")}}, Color::deviceWhite(1, 0.5)},
        {{{"NSColorSpace", 5}, {"NSCYMK", bytes("0 1 0 0")}}, Color::deviceCMYK(0, 1, 0, 0)},
        {{{"NSColorSpace", 2}, {"NSRGB", bytes("1 junk 1")}}, Color::deviceRGB(1, 0, 0)},
        {{{"NSColorSpace", 2}, {"NSRGB", bytes("")}}, Color::deviceRGB(0, 0, 0)},
        {{{"NSColorSpace", 2}, {"NSRGB", bytes("nan inf 1e999")}}, Color::deviceRGB(0, 0, 0)},
    };
    int number = 0;
    for (const Row& row : kRows) {
        const auto color = colorFrom(handmadeColor(row.fields));
        ASSERT_TRUE(color) << number;
        EXPECT_EQ(*color, row.expected) << number;
        ++number;
    }
}

TEST_F(GraphicsCoding, ColorsThatMakeNoSenseAreNone) {
    for (const Dictionary& fields : {Dictionary{}, Dictionary{{"NSColorSpace", 99}}, Dictionary{{"NSColorSpace", 2}},
                                     Dictionary{{"NSColorSpace", 6}}})
        EXPECT_FALSE(unarchivedObject(handmadeColor(fields), {.allowedClasses = {"NSColor"}}).has_value());
}

TEST_F(GraphicsCoding, FontsKeepNameAndSize) {
    for (const Font& font : {Font("HelveticaNeue-Bold", 13), Font("NoSuchFont", 17.25)}) {
        const std::string archive = archiveOf(font);
        const auto back = readBack<Font>(archive, {"NSFont"});
        ASSERT_TRUE(back);
        EXPECT_EQ(*back, font);
        EXPECT_EQ(archiveOf(*back), archive);
        const Dictionary fields = rootFields(archive);
        EXPECT_EQ(find(fields, "NSfFlags")->integerValue(), 16);
        EXPECT_EQ(find(fields, "NSSize")->doubleValue(), font.pointSize());
    }
}

} // namespace
} // namespace platform
