// Objects under construction are frames on one pair of stacks, keys and values as references into the property list;
// an object's own frame is on top again by the time its contents are encoded, and becomes its dictionary.
#include "platform/archive/KeyedArchiver.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <span>
#include <utility>

#include <fmt/core.h>

#include "platform/base/NumberTable.h"
#include "platform/plist/BinaryPropertyListWriter.h"

namespace platform {

namespace {

using Reference = BinaryPropertyListWriter::Reference;

constexpr std::int64_t kArchiveVersion = 100000;
constexpr std::int64_t kUnencodableCode = 4866;

// A note of some pages has no more than these; the fields are those that are open at a time.
constexpr std::size_t kUsualObjects = 256, kUsualKnown = 64, kUsualFields = 32, kUsualClasses = 16;

constexpr std::uint32_t kMostProbes = 8; // for a key

} // namespace

struct KeyedArchiver::Implementation {
    explicit Implementation(Coding itsCoding) : coding(itsCoding), writer(4 * kUsualObjects), top(writer.reserve()) {
        objects.reserve(kUsualObjects);
        elements.reserve(kUsualObjects);
        known.reserve(kUsualKnown);
        for (auto* const open : {&keys, &values}) open->reserve(kUsualFields);
        classes.reserve(kUsualClasses);
        objects.push_back(writer.asciiString("$null"));
    }

    void field(std::string_view key, Reference value) {
        keys.push_back(keyReference(key));
        values.push_back(value);
    }

    // Keys are literals: one that was met before is found by its address, and compared only to be sure of it. Where the
    // linker has put too many of them close by, the property list's writer finds the others.
    Reference keyReference(std::string_view key) {
        const std::uint32_t place = spreadHash(reinterpret_cast<std::uintptr_t>(key.data()));
        for (std::uint32_t i = 0; i < kMostProbes; ++i) {
            KnownKey& slot = knownKeys[(place + i) % knownKeys.size()];
            if (slot.reference == 0) {
                const Reference reference = newKeyReference(key);
                if (key.size() <= slot.text.size()) {
                    slot.length = static_cast<std::uint8_t>(key.size());
                    slot.reference = reference;
                    std::ranges::copy(key, slot.text.begin());
                }
                return reference;
            }
            if (slot.length == key.size() && std::memcmp(slot.text.data(), key.data(), key.size()) == 0)
                return slot.reference;
        }
        return newKeyReference(key);
    }

    // One of the encoded class that begins with "$" is told from the archiver's own by one more.
    Reference newKeyReference(std::string_view key) {
        return key.starts_with('$') ? writer.string("$" + std::string(key)) : writer.string(key);
    }

    // An object is known by its address together with its type: a first member has its owner's address. The type has no
    // part in the hash: its own would be that of its name, and few addresses are met with two types.
    Place placeOf(KeyedArchiver& archiver, const ArchivedObject& object) {
        if (object.isNull()) return 0;
        const auto [number, isNew] =
            knownNumbers.findOrAdd(spreadHash(reinterpret_cast<std::uintptr_t>(object.identity())),
                                   static_cast<std::uint32_t>(known.size()), [&](std::uint32_t candidate) {
                                       const ArchivedObject& other = known[candidate].object;
                                       return other.identity() == object.identity() && other.type() == object.type();
                                   });
        if (!isNew) return known[number].place;
        known.push_back({object, static_cast<Place>(objects.size())}); // known before its contents, which may name it
        const Place place = encode(archiver, object);
        known[number].place = place;
        return place;
    }

    Place encode(KeyedArchiver& archiver, const ArchivedObject& object) {
        if (object.type() == typeid(Value)) return encode(archiver, *static_cast<const Value*>(object.identity()));
        return encode(archiver, classOf(object.type()), object.type(), object.identity());
    }

    Place encode(KeyedArchiver& archiver, const Value& value) {
        if (const auto leaf = leafReference(value)) return placeOfLeaf(*leaf);
        if (value.as<Array>() || value.as<Dictionary>()) return placeOf(archiver, objectFromPropertyList(value));
        return encode(archiver, classOf(value), typeid(Value), &value);
    }

    Place encode(KeyedArchiver& archiver, ClassNumber itsClass, std::type_index type, const void* object) {
        const std::optional<OpenObject> open = openObject(itsClass, type);
        if (!open) return 0;
        classes[itsClass].archivable->encode(archiver, object);
        closeObject(*open);
        return open->place;
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

    Place placeOfLeaf(Reference leaf) {
        if (leaf >= leafPlaces.size())
            leafPlaces.resize(std::max<std::size_t>({leaf + 1, leafPlaces.size() * 2, kUsualObjects}));
        Place& place = leafPlaces[leaf];
        if (place == 0) {
            place = static_cast<Place>(objects.size());
            objects.push_back(leaf);
        }
        return place;
    }

    ClassNumber classOf(std::type_index type) {
        for (ClassNumber number = 0; number < classes.size(); ++number) // a type has one name as a rule
            if (classes[number].type.name() == type.name()) return number;
        for (ClassNumber number = 0; number < classes.size(); ++number)
            if (classes[number].type == type) return number;
        return addClass(type, ClassRegistry::shared().forType(type));
    }

    // Dates and nulls share one C++ type.
    ClassNumber classOf(const Value& value) {
        const ArchivableClass* archivable = nullptr;
        if (value.as<Date>()) archivable = ClassRegistry::shared().forName("NSDate");
        if (value.isNull()) archivable = ClassRegistry::shared().forName("NSNull");
        for (ClassNumber number = 0; number < classes.size(); ++number)
            if (classes[number].type == typeid(Value) && classes[number].archivable == archivable) return number;
        return addClass(typeid(Value), archivable);
    }

    ClassNumber addClass(std::type_index type, const ArchivableClass* archivable) {
        classes.push_back({type, archivable});
        return static_cast<ClassNumber>(classes.size() - 1);
    }

    std::optional<OpenObject> openObject(ClassNumber itsClass, std::type_index type) {
        const ArchivableClass* archivable = classes[itsClass].archivable;
        if (!archivable || (coding == Coding::secure && !archivable->supportsSecureCoding)) {
            refuse(archivable ? archivable->name : type.name());
            return std::nullopt;
        }
        const auto place = static_cast<Place>(objects.size());
        const Reference dictionary = writer.reserve();
        objects.push_back(dictionary);
        return OpenObject{itsClass, place, dictionary, keys.size()};
    }

    void closeObject(const OpenObject& object) {
        if (!classKey) classKey = writer.asciiString("$class");
        keys.push_back(*classKey);
        values.push_back(writer.uid(classPlace(object.itsClass)));
        writer.fillDictionary(object.dictionary, std::span(keys).subspan(object.frame),
                              std::span(values).subspan(object.frame));
        keys.resize(object.frame);
        values.resize(object.frame);
    }

    Place classPlace(ClassNumber number) {
        KnownClass& itsClass = classes[number];
        if (itsClass.place != 0) return itsClass.place;
        itsClass.place = static_cast<Place>(objects.size());
        const ArchivableClass& archivable = *itsClass.archivable;
        const std::size_t first = elements.size();
        for (const std::string& name : archivable.chain) elements.push_back(writer.string(name));
        const Reference classKeys[]{writer.asciiString("$classname"), writer.asciiString("$classes")};
        const Reference classValues[]{writer.string(archivable.name), writer.array(std::span(elements).subspan(first))};
        elements.resize(first);
        objects.push_back(writer.dictionary(classKeys, classValues));
        return itsClass.place;
    }

    void refuse(std::string_view className) {
        if (error) return;
        error = Error::withDescription(kCocoaErrorDomain, kUnencodableCode,
                                       fmt::format("An object of the class “{}” cannot be archived.", className));
    }

    // A key of more bytes is looked up by the property list's writer each time.
    struct KnownKey {
        std::array<char, 39> text;
        std::uint8_t length = 0;
        Reference reference = 0; // none: that is the file's top
    };
    // A class with what this archive knows of it.
    struct KnownClass {
        std::type_index type;
        const ArchivableClass* archivable; // null for a type that has no class
        Place place = 0;                   // of its dictionary; 0 until that is written
    };
    // An object that the archive has met; an address counts only as long as its object lives.
    struct KnownObject {
        ArchivedObject object;
        Place place;
    };

    Coding coding;
    BinaryPropertyListWriter writer;
    Reference top;
    std::array<KnownKey, 128> knownKeys;
    std::optional<Reference> classKey;
    std::vector<Reference> objects;
    std::vector<Reference> keys, values; // of all open frames, the archive's top first
    std::vector<Reference> elements;     // of all open lists of references, the outermost first
    std::vector<KnownObject> known;
    NumberTable knownNumbers;
    std::vector<Place> leafPlaces;   // by the leaf's reference; 0 for one that is no object
    std::vector<KnownClass> classes; // a dozen at most
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
    encodePlace(key, placeOf(object));
}

void KeyedArchiver::encodeStringObject(std::string_view key, std::u16string_view text) {
    encodePlace(key, placeOfString(text));
}

void KeyedArchiver::encodeStringObject(std::string_view key, std::string_view utf8) {
    encodePlace(key, placeOfString(utf8));
}

void KeyedArchiver::encodePlace(std::string_view key, Place place) {
    implementation_->field(key, implementation_->writer.uid(place));
}

auto KeyedArchiver::placeOf(const ArchivedObject& object) -> Place {
    return implementation_->placeOf(*this, object);
}

auto KeyedArchiver::placeOf(const Value& value) -> Place {
    return implementation_->encode(*this, value);
}

auto KeyedArchiver::placeOfNew(std::type_index type, const void* object) -> Place {
    return implementation_->encode(*this, implementation_->classOf(type), type, object);
}

auto KeyedArchiver::placeOfString(std::u16string_view text) -> Place {
    return implementation_->placeOfLeaf(implementation_->writer.string(text));
}

auto KeyedArchiver::placeOfString(std::string_view utf8) -> Place {
    return implementation_->placeOfLeaf(implementation_->writer.string(utf8));
}

auto KeyedArchiver::openObject(std::type_index type) -> std::optional<OpenObject> {
    return implementation_->openObject(implementation_->classOf(type), type);
}

void KeyedArchiver::closeObject(const OpenObject& object) {
    implementation_->closeObject(object);
}

std::size_t KeyedArchiver::openReferences() {
    return implementation_->elements.size();
}

void KeyedArchiver::addReference(Place place) {
    implementation_->elements.push_back(implementation_->writer.uid(place));
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
