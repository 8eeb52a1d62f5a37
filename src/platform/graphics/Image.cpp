#include "platform/graphics/Image.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <numbers>

#include <cairo.h>

#include "platform/graphics/GraphicsContext.h"

namespace platform {

namespace {

cairo_t* cairo(GraphicsContext::Native& native) {
    return reinterpret_cast<cairo_t*>(&native);
}
cairo_surface_t* cairo(const std::shared_ptr<Image::Surface>& surface) {
    return reinterpret_cast<cairo_surface_t*>(surface.get());
}

// Null for a surface that cairo could not make.
std::shared_ptr<Image::Surface> owned(cairo_surface_t* surface) {
    const bool made = cairo_surface_status(surface) == CAIRO_STATUS_SUCCESS;
    std::shared_ptr<Image::Surface> shared(reinterpret_cast<Image::Surface*>(surface), [](Image::Surface* each) {
        cairo_surface_destroy(reinterpret_cast<cairo_surface_t*>(each));
    });
    return made ? shared : nullptr;
}

// False when there is nothing to draw with.
bool setColor(cairo_t* context, const Color& color) {
    const auto components = color.rgba();
    if (!components) return false;
    cairo_set_source_rgba(context, components->red, components->green, components->blue, components->alpha);
    return true;
}

bool isEmpty(const Rect& rect) {
    return !(rect.size.width > 0 && rect.size.height > 0);
}

void addOval(cairo_t* context, const Rect& rect) {
    cairo_save(context);
    cairo_translate(context, rect.midX(), rect.midY());
    cairo_scale(context, rect.size.width / 2, rect.size.height / 2);
    cairo_new_path(context);
    cairo_arc(context, 0, 0, 1, 0, 2 * std::numbers::pi);
    cairo_close_path(context);
    cairo_restore(context); // before stroking, so that the line is as thick everywhere
}

} // namespace

void GraphicsContext::fillRect(const Rect& rect, const Color& color) {
    if (isEmpty(rect) || !setColor(cairo(native_), color)) return;
    cairo_rectangle(cairo(native_), rect.origin.x, rect.origin.y, rect.size.width, rect.size.height);
    cairo_fill(cairo(native_));
}

void GraphicsContext::fillOval(const Rect& rect, const Color& color) {
    if (isEmpty(rect) || !setColor(cairo(native_), color)) return;
    addOval(cairo(native_), rect);
    cairo_fill(cairo(native_));
}

void GraphicsContext::strokeOval(const Rect& rect, double lineWidth, const Color& color) {
    if (isEmpty(rect) || !setColor(cairo(native_), color)) return;
    addOval(cairo(native_), rect);
    cairo_set_line_width(cairo(native_), lineWidth);
    cairo_stroke(cairo(native_));
}

void GraphicsContext::fillPolygon(std::span<const Point> corners, const Color& color) {
    cairo_t* const context = cairo(native_);
    if (corners.size() < 3 || !setColor(context, color)) return;
    cairo_new_path(context);
    for (const Point& corner : corners) cairo_line_to(context, corner.x, corner.y);
    cairo_close_path(context);
    cairo_fill(context);
}

void GraphicsContext::strokeLines(std::span<const Point> points, double lineWidth, const Color& color) {
    cairo_t* const context = cairo(native_);
    if (points.empty() || !setColor(context, color)) return;
    cairo_new_path(context);
    for (const Point& point : points) cairo_line_to(context, point.x, point.y);
    cairo_set_line_width(context, lineWidth);
    cairo_set_line_cap(context, CAIRO_LINE_CAP_ROUND);
    cairo_set_line_join(context, CAIRO_LINE_JOIN_ROUND);
    cairo_stroke(context);
}

void GraphicsContext::drawImage(const Image& image, const Rect& rect) {
    if (isEmpty(rect) || image.empty()) return;
    cairo_t* const context = cairo(native_);
    cairo_save(context);
    cairo_translate(context, rect.origin.x, rect.origin.y);
    cairo_scale(context, rect.size.width / image.size().width, rect.size.height / image.size().height);
    cairo_set_source_surface(context, cairo(image.surface()), 0, 0);
    cairo_paint(context);
    cairo_restore(context);
}

Image Image::drawn(Size size, const std::function<void(GraphicsContext&)>& draw) {
    const auto fits = [](double side) { return side > 0 && side <= kLargestSide; };
    if (!fits(size.width) || !fits(size.height)) return {};
    auto surface = owned(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, static_cast<int>(std::ceil(size.width)),
                                                    static_cast<int>(std::ceil(size.height))));
    if (!surface) return {};
    cairo_t* const context = cairo_create(cairo(surface));
    GraphicsContext drawing(reinterpret_cast<GraphicsContext::Native&>(*context));
    draw(drawing);
    cairo_destroy(context);
    cairo_surface_flush(cairo(surface));
    return Image(std::move(surface));
}

Result<Image> Image::fromPNGData(std::string_view bytes) {
    const auto read = [](void* closure, unsigned char* out, unsigned int length) {
        auto& rest = *static_cast<std::string_view*>(closure);
        if (rest.size() < length) return CAIRO_STATUS_READ_ERROR;
        std::memcpy(out, rest.data(), length);
        rest.remove_prefix(length);
        return CAIRO_STATUS_SUCCESS;
    };
    auto surface = owned(cairo_image_surface_create_from_png_stream(read, &bytes));
    if (!surface)
        return failure(Error::withDescription(kCocoaErrorDomain, static_cast<std::int64_t>(CocoaError::fileReadUnknown),
                                              "The bytes are no PNG image."));
    return Image(std::move(surface));
}

Size Image::size() const {
    if (empty()) return {};
    return {static_cast<double>(cairo_image_surface_get_width(cairo(surface_))),
            static_cast<double>(cairo_image_surface_get_height(cairo(surface_)))};
}

Color::RGBA Image::pixelAt(std::size_t x, std::size_t y) const {
    if (static_cast<double>(x) >= size().width || static_cast<double>(y) >= size().height) return {0, 0, 0, 0};
    const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(cairo(surface_)));
    const unsigned char* const pixels = cairo_image_surface_get_data(cairo(surface_));
    std::uint32_t pixel = 0; // native byte order, alpha in the high byte, components multiplied by it
    std::memcpy(&pixel, pixels + y * stride + x * sizeof pixel, sizeof pixel);
    if (cairo_image_surface_get_format(cairo(surface_)) == CAIRO_FORMAT_RGB24) pixel |= 0xFF000000;
    const double alpha = pixel >> 24;
    if (alpha == 0) return {0, 0, 0, 0};
    const auto component = [&](int shift) { return std::min(1.0, (pixel >> shift & 0xFF) / alpha); };
    return {component(16), component(8), component(0), alpha / 255};
}

std::string Image::pngData() const {
    std::string bytes;
    if (empty()) return bytes;
    const auto write = [](void* closure, const unsigned char* data, unsigned int length) {
        static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
        return CAIRO_STATUS_SUCCESS;
    };
    cairo_surface_write_to_png_stream(cairo(surface_), write, &bytes);
    return bytes;
}

} // namespace platform
