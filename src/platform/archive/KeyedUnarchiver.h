// Counterpart of NSKeyedUnarchiver: reads a keyed archive from anywhere.
//
// Works without recursion: the objects reachable from the root are put in an order in which everything that an object
// refers to comes first, then decoded one by one. A reference back to an object that is still being decoded (a cycle)
// reads as null. Objects, depth and total size are bounded; classes outside the allowed set are an error under
// secure coding and are skipped (read as null) otherwise.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/archive/ArchivedObject.h"
#include "platform/base/Result.h"

namespace platform {

// The fields of one object while it is decoded. A missing field reads as nothing, 0, false or null; numbers convert
// between integer, real and bool as the platform's decoder does.
class ArchivedFields {
  public:
    virtual ~ArchivedFields() = default;

    virtual bool containsValueForKey(std::string_view key) const = 0;
    virtual bool decodeBool(std::string_view key) const = 0;
    virtual std::int64_t decodeInteger(std::string_view key) const = 0;
    virtual double decodeDouble(std::string_view key) const = 0;
    virtual std::optional<std::string_view> decodeBytes(std::string_view key) const = 0;
    virtual ArchivedObject decodeObject(std::string_view key) const = 0;
    virtual std::string_view className() const = 0; // as the archive names it, before aliases

    // decodeObject, for an object of type T; null for another type.
    template<class T>
    std::shared_ptr<const T> decode(std::string_view key) const {
        return decodeObject(key).as<T>();
    }
    // A string object (mutable ones too).
    std::optional<std::u16string> decodeString(std::string_view key) const;
};

struct UnarchiveOptions {
    bool requiresSecureCoding = true;
    // Class names that may be decoded; ignored without secure coding when empty. Strings, numbers, data and dates are
    // always allowed; arrays and dictionaries only when named.
    std::vector<std::string> allowedClasses;
    std::size_t maximumObjects = 4'000'000;
    std::size_t maximumDepth = 512;
};

// The object under `key`. Errors: NSCocoaErrorDomain 4864 with a text that says what is wrong and at which object.
Result<ArchivedObject> unarchivedObject(std::string_view archive, const UnarchiveOptions& options,
                                        std::string_view key = "root");

} // namespace platform
