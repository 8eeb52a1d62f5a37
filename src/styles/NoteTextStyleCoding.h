// Text styles in keyed archives.
#pragma once

#include <string_view>
#include <vector>

#include "platform/base/Result.h"
#include "styles/QLTNoteTextStyle.h"

namespace quillet {

// QLTNoteTextStyle, and all that a style consists of.
void registerArchivableStyleClasses();

// An archive of an array of styles, read securely: nothing but styles and their contents.
platform::Result<std::vector<QLTNoteTextStyle::Reference>> unarchivedStyles(std::string_view archive);

} // namespace quillet
