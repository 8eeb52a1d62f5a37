// Counterpart of NSKeyedArchiver: a graph of objects as a binary property list that the platform's unarchiver reads.
//
// An object is encoded by its class's row in the ClassRegistry. Objects are numbered depth first, each taking its index
// before its contents; a class's dictionary follows the contents of its first object. The same object (by address)
// encoded twice is one entry, and so are equal strings and numbers. Encoding recurses over our own value types only,
// whose depth is fixed. Everything goes straight into the property list's bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <ranges>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeindex>
#include <vector>

#include "platform/archive/ArchivedObject.h"
#include "platform/archive/ClassRegistry.h"
#include "platform/base/Data.h"
#include "platform/base/Result.h"

namespace platform {

inline constexpr std::string_view kArchiveRootKey = "root";

class KeyedArchiver {
  public:
    // Under secure coding a class that does not support it makes the archive fail.
    enum class Coding { secure, plain };

    explicit KeyedArchiver(Coding coding);
    ~KeyedArchiver();
    KeyedArchiver(const KeyedArchiver&) = delete;
    KeyedArchiver& operator=(const KeyedArchiver&) = delete;

    // A whole archive with one object under "root".
    static Result<Data> archivedData(const ArchivedObject& root, Coding coding);

    // Values stored in the current object's own dictionary, or, outside any object, at the archive's top.
    void encodeBool(std::string_view key, bool value);
    void encodeInteger(std::string_view key, std::int64_t value);
    void encodeFloat(std::string_view key, float value); // stored as the double of the same value
    void encodeDouble(std::string_view key, double value);
    void encodeBytes(std::string_view key, std::string_view bytes);

    void encodeString(std::string_view key, std::u16string_view text); // inline, not as an object

    // An object stored by reference; nil is reference 0.
    void encodeObject(std::string_view key, const ArchivedObject& object);
    // A string object stored by reference: encodeObject of a Value of that text, without making one.
    void encodeStringObject(std::string_view key, std::u16string_view text);
    void encodeStringObject(std::string_view key, std::string_view utf8);
    // A plain list of references in the current object's dictionary, without an NSArray around it: what the collection
    // classes consist of.
    template<std::ranges::input_range Objects>
    void encodeReferences(std::string_view key, const Objects& objects) {
        const std::size_t first = openReferences();
        for (const ArchivedObject& object : objects) addReference(placeOf(object));
        closeReferences(key, first);
    }

    // For a class whose objects refer to the same ones again and again: an object's place in the archive, by which it
    // can be named any number of times. 0 is nil.
    using Place = std::uint32_t;
    Place placeOf(const ArchivedObject& object); // encodes it when it is new
    Place placeOf(const Value& value);           // without sharing the value, save where it is a collection
    Place placeOfString(std::u16string_view text);
    Place placeOfString(std::string_view utf8);
    // The place of a new object that T's class encodes, whether or not the archive has this one already: for a value
    // that one other object refers to, which need not be shared and known by its address then. 0 when the class is
    // refused.
    template<class T>
    Place placeOfNew(const T& object) {
        static_assert(!std::is_polymorphic_v<T>, "the object's own class is looked up by T");
        return placeOfNew(typeid(T), &object);
    }
    // A new object, of the class that Ts have, with the fields that `encodeFields` encodes: for collections that are
    // nowhere but in the archive. 0 when the class is refused; its fields are not encoded then.
    template<class T, class EncodeFields>
    Place addObject(EncodeFields&& encodeFields) {
        const std::optional<OpenObject> object = openObject(typeid(T));
        if (!object) return 0;
        encodeFields();
        closeObject(*object);
        return object->place;
    }
    // addObject for an NSArray of the objects at places, which are encoded, where they are new, as the range gives
    // them.
    template<std::ranges::input_range Places>
    void encodeArrayOfPlaces(std::string_view key, const Places& places) {
        encodePlace(key, addObject<ObjectArray>([&] { encodePlaces("NS.objects", places); }));
    }
    void encodePlace(std::string_view key, Place place);
    template<std::ranges::input_range Places>
    void encodePlaces(std::string_view key, const Places& places) {
        const std::size_t first = openReferences();
        for (const Place place : places) addReference(place);
        closeReferences(key, first);
    }

    // The archive; the archiver takes nothing more afterwards. An object whose class was never registered, or, in
    // secure coding, one whose class does not support it, makes this an error (NSCocoaErrorDomain 4866).
    Result<Data> finish();

  private:
    using ClassNumber = std::uint32_t; // in the order in which the archive met them
    struct OpenObject {
        ClassNumber itsClass;
        Place place;
        std::uint32_t dictionary; // in the property list
        std::size_t frame;        // where its fields begin
    };
    Place placeOfNew(std::type_index type, const void* object);
    std::optional<OpenObject> openObject(std::type_index type);
    void closeObject(const OpenObject& object);
    std::size_t openReferences();
    void addReference(Place place);
    void closeReferences(std::string_view key, std::size_t first);

    struct Implementation;
    std::unique_ptr<Implementation> implementation_;
};

} // namespace platform
