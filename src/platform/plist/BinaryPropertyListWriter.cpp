// Objects without references are encoded at once; containers stay lists of numbers until finish, since the size of a
// reference depends on the number of objects.
#include "platform/plist/BinaryPropertyListWriter.h"

#include <algorithm>
#include <bit>
#include <functional>

#include "platform/base/UTF16.h"
#include "platform/plist/BinaryFormat.h"

namespace platform {

namespace {

using namespace bplist;

// 1, 2, 4 or 8: the platform's readers take no other size of an integer.
unsigned byteCount(std::uint64_t number) {
    if (number <= 0xFF) return 1;
    if (number <= 0xFFFF) return 2;
    return number <= 0xFFFFFFFF ? 4 : 8;
}

void appendNumber(std::string& out, std::uint64_t number, unsigned size) {
    for (unsigned shift = size * 8; shift > 0; shift -= 8) out += static_cast<char>((number >> (shift - 8)) & 0xFF);
}

void appendMarker(std::string& out, unsigned marker) {
    out += static_cast<char>(marker);
}

void appendIntegerObject(std::string& out, std::uint64_t number) {
    const unsigned size = byteCount(number);
    appendMarker(out, kInteger | static_cast<unsigned>(std::countr_zero(size)));
    appendNumber(out, number, size);
}

void appendMarkerWithSize(std::string& out, Marker marker, std::size_t size) {
    if (size < kSizeFollows) {
        appendMarker(out, marker | static_cast<unsigned>(size));
    } else {
        appendMarker(out, marker | kSizeFollows);
        appendIntegerObject(out, size);
    }
}

template<class C>
bool isASCII(std::basic_string_view<C> text) {
    return std::all_of(text.begin(), text.end(),
                       [](C unit) { return static_cast<std::make_unsigned_t<C>>(unit) < 0x80; });
}

} // namespace

BinaryPropertyListWriter::BinaryPropertyListWriter() : unique_(0, SameBytes{this}, SameBytes{this}) {
    appendMarker(encoded_, kNull);
}

std::size_t BinaryPropertyListWriter::SameBytes::operator()(Object object) const {
    return std::hash<std::string_view>()(writer->bytesOf(object));
}

bool BinaryPropertyListWriter::SameBytes::operator()(Object a, Object b) const {
    return writer->bytesOf(a) == writer->bytesOf(b);
}

std::string_view BinaryPropertyListWriter::bytesOf(Object object) const {
    const Entry& entry = entries_[object];
    return std::string_view(encoded_).substr(entry.begin, entry.count);
}

// The object whose bytes were just appended behind `begin`, or the earlier one of the same bytes.
BinaryPropertyListWriter::Object BinaryPropertyListWriter::uniqued(std::size_t begin) {
    const auto object = static_cast<Object>(entries_.size());
    entries_.push_back({Kind::encoded, begin, encoded_.size() - begin});
    const auto [place, isNew] = unique_.insert(object);
    if (!isNew) {
        entries_.pop_back();
        encoded_.resize(begin);
    }
    return *place;
}

BinaryPropertyListWriter::Object BinaryPropertyListWriter::appendBool(bool value) {
    const std::size_t begin = encoded_.size();
    appendMarker(encoded_, value ? kTrue : kFalse);
    return uniqued(begin);
}

BinaryPropertyListWriter::Object BinaryPropertyListWriter::appendInteger(std::int64_t value) {
    const std::size_t begin = encoded_.size();
    appendIntegerObject(encoded_, static_cast<std::uint64_t>(value));
    return uniqued(begin);
}

BinaryPropertyListWriter::Object BinaryPropertyListWriter::appendReal(double value) {
    const std::size_t begin = encoded_.size();
    appendMarker(encoded_, kReal | 3);
    appendNumber(encoded_, std::bit_cast<std::uint64_t>(value), 8);
    return uniqued(begin);
}

BinaryPropertyListWriter::Object BinaryPropertyListWriter::appendDate(Date date) {
    const std::size_t begin = encoded_.size();
    appendMarker(encoded_, kDate);
    appendNumber(encoded_, std::bit_cast<std::uint64_t>(date.secondsSinceReferenceDate), 8);
    return uniqued(begin);
}

BinaryPropertyListWriter::Object BinaryPropertyListWriter::appendUID(UID uid) {
    const std::size_t begin = encoded_.size();
    const unsigned size = byteCount(uid.value);
    appendMarker(encoded_, kUID | (size - 1));
    appendNumber(encoded_, uid.value, size);
    return uniqued(begin);
}

BinaryPropertyListWriter::Object BinaryPropertyListWriter::appendData(Data data) {
    const Object object = reserve();
    entries_[object] = {Kind::data, blobs_.size(), data.size()};
    blobs_.push_back(std::move(data));
    return object;
}

BinaryPropertyListWriter::Object BinaryPropertyListWriter::appendString(std::u16string_view text) {
    const std::size_t begin = encoded_.size();
    if (isASCII(text)) {
        appendMarkerWithSize(encoded_, kASCII, text.size());
        for (const char16_t unit : text) encoded_ += static_cast<char>(unit);
    } else {
        appendMarkerWithSize(encoded_, kUTF16, text.size());
        for (const char16_t unit : text) appendNumber(encoded_, unit, 2);
    }
    return uniqued(begin);
}

BinaryPropertyListWriter::Object BinaryPropertyListWriter::appendString(std::string_view utf8) {
    if (!isASCII(utf8)) return appendString(utf16FromUTF8(utf8));
    const std::size_t begin = encoded_.size();
    appendMarkerWithSize(encoded_, kASCII, utf8.size());
    encoded_ += utf8;
    return uniqued(begin);
}

BinaryPropertyListWriter::Object BinaryPropertyListWriter::appendArray(std::span<const Object> elements) {
    const Object object = reserve();
    setArray(object, elements);
    return object;
}

BinaryPropertyListWriter::Object
BinaryPropertyListWriter::appendDictionary(std::span<const std::pair<Object, Object>> entries) {
    const Object object = reserve();
    setDictionary(object, entries);
    return object;
}

BinaryPropertyListWriter::Object BinaryPropertyListWriter::reserve() {
    const auto object = static_cast<Object>(entries_.size());
    entries_.push_back({Kind::encoded, 0, 1}); // the null that the constructor put first
    return object;
}

void BinaryPropertyListWriter::setArray(Object object, std::span<const Object> elements) {
    entries_[object] = {Kind::array, references_.size(), elements.size()};
    references_.insert(references_.end(), elements.begin(), elements.end());
}

void BinaryPropertyListWriter::setDictionary(Object object, std::span<const std::pair<Object, Object>> entries) {
    entries_[object] = {Kind::dictionary, references_.size(), entries.size()};
    for (const auto& [key, value] : entries) references_.push_back(key);
    for (const auto& [key, value] : entries) references_.push_back(value);
}

void BinaryPropertyListWriter::appendObject(std::string& file, const Entry& entry, unsigned referenceSize) const {
    std::size_t referenceCount = entry.count;
    switch (entry.kind) {
    case Kind::encoded:
        file.append(encoded_, entry.begin, entry.count);
        return;
    case Kind::data:
        appendMarkerWithSize(file, kData, entry.count);
        file += blobs_[entry.begin].bytes();
        return;
    case Kind::array:
        appendMarkerWithSize(file, kArray, entry.count);
        break;
    case Kind::dictionary:
        appendMarkerWithSize(file, kDictionary, entry.count);
        referenceCount *= 2;
        break;
    }
    for (std::size_t i = 0; i < referenceCount; ++i) appendNumber(file, references_[entry.begin + i], referenceSize);
}

std::string BinaryPropertyListWriter::finish(Object top) && {
    const unsigned referenceSize = byteCount(entries_.size() - 1);
    std::size_t room = encoded_.size() + references_.size() * referenceSize + entries_.size() * 17 + 64;
    for (const Data& blob : blobs_) room += blob.size();
    std::string file;
    file.reserve(room);
    file += kMagic;

    std::vector<std::size_t> offsets;
    offsets.reserve(entries_.size());
    for (const Entry& entry : entries_) {
        offsets.push_back(file.size());
        appendObject(file, entry, referenceSize);
    }
    const std::size_t tableOffset = file.size();
    const unsigned offsetSize = byteCount(tableOffset);
    for (const std::size_t offset : offsets) appendNumber(file, offset, offsetSize);

    file.append(6, '\0');
    appendNumber(file, offsetSize, 1);
    appendNumber(file, referenceSize, 1);
    appendNumber(file, entries_.size(), 8);
    appendNumber(file, top, 8);
    appendNumber(file, tableOffset, 8);
    return file;
}

} // namespace platform
