// How the Foundation's classes stand in an archive. The archiver writes strings, numbers and data bare; their rows here
// read the wrapped forms of mutable and older objects.
#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <ranges>

#include "platform/archive/ArchivedFields.h"
#include "platform/archive/ClassRegistry.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/base/Range.h"
#include "platform/foundation/URL.h"
#include "platform/foundation/UUID.h"

namespace platform {

namespace {

using Decoded = Result<ArchivedObject>;

Decoded decodeString(const ArchivedFields& fields) {
    if (auto text = fields.decodeString("NS.string")) return Value(*std::move(text));
    if (const auto bytes = fields.decodeBytes("NS.bytes")) return Value(*bytes);
    return Value(std::u16string());
}

Decoded decodeData(const ArchivedFields& fields) {
    const auto bytes = fields.decodeBytes("NS.data");
    return Value(bytes ? Data(std::string(*bytes)) : Data());
}

Decoded decodeNumber(const ArchivedFields& fields) {
    if (fields.containsValueForKey("NS.boolval")) return Value(fields.decodeBool("NS.boolval"));
    if (fields.containsValueForKey("NS.intval")) return Value(fields.decodeInteger("NS.intval"));
    if (fields.containsValueForKey("NS.dblval")) return Value(fields.decodeDouble("NS.dblval"));
    return failure(undecodable("a number holds no value"));
}

// Of the kinds of Value only dates and nulls come here, and a null has no fields.
void encodeValue(KeyedArchiver& archiver, const Value& value) {
    if (const auto* date = value.as<Date>()) archiver.encodeDouble("NS.time", date->secondsSinceReferenceDate);
}

Decoded decodeDate(const ArchivedFields& fields) {
    return Value(Date{fields.decodeDouble("NS.time")});
}

Decoded decodeNull(const ArchivedFields&) {
    return Value();
}

void encodeArray(KeyedArchiver& archiver, const ObjectArray& array) {
    archiver.encodeReferences("NS.objects", array);
}

Decoded decodeArray(const ArchivedFields& fields) {
    return std::make_shared<const ObjectArray>(fields.decodeReferences("NS.objects"));
}

void encodeSet(KeyedArchiver& archiver, const ObjectSet& set) {
    archiver.encodeReferences("NS.objects", set.objects);
}

Decoded decodeSet(const ArchivedFields& fields) {
    return std::make_shared<const ObjectSet>(ObjectSet{fields.decodeReferences("NS.objects")});
}

void encodeDictionary(KeyedArchiver& archiver, const ObjectDictionary& dictionary) {
    archiver.encodeReferences("NS.keys", std::views::keys(dictionary));
    archiver.encodeReferences("NS.objects", std::views::values(dictionary));
}

Decoded decodeDictionary(const ArchivedFields& fields) {
    ObjectArray keys = fields.decodeReferences("NS.keys");
    ObjectArray values = fields.decodeReferences("NS.objects");
    if (keys.size() != values.size()) return failure(undecodable("a dictionary has not as many keys as objects"));
    auto dictionary = std::make_shared<ObjectDictionary>();
    dictionary->reserve(keys.size());
    for (std::size_t i = 0; i < keys.size(); ++i) dictionary->emplace_back(std::move(keys[i]), std::move(values[i]));
    return ArchivedObject(dictionary);
}

void encodeURL(KeyedArchiver& archiver, const URL& url) {
    archiver.encodeObject("NS.base", {});
    archiver.encodeStringObject("NS.relative", url.absoluteString());
}

Decoded decodeURL(const ArchivedFields& fields) {
    const auto text = fields.decodeString("NS.relative");
    if (!text) return failure(undecodable("a URL holds no address"));
    const auto base = fields.decode<URL>("NS.base");
    const std::string relative = utf8FromUTF16(*text);
    auto url = base ? URL::fromString(relative, *base) : URL::fromString(relative);
    if (url) return std::make_shared<const URL>(*std::move(url));
    const URL encoded = URL::fromDataRepresentation(relative); // what no address may hold is percent-encoded
    if (base) url = URL::fromString(encoded.absoluteString(), *base);
    return std::make_shared<const URL>(url ? *std::move(url) : encoded);
}

void encodeUUID(KeyedArchiver& archiver, const UUID& uuid) {
    archiver.encodeBytes("NS.uuidbytes", {reinterpret_cast<const char*>(uuid.bytes.data()), uuid.bytes.size()});
}

Decoded decodeUUID(const ArchivedFields& fields) {
    auto uuid = std::make_shared<UUID>();
    const auto bytes = fields.decodeBytes("NS.uuidbytes");
    if (!bytes || bytes->size() != uuid->bytes.size()) return failure(undecodable("a UUID has not 16 bytes"));
    std::memcpy(uuid->bytes.data(), bytes->data(), uuid->bytes.size());
    return ArchivedObject(uuid);
}

// What an NSValue holds ("NS.special"), and the key of the string form of each kind but ranges.
constexpr std::int64_t kRangeValue = 4;
constexpr std::size_t kArchivedNotFound = std::numeric_limits<std::int64_t>::max(); // kNotFound in an archive
struct GeometryKind {
    std::int64_t special;
    std::string_view key;
};
constexpr std::array kGeometryKinds{
    GeometryKind{1, "NS.pointval"},
    GeometryKind{2, "NS.sizeval"},
    GeometryKind{3, "NS.rectval"},
};

void encodeRange(KeyedArchiver& archiver, const Range& range) {
    archiver.encodeInteger("NS.special", kRangeValue);
    archiver.encodeObject("NS.rangeval.location", Value(std::min(range.location, kArchivedNotFound)));
    archiver.encodeObject("NS.rangeval.length", Value(std::min(range.length, kArchivedNotFound)));
}

Decoded decodeNSValue(const ArchivedFields& fields) {
    const std::int64_t special = fields.decodeInteger("NS.special");
    if (special == kRangeValue) {
        const std::int64_t location = fields.decodeInteger("NS.rangeval.location");
        const std::int64_t length = fields.decodeInteger("NS.rangeval.length");
        if (location < 0 || length < 0) return failure(undecodable("a range is negative"));
        const auto start = static_cast<std::size_t>(location);
        return std::make_shared<const Range>(
            Range{start == kArchivedNotFound ? kNotFound : start, static_cast<std::size_t>(length)});
    }
    for (const GeometryKind& kind : kGeometryKinds)
        if (kind.special == special) return Value(fields.decodeString(kind.key).value_or(std::u16string()));
    return failure(undecodable("a value is of an unknown kind"));
}

} // namespace

void registerFoundationClasses() {
    const auto value = encoderOf<Value>(encodeValue);
    const auto array = encoderOf<ObjectArray>(encodeArray);
    const auto set = encoderOf<ObjectSet>(encodeSet);
    const auto dictionary = encoderOf<ObjectDictionary>(encodeDictionary);
    const auto url = encoderOf<URL>(encodeURL);
    const auto uuid = encoderOf<UUID>(encodeUUID);
    const auto range = encoderOf<Range>(encodeRange);
    const std::vector<ArchivableClass> kClasses{
        // name, chain, mutable subclasses, C++ type, secure coding, encode, decode
        {"NSString", {"NSString", "NSObject"}, {"NSMutableString"}, typeid(Value), true, value, decodeString},
        {"NSNumber", {"NSNumber", "NSValue", "NSObject"}, {}, typeid(Value), true, value, decodeNumber},
        {"NSData", {"NSData", "NSObject"}, {"NSMutableData"}, typeid(Value), true, value, decodeData},
        {"NSDate", {"NSDate", "NSObject"}, {}, typeid(Value), true, value, decodeDate},
        {"NSNull", {"NSNull", "NSObject"}, {}, typeid(Value), true, value, decodeNull},
        {"NSArray", {"NSArray", "NSObject"}, {"NSMutableArray"}, typeid(ObjectArray), true, array, decodeArray},
        {"NSSet", {"NSSet", "NSObject"}, {"NSMutableSet"}, typeid(ObjectSet), true, set, decodeSet},
        {"NSDictionary",
         {"NSDictionary", "NSObject"},
         {"NSMutableDictionary"},
         typeid(ObjectDictionary),
         true,
         dictionary,
         decodeDictionary},
        {"NSURL", {"NSURL", "NSObject"}, {}, typeid(URL), true, url, decodeURL},
        {"NSUUID", {"NSUUID", "NSObject"}, {}, typeid(UUID), true, uuid, decodeUUID},
        {"NSValue", {"NSValue", "NSObject"}, {}, typeid(Range), true, range, decodeNSValue},
    };
    for (const ArchivableClass& archivable : kClasses) ClassRegistry::shared().add(archivable);
}

} // namespace platform
