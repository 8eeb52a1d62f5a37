// The low-level writer of binary property lists: objects are added one by one, containers by reference, and come out
// as one "bplist00" file. For writers that make many objects and want no tree of values in between.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/Date.h"
#include "platform/base/NumberTable.h"

namespace platform {

// Every call that adds an object answers its index. Equal strings, numbers, dates, booleans and UIDs are one object;
// data and containers are always new ones. Indices are 32-bit: four thousand million objects are the limit.
class BinaryPropertyListWriter {
  public:
    using Reference = std::uint32_t;

    // Makes room for about so many objects, and takes as many more as come.
    explicit BinaryPropertyListWriter(std::size_t expectedObjects = 64);

    Reference boolean(bool value);
    Reference integer(std::int64_t value); // in the smallest of 1, 2 and 4 bytes; negative or larger ones in 8
    Reference real(double value);          // always 8 bytes
    Reference date(Date value);
    Reference data(std::string_view bytes);
    Reference string(std::u16string_view text); // one byte a character when all are ASCII, else UTF-16
    Reference string(std::string_view utf8);    // the same of UTF-8
    Reference asciiString(std::string_view text);
    Reference uid(std::uint64_t value);

    Reference array(std::span<const Reference> elements);
    // Keys are strings, as many as values.
    Reference dictionary(std::span<const Reference> keys, std::span<const Reference> values);

    // An object whose contents are added later, so that it stands before them in the file. Each one must be filled.
    Reference reserve();
    void fillArray(Reference reserved, std::span<const Reference> elements);
    void fillDictionary(Reference reserved, std::span<const Reference> keys, std::span<const Reference> values);

    // The file with this object on top. The writer takes nothing more afterwards.
    std::string finish(Reference top);

  private:
    enum class Kind : std::uint8_t { leaf, array, dictionary };
    struct Object {
        std::size_t start;  // leaf: offset in leaves_; container: index of its first reference
        std::size_t length; // leaf: bytes; container: elements or pairs
        Kind kind;
    };

    // UIDs below this are found by a table of their own rather than by hash: an archive numbers its objects from 0.
    static constexpr std::uint64_t kDenseUIDs = 1 << 16;
    static constexpr Reference kNoReference = std::numeric_limits<Reference>::max();

    // Where up to `most` bytes of the next leaf go. The leaf is there once it is added, up to `end`; a unique one only
    // when there was no equal one yet.
    char* room(std::size_t most);
    Reference addLeaf(const char* end);
    Reference addUniqueLeaf(const char* end);
    void fill(Reference reserved, Kind kind, std::span<const Reference> first, std::span<const Reference> second);

    std::unique_ptr<char[]> encodedReferences(unsigned referenceSize) const;
    void putObjects(char* out, unsigned referenceSize, char* offsets, unsigned offsetSize) const;

    std::unique_ptr<char[]> leaves_; // encoded as in the file, in the order of their objects
    std::size_t leavesRoom_ = 0, leavesEnd_ = 0;
    std::vector<Reference> references_;
    std::size_t markerBytes_ = 0; // bytes of all containers' markers
    std::vector<Object> objects_;
    NumberTable table_;           // of the unique leaves
    std::vector<Reference> uids_; // by value
};

} // namespace platform
