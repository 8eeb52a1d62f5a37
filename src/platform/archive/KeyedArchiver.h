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
#include <ranges>
#include <string>
#include <string_view>
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
    // An NSArray object stored by reference.
    void encodeArray(std::string_view key, ObjectArray objects);
    // A plain list of references in the current object's dictionary, without an NSArray around it: what the collection
    // classes consist of.
    template<std::ranges::input_range Objects>
    void encodeReferences(std::string_view key, const Objects& objects) {
        const std::size_t first = openReferences();
        for (const ArchivedObject& object : objects) addReference(object);
        closeReferences(key, first);
    }

    // The archive; the archiver takes nothing more afterwards. An object whose class was never registered, or, in
    // secure coding, one whose class does not support it, makes this an error (NSCocoaErrorDomain 4866).
    Result<Data> finish();

  private:
    std::size_t openReferences();
    void addReference(const ArchivedObject& object);
    void closeReferences(std::string_view key, std::size_t first);

    struct Implementation;
    std::unique_ptr<Implementation> implementation_;
};

} // namespace platform
