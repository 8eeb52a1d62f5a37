// What a keyed archive holds, seen from outside: an object of a registered class, by shared reference.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <typeindex>
#include <typeinfo>
#include <utility>
#include <vector>

#include "platform/base/Value.h"

namespace platform {

// An object with its C++ type. Plain values (NSNull, strings, numbers, data, dates) travel as Value; addresses, UUIDs
// and ranges as URL, UUID and Range; arrays, sets and dictionaries of objects as ObjectArray, ObjectSet and
// ObjectDictionary; everything else as its class's own type.
class ArchivedObject {
  public:
    ArchivedObject() : type_(typeid(void)) {} // nil
    ArchivedObject(Value value) : ArchivedObject(std::make_shared<const Value>(std::move(value))) {}
    // Keeps the most derived type, whatever T is.
    template<class T>
    ArchivedObject(const std::shared_ptr<T>& object)
        : type_(dynamicType(object.get())), pointer_(object, mostDerived(object.get())) {}

    bool isNull() const { return pointer_ == nullptr; }
    std::type_index type() const { return type_; } // dynamic type, typeid(void) for nil
    const void* identity() const { return pointer_.get(); }

    // The object as a T: its own type, or a base of it that ClassRegistry::addBase has named. Null otherwise.
    template<class T>
    std::shared_ptr<const T> as() const {
        return std::static_pointer_cast<const T>(viewedAs(typeid(T)));
    }
    // The same for an object that an unarchiver has just made, which nobody else holds yet.
    template<class T>
    std::shared_ptr<T> asMutable() const {
        return std::const_pointer_cast<T>(as<T>());
    }

  private:
    template<class T>
    static std::type_index dynamicType(const T* object) {
        return object ? typeid(*object) : typeid(void);
    }
    template<class T>
    static const void* mostDerived(const T* object) {
        if constexpr (std::is_polymorphic_v<T>) {
            return object ? dynamic_cast<const void*>(object) : nullptr;
        } else {
            return object;
        }
    }

    std::shared_ptr<const void> viewedAs(std::type_index type) const;

    std::type_index type_;
    std::shared_ptr<const void> pointer_; // to the most derived object
};

using ObjectArray = std::vector<ArchivedObject>; // NSArray
struct ObjectSet {                               // NSSet
    std::vector<ArchivedObject> objects;
};
using ObjectDictionary = std::vector<std::pair<ArchivedObject, ArchivedObject>>; // NSDictionary, in archive order

// The property list that an object is: a Value as it stands, an ObjectArray as Array, an ObjectDictionary with string
// keys as Dictionary. Nothing when anything else is inside, or more than `maximumValues` values: an archive may refer
// to one array many times, and each time is a copy here.
std::optional<Value> propertyListFromObject(const ArchivedObject& object, std::size_t maximumValues = 100'000);

// The object form of a property list; arrays and dictionaries become ObjectArray and ObjectDictionary.
ArchivedObject objectFromPropertyList(const Value& value);

} // namespace platform
