#include "platform/graphics/TextDrawing.h"

#include <memory>

#include <pango/pangocairo.h>

#include "platform/graphics/GraphicsContext.h"

namespace platform {

namespace {

struct Unref {
    void operator()(void* object) const { g_object_unref(object); }
};
struct FreeDescription {
    void operator()(PangoFontDescription* description) const { pango_font_description_free(description); }
};
using Context = std::unique_ptr<PangoContext, Unref>;
using Layout = std::unique_ptr<PangoLayout, Unref>;
using Description = std::unique_ptr<PangoFontDescription, FreeDescription>;

// One pixel a point, so that a size in points is a size on the surface.
Context makeContext() {
    static PangoFontMap* const fontMap = [] {
        PangoFontMap* map = pango_cairo_font_map_new();
        pango_cairo_font_map_set_resolution(PANGO_CAIRO_FONT_MAP(map), 72);
        return map;
    }();
    return Context(pango_font_map_create_context(fontMap));
}

Description descriptionOf(const Font& font) {
    Description description(pango_font_description_new());
    pango_font_description_set_family(description.get(), font.familyName().c_str());
    pango_font_description_set_absolute_size(description.get(), font.pointSize() * PANGO_SCALE);
    if (font.traits() & kBoldFontTrait) pango_font_description_set_weight(description.get(), PANGO_WEIGHT_BOLD);
    if (font.traits() & kItalicFontTrait) pango_font_description_set_style(description.get(), PANGO_STYLE_ITALIC);
    return description;
}

Layout layoutOf(std::string_view text, const Font& font) {
    Layout layout(pango_layout_new(makeContext().get()));
    pango_layout_set_single_paragraph_mode(layout.get(), true);
    pango_layout_set_text(layout.get(), text.data(), static_cast<int>(text.size()));
    pango_layout_set_font_description(layout.get(), descriptionOf(font).get());
    return layout;
}

} // namespace

Size sizeOfText(std::string_view text, const Font& font) {
    int width = 0, height = 0;
    pango_layout_get_size(layoutOf(text, font).get(), &width, &height);
    return {static_cast<double>(width) / PANGO_SCALE, static_cast<double>(height) / PANGO_SCALE};
}

void drawText(GraphicsContext& context, std::string_view text, const Font& font, const Color& color, const Rect& rect) {
    const auto components = color.rgba();
    if (!components || !(rect.size.width > 0)) return;
    cairo_t* const native = reinterpret_cast<cairo_t*>(&context.native());
    const Layout layout = layoutOf(text, font);
    pango_layout_set_width(layout.get(), static_cast<int>(rect.size.width * PANGO_SCALE));
    pango_layout_set_ellipsize(layout.get(), PANGO_ELLIPSIZE_MIDDLE);
    pango_layout_set_alignment(layout.get(), PANGO_ALIGN_CENTER);
    cairo_set_source_rgba(native, components->red, components->green, components->blue, components->alpha);
    cairo_move_to(native, rect.origin.x, rect.origin.y);
    pango_cairo_show_layout(native, layout.get());
}

} // namespace platform
