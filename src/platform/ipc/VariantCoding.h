// MessageCoding's two directions on the bus library's own value type. For the sources of this directory alone.
#pragma once

#include <memory>
#include <span>
#include <string_view>

#include "platform/base/Result.h"
#include "platform/ipc/MessageCoding.h"

struct _GVariant; // NOLINT: the library's name

namespace platform {

struct VariantRelease {
    void operator()(_GVariant* variant) const;
};
using Variant = std::unique_ptr<_GVariant, VariantRelease>;

// A tuple of the signature's type, "(sttuu)", each value converted to its member's type.
Result<Variant> variantTuple(const Array& values, std::string_view signature,
                             std::span<const ListSignature> lists = {});
// One value in the form that its own kind has.
Result<Variant> variantOf(const Value& value, std::span<const ListSignature> lists = {});

// The value of a variant from outside; EBADMSG for what a Value cannot hold (descriptors, keys that are no strings) and
// for what lies too deep.
Result<Value> valueOf(_GVariant* variant);
// A tuple's members.
Result<Array> valuesOf(_GVariant* tuple);

} // namespace platform
