// Objects under construction are frames on one pair of stacks, keys and values as references into the property list;
// an object's own frame is on top again by the time its contents are encoded, and becomes its dictionary.
#include "platform/archive/KeyedArchiver.h"

#include <algorithm>
#include <optional>
#include <span>
#include <unordered_map>

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

struct IdentityHash {
    // The type's hash would be that of its name, and few addresses are met with two types.
    std::size_t operator()(const Identity& identity) const { return std::hash<const void*>()(identity.address); }
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
        if (!key.starts_with('$')) return nameReference(key);
        return writer.string(u"$" + utf16FromUTF8(key));
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
        const auto [known, added] = indices.try_emplace({object.identity(), object.type()}, objects.size());
        if (!added) return known->second;
        retained.push_back(object);
        if (object.type() == typeid(Value)) {
            const Value& value = *object.as<Value>();
            std::uint64_t& index = known->second; // stays where it is when the table grows
            if (const auto leaf = leafReference(value)) return index = indexOfLeaf(*leaf);
            if (value.as<Array>() || value.as<Dictionary>())
                return index = indexOf(archiver, objectFromPropertyList(value));
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
        const auto [known, added] = leafIndices.try_emplace(leaf, objects.size());
        if (added) objects.push_back(leaf);
        return known->second;
    }

    // Dates and nulls share one C++ type.
    static const ArchivableClass* classOf(const ArchivedObject& object) {
        const ClassRegistry& registry = ClassRegistry::shared();
        const auto value = object.as<Value>();
        if (!value) return registry.forType(object.type());
        return value->as<Date>() ? registry.forName("NSDate") : value->isNull() ? registry.forName("NSNull") : nullptr;
    }

    std::uint64_t encode(KeyedArchiver& archiver, const ArchivedObject& object) {
        const std::uint64_t index = objects.size();
        const ArchivableClass* archivable = classOf(object);
        if (!archivable || (coding == Coding::secure && !archivable->supportsSecureCoding)) {
            refuse(archivable ? archivable->name : object.type().name());
            return 0;
        }
        const Reference own = writer.reserve();
        objects.push_back(own);
        const std::size_t frame = keys.size();
        archivable->encode(archiver, object.identity());
        keys.push_back(writer.asciiString("$class"));
        values.push_back(referenceTo(classIndex(*archivable)));
        writer.fillDictionary(own, std::span(keys).subspan(frame), std::span(values).subspan(frame));
        keys.resize(frame);
        values.resize(frame);
        return index;
    }

    std::uint64_t classIndex(const ArchivableClass& archivable) {
        const auto [known, added] = classIndices.try_emplace(&archivable, objects.size());
        if (!added) return known->second;
        std::vector<Reference> chain;
        chain.reserve(archivable.chain.size());
        for (const std::string& name : archivable.chain) chain.push_back(nameReference(name));
        const Reference classKeys[]{writer.asciiString("$classname"), writer.asciiString("$classes")};
        const Reference classValues[]{nameReference(archivable.name), writer.array(chain)};
        objects.push_back(writer.dictionary(classKeys, classValues));
        return known->second;
    }

    void refuse(std::string_view className) {
        if (error) return;
        error = Error::withDescription(kCocoaErrorDomain, kUnencodableCode,
                                       fmt::format("An object of the class “{}” cannot be archived.", className));
    }

    Coding coding;
    BinaryPropertyListWriter writer;
    Reference top;
    std::vector<Reference> objects;
    std::vector<Reference> keys, values;        // of all open frames, the archive's top first
    std::vector<Reference> elements;            // of all open lists of references, the outermost first
    std::vector<std::optional<Reference>> uids; // by index in "$objects"
    std::unordered_map<Identity, std::uint64_t, IdentityHash> indices;
    std::unordered_map<Reference, std::uint64_t> leafIndices;
    std::unordered_map<const ArchivableClass*, std::uint64_t> classIndices;
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
