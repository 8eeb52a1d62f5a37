// What a keyed archive holds, seen from outside: an object of a registered class, by shared reference.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <typeindex>
#include <typeinfo>
#include <utility>
#include <vector>

#include "platform/base/Result.h"
#include "platform/base/Value.h"

namespace platform {

class KeyedArchiver;
class ArchivedFields;

// An object with its C++ type. Plain values (null, strings, numbers, data, dates, URLs' strings) travel as Value;
// arrays and dictionaries of objects as ObjectArray and ObjectDictionary; everything else as the class's own type.
class ArchivedObject {
  public:
    ArchivedObject() : type_(typeid(void)) {} // null
    ArchivedObject(Value value) : ArchivedObject(std::make_shared<const Value>(std::move(value))) {}
    template<class T>
    ArchivedObject(std::shared_ptr<T> object)
        : type_(object ? typeid(*object) : typeid(void)), pointer_(std::move(object)) {}

    bool isNull() const { return pointer_ == nullptr; }
    std::type_index type() const { return type_; } // dynamic type, typeid(void) for null
    const void* identity() const { return pointer_.get(); }

    // The object when its registered type is exactly T (or, for classes registered with a base, when the registry
    // knows how to view it as T: see ClassRegistry::as).
    template<class T>
    std::shared_ptr<const T> as() const {
        return type_ == typeid(T) ? std::static_pointer_cast<const T>(pointer_) : nullptr;
    }

  private:
    std::type_index type_;
    std::shared_ptr<const void> pointer_;
};

using ObjectArray = std::vector<ArchivedObject>; // NSArray
struct ObjectSet {                               // NSSet
    std::vector<ArchivedObject> objects;
};
using ObjectDictionary = std::vector<std::pair<ArchivedObject, ArchivedObject>>; // NSDictionary, in archive order

// One archivable class.
struct ArchivableClass {
    std::string name;                 // "$classname"
    std::vector<std::string> chain;   // "$classes": most derived first, ending in "NSObject"
    std::vector<std::string> aliases; // further class names that decode to the same type (mutable subclasses)
    std::type_index type;             // of the C++ objects
    bool supportsSecureCoding = true;
    std::function<void(KeyedArchiver&, const void* object)> encode;
    // Every object that the fields refer to is decoded already.
    std::function<Result<ArchivedObject>(const ArchivedFields&)> decode;
};

// The classes that this process archives, filled by explicit calls from each main and test (registerArchivable…
// functions of the libraries), never by static initialisers. Registering a name again replaces nothing.
class ClassRegistry {
  public:
    static ClassRegistry& shared();

    void add(ArchivableClass archivable);
    const ArchivableClass* forType(std::type_index type) const;
    const ArchivableClass* forName(std::string_view className) const;

  private:
    std::vector<std::unique_ptr<ArchivableClass>> classes_;
};

} // namespace platform
