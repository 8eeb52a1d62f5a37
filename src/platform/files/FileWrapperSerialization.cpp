// The serialized form of a file wrapper: a container that starts with "rtfd" and holds directories of named blocks.
//
//     "rtfd"  version 0  kind 3  DIRECTORY
//     DIRECTORY := count N, N names (length, bytes), N block sizes, N blocks
//     BLOCK     := 1, length, bytes                               a file's bytes, or what a reserved name means
//                | 1, 0x80000000, length, pad, pad bytes, bytes   the same, large or aligned
//                | 3, DIRECTORY
//
// All numbers are 32-bit, little-endian; a block's size counts its type word. Both ways work on explicit stacks:
// writing sizes every directory first, so that the bytes are laid down in one pass into one allocation.
#include <algorithm>
#include <cmath>
#include <limits>
#include <unordered_map>

#include <fmt/core.h>

#include "platform/base/UTF16.h"
#include "platform/files/FileWrapper.h"

namespace platform {

namespace {

constexpr std::string_view kMagic = "rtfd";
constexpr std::string_view kAttributesRecord = ".";
constexpr std::string_view kContentsRecord = "..";
constexpr std::string_view kPreferredNameRecord = "__@PreferredName@__";
constexpr std::string_view kUTF8PreferredNameRecord = "__@UTF8PreferredName@__";

constexpr std::uint32_t kVersion = 0;
constexpr std::uint32_t kRootKind = 3;
constexpr std::uint32_t kBytesBlock = 1;
constexpr std::uint32_t kDirectoryBlock = 3;
constexpr std::uint32_t kLongLengthMark = 0x80000000;
constexpr std::uint32_t kAttributeBytes = 16;
constexpr std::size_t kMaximumDepth = 64;
constexpr std::uint64_t kMaximumSize = std::numeric_limits<std::uint32_t>::max();

void appendNumber(std::string& bytes, std::uint32_t number) {
    for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(number >> shift & 0xFF);
}

void appendString(std::string& bytes, std::string_view text) {
    appendNumber(bytes, static_cast<std::uint32_t>(text.size()));
    bytes += text;
}

// ---- writing

// A file's place in an attributes record: modification time (Unix), mode, and two words that are 2 and 1 for the
// contents of a regular file, 0 in a directory.
void appendAttributes(std::string& bytes, std::string_view name, const FileAttributes& attributes, bool isContents) {
    double seconds = attributes.modificationDate ? std::floor(attributes.modificationDate->unixTime()) : 0;
    if (!(seconds > 0)) seconds = 0;
    seconds = std::min<double>(seconds, std::numeric_limits<std::uint32_t>::max());
    appendString(bytes, name);
    appendNumber(bytes, kAttributeBytes);
    appendNumber(bytes, static_cast<std::uint32_t>(seconds));
    appendNumber(bytes, attributes.posixPermissions & 07777);
    appendNumber(bytes, isContents ? 2 : 0);
    appendNumber(bytes, isContents ? 1 : 0);
}

// The ASCII name of old readers: other characters become "?".
std::string lossyASCII(std::string_view utf8) {
    std::string name;
    for (const char16_t unit : utf16FromUTF8(utf8))
        if (!isLowSurrogate(unit)) name += unit < 0x80 ? static_cast<char>(unit) : '?';
    return name;
}

// One named block of a directory: bytes, or a wrapper whose own block follows.
struct Record {
    std::string name;
    std::string ownBytes;
    std::string_view bytes; // of ownBytes or of the wrapper's contents
    const FileWrapper* directory = nullptr;
    std::size_t plan = 0; // index of the directory's plan
};

// What one wrapper's DIRECTORY holds, and its size in bytes.
struct Plan {
    std::vector<Record> records;
    std::uint64_t size = 0;
};

std::uint64_t sizeOfBytesBlock(std::string_view bytes) {
    return (bytes.size() < kLongLengthMark ? 8 : 16) + bytes.size();
}

class Serializer {
  public:
    explicit Serializer(const FileWrapper& root) {
        plans_.push_back(planFor(root, true));
        for (std::size_t i = 0; i < plans_.size(); ++i) {
            for (std::size_t r = 0; r < plans_[i].records.size(); ++r) {
                const FileWrapper* directory = plans_[i].records[r].directory;
                if (!directory) continue;
                plans_[i].records[r].plan = plans_.size();
                plans_.push_back(planFor(*directory, false));
            }
        }
        // An inner directory's plan comes after the outer one's, so the sizes are known from the back.
        for (std::size_t i = plans_.size(); i-- > 0;) plans_[i].size = sizeOf(plans_[i]);
    }

    std::string serialize() const {
        if (plans_[0].size + 12 > kMaximumSize) return {};
        std::string bytes;
        bytes.reserve(static_cast<std::size_t>(plans_[0].size) + 12);
        bytes += kMagic;
        appendNumber(bytes, kVersion);
        appendNumber(bytes, kRootKind);
        struct Position {
            std::size_t plan, record;
        };
        std::vector<Position> stack{{0, 0}};
        appendHead(bytes, plans_[0]);
        while (!stack.empty()) {
            auto& [plan, index] = stack.back();
            if (index == plans_[plan].records.size()) {
                stack.pop_back();
                continue;
            }
            const Record& record = plans_[plan].records[index++];
            if (record.directory) {
                appendNumber(bytes, kDirectoryBlock);
                appendHead(bytes, plans_[record.plan]);
                stack.push_back({record.plan, 0});
            } else {
                appendBytesBlock(bytes, bytesOf(record));
            }
        }
        return bytes;
    }

  private:
    static std::string_view bytesOf(const Record& record) {
        return record.ownBytes.empty() ? record.bytes : std::string_view(record.ownBytes);
    }

    // A file's four records, or a directory's children followed by their attributes. Only the outermost wrapper
    // states its preferred name; an inner one's is its record's.
    static Plan planFor(const FileWrapper& wrapper, bool isRoot) {
        Plan plan;
        std::string attributes;
        if (wrapper.isDirectory()) {
            appendNumber(attributes, static_cast<std::uint32_t>(wrapper.fileWrappers().size()));
            for (const auto& [key, child] : wrapper.fileWrappers()) {
                plan.records.push_back(
                    {key, {}, child->regularFileContents().bytes(), child->isDirectory() ? child.get() : nullptr});
                appendAttributes(attributes, key, child->fileAttributes(), false);
            }
        } else {
            appendNumber(attributes, 1);
            appendAttributes(attributes, kContentsRecord, wrapper.fileAttributes(), true);
            plan.records.push_back({std::string(kContentsRecord), {}, wrapper.regularFileContents().bytes()});
        }
        if (isRoot && !wrapper.preferredFilename().empty()) {
            plan.records.push_back({std::string(kPreferredNameRecord), lossyASCII(wrapper.preferredFilename()), {}});
            plan.records.push_back({std::string(kUTF8PreferredNameRecord), wrapper.preferredFilename(), {}});
        }
        if (!wrapper.isDirectory() || !wrapper.fileWrappers().empty())
            plan.records.push_back({std::string(kAttributesRecord), std::move(attributes), {}});
        return plan;
    }

    std::uint64_t sizeOfBlock(const Record& record) const {
        return record.directory ? 4 + plans_[record.plan].size : sizeOfBytesBlock(bytesOf(record));
    }

    std::uint64_t sizeOf(const Plan& plan) const {
        std::uint64_t size = 4;
        for (const Record& record : plan.records) size += 4 + record.name.size() + 4 + sizeOfBlock(record);
        return size;
    }

    void appendHead(std::string& bytes, const Plan& plan) const {
        appendNumber(bytes, static_cast<std::uint32_t>(plan.records.size()));
        for (const Record& record : plan.records) appendString(bytes, record.name);
        for (const Record& record : plan.records) appendNumber(bytes, static_cast<std::uint32_t>(sizeOfBlock(record)));
    }

    static void appendBytesBlock(std::string& bytes, std::string_view contents) {
        appendNumber(bytes, kBytesBlock);
        if (contents.size() >= kLongLengthMark) appendNumber(bytes, kLongLengthMark);
        appendNumber(bytes, static_cast<std::uint32_t>(contents.size()));
        if (contents.size() >= kLongLengthMark) appendNumber(bytes, 0);
        bytes += contents;
    }

    std::vector<Plan> plans_;
};

// ---- reading

// What a DIRECTORY said, before it is known whether it is a file or a directory.
struct Contents {
    std::optional<std::string_view> file;
    std::string_view asciiName, utf8Name, attributes;
    FileWrapper::Children children;
    std::unordered_map<std::string_view, FileWrapper*> byName; // of children
};

class Deserializer {
  public:
    explicit Deserializer(std::string_view bytes) : bytes_(bytes) {}

    Result<std::shared_ptr<FileWrapper>> deserialize() {
        if (!bytes_.starts_with(kMagic)) return fail("it does not begin with “rtfd”");
        offset_ = kMagic.size();
        const std::uint32_t version = TRY(number());
        const std::uint32_t kind = TRY(number());
        if (version != kVersion || kind != kRootKind)
            return fail(fmt::format("version {} of kind {} is unknown", version, kind));
        TRY(openDirectory({}, bytes_.size() - offset_));
        while (true) {
            Frame& frame = stack_.back();
            if (frame.next < frame.names.size()) {
                TRY(readBlock(frame));
                continue;
            }
            std::shared_ptr<FileWrapper> wrapper = TRY(finishDirectory(frame));
            const std::string_view name = frame.name;
            stack_.pop_back();
            if (stack_.empty()) return wrapper;
            TRY(addChild(stack_.back(), name, std::move(wrapper)));
        }
    }

  private:
    struct Frame {
        std::string_view name;
        std::size_t end; // offset behind the directory's block
        std::vector<std::string_view> names;
        std::vector<std::uint32_t> sizes;
        std::size_t next = 0;
        Contents contents;
    };

    std::unexpected<Error> fail(std::string_view what) const {
        return failure(Error::withDescription(
            kCocoaErrorDomain, static_cast<std::int64_t>(CocoaError::coderReadCorrupt),
            fmt::format("The serialized file wrapper is damaged at byte {}: {}.", offset_, what)));
    }

    std::size_t remaining() const { return bytes_.size() - offset_; }

    Result<std::uint32_t> number() {
        if (remaining() < 4) return fail("it ends inside a number");
        std::uint32_t value = 0;
        for (unsigned i = 0; i < 4; ++i)
            value |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes_[offset_ + i])) << (8 * i);
        offset_ += 4;
        return value;
    }

    Result<std::string_view> string() {
        std::size_t length = TRY(number());
        if (length == kLongLengthMark) {
            length = TRY(number());
            const std::size_t padding = TRY(number());
            if (padding > remaining()) return fail("its padding passes the end");
            offset_ += padding;
        }
        if (length > remaining()) return fail(fmt::format("{} bytes pass the end", length));
        const std::string_view text = bytes_.substr(offset_, length);
        offset_ += length;
        return text;
    }

    Result<> openDirectory(std::string_view name, std::size_t size) {
        if (stack_.size() == kMaximumDepth) return fail(fmt::format("more than {} directories deep", kMaximumDepth));
        Frame frame{name, offset_ + size, {}, {}, 0, {}};
        const std::uint32_t count = TRY(number());
        // A record takes at least two numbers of this head and two of its block.
        if (count > remaining() / 16) return fail(fmt::format("{} records pass the end", count));
        frame.names.reserve(count);
        frame.sizes.reserve(count);
        for (std::uint32_t i = 0; i < count; ++i) frame.names.push_back(TRY(string()));
        for (std::uint32_t i = 0; i < count; ++i) frame.sizes.push_back(TRY(number()));
        stack_.push_back(std::move(frame));
        return {};
    }

    Result<> readBlock(Frame& frame) {
        const std::size_t start = offset_;
        const std::string_view name = frame.names[frame.next];
        const std::size_t size = frame.sizes[frame.next++];
        if (size > frame.end - std::min(start, frame.end)) return fail("a record passes the end of its directory");
        switch (TRY(number())) {
        case kBytesBlock: {
            const std::string_view bytes = TRY(string());
            if (offset_ - start != size) return fail(fmt::format("the record “{}” has another size", name));
            return takeBytes(frame, name, bytes);
        }
        case kDirectoryBlock:
            if (size < 8) return fail("a directory does not fit its record");
            return openDirectory(name, size - 4);
        default:
            return fail(fmt::format("the record “{}” is of an unknown type", name));
        }
    }

    Result<> takeBytes(Frame& frame, std::string_view name, std::string_view bytes) {
        if (name == kAttributesRecord) {
            frame.contents.attributes = bytes;
        } else if (name == kContentsRecord) {
            frame.contents.file = bytes;
        } else if (name == kPreferredNameRecord) {
            frame.contents.asciiName = bytes;
        } else if (name == kUTF8PreferredNameRecord) {
            frame.contents.utf8Name = bytes;
        } else {
            return addChild(frame, name, FileWrapper::regularFile(Data(std::string(bytes))));
        }
        return {};
    }

    Result<> addChild(Frame& frame, std::string_view name, std::shared_ptr<FileWrapper> child) {
        if (!frame.contents.byName.emplace(name, child.get()).second)
            return fail(fmt::format("the name “{}” occurs twice", name));
        child->setFilename(std::string(name));
        frame.contents.children.emplace_back(std::string(name), std::move(child));
        return {};
    }

    Result<std::shared_ptr<FileWrapper>> finishDirectory(Frame& frame) {
        if (offset_ != frame.end) return fail("a directory has another size than its record");
        Contents& contents = frame.contents;
        TRY(applyAttributes(contents));
        auto wrapper = contents.file ? FileWrapper::regularFile(Data(std::string(*contents.file)))
                                     : FileWrapper::directory(std::move(contents.children));
        if (contents.file && ownAttributes_) wrapper->setFileAttributes(*ownAttributes_);
        wrapper->setPreferredFilename(std::string(contents.utf8Name.empty() ? contents.asciiName : contents.utf8Name));
        return wrapper;
    }

    // The attributes record names entries of its own directory; one of a missing entry is passed over.
    Result<> applyAttributes(Contents& contents) {
        ownAttributes_.reset();
        if (contents.attributes.empty()) return {};
        Deserializer record(contents.attributes);
        const std::uint32_t count = TRY(record.number());
        for (std::uint32_t i = 0; i < count; ++i) {
            const std::string_view name = TRY(record.string());
            const std::string_view values = TRY(record.string());
            if (values.size() < kAttributeBytes) return fail("an attribute entry is too short");
            Deserializer words(values);
            const std::uint32_t seconds = TRY(words.number());
            const std::uint32_t mode = TRY(words.number());
            FileAttributes attributes;
            attributes.posixPermissions = mode & 07777;
            if (seconds != 0) attributes.modificationDate = Date::fromUnixTime(seconds);
            if (name == kContentsRecord) ownAttributes_ = attributes;
            const auto child = contents.byName.find(name);
            if (child != contents.byName.end()) child->second->setFileAttributes(attributes);
        }
        return {};
    }

    std::string_view bytes_;
    std::size_t offset_ = 0;
    std::vector<Frame> stack_;
    std::optional<FileAttributes> ownAttributes_; // of the directory just finished, when it is a file's
};

} // namespace

std::string FileWrapper::serializedRepresentation() const {
    return Serializer(*this).serialize();
}

Result<std::shared_ptr<FileWrapper>> FileWrapper::fromSerializedRepresentation(std::string_view bytes) {
    return Deserializer(bytes).deserialize();
}

} // namespace platform
