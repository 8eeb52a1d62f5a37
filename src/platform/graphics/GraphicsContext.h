// Counterpart of NSGraphicsContext with what NSBezierPath and NSRectFill draw into it: filled and stroked shapes on a
// surface. Coordinates in points, the origin at the top left, y downwards.
#pragma once

#include <span>

#include "platform/graphics/Color.h"
#include "platform/graphics/Geometry.h"

namespace platform {

class Image;

class GraphicsContext {
  public:
    // The library's drawing context (cairo_t); the file that draws casts it.
    struct Native;

    // Borrows the native context, which outlives this object.
    explicit GraphicsContext(Native& native) : native_(native) {}
    GraphicsContext(const GraphicsContext&) = delete;
    GraphicsContext& operator=(const GraphicsContext&) = delete;

    // Drawn over what is there. A pattern color draws nothing, and so does an empty rectangle.
    void fillRect(const Rect& rect, const Color& color);
    void fillOval(const Rect& rect, const Color& color);
    // Half the line lies inside the oval, half outside.
    void strokeOval(const Rect& rect, double lineWidth, const Color& color);
    // The area inside the corners; fewer than three draw nothing.
    void fillPolygon(std::span<const Point> corners, const Color& color);
    // One line through the points, with round ends and corners.
    void strokeLines(std::span<const Point> points, double lineWidth, const Color& color);
    // Scaled to the rectangle.
    void drawImage(const Image& image, const Rect& rect);

    Native& native() { return native_; }

  private:
    Native& native_;
};

} // namespace platform
