#include "platform/archive/ArchivedFields.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/base/UTF16.h"
#include "platform/files/FileWrapper.h"
#include "platform/text/ArchivableTextClasses.h"
#include "platform/text/Attributes.h"
#include "platform/text/TextAttachment.h"
#include "platform/text/TextCoding.h"

namespace platform {

void encodeTextAttachment(KeyedArchiver& archiver, const TextAttachment& attachment) {
    archiver.encodeObject("NSFileWrapper", attachment.fileWrapper());
    if (attachment.contents()) archiver.encodeObject("NSContents", Value(*attachment.contents()));
    if (attachment.ownFileType()) archiver.encodeStringObject("NSFileType", *attachment.ownFileType());
}

void decodeTextAttachment(const ArchivedFields& fields, TextAttachment& attachment) {
    if (const auto type = fields.decodeString("NSFileType")) attachment.setFileType(utf8FromUTF16(*type));
    if (const auto contents = fields.decodeBytes("NSContents")) attachment.setContents(Data(std::string(*contents)));
    if (auto wrapper = fields.decodeObject("NSFileWrapper").asMutable<FileWrapper>())
        attachment.setFileWrapper(std::move(wrapper));
}

namespace {

Result<ArchivedObject> decodePlainAttachment(const ArchivedFields& fields) {
    const auto attachment = std::make_shared<TextAttachment>();
    decodeTextAttachment(fields, *attachment);
    return ArchivedObject(attachment);
}

void encodeShadow(KeyedArchiver& archiver, const Shadow& shadow) {
    archiver.encodeDouble("NSShadowBlurRadius", shadow.blurRadius());
    archiver.encodeDouble("NSShadowHoriz", shadow.offsetX());
    archiver.encodeDouble("NSShadowVert", shadow.offsetY());
    if (shadow.color()) archiver.encodePlace("NSShadowColor", archiver.placeOfNew(*shadow.color()));
}

Result<ArchivedObject> decodeShadow(const ArchivedFields& fields) {
    const auto color = fields.decode<Color>("NSShadowColor");
    return ArchivedObject(std::make_shared<const Shadow>(
        fields.decodeLength("NSShadowHoriz"), fields.decodeLength("NSShadowVert"),
        fields.decodeLength("NSShadowBlurRadius"), color ? std::optional(*color) : std::nullopt));
}

} // namespace

std::vector<ArchivableClass> archivableTextAttachmentClasses() {
    return {
        {"NSTextAttachment",
         {"NSTextAttachment", "NSObject"},
         {},
         typeid(TextAttachment),
         true,
         encoderOf<TextAttachment>(encodeTextAttachment),
         decodePlainAttachment},
        {"NSShadow", {"NSShadow", "NSObject"}, {}, typeid(Shadow), true, encoderOf<Shadow>(encodeShadow), decodeShadow},
    };
}

} // namespace platform
