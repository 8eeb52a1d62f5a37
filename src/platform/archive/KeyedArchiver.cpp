// Objects under construction are frames on one pair of stacks, keys and values as references into the property list;
// an object's own frame is on top again by the time its contents are encoded, and becomes its dictionary.
#include "platform/archive/KeyedArchiver.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <utility>

#include <fmt/core.h>

#include "platform/plist/BinaryPropertyListWriter.h"

namespace platform {

namespace {

using Reference = BinaryPropertyListWriter::Reference;

constexpr std::int64_t kArchiveVersion = 100000;
constexpr std::int64_t kUnencodableCode = 4866;

// An object is known by its address together with its type: a first member has its owner's address.
struct Identity {
    const void* address;
    std::type_index type;
    friend bool operator==(const Identity&, const Identity&) = default;
};

// The indices of the objects that are in the archive: open addressing, since nothing is ever taken out.
class IndexTable {
  public:
    // The index that stands for an object in the archive; `index` when the object is new, which it stands for then.
    std::pair<std::uint64_t, bool> tryEmplace(const Identity& identity, std::uint64_t index) {
        if (++count_ * 2 > slots_.size()) grow();
        Slot& slot = slotFor(identity);
        const bool isNew = slot.identity.address == nullptr;
        if (isNew) {
            slot = {identity, index};
        } else {
            --count_;
        }
        return {slot.index, isNew};
    }
    // For an object that is there already.
    void replace(const Identity& identity, std::uint64_t index) { slotFor(identity).index = index; }

  private:
    struct Slot {
        Identity identity{nullptr, typeid(void)}; // no object when the slot is free
        std::uint64_t index = 0;
    };

    // The type has no part in it: its hash would be that of its name, and few addresses are met with two types.
    Slot& slotFor(const Identity& identity) {
        constexpr std::uint64_t kSpread = 0x9E3779B97F4A7C15;
        const std::size_t mask = slots_.size() - 1;
        auto slot = static_cast<std::size_t>(reinterpret_cast<std::uintptr_t>(identity.address) * kSpread >> 32) & mask;
        while (slots_[slot].identity.address != nullptr && slots_[slot].identity != identity) slot = (slot + 1) & mask;
        return slots_[slot];
    }

    void grow() {
        std::vector<Slot> old = std::exchange(slots_, std::vector<Slot>(slots_.size() * 2));
        for (const Slot& slot : old)
            if (slot.identity.address != nullptr) slotFor(slot.identity) = slot;
    }

    std::vector<Slot> slots_{256};
    std::size_t count_ = 0;
};

} // namespace

struct KeyedArchiver::Implementation {
    explicit Implementation(Coding itsCoding) : coding(itsCoding), top(writer.reserve()) {
        objects.push_back(writer.asciiString("$null"));
    }

    void field(std::string_view key, Reference value) {
        keys.push_back(keyReference(key));
        values.push_back(value);
    }

    // A key of the encoded class that begins with "$" is told from the archiver's own by one more.
    Reference keyReference(std::string_view key) {
        if (key.starts_with('$')) return writer.string(u"$" + utf16FromUTF8(key));
        // Keys are literals: the place of one that was met before is found by its address, without hashing it.
        KnownKey& known = knownKeys[reinterpret_cast<std::uintptr_t>(key.data()) % knownKeys.size()];
        if (!known.reference || known.text != key) known = {std::string(key), nameReference(key)};
        return *known.reference;
    }

    Reference nameReference(std::string_view name) {
        const bool isASCII = std::ranges::all_of(name, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
        return isASCII ? writer.asciiString(name) : writer.string(utf16FromUTF8(name));
    }

    // A reference to the object of an index. Indices are dense, so that each one's has a place in a table.
    Reference referenceTo(std::uint64_t index) {
        if (index >= uids.size()) uids.resize(index + 1);
        std::optional<Reference>& known = uids[index];
        if (!known) known = writer.uid(index);
        return *known;
    }

    // The object's index in "$objects"; encodes it when it is new.
    std::uint64_t indexOf(KeyedArchiver& archiver, const ArchivedObject& object) {
        if (object.isNull()) return 0;
        const Identity identity{object.identity(), object.type()};
        const auto [known, added] = indices.tryEmplace(identity, objects.size());
        if (!added) return known;
        retained.push_back(object);
        if (object.type() == typeid(Value)) {
            const Value& value = *static_cast<const Value*>(object.identity());
            std::optional<std::uint64_t> index; // not a new one
            if (const auto leaf = leafReference(value)) {
                index = indexOfLeaf(*leaf);
            } else if (value.as<Array>() || value.as<Dictionary>()) {
                index = indexOf(archiver, objectFromPropertyList(value));
            }
            if (index) {
                indices.replace(identity, *index);
                return *index;
            }
        }
        return encode(archiver, object);
    }

    // Strings, numbers and data stand in "$objects" as they are.
    std::optional<Reference> leafReference(const Value& value) {
        if (const auto* text = value.as<std::u16string>()) return writer.string(*text);
        if (const auto* flag = value.as<bool>()) return writer.boolean(*flag);
        if (const auto* integer = value.as<std::int64_t>()) return writer.integer(*integer);
        if (const auto* real = value.as<double>()) return writer.real(*real);
        if (const auto* data = value.as<Data>()) return writer.data(data->bytes());
        return std::nullopt;
    }

    std::uint64_t indexOfLeaf(Reference leaf) {
        if (leaf >= leafIndices.size()) leafIndices.resize(leaf + 1);
        std::uint64_t& index = leafIndices[leaf];
        if (index == 0) {
            index = objects.size();
            objects.push_back(leaf);
        }
        return index;
    }

    // A class with what this archive knows of it.
    struct KnownClass {
        const ArchivableClass* archivable; // null for a type that has no class
        std::uint64_t index = 0;           // of its dictionary; 0 until that is written
    };

    // Dates and nulls share one C++ type.
    KnownClass& classOf(const ArchivedObject& object) {
        if (object.type() == typeid(Value)) {
            const Value& value = *static_cast<const Value*>(object.identity());
            const bool isDate = value.as<Date>() != nullptr;
            if (!isDate && !value.isNull()) return noClass;
            KnownClass& known = isDate ? dateClass : nullClass;
            if (!known.archivable) known.archivable = ClassRegistry::shared().forName(isDate ? "NSDate" : "NSNull");
            return known;
        }
        for (const auto& [type, known] : classes) // a dozen at most; a type has one name as a rule
            if (type.name() == object.type().name()) return *known;
        for (const auto& [type, known] : classes)
            if (type == object.type()) return *known;
        return *classes
                    .emplace_back(object.type(),
                                  std::make_unique<KnownClass>(ClassRegistry::shared().forType(object.type())))
                    .second;
    }

    std::uint64_t encode(KeyedArchiver& archiver, const ArchivedObject& object) {
        const std::uint64_t index = objects.size();
        KnownClass& known = classOf(object);
        const ArchivableClass* archivable = known.archivable;
        if (!archivable || (coding == Coding::secure && !archivable->supportsSecureCoding)) {
            refuse(archivable ? archivable->name : object.type().name());
            return 0;
        }
        const Reference own = writer.reserve();
        objects.push_back(own);
        const std::size_t frame = keys.size();
        archivable->encode(archiver, object.identity());
        if (!classKey) classKey = writer.asciiString("$class");
        keys.push_back(*classKey);
        values.push_back(referenceTo(classIndex(known)));
        writer.fillDictionary(own, std::span(keys).subspan(frame), std::span(values).subspan(frame));
        keys.resize(frame);
        values.resize(frame);
        return index;
    }

    std::uint64_t classIndex(KnownClass& known) {
        if (known.index != 0) return known.index;
        known.index = objects.size();
        const ArchivableClass& archivable = *known.archivable;
        std::vector<Reference> chain;
        chain.reserve(archivable.chain.size());
        for (const std::string& name : archivable.chain) chain.push_back(nameReference(name));
        const Reference classKeys[]{writer.asciiString("$classname"), writer.asciiString("$classes")};
        const Reference classValues[]{nameReference(archivable.name), writer.array(chain)};
        objects.push_back(writer.dictionary(classKeys, classValues));
        return known.index;
    }

    void refuse(std::string_view className) {
        if (error) return;
        error = Error::withDescription(kCocoaErrorDomain, kUnencodableCode,
                                       fmt::format("An object of the class “{}” cannot be archived.", className));
    }

    struct KnownKey {
        std::string text;
        std::optional<Reference> reference;
    };

    Coding coding;
    BinaryPropertyListWriter writer;
    Reference top;
    std::array<KnownKey, 61> knownKeys; // a prime number: addresses share their low bits
    std::optional<Reference> classKey;
    std::vector<Reference> objects;
    std::vector<Reference> keys, values;        // of all open frames, the archive's top first
    std::vector<Reference> elements;            // of all open lists of references, the outermost first
    std::vector<std::optional<Reference>> uids; // by index in "$objects"
    IndexTable indices;
    std::vector<std::uint64_t> leafIndices; // by the leaf's reference; 0 for one that is no object
    std::vector<std::pair<std::type_index, std::unique_ptr<KnownClass>>> classes;
    KnownClass dateClass{nullptr}, nullClass{nullptr}, noClass{nullptr};
    std::vector<ArchivedObject> retained; // an address counts only as long as its object lives
    std::optional<Error> error;
};

KeyedArchiver::KeyedArchiver(Coding coding) : implementation_(std::make_unique<Implementation>(coding)) {}
KeyedArchiver::~KeyedArchiver() = default;

Result<Data> KeyedArchiver::archivedData(const ArchivedObject& root, Coding coding) {
    KeyedArchiver archiver(coding);
    archiver.encodeObject(kArchiveRootKey, root);
    return archiver.finish();
}

void KeyedArchiver::encodeBool(std::string_view key, bool value) {
    implementation_->field(key, implementation_->writer.boolean(value));
}

void KeyedArchiver::encodeInteger(std::string_view key, std::int64_t value) {
    implementation_->field(key, implementation_->writer.integer(value));
}

void KeyedArchiver::encodeFloat(std::string_view key, float value) {
    encodeDouble(key, static_cast<double>(value));
}

void KeyedArchiver::encodeDouble(std::string_view key, double value) {
    implementation_->field(key, implementation_->writer.real(value));
}

void KeyedArchiver::encodeBytes(std::string_view key, std::string_view bytes) {
    implementation_->field(key, implementation_->writer.data(bytes));
}

void KeyedArchiver::encodeString(std::string_view key, std::u16string_view text) {
    implementation_->field(key, implementation_->writer.string(text));
}

void KeyedArchiver::encodeObject(std::string_view key, const ArchivedObject& object) {
    const std::uint64_t index = implementation_->indexOf(*this, object);
    implementation_->field(key, implementation_->referenceTo(index));
}

void KeyedArchiver::encodeArray(std::string_view key, ObjectArray objects) {
    encodeObject(key, std::make_shared<const ObjectArray>(std::move(objects)));
}

std::size_t KeyedArchiver::openReferences() {
    return implementation_->elements.size();
}

void KeyedArchiver::addReference(const ArchivedObject& object) {
    const std::uint64_t index = implementation_->indexOf(*this, object);
    implementation_->elements.push_back(implementation_->referenceTo(index));
}

void KeyedArchiver::closeReferences(std::string_view key, std::size_t first) {
    std::vector<Reference>& elements = implementation_->elements;
    implementation_->field(key, implementation_->writer.array(std::span(elements).subspan(first)));
    elements.resize(first);
}

Result<Data> KeyedArchiver::finish() {
    Implementation& archive = *implementation_;
    if (archive.error) return failure(*std::move(archive.error));
    BinaryPropertyListWriter& writer = archive.writer;
    const Reference keys[]{writer.asciiString("$version"), writer.asciiString("$archiver"), writer.asciiString("$top"),
                           writer.asciiString("$objects")};
    const Reference values[]{writer.integer(kArchiveVersion), writer.asciiString("NSKeyedArchiver"),
                             writer.dictionary(archive.keys, archive.values), writer.array(archive.objects)};
    writer.fillDictionary(archive.top, keys, values);
    return Data(writer.finish(archive.top));
}

} // namespace platform
