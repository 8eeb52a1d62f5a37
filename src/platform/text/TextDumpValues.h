// How single values look in a text dump; only TextDump.cpp uses it.
#pragma once

#include <string>
#include <string_view>

#include "platform/graphics/Color.h"
#include "platform/text/Attributes.h"

namespace platform {

std::string number(double value);
// Text in quotes; what an eye could miss or confuse is written as an escape.
std::string quoted(std::u16string_view text);
std::string quoted(std::string_view utf8);
// #RRGGBB, and alpha as a fraction when not 1; components that are no whole 255ths in full; spaces other than sRGB by
// name; a catalog color by its name alone.
std::string describe(const Color& color);
std::string describe(const Shadow& shadow);

} // namespace platform
