// Archives in the forms that other programs write, read to their text dumps.
#include <gtest/gtest.h>

#include "platform/archive/KeyedArchiver.h"
#include "platform/archive/KeyedUnarchiver.h"
#include "platform/text/AttributedString.h"
#include "platform/text/TextCoding.h"
#include "platform/text/TextDump.h"
#include "tests/support/Golden.h"
#include "tests/support/ScratchDirectory.h"

namespace platform {
namespace {

std::shared_ptr<const AttributedString> textFrom(std::string_view archive) {
    const auto object = unarchivedObject(
        archive, {.requiresSecureCoding = false, .allowedClasses = {"NSAttributedString", "NSString"}});
    EXPECT_TRUE(object.has_value()) << object.error().description();
    return object ? object->as<AttributedString>() : nullptr;
}

Data archiveOf(const std::shared_ptr<const AttributedString>& text) {
    const auto archive = KeyedArchiver::archivedData(text, KeyedArchiver::Coding::plain);
    EXPECT_TRUE(archive.has_value()) << archive.error().description();
    return archive ? *archive : Data();
}

TEST(GoldenArchives, ReadAsTheirDumps) {
    registerArchivableTextClasses();
    for (const tests::GoldenCase& golden : tests::goldenCases("archives")) {
        SCOPED_TRACE(golden.name);
        const auto text = textFrom(tests::readFile(golden.directory / "input.plist"));
        ASSERT_TRUE(text);
        tests::expectGolden(golden, "expected.dump", textDump(*text));
    }
}

TEST(GoldenArchives, SayTheSameWhenWeHaveWrittenThem) {
    registerArchivableTextClasses();
    for (const tests::GoldenCase& golden : tests::goldenCases("archives")) {
        SCOPED_TRACE(golden.name);
        const auto text = textFrom(tests::readFile(golden.directory / "input.plist"));
        ASSERT_TRUE(text);
        const Data archive = archiveOf(text);
        const auto again = textFrom(archive.bytes());
        ASSERT_TRUE(again);
        EXPECT_EQ(textDump(*again), textDump(*text));
        EXPECT_EQ(archiveOf(again), archive);
    }
}

} // namespace
} // namespace platform
