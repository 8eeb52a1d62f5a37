// Markup as programs write it: every start tag has its end, every value its quotes, every "&" its name. Nearly all
// notes are like that, and every page that one of them was poured into, so reading it need not cost what a parser for
// all markup costs. Whatever a parser could take in a way of its own is refused here, and left to the parser.
#pragma once

#include <string_view>

#include "platform/xml/XMLTreeBuilder.h"

namespace platform {

// Whether every reader gives the text back to the letter: well-formed UTF-8, no control characters but tab and line
// feed, no C1 controls, which may be meant as Windows-1252, no characters at the end of the first plane.
bool isPlainText(std::string_view text);

// Whether readers of HTML give an attribute's name back as it stands: in lower case, and short, since the library cuts
// names after 100 bytes.
bool isPlainAttributeName(std::string_view name);

// Both read the whole document into the builder, which is to be new. False when the document is not plain; the builder
// holds a part of it then, and is good for nothing. Linear.

// As the strict reader would. Comments, instructions, sections, namespaces and the entity names of HTML are not plain.
bool readPlainXML(std::string_view xml, XMLTreeBuilder& builder);

// As readHTML() would with implied tags: a page of html, head and body in their places, in it the elements of note text
// where HTML lets them stand, so that none ends another.
bool readPlainHTML(std::string_view page, XMLTreeBuilder& builder);

} // namespace platform
