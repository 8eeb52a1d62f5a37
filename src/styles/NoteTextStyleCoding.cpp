#include "styles/NoteTextStyleCoding.h"

#include <string>
#include <utility>

#include "platform/archive/ArchivedFields.h"
#include "platform/archive/ClassRegistry.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/archive/KeyedUnarchiver.h"
#include "platform/base/UTF16.h"
#include "platform/text/TextCoding.h"
#include "styles/base/Colors.h"

namespace quillet {

using platform::ArchivedFields;
using platform::ArchivedObject;
using platform::Font;
using platform::KeyedArchiver;
using platform::ParagraphStyle;
using platform::Value;

namespace {

constexpr const char* kClassName = "QLTNoteTextStyle";
constexpr std::string_view kTypeKey = "type", kNameKey = "name", kFontNameKey = "fontName", kFontSizeKey = "fontSize",
                           kParagraphStyleKey = "paragraphStyle", kUnderlineStyleKey = "underlineStyle",
                           kStrikethroughKey = "strikethrough", kForegroundColorKey = "foregroundColor",
                           kResetOnNewLineKey = "resetOnNewLine", kApplyToParagraphKey = "applyToParagraph",
                           kCustomStyleIdentifierKey = "customStyleIdentifier";

ArchivedObject stringObject(const std::optional<std::u16string>& text) {
    return text ? ArchivedObject(Value(*text)) : ArchivedObject();
}

void encodeStyle(KeyedArchiver& archiver, const QLTNoteTextStyle& style) {
    const std::optional<Font>& font = style.storedFont();
    archiver.encodeInteger(kTypeKey, style.type());
    archiver.encodeObject(kNameKey, stringObject(style.storedName()));
    if (font) archiver.encodeStringObject(kFontNameKey, font->fontName());
    archiver.encodeFloat(kFontSizeKey, font ? static_cast<float>(font->pointSize()) : 0);
    if (style.storedParagraphStyle()) archiver.encodeObject(kParagraphStyleKey, style.storedParagraphStyle());
    archiver.encodeInteger(kUnderlineStyleKey, style.underlineStyle());
    archiver.encodeInteger(kStrikethroughKey, style.strikethrough());
    archiver.encodeObject(kForegroundColorKey,
                          platform::objectFromPropertyList(propertyListRepresentation(style.foregroundColor())));
    archiver.encodeBool(kResetOnNewLineKey, style.resetOnNewLine());
    archiver.encodeBool(kApplyToParagraphKey, style.applyToParagraph());
    archiver.encodeObject(kCustomStyleIdentifierKey, stringObject(style.customStyleIdentifier()));
}

// The font of that name, or else of the style's factory settings; a custom style falls back to Body's.
std::optional<Font> decodedFont(const ArchivedFields& fields, std::int64_t type) {
    if (const auto name = fields.decodeString(kFontNameKey)) {
        const auto size = static_cast<float>(fields.decodeDouble(kFontSizeKey));
        if (auto font = Font::named(platform::utf8FromUTF16(*name), size)) return font;
    }
    const auto factory = QLTNoteTextStyle::defaultStyleForType(
        type == QLTNoteTextStyle::kCustomType ? std::int64_t{QLTNoteTextStyle::kBodyType} : type);
    return factory ? factory->storedFont() : std::nullopt;
}

std::optional<platform::Color> decodedColor(const ArchivedFields& fields) {
    const auto representation = platform::propertyListFromObject(fields.decodeObject(kForegroundColorKey));
    const auto* components = representation ? representation->as<platform::Dictionary>() : nullptr;
    if (!components) return std::nullopt;
    return colorFromPropertyListRepresentation(*components);
}

platform::Result<ArchivedObject> decodeStyle(const ArchivedFields& fields) {
    auto style = std::make_shared<QLTNoteTextStyle>();
    style->setType(fields.decodeInteger(kTypeKey));
    style->setName(fields.decodeString(kNameKey));
    style->setFont(decodedFont(fields, style->type()));
    style->setParagraphStyle(fields.decode<ParagraphStyle>(kParagraphStyleKey));
    style->setUnderlineStyle(fields.decodeInteger(kUnderlineStyleKey));
    style->setStrikethrough(fields.decodeInteger(kStrikethroughKey));
    if (const auto color = decodedColor(fields)) style->setForegroundColor(color);
    style->setResetOnNewLine(fields.decodeBool(kResetOnNewLineKey));
    style->setApplyToParagraph(fields.decodeBool(kApplyToParagraphKey));
    style->setCustomStyleIdentifier(fields.decodeString(kCustomStyleIdentifierKey));
    return ArchivedObject(style);
}

} // namespace

void registerArchivableStyleClasses() {
    platform::registerFoundationClasses();
    platform::registerArchivableTextClasses();
    platform::ClassRegistry::shared().add({kClassName,
                                           {kClassName, "NSObject"},
                                           {},
                                           typeid(QLTNoteTextStyle),
                                           true,
                                           platform::encoderOf<QLTNoteTextStyle>(encodeStyle),
                                           decodeStyle});
}

platform::Result<std::vector<QLTNoteTextStyle::Reference>> unarchivedStyles(std::string_view archive) {
    platform::UnarchiveOptions options;
    options.allowedClasses = {kClassName,   "NSArray",     "NSDictionary", "NSParagraphStyle", "NSTextTab",
                              "NSTextList", "NSTextBlock", "NSColor",      "NSColorSpace",     "NSNull"};
    const ArchivedObject root = TRY(platform::unarchivedObject(archive, options));
    const auto objects = root.as<platform::ObjectArray>();
    if (!objects) return platform::failure(platform::undecodable("the saved styles are no array"));
    std::vector<QLTNoteTextStyle::Reference> styles;
    for (const ArchivedObject& each : *objects) {
        auto style = each.asMutable<QLTNoteTextStyle>();
        if (!style) return platform::failure(platform::undecodable("the saved styles hold something else"));
        styles.push_back(std::move(style));
    }
    return styles;
}

} // namespace quillet
