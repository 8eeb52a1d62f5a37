// The dump of a rich text read back, so that golden cases begin with what they end with: input dump, operation,
// expected dump.
//
// Reads the part of the format that these cases need: fonts, colors, links, numbers, attachments, the common properties
// of paragraph styles, lists and tables. A file's bytes are letters (the dump shows only how many), and its name is
// both its preferred name and its name on disk.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/text/AttributedString.h"

namespace quillet {

// What the reader does not know: a mistake in the case, which fails its test.
class UnreadableDump : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

platform::AttributedString textFromDump(std::string_view dump);

} // namespace quillet
