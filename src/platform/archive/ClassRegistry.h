// The classes that this process archives: how each is named, written and read.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeindex>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/archive/ArchivedObject.h"
#include "platform/base/Result.h"

namespace platform {

class KeyedArchiver;
class ArchivedFields;

// One archivable class.
struct ArchivableClass {
    std::string name;                 // "$classname"
    std::vector<std::string> chain;   // "$classes": most derived first, ending in "NSObject"
    std::vector<std::string> aliases; // further class names that decode to the same type (mutable subclasses)
    std::type_index type;             // of the C++ objects
    bool supportsSecureCoding = true;
    // `object` points to an object of exactly `type`; encoderOf makes the cast.
    std::function<void(KeyedArchiver&, const void* object)> encode;
    // Every object that the fields refer to is decoded already.
    std::function<Result<ArchivedObject>(const ArchivedFields&)> decode;
};

// An `encode` from a function that takes the object: encoderOf<TextList>(encodeTextList).
template<class T, class Function>
std::function<void(KeyedArchiver&, const void*)> encoderOf(Function function) {
    return [function = std::move(function)](KeyedArchiver& archiver, const void* object) {
        function(archiver, *static_cast<const T*>(object));
    };
}

// Filled by explicit calls from each main and test (registerFoundationClasses and the like), never by static
// initialisers, and only read afterwards. Registering a name again replaces nothing, so the calls may be repeated.
class ClassRegistry {
  public:
    using Pointer = std::shared_ptr<const void>;

    static ClassRegistry& shared();

    void add(ArchivableClass archivable);
    // Objects of type Derived may be taken as Base from now on; bases of Base too, when they are named as well.
    template<class Derived, class Base>
    void addBase() {
        static_assert(std::is_base_of_v<Base, Derived>);
        addView(typeid(Derived), typeid(Base), [](const Pointer& object) -> Pointer {
            return std::shared_ptr<const Base>(std::static_pointer_cast<const Derived>(object));
        });
    }

    // Null when there is none. The pointers stay valid.
    const ArchivableClass* forType(std::type_index type) const;
    const ArchivableClass* forName(std::string_view className) const; // aliases too

    // The object of type `type` as one of type `base`; null when no chain of bases leads there.
    Pointer view(const Pointer& object, std::type_index type, std::type_index base) const;

  private:
    using Cast = Pointer (*)(const Pointer&);
    struct View {
        std::type_index base;
        Cast cast;
    };
    struct NameHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view name) const { return std::hash<std::string_view>()(name); }
    };

    void addView(std::type_index type, std::type_index base, Cast cast);

    std::vector<std::unique_ptr<ArchivableClass>> classes_;
    std::unordered_map<std::type_index, const ArchivableClass*> byType_;
    std::unordered_map<std::string, const ArchivableClass*, NameHash, std::equal_to<>> byName_;
    std::unordered_map<std::type_index, std::vector<View>> views_; // type → its direct bases
};

// NSString, NSNumber, NSData, NSDate, NSNull, NSArray, NSSet, NSDictionary, NSURL, NSUUID and NSValue, with their
// mutable subclasses.
void registerFoundationClasses();

} // namespace platform
