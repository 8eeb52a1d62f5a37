#include <cmath>

#include "platform/archive/ArchivedFields.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/base/UTF16.h"
#include "platform/graphics/ArchivableGraphicsClasses.h"
#include "platform/graphics/Font.h"
#include "platform/graphics/GraphicsCoding.h"

namespace platform {

namespace {

// The flags of a font that was asked for by name, without a role in the user interface.
constexpr std::int64_t kNamedFontFlags = 16;
constexpr double kDefaultPointSize = 12;

void encodeFont(KeyedArchiver& archiver, const Font& font) {
    archiver.encodeStringObject("NSName", font.fontName());
    archiver.encodeDouble("NSSize", font.pointSize());
    archiver.encodeInteger("NSfFlags", kNamedFontFlags);
}

// A font without a name reads as nil: text loses that font, not its characters.
Result<ArchivedObject> decodeFont(const ArchivedFields& fields) {
    const auto name = fields.decodeString("NSName");
    if (!name || name->empty()) return ArchivedObject();
    const double size = fields.decodeDouble("NSSize");
    const bool isUsable = std::isfinite(size) && size > 0;
    return ArchivedObject(std::make_shared<const Font>(utf8FromUTF16(*name), isUsable ? size : kDefaultPointSize));
}

} // namespace

std::vector<ArchivableClass> archivableFontClasses() {
    return {{"NSFont", {"NSFont", "NSObject"}, {}, typeid(Font), true, encoderOf<Font>(encodeFont), decodeFont}};
}

void registerArchivableGraphicsClasses() {
    for (const auto& classes : {archivableFontClasses(), archivableColorClasses()})
        for (const ArchivableClass& archivable : classes) ClassRegistry::shared().add(archivable);
}

} // namespace platform
