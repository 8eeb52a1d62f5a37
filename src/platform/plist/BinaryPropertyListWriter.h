// Writes the binary property list form ("bplist00") object by object: what binaryDataFromPropertyList and the archiver
// stand on.
//
// Objects are numbered from 0 in the order of appending and refer to each other by number. A container whose contents
// come after it is reserved first and set later:
//     const Object top = writer.reserve();
//     writer.setArray(top, {writer.appendInteger(1), writer.appendString(u"a")});
//     const std::string file = std::move(writer).finish(top);
// Equal booleans, numbers, dates, strings and UIDs are one object, whenever they are appended; data and containers are
// not compared. The same calls give the same bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "platform/base/Data.h"
#include "platform/base/Date.h"
#include "platform/base/Value.h"

namespace platform {

class BinaryPropertyListWriter {
  public:
    using Object = std::uint32_t;

    BinaryPropertyListWriter();
    BinaryPropertyListWriter(const BinaryPropertyListWriter&) = delete;
    BinaryPropertyListWriter& operator=(const BinaryPropertyListWriter&) = delete;

    Object appendBool(bool value);
    Object appendInteger(std::int64_t value); // 1, 2 or 4 bytes; 8 when negative or larger
    Object appendReal(double value);          // always 8 bytes
    Object appendDate(Date date);
    Object appendUID(UID uid); // 1, 2, 4 or 8 bytes
    Object appendData(Data data);
    // One byte a character when all are ASCII, else UTF-16, big-endian, lone surrogates as they are.
    Object appendString(std::u16string_view text);
    Object appendString(std::string_view utf8);

    Object appendArray(std::span<const Object> elements);
    Object appendDictionary(std::span<const std::pair<Object, Object>> entries); // key, value; in this order

    // A number for a container that is set later, at most once. Never set, it is written as null.
    Object reserve();
    void setArray(Object object, std::span<const Object> elements);
    void setDictionary(Object object, std::span<const std::pair<Object, Object>> entries);

    std::size_t objectCount() const { return entries_.size(); }

    // The whole file: objects in the order of their numbers, with the smallest offsets and references that hold them.
    std::string finish(Object top) &&;

  private:
    enum class Kind : std::uint8_t { encoded, data, array, dictionary };
    struct Entry {
        Kind kind = Kind::encoded;
        std::size_t begin = 0; // in encoded_, blobs_ or references_
        std::size_t count = 0; // bytes, or elements, or pairs
    };
    // Compares encoded objects by their bytes.
    struct SameBytes {
        const BinaryPropertyListWriter* writer;
        std::size_t operator()(Object object) const;
        bool operator()(Object a, Object b) const;
    };

    std::string_view bytesOf(Object object) const;
    Object uniqued(std::size_t begin);
    void appendObject(std::string& file, const Entry& entry, unsigned referenceSize) const;

    std::vector<Entry> entries_;
    std::string encoded_; // the objects that refer to no other, as they stand in the file
    std::vector<Data> blobs_;
    std::vector<Object> references_;
    std::unordered_set<Object, SameBytes, SameBytes> unique_;
};

} // namespace platform
