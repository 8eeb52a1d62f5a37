// Any file of rich text through the reader that the product uses for it.
#pragma once

#include <optional>
#include <string>

#include "platform/base/Result.h"
#include "platform/text/AttributedString.h"

namespace quillet {

// By the name's extension: .html/.htm (relative addresses against `baseDirectory`, the file's own directory when
// absent), .rtf, .rtfd, .qltnote; any other file is read as a keyed archive of an attributed string.
platform::Result<platform::AttributedString>
readRichText(const std::string& path, const std::optional<std::string>& baseDirectory = std::nullopt);

enum class RichTextFormat { rtf, rtfd, html, archive };

// Writes the text as a new file or package; fails when the path exists.
platform::Result<> writeRichText(const platform::AttributedString& text, RichTextFormat format,
                                 const std::string& path);

} // namespace quillet
