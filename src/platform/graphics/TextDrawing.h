// Counterpart of drawing and measuring attributed strings, for one line in one font.
#pragma once

#include <string_view>

#include "platform/graphics/Color.h"
#include "platform/graphics/Font.h"
#include "platform/graphics/Geometry.h"

namespace platform {

class GraphicsContext;

// The line's width and height in points; the text is UTF-8. Fonts of this machine stand in for those that it lacks.
Size sizeOfText(std::string_view text, const Font& font);

// Draws the line at the rectangle's top, cut in the middle with an ellipsis where it is too wide, centred.
void drawText(GraphicsContext& context, std::string_view text, const Font& font, const Color& color, const Rect& rect);

} // namespace platform
