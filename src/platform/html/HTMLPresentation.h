// What HTML itself says about looks: the built-in style sheet and the attributes that stand for declarations.
#pragma once

#include <string>

#include "platform/html/CssDeclarations.h"
#include "platform/xml/HTMLDocument.h"

namespace platform {

// The built-in declarations of an element name; links have more.
const CssDeclarations& builtInDeclarations(HTMLTag tag);
const CssDeclarations& builtInLinkDeclarations();
// A table in a page of quirks mode takes nothing of the text around it.
const CssDeclarations& builtInQuirksTableDeclarations();

// Adds the declarations that an element's attributes stand for, as style text.
void appendPresentation(std::string& text, const HTMLDocument& page, HTMLDocument::NodeIndex element);

} // namespace platform
