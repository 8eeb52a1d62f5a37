#include "platform/graphics/FileIcon.h"

#include "platform/files/FileWrapper.h"
#include "platform/files/UTType.h"
#include "platform/foundation/PathString.h"
#include "platform/graphics/GraphicsContext.h"

namespace platform {

namespace {

struct KindColor {
    std::string_view type;
    Color::RGBA color;
};

// The first type that a file conforms to.
constexpr KindColor kKindColors[] = {
    {kUTTypePDF, {0.80, 0.18, 0.16, 1}},   {kUTTypeImage, {0.20, 0.60, 0.36, 1}}, {kUTTypeMovie, {0.45, 0.30, 0.70, 1}},
    {kUTTypeAudio, {0.90, 0.50, 0.13, 1}}, {kUTTypeText, {0.25, 0.45, 0.75, 1}},
};
constexpr Color::RGBA kPlainColor{0.55, 0.55, 0.55, 1};

Color colorOf(const Color::RGBA& components) {
    return Color::sRGB(components.red, components.green, components.blue, components.alpha);
}

Color colorForType(const std::optional<UTType>& type) {
    if (type)
        for (const KindColor& kind : kKindColors)
            if (type->conformsTo(kind.type)) return colorOf(kind.color);
    return colorOf(kPlainColor);
}

// A white page with an edge and a band in the kind's color.
Image page(const Color& color) {
    return Image::drawn({kFileIconSide, kFileIconSide}, [&](GraphicsContext& context) {
        const Rect sheet{{5, 1}, {22, 30}};
        context.fillRect(sheet, colorOf(kPlainColor));
        context.fillRect(sheet.inset(1, 1), Color::white());
        context.fillRect({{6, 20}, {20, 8}}, color);
    });
}

Image folder() {
    return Image::drawn({kFileIconSide, kFileIconSide}, [](GraphicsContext& context) {
        const Color color = Color::sRGB(0.36, 0.66, 0.90);
        context.fillRect({{2, 5}, {12, 4}}, color.shadowWithLevel(0.2));
        context.fillRect({{2, 8}, {28, 20}}, color);
    });
}

} // namespace

Image iconForFileWrapper(const FileWrapper& wrapper) {
    if (wrapper.isDirectory()) return folder();
    const std::string& name = wrapper.filename().empty() ? wrapper.preferredFilename() : wrapper.filename();
    return page(colorForType(UTType::typeWithFilenameExtension(pathExtension(name))));
}

Image iconForContentType(std::string_view typeIdentifier) {
    return page(colorForType(UTType::typeWithIdentifier(typeIdentifier)));
}

} // namespace platform
