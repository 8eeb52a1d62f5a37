#include "platform/plist/BinaryPropertyListWriter.h"

#include <gtest/gtest.h>

namespace platform {
namespace {

using Object = BinaryPropertyListWriter::Object;
using Entries = std::vector<std::pair<Object, Object>>;

// The objects of a file with one top object, without magic, offsets and trailer.
std::string encodedAlone(void (*append)(BinaryPropertyListWriter&)) {
    BinaryPropertyListWriter writer;
    append(writer);
    const std::string file = std::move(writer).finish(0);
    return file.substr(8, file.size() - 8 - 32 - 1);
}

template<std::size_t N>
std::string bytes(const char (&text)[N]) {
    return std::string(text, N - 1);
}

TEST(BinaryPropertyListWriter, WritesTheWholeOfASmallFile) {
    BinaryPropertyListWriter writer;
    const Object top = writer.reserve();
    writer.setArray(top, std::vector<Object>{writer.appendString(u"Red\n6"), writer.appendString("foo")});
    EXPECT_EQ(std::move(writer).finish(top),
              bytes("bplist00\xA2\x01\x02\x55Red\n6\x53"
                    "foo\x08\x0B\x11\0\0\0\0\0\0\x01\x01\0\0\0\0\0\0\0\x03\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\x15"));
}

TEST(BinaryPropertyListWriter, EncodesEachKindInItsSmallestForm) {
    struct Row {
        void (*append)(BinaryPropertyListWriter&);
        std::string encoded;
    };
    using W = BinaryPropertyListWriter;
    const std::vector<Row> rows{
        {[](W& w) { w.appendBool(false); }, "\x08"},
        {[](W& w) { w.appendBool(true); }, "\x09"},
        {[](W& w) { w.appendInteger(0); }, bytes("\x10\0")},
        {[](W& w) { w.appendInteger(255); }, "\x10\xFF"},
        {[](W& w) { w.appendInteger(256); }, bytes("\x11\x01\0")},
        {[](W& w) { w.appendInteger(65536); }, bytes("\x12\0\x01\0\0")},
        {[](W& w) { w.appendInteger(4294967296); }, bytes("\x13\0\0\0\x01\0\0\0\0")},
        {[](W& w) { w.appendInteger(-1); }, "\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"},
        {[](W& w) { w.appendReal(0.5); }, bytes("\x23\x3F\xE0\0\0\0\0\0\0")},
        {[](W& w) { w.appendDate(Date{-1}); }, bytes("\x33\xBF\xF0\0\0\0\0\0\0")},
        {[](W& w) { w.appendUID({3}); }, "\x80\x03"},
        {[](W& w) { w.appendUID({300}); }, "\x81\x01\x2C"},
        {[](W& w) { w.appendUID({70000}); }, bytes("\x83\0\x01\x11\x70")},
        {[](W& w) { w.appendData(Data("ab")); }, "\x42"
                                                 "ab"},
        {[](W& w) { w.appendData(Data()); }, "\x40"},
        {[](W& w) { w.appendString(u""); }, "\x50"},
        {[](W& w) { w.appendString(u"123456789012345"); }, "\x5F\x10\x0F"
                                                           "123456789012345"},
        {[](W& w) { w.appendString("ü"); }, bytes("\x61\0\xFC")},
        {[](W& w) { w.appendString(std::u16string{0xD800, 0}); }, bytes("\x62\xD8\0\0\0")},
        {[](W& w) { w.appendArray({}); }, "\xA0"},
        {[](W& w) { w.appendDictionary({}); }, "\xD0"},
        {[](W& w) { w.reserve(); }, bytes("\0")},
    };
    for (const Row& row : rows) EXPECT_EQ(encodedAlone(row.append), row.encoded);
}

TEST(BinaryPropertyListWriter, EqualScalarsAreOneObject) {
    BinaryPropertyListWriter writer;
    EXPECT_EQ(writer.appendString(u"key"), writer.appendString("key"));
    EXPECT_EQ(writer.appendInteger(7), writer.appendInteger(7));
    EXPECT_NE(writer.appendInteger(7), writer.appendUID({7}));
    EXPECT_NE(writer.appendReal(0.0), writer.appendReal(-0.0));
    EXPECT_NE(writer.appendData(Data("x")), writer.appendData(Data("x")));
    EXPECT_EQ(writer.objectCount(), 7u);
}

TEST(BinaryPropertyListWriter, DictionariesListKeysBeforeValues) {
    EXPECT_EQ(encodedAlone([](BinaryPropertyListWriter& writer) {
                  const Object top = writer.reserve();
                  const Object a = writer.appendString("a"), b = writer.appendString("b");
                  const Object one = writer.appendInteger(1), two = writer.appendInteger(2);
                  writer.setDictionary(top, Entries{{b, two}, {a, one}});
              }).substr(0, 5),
              "\xD2\x02\x01\x04\x03");
}

TEST(BinaryPropertyListWriter, ReferencesGrowWithTheNumberOfObjects) {
    for (const std::size_t count : {255u, 256u, 65535u, 65536u}) {
        BinaryPropertyListWriter writer;
        const Object top = writer.reserve();
        std::vector<Object> elements;
        for (std::size_t i = 0; i < count; ++i) elements.push_back(writer.appendUID({i}));
        writer.setArray(top, elements);
        const std::string file = std::move(writer).finish(top);
        EXPECT_EQ(file[file.size() - 25], count <= 255 ? 1 : count <= 65535 ? 2 : 4);
    }
}

} // namespace
} // namespace platform
