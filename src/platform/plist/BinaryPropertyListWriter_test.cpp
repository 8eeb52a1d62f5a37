#include "platform/plist/BinaryPropertyListWriter.h"

#include <array>

#include <gtest/gtest.h>

#include "platform/plist/PropertyList.h"

using platform::BinaryPropertyListWriter;
using platform::Date;
using namespace std::string_literals;

namespace {

constexpr std::size_t kHeadSize = 8;
constexpr std::size_t kTrailerSize = 32;

// The bytes of a list whose top is one leaf: everything between the head and the one-byte offset table.
std::string leafBytes(const std::string& list) {
    return list.substr(kHeadSize, list.size() - kHeadSize - kTrailerSize - 1);
}

template<class Add>
std::string encoded(Add add) {
    BinaryPropertyListWriter writer;
    const auto top = add(writer);
    return leafBytes(writer.finish(top));
}

} // namespace

TEST(BinaryPropertyListWriter, EncodesLeavesInTheirSmallestForm) {
    EXPECT_EQ(encoded([](auto& w) { return w.boolean(false); }), "\x08"s);
    EXPECT_EQ(encoded([](auto& w) { return w.boolean(true); }), "\x09"s);
    EXPECT_EQ(encoded([](auto& w) { return w.integer(0); }), "\x10\0"s);
    EXPECT_EQ(encoded([](auto& w) { return w.integer(255); }), "\x10\xFF"s);
    EXPECT_EQ(encoded([](auto& w) { return w.integer(256); }), "\x11\x01\0"s);
    EXPECT_EQ(encoded([](auto& w) { return w.integer(0xFFFF); }), "\x11\xFF\xFF"s);
    EXPECT_EQ(encoded([](auto& w) { return w.integer(0x10000); }), "\x12\0\x01\0\0"s);
    EXPECT_EQ(encoded([](auto& w) { return w.integer(0x100000000); }), "\x13\0\0\0\x01\0\0\0\0"s);
    EXPECT_EQ(encoded([](auto& w) { return w.integer(-1); }), "\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s);
    EXPECT_EQ(encoded([](auto& w) { return w.real(12.0); }), "\x23\x40\x28\0\0\0\0\0\0"s);
    EXPECT_EQ(encoded([](auto& w) { return w.date(Date{1.0}); }), "\x33\x3F\xF0\0\0\0\0\0\0"s);
    EXPECT_EQ(encoded([](auto& w) { return w.data("ab"); }), "\x42"s + "ab");
    EXPECT_EQ(encoded([](auto& w) { return w.string(u"abc"); }), "\x53"s + "abc");
    EXPECT_EQ(encoded([](auto& w) { return w.asciiString("abc"); }), "\x53"s + "abc");
    EXPECT_EQ(encoded([](auto& w) { return w.string(u"\u007F"); }), "\x51\x7F"s);
    EXPECT_EQ(encoded([](auto& w) { return w.string(u"\u0080"); }), "\x61\0\x80"s);
    EXPECT_EQ(encoded([](auto& w) { return w.string("a utf8 name"); }), "\x5B"s + "a utf8 name");
    EXPECT_EQ(encoded([](auto& w) { return w.string("caf\u00E9"); }), "\x64\0c\0a\0f\0\xE9"s);
    EXPECT_EQ(encoded([](auto& w) { return w.string(u"caf\u00E9"); }), "\x64\0c\0a\0f\0\xE9"s);
    EXPECT_EQ(encoded([](auto& w) { return w.string(u"\u00E9\xD800"); }), "\x62\0\xE9\xD8\0"s);
    EXPECT_EQ(encoded([](auto& w) { return w.uid(3); }), "\x80\x03"s);
    EXPECT_EQ(encoded([](auto& w) { return w.uid(300); }), "\x81\x01\x2C"s);
    EXPECT_EQ(encoded([](auto& w) { return w.asciiString(std::string(15, 'x')); }),
              "\x5F\x10\x0F"s + std::string(15, 'x'));
}

TEST(BinaryPropertyListWriter, EncodesEveryUnitOfTextsOfAnyLength) {
    std::u16string ascii, wide;
    std::string asciiBytes, wideBytes;
    for (char16_t i = 0; i < 70; ++i) { // every offset in a block of units
        ascii += static_cast<char16_t>(u'0' + i);
        asciiBytes += static_cast<char>('0' + i);
        wide += static_cast<char16_t>(0x4E00 + 0x101 * i);
        wideBytes += static_cast<char>(0x4E + i);
        wideBytes += static_cast<char>(i);
        EXPECT_TRUE(encoded([&](auto& w) { return w.string(ascii); }).ends_with(asciiBytes));
        EXPECT_TRUE(encoded([&](auto& w) { return w.string(wide); }).ends_with(wideBytes));
    }
}

TEST(BinaryPropertyListWriter, StoresEqualLeavesOnceAndDataAlwaysAnew) {
    BinaryPropertyListWriter writer;
    EXPECT_EQ(writer.string(u"key"), writer.asciiString("key"));
    EXPECT_EQ(writer.integer(7), writer.integer(7));
    EXPECT_NE(writer.integer(7), writer.real(7));
    EXPECT_NE(writer.integer(7), writer.uid(7));
    for (const std::uint64_t uid : {std::uint64_t{0xFFFF}, std::uint64_t{0x10000}, std::uint64_t{70'000}}) {
        EXPECT_EQ(writer.uid(uid), writer.uid(uid));
        EXPECT_NE(writer.uid(uid), writer.uid(uid + 1));
    }
    EXPECT_NE(writer.data("x"), writer.data("x"));
    EXPECT_NE(writer.array({}), writer.array({}));
}

TEST(BinaryPropertyListWriter, StillFindsEqualLeavesAmongThousands) {
    BinaryPropertyListWriter writer;
    std::vector<BinaryPropertyListWriter::Reference> first;
    for (std::int64_t i = 0; i < 5000; ++i) first.push_back(writer.integer(i));
    for (std::int64_t i = 0; i < 5000; ++i) EXPECT_EQ(writer.integer(i), first[static_cast<std::size_t>(i)]);
}

TEST(BinaryPropertyListWriter, PutsAReservedContainerBeforeItsContents) {
    BinaryPropertyListWriter writer;
    const auto top = writer.reserve();
    const std::array keys{writer.asciiString("a")};
    const std::array values{writer.integer(1)};
    writer.fillDictionary(top, keys, values);
    const std::string trailer =
        "\0\0\0\0\0\0\x01\x01"s + "\0\0\0\0\0\0\0\x03"s + "\0\0\0\0\0\0\0\0"s + "\0\0\0\0\0\0\0\x0F"s;
    EXPECT_EQ(writer.finish(top), "bplist00"s + "\xD1\x01\x02" + "\x51"s + "a" + "\x10\x01" + "\x08\x0B\x0D" + trailer);
}

TEST(BinaryPropertyListWriter, WidensReferencesBeyond256Objects) {
    BinaryPropertyListWriter writer;
    const auto top = writer.reserve();
    std::vector<BinaryPropertyListWriter::Reference> elements;
    for (std::int64_t i = 0; i < 300; ++i) elements.push_back(writer.integer(i));
    writer.fillArray(top, elements);
    const std::string list = writer.finish(top);
    EXPECT_EQ(list.substr(kHeadSize, 6), "\xAF\x11\x01\x2C\0\x01"s);
    EXPECT_EQ(list[list.size() - kTrailerSize + 7], 2);
}

TEST(BinaryPropertyListWriter, WidensReferencesBeyond65536Objects) {
    BinaryPropertyListWriter writer;
    const auto top = writer.reserve();
    std::vector<BinaryPropertyListWriter::Reference> elements;
    for (std::int64_t i = 0; i < 65'536; ++i) elements.push_back(writer.integer(i));
    writer.fillArray(top, elements);
    const std::string list = writer.finish(top);
    EXPECT_EQ(list.substr(kHeadSize, 14), "\xAF\x12\0\x01\0\0\0\0\0\x01\0\0\0\x02"s);
    EXPECT_EQ(list[list.size() - kTrailerSize + 7], 4);
    const auto read = platform::propertyListFromData(list);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->as<platform::Array>()->back(), platform::Value(std::int64_t{65'535}));
}
