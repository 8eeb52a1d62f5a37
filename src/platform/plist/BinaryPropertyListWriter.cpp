// A leaf is encoded at once behind the other leaves; when an equal one is there already, the new bytes are dropped
// again and the old index answered. Containers keep plain indices until the end, because the width of a reference in
// the file depends on how many objects there are.
#include "platform/plist/BinaryPropertyListWriter.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <functional>
#include <limits>

#include "platform/base/TextScan.h"
#include "platform/plist/BinaryFormat.h"

namespace platform {

namespace {

constexpr BinaryPropertyListWriter::Reference kEmptySlot = std::numeric_limits<std::uint32_t>::max();
constexpr std::size_t kInitialSlots = 64; // a power of two; many files are small

using namespace bplist;

char* putBigEndian(char* out, std::uint64_t value, unsigned size) {
    if (size == 1) { // most of all, and two bytes after them
        *out++ = static_cast<char>(value);
    } else if (size == 2) {
        *out++ = static_cast<char>(value >> 8);
        *out++ = static_cast<char>(value);
    } else {
        for (unsigned shift = 8 * size; shift > 0; shift -= 8) *out++ = static_cast<char>(value >> (shift - 8) & 0xFF);
    }
    return out;
}

void appendBigEndian(std::string& bytes, std::uint64_t value, unsigned size) {
    std::array<char, 8> buffer;
    bytes.append(buffer.data(), putBigEndian(buffer.data(), value, size));
}

// Makes room for bytes at the end; answers where they begin.
char* extend(std::string& bytes, std::size_t count) {
    const std::size_t before = bytes.size();
    bytes.resize(before + count);
    return bytes.data() + before;
}

// The smallest of 1, 2, 4 and 8 bytes that hold the value.
constexpr unsigned sizeFor(std::uint64_t value) {
    return value <= 0xFF ? 1 : value <= 0xFFFF ? 2 : value <= 0xFFFFFFFF ? 4 : 8;
}

void appendInteger(std::string& bytes, std::int64_t value) {
    const auto bits = static_cast<std::uint64_t>(value); // a negative one needs all 8 bytes
    const unsigned size = sizeFor(bits);
    bytes += static_cast<char>(integerMarker | std::countr_zero(size));
    appendBigEndian(bytes, bits, size);
}

// Counts from 15 up follow the marker as an integer.
void appendMarker(std::string& bytes, unsigned char marker, std::size_t count) {
    bytes += static_cast<char>(marker | std::min<std::size_t>(count, kSizeFollows));
    if (count >= kSizeFollows) appendInteger(bytes, static_cast<std::int64_t>(count));
}

std::uint64_t wordAt(const char* bytes) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

// Most leaves are keys, small numbers and UIDs, which two words hold; a general hash costs several times as much.
std::uint32_t hashOf(std::string_view bytes) {
    constexpr std::size_t kWord = sizeof(std::uint64_t);
    constexpr std::uint64_t kFirst = 0x9E3779B97F4A7C15, kSecond = 0xC2B2AE3D27D4EB4F;
    std::uint64_t hash = bytes.size();
    if (bytes.size() > 2 * kWord) {
        hash = std::hash<std::string_view>()(bytes);
    } else if (bytes.size() >= kWord) {
        hash = (wordAt(bytes.data()) + hash) * kFirst ^ wordAt(bytes.data() + bytes.size() - kWord);
    } else {
        for (const char byte : bytes) hash = hash << 8 | static_cast<unsigned char>(byte);
    }
    return static_cast<std::uint32_t>(hash * kSecond >> 32);
}

} // namespace

BinaryPropertyListWriter::BinaryPropertyListWriter() : table_(kInitialSlots, Slot{kEmptySlot, 0}) {}

auto BinaryPropertyListWriter::addLeaf(std::size_t start, bool unique) -> Reference {
    const std::string_view bytes = std::string_view(leaves_).substr(start);
    const auto added = static_cast<Reference>(objects_.size());
    if (unique) {
        if (uniqueLeaves_ * 2 >= table_.size()) growTable();
        const std::size_t mask = table_.size() - 1;
        const std::uint32_t hash = hashOf(bytes);
        std::size_t slot = hash & mask;
        for (; table_[slot].reference != kEmptySlot; slot = (slot + 1) & mask) {
            if (table_[slot].hash != hash) continue;
            const Object& other = objects_[table_[slot].reference];
            if (std::string_view(leaves_.data() + other.start, other.length) != bytes) continue;
            leaves_.resize(start);
            return table_[slot].reference;
        }
        table_[slot] = {added, hash};
        ++uniqueLeaves_;
    }
    objects_.push_back({start, bytes.size(), Kind::leaf});
    return added;
}

void BinaryPropertyListWriter::growTable() {
    std::vector<Slot> larger(table_.size() * 2, Slot{kEmptySlot, 0});
    const std::size_t mask = larger.size() - 1;
    for (const Slot& old : table_) {
        if (old.reference == kEmptySlot) continue;
        std::size_t slot = old.hash & mask;
        while (larger[slot].reference != kEmptySlot) slot = (slot + 1) & mask;
        larger[slot] = old;
    }
    table_ = std::move(larger);
}

auto BinaryPropertyListWriter::boolean(bool value) -> Reference {
    const std::size_t start = leaves_.size();
    leaves_ += static_cast<char>(value ? trueMarker : falseMarker);
    return addLeaf(start, true);
}

auto BinaryPropertyListWriter::integer(std::int64_t value) -> Reference {
    const std::size_t start = leaves_.size();
    appendInteger(leaves_, value);
    return addLeaf(start, true);
}

auto BinaryPropertyListWriter::real(double value) -> Reference {
    const std::size_t start = leaves_.size();
    leaves_ += static_cast<char>(realMarker | kEightBytes);
    appendBigEndian(leaves_, std::bit_cast<std::uint64_t>(value), 8);
    return addLeaf(start, true);
}

auto BinaryPropertyListWriter::date(Date value) -> Reference {
    const std::size_t start = leaves_.size();
    leaves_ += static_cast<char>(dateMarker | kEightBytes);
    appendBigEndian(leaves_, std::bit_cast<std::uint64_t>(value.secondsSinceReferenceDate), 8);
    return addLeaf(start, true);
}

auto BinaryPropertyListWriter::data(std::string_view bytes) -> Reference {
    const std::size_t start = leaves_.size();
    appendMarker(leaves_, dataMarker, bytes.size());
    leaves_ += bytes;
    return addLeaf(start, false);
}

auto BinaryPropertyListWriter::string(std::u16string_view text) -> Reference {
    const std::size_t start = leaves_.size();
    if (lengthBefore<StopUnits<char16_t, u'\0', u'\x7F'>>(text) == text.size()) {
        appendMarker(leaves_, asciiMarker, text.size());
        std::ranges::transform(text, extend(leaves_, text.size()),
                               [](char16_t unit) { return static_cast<char>(unit); });
    } else {
        appendMarker(leaves_, utf16Marker, text.size());
        char* out = extend(leaves_, 2 * text.size());
        for (const char16_t unit : text) out = putBigEndian(out, unit, 2);
    }
    return addLeaf(start, true);
}

auto BinaryPropertyListWriter::asciiString(std::string_view text) -> Reference {
    const std::size_t start = leaves_.size();
    appendMarker(leaves_, asciiMarker, text.size());
    leaves_ += text;
    return addLeaf(start, true);
}

auto BinaryPropertyListWriter::uid(std::uint64_t value) -> Reference {
    const std::size_t start = leaves_.size();
    const unsigned size = sizeFor(value);
    leaves_ += static_cast<char>(uidMarker | (size - 1));
    appendBigEndian(leaves_, value, size);
    return addLeaf(start, true);
}

auto BinaryPropertyListWriter::reserve() -> Reference {
    objects_.push_back({0, 0, Kind::array});
    return static_cast<Reference>(objects_.size() - 1);
}

void BinaryPropertyListWriter::fill(Reference reserved, Kind kind, std::span<const Reference> first,
                                    std::span<const Reference> second) {
    objects_[reserved] = {references_.size(), first.size(), kind};
    references_.insert(references_.end(), first.begin(), first.end());
    references_.insert(references_.end(), second.begin(), second.end());
}

void BinaryPropertyListWriter::fillArray(Reference reserved, std::span<const Reference> elements) {
    fill(reserved, Kind::array, elements, {});
}

void BinaryPropertyListWriter::fillDictionary(Reference reserved, std::span<const Reference> keys,
                                              std::span<const Reference> values) {
    fill(reserved, Kind::dictionary, keys, values);
}

auto BinaryPropertyListWriter::array(std::span<const Reference> elements) -> Reference {
    const Reference added = reserve();
    fillArray(added, elements);
    return added;
}

auto BinaryPropertyListWriter::dictionary(std::span<const Reference> keys, std::span<const Reference> values)
    -> Reference {
    const Reference added = reserve();
    fillDictionary(added, keys, values);
    return added;
}

void BinaryPropertyListWriter::appendContainer(std::string& bytes, const Object& object, unsigned referenceSize) const {
    appendMarker(bytes, object.kind == Kind::array ? arrayMarker : dictionaryMarker, object.length);
    const std::size_t count = object.kind == Kind::array ? object.length : 2 * object.length;
    char* out = extend(bytes, count * referenceSize);
    const auto references = std::span(references_).subspan(object.start, count);
    if (referenceSize == 2) { // as in most files; a loop of its own is several times faster
        for (const Reference reference : references) out = putBigEndian(out, reference, 2);
    } else {
        for (const Reference reference : references) out = putBigEndian(out, reference, referenceSize);
    }
}

std::string BinaryPropertyListWriter::finish(Reference top) {
    const unsigned referenceSize = sizeFor(objects_.size() - 1);
    std::string bytes;
    bytes.reserve(kMagic.size() + leaves_.size() + references_.size() * referenceSize + objects_.size() * 9 +
                  kTrailerSize);
    bytes += kMagic;
    std::vector<std::size_t> offsets;
    offsets.reserve(objects_.size());
    for (const Object& object : objects_) {
        offsets.push_back(bytes.size());
        if (object.kind == Kind::leaf) {
            bytes.append(leaves_, object.start, object.length);
        } else {
            appendContainer(bytes, object, referenceSize);
        }
    }
    const std::size_t tableOffset = bytes.size();
    const unsigned offsetSize = sizeFor(tableOffset);
    char* out = extend(bytes, offsets.size() * offsetSize);
    for (const std::size_t offset : offsets) out = putBigEndian(out, offset, offsetSize);
    bytes.append(6, '\0');
    bytes += static_cast<char>(offsetSize);
    bytes += static_cast<char>(referenceSize);
    appendBigEndian(bytes, objects_.size(), 8);
    appendBigEndian(bytes, top, 8);
    appendBigEndian(bytes, tableOffset, 8);
    return bytes;
}

} // namespace platform
