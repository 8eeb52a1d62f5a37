// Counterpart of NSPropertyListSerialization: Value as a property list file and back.
#pragma once

#include <string>
#include <string_view>

#include "platform/base/Result.h"
#include "platform/base/Value.h"

namespace platform {

// Reads the binary ("bplist00") and the XML form. Nesting over 512, cyclic references and over-long inputs are errors:
// NSCocoaErrorDomain 3840, whose description says what is wrong and where.
Result<Value> propertyListFromData(std::string_view bytes);

// Binary, version 1.0: 8-byte reals, smallest integers, ASCII strings where possible, else UTF-16 (lone surrogates
// survive), equal strings and numbers stored once. Null and Error values are an error (3851).
Result<std::string> binaryDataFromPropertyList(const Value& value);

// XML, version 1.0, with tab indentation. UIDs become dictionaries with the one key CF$UID. What XML cannot hold
// (U+0000 and other controls, lone surrogates, UIDs of 2^63 and more) is an error (3851).
Result<std::string> xmlDataFromPropertyList(const Value& value);

} // namespace platform
