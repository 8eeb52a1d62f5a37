// What a page says about itself, as document attributes.
#pragma once

#include <optional>

#include "platform/base/Value.h"
#include "platform/html/CssColor.h"
#include "platform/xml/HTMLDocument.h"

namespace platform {

// Type, encoding, title, the known meta elements of the head (names in any case), and the body's background.
Dictionary htmlDocumentAttributes(const HTMLDocument& page, const std::optional<CssRGBA>& background);

} // namespace platform
