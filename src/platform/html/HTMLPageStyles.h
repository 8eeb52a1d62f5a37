// What pages with one style sheet have in common: their styles, and the attributes that these lead to.
#pragma once

#include <memory>

#include "platform/html/CssStyleResolver.h"
#include "platform/html/HTMLStyleAttributes.h"
#include "platform/xml/HTMLDocument.h"

namespace platform {

struct HTMLPageStyles {
    explicit HTMLPageStyles(const HTMLDocument& page) : resolver(page) {}

    // Those that were kept last, a thread each, if they are good for this page; else new ones.
    static std::unique_ptr<HTMLPageStyles> forPage(const HTMLDocument& page);
    // Keeps the styles of a page for the next one, unless they are many: the pages of one import come from one template
    // and look alike. Only for a page that was read to its end: memory that runs out leaves entries half made.
    static void keep(std::unique_ptr<HTMLPageStyles> styles);

    CssStyleResolver resolver;
    HTMLStyleAttributes attributes;
};

} // namespace platform
