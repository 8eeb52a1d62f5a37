// The decoding half of a keyed archive, as a class's decode function sees it.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/archive/ArchivedObject.h"
#include "platform/base/Error.h"

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
    // decodeDouble, for a length that is computed with: 0 for infinity and for what is no number.
    double decodeLength(std::string_view key) const;
    virtual std::optional<std::string_view> decodeBytes(std::string_view key) const = 0;
    virtual ArchivedObject decodeObject(std::string_view key) const = 0;
    // A plain list of references (KeyedArchiver::encodeReferences); nil elements where an object reads as nil.
    virtual ObjectArray decodeReferences(std::string_view key) const = 0;
    virtual std::string_view className() const = 0; // as the archive names it, before aliases

    // decodeObject, for an object of type T; null for another type.
    template<class T>
    std::shared_ptr<const T> decode(std::string_view key) const {
        return decodeObject(key).as<T>();
    }
    // A string, as an object (mutable ones too) or inline.
    virtual std::optional<std::u16string> decodeString(std::string_view key) const = 0;
};

// The error of a class's decode function: NSCocoaErrorDomain 4864 with this description.
Error undecodable(std::string_view description);

} // namespace platform
