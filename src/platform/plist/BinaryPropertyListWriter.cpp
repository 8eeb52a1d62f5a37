// A leaf is encoded at once behind the other leaves, and counts as added only when no equal one is there already.
// Containers keep plain indices until the end, because the width of a reference in the file depends on how many objects
// there are; then the size of the file is known, and it is written in one go, the objects and their offsets side by
// side.
#include "platform/plist/BinaryPropertyListWriter.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "platform/base/TextScan.h"
#include "platform/base/UTF16.h"
#include "platform/plist/BinaryFormat.h"

namespace platform {

namespace {

constexpr std::size_t kSmallestRoom = 1024; // bytes of leaves
constexpr std::size_t kLongestMarker = 10;  // bytes, with a size of 8
constexpr std::size_t kFewestUIDs = 256;    // in a file that has any

using namespace bplist;

std::uint16_t inBigEndian(std::uint16_t value) {
    return std::endian::native == std::endian::big ? value : std::byteswap(value);
}

char* putTwoBytes(char* out, std::uint16_t value) {
    value = inBigEndian(value);
    std::memcpy(out, &value, sizeof value);
    return out + sizeof value;
}

char* putBigEndian(char* out, std::uint64_t value, unsigned size) {
    if (size == 1) { // most of all, and two bytes after them
        *out++ = static_cast<char>(value);
    } else if (size == 2) {
        out = putTwoBytes(out, static_cast<std::uint16_t>(value));
    } else {
        for (unsigned shift = 8 * size; shift > 0; shift -= 8) *out++ = static_cast<char>(value >> (shift - 8) & 0xFF);
    }
    return out;
}

// The smallest of 1, 2, 4 and 8 bytes that hold the value.
constexpr unsigned sizeFor(std::uint64_t value) {
    return value <= 0xFF ? 1 : value <= 0xFFFF ? 2 : value <= 0xFFFFFFFF ? 4 : 8;
}

char* putInteger(char* out, std::int64_t value) {
    const auto bits = static_cast<std::uint64_t>(value); // a negative one needs all 8 bytes
    const unsigned size = sizeFor(bits);
    *out++ = static_cast<char>(integerMarker | std::countr_zero(size));
    return putBigEndian(out, bits, size);
}

// Counts from 15 up follow the marker as an integer.
char* putMarker(char* out, unsigned char marker, std::size_t count) {
    *out++ = static_cast<char>(marker | std::min<std::size_t>(count, kSizeFollows));
    return count < kSizeFollows ? out : putInteger(out, static_cast<std::int64_t>(count));
}

constexpr std::size_t markerSize(std::size_t count) {
    return count < kSizeFollows ? 1 : 2 + sizeFor(count);
}

// The units of a text or the references of a container, each as `encoded` gives it. A block of them is encoded on its
// own, where nothing can overlap and the compiler knows how many there are: it makes vector operations of that.
template<class Unit, class Encode>
char* putUnits(char* out, std::span<const Unit> all, Encode encoded) {
    using Encoded = decltype(encoded(Unit()));
    constexpr std::size_t kBlock = 16;
    for (; all.size() >= kBlock; all = all.subspan(kBlock), out += kBlock * sizeof(Encoded)) {
        std::array<Unit, kBlock> units;
        std::array<Encoded, kBlock> bytes;
        std::memcpy(units.data(), all.data(), sizeof units);
        std::ranges::transform(units, bytes.begin(), encoded);
        std::memcpy(out, bytes.data(), sizeof bytes);
    }
    for (const Unit unit : all) {
        const Encoded bytes = encoded(unit);
        std::memcpy(out, &bytes, sizeof bytes);
        out += sizeof bytes;
    }
    return out;
}

std::uint64_t wordAt(const char* bytes) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

// Both halves of the product: every bit of both words has a part in it.
std::uint64_t mixed(std::uint64_t a, std::uint64_t b) {
    __extension__ using Wide = unsigned __int128;
    const Wide product = static_cast<Wide>(a) * b;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

// Most leaves are keys and small numbers, which two words hold; the text of a note takes a step every two words.
std::uint32_t hashOf(std::string_view bytes) {
    constexpr std::size_t kWord = sizeof(std::uint64_t);
    constexpr std::uint64_t kFirst = 0x9E3779B97F4A7C15, kSecond = 0xC2B2AE3D27D4EB4F;
    const char* next = bytes.data();
    const char* const end = next + bytes.size();
    std::uint64_t hash = bytes.size();
    for (; end - next > static_cast<std::ptrdiff_t>(2 * kWord); next += 2 * kWord)
        hash = mixed(wordAt(next) ^ kFirst, wordAt(next + kWord) ^ hash ^ kSecond);
    if (bytes.size() >= kWord) { // the last two words, whose bytes may have had their step
        const char* const first = bytes.size() >= 2 * kWord ? end - 2 * kWord : bytes.data();
        hash = mixed(wordAt(first) ^ kFirst, wordAt(end - kWord) ^ hash ^ kSecond);
    } else {
        std::uint64_t word = 0;
        for (; next != end; ++next) word = word << 8 | static_cast<unsigned char>(*next);
        hash = mixed(word ^ kFirst, hash ^ kSecond);
    }
    return static_cast<std::uint32_t>(hash);
}

} // namespace

// Of an archive's objects a quarter are unique leaves, the others containers and UIDs.
BinaryPropertyListWriter::BinaryPropertyListWriter(std::size_t expectedObjects) : table_(expectedObjects / 4) {
    objects_.reserve(expectedObjects);
    references_.reserve(2 * expectedObjects);
}

char* BinaryPropertyListWriter::room(std::size_t most) {
    if (leavesRoom_ - leavesEnd_ < most) {
        leavesRoom_ = std::max(2 * (leavesEnd_ + most), kSmallestRoom); // as much again behind a long text
        auto larger = std::make_unique_for_overwrite<char[]>(leavesRoom_);
        std::copy_n(leaves_.get(), leavesEnd_, larger.get());
        leaves_ = std::move(larger);
    }
    return leaves_.get() + leavesEnd_;
}

auto BinaryPropertyListWriter::addLeaf(const char* end) -> Reference {
    const std::size_t length = static_cast<std::size_t>(end - leaves_.get()) - leavesEnd_;
    objects_.push_back({leavesEnd_, length, Kind::leaf});
    leavesEnd_ += length;
    return static_cast<Reference>(objects_.size() - 1);
}

auto BinaryPropertyListWriter::addUniqueLeaf(const char* end) -> Reference {
    const char* const start = leaves_.get() + leavesEnd_;
    const std::string_view bytes(start, static_cast<std::size_t>(end - start));
    const auto [found, isNew] =
        table_.findOrAdd(hashOf(bytes), static_cast<Reference>(objects_.size()), [&](Reference other) {
            const Object& leaf = objects_[other];
            return std::string_view(leaves_.get() + leaf.start, leaf.length) == bytes;
        });
    return isNew ? addLeaf(end) : found;
}

auto BinaryPropertyListWriter::boolean(bool value) -> Reference {
    char* out = room(1);
    *out++ = static_cast<char>(value ? trueMarker : falseMarker);
    return addUniqueLeaf(out);
}

auto BinaryPropertyListWriter::integer(std::int64_t value) -> Reference {
    return addUniqueLeaf(putInteger(room(kLongestMarker), value));
}

auto BinaryPropertyListWriter::real(double value) -> Reference {
    char* out = room(9);
    *out++ = static_cast<char>(realMarker | kEightBytes);
    return addUniqueLeaf(putBigEndian(out, std::bit_cast<std::uint64_t>(value), 8));
}

auto BinaryPropertyListWriter::date(Date value) -> Reference {
    char* out = room(9);
    *out++ = static_cast<char>(dateMarker | kEightBytes);
    return addUniqueLeaf(putBigEndian(out, std::bit_cast<std::uint64_t>(value.secondsSinceReferenceDate), 8));
}

auto BinaryPropertyListWriter::data(std::string_view bytes) -> Reference {
    char* const out = putMarker(room(kLongestMarker + bytes.size()), dataMarker, bytes.size());
    return addLeaf(out + bytes.copy(out, bytes.size()));
}

auto BinaryPropertyListWriter::string(std::u16string_view text) -> Reference {
    char* out = room(kLongestMarker + 2 * text.size());
    if (lengthBefore<StopUnits<char16_t, u'\0', u'\x7F'>>(text) == text.size()) {
        out = putMarker(out, asciiMarker, text.size());
        return addUniqueLeaf(putUnits(out, std::span(text), [](char16_t unit) { return static_cast<char>(unit); }));
    }
    out = putMarker(out, utf16Marker, text.size());
    return addUniqueLeaf(putUnits(out, std::span(text), inBigEndian));
}

auto BinaryPropertyListWriter::string(std::string_view utf8) -> Reference {
    const bool isASCII = lengthBefore<StopUnits<char, '\0', '\x7F'>>(utf8) == utf8.size();
    return isASCII ? asciiString(utf8) : string(utf16FromUTF8(utf8));
}

auto BinaryPropertyListWriter::asciiString(std::string_view text) -> Reference {
    char* const out = putMarker(room(kLongestMarker + text.size()), asciiMarker, text.size());
    return addUniqueLeaf(out + text.copy(out, text.size()));
}

auto BinaryPropertyListWriter::uid(std::uint64_t value) -> Reference {
    if (value < kDenseUIDs) {
        if (value >= uids_.size())
            uids_.resize(std::max({static_cast<std::size_t>(value) + 1, 2 * uids_.size(), kFewestUIDs}), kNoReference);
        if (Reference& known = uids_[static_cast<std::size_t>(value)]; known != kNoReference) return known;
    }
    char* out = room(9);
    const unsigned size = sizeFor(value);
    *out++ = static_cast<char>(uidMarker | (size - 1));
    out = putBigEndian(out, value, size);
    if (value >= kDenseUIDs) return addUniqueLeaf(out);
    return uids_[static_cast<std::size_t>(value)] = addLeaf(out);
}

auto BinaryPropertyListWriter::reserve() -> Reference {
    objects_.push_back({0, 0, Kind::array});
    return static_cast<Reference>(objects_.size() - 1);
}

void BinaryPropertyListWriter::fill(Reference reserved, Kind kind, std::span<const Reference> first,
                                    std::span<const Reference> second) {
    objects_[reserved] = {references_.size(), first.size(), kind};
    markerBytes_ += markerSize(first.size());
    for (const Reference reference : first) references_.push_back(reference); // few: less than an insertion costs
    for (const Reference reference : second) references_.push_back(reference);
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

std::unique_ptr<char[]> BinaryPropertyListWriter::encodedReferences(unsigned referenceSize) const {
    auto encoded = std::make_unique_for_overwrite<char[]>(references_.size() * referenceSize);
    char* out = encoded.get();
    if (referenceSize == 2) { // as in most files
        putUnits(out, std::span(references_), [](Reference it) { return inBigEndian(static_cast<std::uint16_t>(it)); });
    } else {
        for (const Reference reference : references_) out = putBigEndian(out, reference, referenceSize);
    }
    return encoded;
}

void BinaryPropertyListWriter::putObjects(char* out, unsigned referenceSize, char* offsets, unsigned offsetSize) const {
    const auto references = encodedReferences(referenceSize); // all at once: a container has but a few
    const char* const file = out - kMagic.size();
    const auto putOffset = [&](const char* object) {
        offsets = putBigEndian(offsets, static_cast<std::size_t>(object - file), offsetSize);
    };
    for (std::size_t index = 0; index < objects_.size();) {
        if (const Object& object = objects_[index]; object.kind != Kind::leaf) {
            putOffset(out);
            const bool isArray = object.kind == Kind::array;
            const std::size_t size = (isArray ? 1 : 2) * object.length * referenceSize;
            out = putMarker(out, isArray ? arrayMarker : dictionaryMarker, object.length);
            std::memcpy(out, references.get() + object.start * referenceSize, size);
            out += size;
            ++index;
            continue;
        }
        // Leaves between two containers lie side by side as they are.
        const char* const start = leaves_.get() + objects_[index].start;
        const char* end = start;
        for (; index < objects_.size() && objects_[index].kind == Kind::leaf; ++index) {
            putOffset(out + (end - start));
            end += objects_[index].length;
        }
        out = std::copy(start, end, out);
    }
}

std::string BinaryPropertyListWriter::finish(Reference top) {
    const unsigned referenceSize = sizeFor(objects_.size() - 1);
    const std::size_t tableOffset = kMagic.size() + leavesEnd_ + markerBytes_ + references_.size() * referenceSize;
    const unsigned offsetSize = sizeFor(tableOffset);
    const std::size_t fileSize = tableOffset + objects_.size() * offsetSize + kTrailerSize;
    std::string bytes;
    bytes.resize_and_overwrite(fileSize, [&](char* out, std::size_t size) {
        char* const table = out + tableOffset;
        putObjects(std::ranges::copy(kMagic, out).out, referenceSize, table, offsetSize);
        out = table + objects_.size() * offsetSize;
        out = std::fill_n(out, 6, '\0');
        *out++ = static_cast<char>(offsetSize);
        *out++ = static_cast<char>(referenceSize);
        out = putBigEndian(out, objects_.size(), 8);
        out = putBigEndian(out, top, 8);
        putBigEndian(out, tableOffset, 8);
        return size;
    });
    return bytes;
}

} // namespace platform
