// Nothing in the file is trusted: every offset, size and reference is held against the bytes that are there. Containers
// are read with a stack of their own, which also shows a container that holds itself.
//
// A file may refer to one object many times, and our values copy it each time, so a few bytes could grow without
// bound. What is made is therefore paid for out of a budget in proportion to the file.
#include "platform/plist/BinaryPropertyListReader.h"

#include <bit>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

#include <fmt/format.h>

#include "platform/plist/BinaryFormat.h"
#include "platform/plist/PropertyListLimits.h"

namespace platform {

namespace {

using namespace bplist;

// A value costs 32 and a string one more for each unit. Writers that store equal strings once need up to some 50 for
// each byte of reference; the base lets what small files share reach some 50 MB.
constexpr std::size_t kBudgetPerByte = 128;
constexpr std::size_t kBudgetBase = std::size_t{1} << 24;
constexpr std::size_t kCostOfValue = 32;

std::uint64_t bigEndian(std::string_view bytes) {
    std::uint64_t number = 0;
    for (const char byte : bytes) number = number << 8 | static_cast<unsigned char>(byte);
    return number;
}

double realFromBits(std::string_view bytes) {
    if (bytes.size() == 4)
        return static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(bigEndian(bytes))));
    return std::bit_cast<double>(bigEndian(bytes));
}

// Sixteen bytes are how unsigned numbers of 2^63 and more are stored: no integer of ours holds them, a real does.
std::optional<Value> integerFromBytes(std::string_view bytes) {
    if (bytes.size() <= 8) return Value(static_cast<std::int64_t>(bigEndian(bytes)));
    const std::uint64_t high = bigEndian(bytes.substr(0, 8)), low = bigEndian(bytes.substr(8));
    const bool lowIsNegative = static_cast<std::int64_t>(low) < 0;
    if (high == (lowIsNegative ? ~std::uint64_t{0} : 0)) return Value(static_cast<std::int64_t>(low));
    if (high == 0) return Value(static_cast<double>(low));
    return std::nullopt;
}

// A marker with its size, and where the contents begin.
struct Header {
    std::uint8_t kind = 0; // upper half of the marker, or the whole of a marker without a size
    std::uint64_t size = 0;
    std::size_t contents = 0;
};

class Reader {
  public:
    explicit Reader(std::string_view bytes) : bytes_(bytes), budget_(kBudgetBase + bytes.size() * kBudgetPerByte) {}

    Result<Value> read() {
        TRY(readTrailer());
        std::optional<Value> done = TRY(open(top_));
        while (!stack_.empty()) {
            Frame& frame = stack_.back();
            if (done) {
                TRY(put(frame, std::move(*done)));
                done.reset();
            }
            if (frame.next == frame.count) {
                done = frame.isDictionary ? Value(std::move(frame.dictionary)) : Value(std::move(frame.array));
                isOpen_[frame.object] = false;
                stack_.pop_back();
            } else {
                done = TRY(open(reference(frame, frame.next)));
            }
        }
        return std::move(*done);
    }

  private:
    // A container under construction.
    struct Frame {
        std::uint64_t object = 0;
        bool isDictionary = false;
        std::size_t references = 0; // where they begin: the elements, or the keys and behind them the values
        std::size_t count = 0;
        std::size_t next = 0;
        Array array;
        Dictionary dictionary;
    };

    std::unexpected<Error> corrupt(std::uint64_t object, std::string_view what) const {
        return corruptPropertyList(fmt::format("Binary property list, object {}: {}.", object, what));
    }

    Result<> readTrailer() {
        const auto bad = [](std::string_view what) {
            return corruptPropertyList(fmt::format("Binary property list: {}.", what));
        };
        if (bytes_.size() < kMagic.size() + kTrailerSize) return bad("the file is cut short");
        const std::string_view trailer = bytes_.substr(bytes_.size() - kTrailerSize);
        offsetSize_ = bigEndian(trailer.substr(6, 1));
        referenceSize_ = bigEndian(trailer.substr(7, 1));
        objectCount_ = bigEndian(trailer.substr(8, 8));
        top_ = bigEndian(trailer.substr(16, 8));
        table_ = bigEndian(trailer.substr(24, 8));
        if (offsetSize_ < 1 || offsetSize_ > 8 || referenceSize_ < 1 || referenceSize_ > 8)
            return bad("sizes of offsets and references must be 1 to 8");
        const std::size_t end = bytes_.size() - kTrailerSize;
        if (table_ < kMagic.size() || table_ > end) return bad("the offset table lies outside the file");
        if (objectCount_ > (end - table_) / offsetSize_) return bad("the offset table is cut short");
        if (top_ >= objectCount_) return bad("the top object does not exist");
        isOpen_.assign(objectCount_, false);
        return {};
    }

    // The object's bytes end before the offset table at the latest.
    Result<Header> header(std::uint64_t object) const {
        const std::uint64_t offset = bigEndian(bytes_.substr(table_ + object * offsetSize_, offsetSize_));
        if (offset < kMagic.size() || offset >= table_) return corrupt(object, "it lies outside the file");
        const auto marker = static_cast<std::uint8_t>(bytes_[offset]);
        Header found{static_cast<std::uint8_t>(marker & 0xF0), marker & 0x0Fu, offset + 1};
        if (marker < integerMarker) {
            found.kind = marker;
        } else if (found.size == kSizeFollows && found.kind >= dataMarker && found.kind != uidMarker) {
            const auto sizeMarker = static_cast<std::uint8_t>(found.contents < table_ ? bytes_[found.contents] : '\0');
            const std::size_t width = std::size_t{1} << (sizeMarker & 0x0F);
            if ((sizeMarker & 0xF0) != integerMarker || width > 8 || width > table_ - found.contents - 1)
                return corrupt(object, "its size is unreadable");
            found.size = bigEndian(bytes_.substr(found.contents + 1, width));
            found.contents += 1 + width;
        }
        return found;
    }

    Result<std::string_view> contents(std::uint64_t object, const Header& header, std::uint64_t count,
                                      std::size_t width) const {
        if (count > (table_ - header.contents) / width) return corrupt(object, "it runs past the end");
        return bytes_.substr(header.contents, count * width);
    }

    Result<> pay(std::uint64_t object, std::size_t cost) {
        if (cost > budget_) return corrupt(object, "shared objects would grow out of proportion to the file");
        budget_ -= cost;
        return {};
    }

    // A value without contents, or nothing when the object is a container, which then is on top of the stack.
    Result<std::optional<Value>> open(std::uint64_t object) {
        if (object >= objectCount_) return corrupt(object, "it is referred to but does not exist");
        TRY(pay(object, kCostOfValue));
        const Header found = TRY(header(object));
        switch (found.kind) {
        case arrayMarker:
        case dictionaryMarker:
            TRY(openContainer(object, found));
            return std::nullopt;
        case falseMarker:
            return Value(false);
        case trueMarker:
            return Value(true);
        case integerMarker:
        case realMarker:
        case dateMarker:
        case uidMarker:
            return TRY(number(object, found));
        case dataMarker:
            return TRY(data(object, found));
        case asciiMarker:
        case utf16Marker:
            return Value(TRY(string(object, found)));
        default:
            return corrupt(object, fmt::format("its marker 0x{:02X} is unknown", found.kind));
        }
    }

    Result<> openContainer(std::uint64_t object, const Header& found) {
        if (isOpen_[object]) return corrupt(object, "it contains itself");
        if (stack_.size() == kMaximumPropertyListDepth)
            return corrupt(object, fmt::format("containers are nested deeper than {}", kMaximumPropertyListDepth));
        const bool isDictionary = found.kind == dictionaryMarker;
        TRY(contents(object, found, found.size, referenceSize_ * (isDictionary ? 2 : 1)));
        isOpen_[object] = true;
        Frame& frame = stack_.emplace_back();
        frame.object = object;
        frame.isDictionary = isDictionary;
        frame.references = found.contents;
        frame.count = found.size;
        return {};
    }

    std::uint64_t reference(const Frame& frame, std::size_t index) const {
        const std::size_t place = frame.isDictionary ? frame.count + index : index;
        return bigEndian(bytes_.substr(frame.references + place * referenceSize_, referenceSize_));
    }

    // Takes the value of reference `next` into the container. Of two entries with one key the first stays.
    Result<> put(Frame& frame, Value value) {
        const std::size_t index = frame.next++;
        if (!frame.isDictionary) {
            frame.array.push_back(std::move(value));
            return {};
        }
        const std::uint64_t key = bigEndian(bytes_.substr(frame.references + index * referenceSize_, referenceSize_));
        if (key >= objectCount_) return corrupt(frame.object, "one of its keys does not exist");
        const Header found = TRY(header(key));
        if (found.kind != asciiMarker && found.kind != utf16Marker)
            return corrupt(frame.object, "one of its keys is no string");
        frame.dictionary.emplace(utf8FromUTF16(TRY(string(key, found))), std::move(value));
        return {};
    }

    Result<Value> number(std::uint64_t object, const Header& found) {
        if (found.kind == uidMarker) {
            if (found.size >= 8) return corrupt(object, "its UID is longer than 8 bytes");
            return Value(UID{bigEndian(TRY(contents(object, found, found.size + 1, 1)))});
        }
        const std::size_t width = std::size_t{1} << found.size;
        const bool isWidth =
            found.kind == integerMarker ? width <= 16 : width == 8 || (found.kind == realMarker && width == 4);
        if (!isWidth) return corrupt(object, "no number has its size");
        const std::string_view bytes = TRY(contents(object, found, width, 1));
        if (found.kind == realMarker) return Value(realFromBits(bytes));
        if (found.kind != integerMarker) return Value(Date{realFromBits(bytes)});
        std::optional<Value> integer = integerFromBytes(bytes);
        if (!integer) return corrupt(object, "its number is too large");
        return std::move(*integer);
    }

    // One copy of the bytes, however often they are referred to.
    Result<Value> data(std::uint64_t object, const Header& found) {
        const auto [place, isNew] = data_.try_emplace(object);
        if (isNew) {
            const std::string_view bytes = TRY(contents(object, found, found.size, 1));
            TRY(pay(object, bytes.size()));
            place->second = Data(std::string(bytes));
        }
        return Value(place->second);
    }

    Result<std::u16string> string(std::uint64_t object, const Header& found) {
        const std::size_t width = found.kind == asciiMarker ? 1 : 2;
        const std::string_view bytes = TRY(contents(object, found, found.size, width));
        TRY(pay(object, found.size));
        std::u16string text(found.size, u'\0');
        for (std::size_t i = 0; i < text.size(); ++i) {
            text[i] = static_cast<char16_t>(bigEndian(bytes.substr(i * width, width)));
            if (width == 1 && text[i] >= 0x80) return corrupt(object, "an ASCII string holds another character");
        }
        return text;
    }

    std::string_view bytes_;
    std::size_t budget_;
    std::uint64_t offsetSize_ = 0, referenceSize_ = 0, objectCount_ = 0, top_ = 0, table_ = 0;
    std::vector<Frame> stack_;
    std::vector<bool> isOpen_; // the objects on the stack
    std::unordered_map<std::uint64_t, Data> data_;
};

} // namespace

bool isBinaryPropertyList(std::string_view bytes) {
    return bytes.starts_with(kMagic.substr(0, 6));
}

Result<Value> valueFromBinaryPropertyList(std::string_view bytes) {
    if (!bytes.starts_with(kMagic)) return corruptPropertyList("Binary property list: unknown version.");
    return Reader(bytes).read();
}

} // namespace platform
