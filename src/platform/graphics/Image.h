// Counterpart of NSImage: a drawn picture, one pixel a point.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/base/Result.h"
#include "platform/graphics/Color.h"
#include "platform/graphics/Geometry.h"

namespace platform {

class GraphicsContext;

// A value; copies share their pixels, which never change.
class Image {
  public:
    static constexpr double kLargestSide = 16384; // points

    Image() = default; // empty, 0 by 0
    // Transparent, then drawn on. Sizes are rounded up to whole points; a size of nothing, or beyond the largest
    // side, gives an empty image.
    static Image drawn(Size size, const std::function<void(GraphicsContext&)>& draw);
    // From PNG bytes; an error (256) for anything else.
    static Result<Image> fromPNGData(std::string_view bytes);

    bool empty() const { return surface_ == nullptr; }
    Size size() const;
    // The color of a pixel, to 8 bits a component; transparent outside.
    Color::RGBA pixelAt(std::size_t x, std::size_t y) const;
    std::string pngData() const; // "" for an empty image

    // The library's surface (cairo_surface_t), for drawing one image into another; null when empty.
    struct Surface;
    const std::shared_ptr<Surface>& surface() const { return surface_; }

  private:
    explicit Image(std::shared_ptr<Surface> surface) : surface_(std::move(surface)) {}
    std::shared_ptr<Surface> surface_;
};

} // namespace platform
