#include "styles/base/NoteBackgroundColor.h"

#include <gtest/gtest.h>

#include "platform/archive/KeyedArchiver.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/foundation/Environment.h"
#include "platform/graphics/Font.h"
#include "platform/text/TextCoding.h"
#include "styles/base/Colors.h"
#include "tests/support/ScratchDirectory.h"

using namespace quillet;
using platform::ArchivedObject;
using platform::Color;
using platform::Data;

namespace {

class NoteBackgroundColor : public testing::Test {
  protected:
    void SetUp() override {
        platform::registerFoundationClasses();
        platform::registerArchivableTextClasses();
        registerHighlightColorAssets();
        environment_->preferencesDirectory = scratch_.path().string();
        environment_->bundleIdentifier = "org.example.colors";
        environment_->darkAppearance = false;
    }
    static Data archive(const ArchivedObject& object) {
        return *platform::KeyedArchiver::archivedData(object, platform::KeyedArchiver::Coding::secure);
    }
    static Data archive(const Color& color) { return archive(std::make_shared<const Color>(color)); }
    static void store(const platform::Value& value) {
        ASSERT_TRUE(platform::UserDefaults::standard().setObject(kNoteDefaultBackgroundColorDefaultsKey, value));
    }

    tests::ScratchDirectory scratch_;
    platform::ScopedEnvironment environment_;
};

} // namespace

TEST_F(NoteBackgroundColor, WithoutAChoiceIsTheSystemsOwn) {
    EXPECT_EQ(defaultNoteBackgroundColor(), Color::textBackgroundColor());
}

TEST_F(NoteBackgroundColor, WhiteAndBlackMeanTheSystemsOwn) {
    for (const Color& color : {Color::white(), Color::black(), crayonsWhiteColor(), appleBlackColor()}) {
        store(archive(color));
        EXPECT_EQ(defaultNoteBackgroundColor(), Color::textBackgroundColor());
    }
}

TEST_F(NoteBackgroundColor, AnyOtherColorIsTaken) {
    for (const Color& color : {Color::deviceRGB(0.25, 0.5, 0.75), greenHighlightColor()}) {
        store(archive(color));
        EXPECT_TRUE(isEqualToColorQLTVersion(defaultNoteBackgroundColor(), color));
    }
}

TEST_F(NoteBackgroundColor, WhatIsNoColorIsRefused) {
    const QLTSecureUnarchiveColorFromDataTransformer transformer;
    EXPECT_EQ(transformer.allowedTopLevelClasses(), std::vector<std::string_view>{"NSColor"});
    EXPECT_TRUE(transformer.transformedValue(archive(Color::sRGB(1, 0, 0))));
    const Data kCases[] = {Data(), Data("junk"), archive(platform::Value("text")),
                           archive(std::make_shared<platform::ObjectArray>()),
                           archive(std::make_shared<const platform::Font>("Menlo-Bold", 12.0))};
    for (const Data& data : kCases) {
        EXPECT_FALSE(transformer.transformedValue(data));
        store(data);
        EXPECT_EQ(defaultNoteBackgroundColor(), Color::textBackgroundColor());
    }
    store("text");
    EXPECT_EQ(defaultNoteBackgroundColor(), Color::textBackgroundColor());
}
