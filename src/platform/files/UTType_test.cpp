#include "platform/files/UTType.h"

#include <set>
#include <string>

#include <gtest/gtest.h>

#include "platform/files/UTTypeTable.h"

using platform::UTType;

TEST(UTType, PrefersTheFirstExtensionOfAMIMEType) {
    const struct {
        const char* mimeType;
        std::optional<std::string> extension;
    } kCases[] = {
        {"image/jpeg", "jpeg"},   {"image/tiff", "tiff"},
        {"image/png", "png"},     {"IMAGE/PNG", "png"},
        {"audio/mp4", "mp4"},     {"video/mp4", "mp4"},
        {"audio/mpeg", "mp3"},    {"application/pdf", "pdf"},
        {"text/plain", "txt"},    {"text/html", "html"},
        {"text/calendar", "ics"}, {"application/octet-stream", std::nullopt},
        {"text/x-unknown", {}},   {"application/rtf", std::nullopt},
        {"image/pjpeg", {}},      {"text/plain;charset=utf-8", std::nullopt},
    };
    for (const auto& [mimeType, extension] : kCases)
        EXPECT_EQ(UTType::typeWithMIMEType(mimeType)->preferredFilenameExtension(), extension) << mimeType;
}

TEST(UTType, FindsTheDeclaredTypeOfATag) {
    const struct {
        const char *extension, *identifier;
    } kCases[] = {
        {"jpg", "public.jpeg"},
        {"JPE", "public.jpeg"},
        {"ts", "public.mpeg-2-transport-stream"},
        {"bin", "com.apple.macbinary-archive"},
        {"mp4", "public.mpeg-4"},
        {"rtfd", "com.apple.rtfd"},
        {"md", "net.daringfireball.markdown"},
        {"c++", "public.c-plus-plus-source"},
        {"opus", "org.xiph.ogg-audio"},
    };
    for (const auto& [extension, identifier] : kCases)
        EXPECT_EQ(UTType::typeWithFilenameExtension(extension)->identifier(), identifier);
    EXPECT_EQ(UTType::typeWithMIMEType("application/octet-stream")->identifier(), "public.data");
    EXPECT_EQ(UTType::typeWithMIMEType("audio/mp4")->identifier(), "public.mpeg-4-audio");
    EXPECT_EQ(UTType::typeWithFilenameExtension(""), std::nullopt);
    EXPECT_EQ(UTType::typeWithMIMEType(""), std::nullopt);
}

TEST(UTType, ConformsAlongTheTree) {
    const struct {
        const char *identifier, *other;
        bool conforms;
    } kCases[] = {
        {"public.jpeg", "public.image", true},
        {"public.jpeg", "public.item", true},
        {"public.jpeg", "public.jpeg", true},
        {"public.jpeg", "public.text", false},
        {"public.image", "public.jpeg", false},
        {"com.apple.m4a-audio", "public.audio", true},
        {"com.apple.quicktime-movie", "public.audiovisual-content", true},
        {"com.apple.rtfd", "com.apple.package", true},
        {"com.apple.rtfd", "public.directory", true},
        {"com.apple.rtfd", "public.data", false},
        {"public.svg-image", "public.text", true},
        {"public.python-script", "public.plain-text", true},
        {"com.adobe.pdf", "public.image", false},
        {"public.zip-archive", "public.archive", true},
        {"public.jpeg", "no.such.type", false},
    };
    for (const auto& [identifier, other, conforms] : kCases)
        EXPECT_EQ(UTType::typeWithIdentifier(identifier)->conformsTo(other), conforms) << identifier << " " << other;
    EXPECT_TRUE(platform::mimeTypeConformsTo("image/webp", "public.image"));
    EXPECT_FALSE(platform::mimeTypeConformsTo("image/x-unheard-of", "public.image"));
    EXPECT_TRUE(platform::mimeTypeConformsTo("image/x-unheard-of", "public.data"));
    EXPECT_FALSE(platform::mimeTypeConformsTo("", "public.data"));
}

TEST(UTType, MakesTheDynamicIdentifiersThatSystemsMake) {
    const struct {
        const char *extension, *identifier;
    } kReal[] = {
        {"srt", "dyn.ah62d4rv4ge81g6xy"},    {"conf", "dyn.ah62d4rv4ge80g55sq2"}, {"s16", "dyn.ah62d4rv4ge81gqm0"},
        {"gpx", "dyn.ah62d4rv4ge80s6d2"},    {"mcpb", "dyn.ah62d4rv4ge80425uqk"}, {"rmd", "dyn.ah62d4rv4ge81e5pe"},
        {"livp", "dyn.ah62d4rv4ge8024p0sa"},
    };
    for (const auto& [extension, identifier] : kReal) {
        EXPECT_EQ(UTType::typeWithFilenameExtension(extension)->identifier(), identifier);
        const auto read = UTType::typeWithIdentifier(identifier);
        ASSERT_TRUE(read) << identifier;
        EXPECT_TRUE(read->isDynamic());
        EXPECT_EQ(read->preferredFilenameExtension(), extension);
        EXPECT_EQ(read->preferredMIMEType(), std::nullopt);
        EXPECT_TRUE(read->conformsTo("public.data"));
        EXPECT_TRUE(read->conformsTo("public.item"));
        EXPECT_FALSE(read->conformsTo("public.content"));
    }
    EXPECT_EQ(UTType::typeWithFilenameExtension("MKV")->identifier(), "dyn.ah62d4rv4ge804450");
    const auto ink = UTType::typeWithMIMEType("application/vnd.evernote.ink");
    EXPECT_EQ(ink->identifier(), "dyn.ah62d4rv4gq80c6durvy0g2pyrf106p50r3wc63p0qz3g655yqy1gw5xp");
    EXPECT_EQ(ink->preferredMIMEType(), "application/vnd.evernote.ink");
    EXPECT_EQ(ink->preferredFilenameExtension(), std::nullopt);
}

TEST(UTType, ReadsDynamicIdentifiersWithoutConformance) {
    const auto extension = UTType::typeWithIdentifier("dyn.age80u652");
    ASSERT_TRUE(extension);
    EXPECT_EQ(extension->preferredFilenameExtension(), "hsx");
    EXPECT_FALSE(extension->conformsTo("public.data"));
    const auto code = UTType::typeWithIdentifier("dyn.agk8ycxcbn6");
    ASSERT_TRUE(code);
    EXPECT_EQ(code->preferredFilenameExtension(), std::nullopt);
}

TEST(UTType, KnowsNoTypeForOtherIdentifiers) {
    for (const auto* identifier : {"", "public.nothing", "dyn.a", "dyn.a!", "dyn.aaaaa", "dyn.ah62d4rv4"})
        EXPECT_EQ(UTType::typeWithIdentifier(identifier), std::nullopt) << identifier;
}

TEST(UTTypeTable, NamesEachTypeOnceAndOnlyParentsThatExist) {
    std::set<std::string_view> identifiers;
    for (const auto& row : platform::utTypeDeclarations())
        EXPECT_TRUE(identifiers.insert(row.identifier).second) << row.identifier;
    for (const auto& row : platform::utTypeDeclarations()) {
        const auto type = UTType::typeWithIdentifier(row.identifier);
        std::string parents(row.parents);
        for (std::size_t start = 0; start < parents.size();) {
            const std::size_t end = std::min(parents.find(' ', start), parents.size());
            const std::string parent = parents.substr(start, end - start);
            EXPECT_TRUE(identifiers.contains(parent)) << parent;
            EXPECT_TRUE(type->conformsTo(parent)) << row.identifier;
            start = end + 1;
        }
    }
}
