#include "documents/attachments/AttachmentCoding.h"

#include <string>
#include <typeinfo>

#include "documents/attachments/QLTChecklistAttachmentCell.h"
#include "documents/attachments/QLTChecklistTextAttachment.h"
#include "documents/attachments/QLTDividerTextAttachment.h"
#include "documents/attachments/QLTFileAttachment.h"
#include "platform/archive/ArchivedFields.h"
#include "platform/archive/ClassRegistry.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/text/TextCoding.h"

namespace quillet {

using platform::ArchivedFields;
using platform::ArchivedObject;
using platform::ClassRegistry;
using platform::KeyedArchiver;
using platform::Result;
using platform::TextAttachment;

namespace {

constexpr std::string_view kConvertToInPlaceKey = "convertToInPlaceOnMac";
constexpr std::string_view kCellOnKey = "QLTChecklistAttachmentCellOn";

void encodeFileAttachment(KeyedArchiver& archiver, const QLTFileAttachment& attachment) {
    platform::encodeTextAttachment(archiver, attachment);
    archiver.encodeBool(kConvertToInPlaceKey, attachment.convertToInPlaceOnMac());
}

Result<ArchivedObject> decodeFileAttachment(const ArchivedFields& fields) {
    auto attachment = std::make_shared<QLTFileAttachment>();
    platform::decodeTextAttachment(fields, *attachment);
    attachment->setConvertToInPlaceOnMac(fields.decodeBool(kConvertToInPlaceKey));
    return ArchivedObject(attachment);
}

void encodeChecklist(KeyedArchiver& archiver, const QLTChecklistTextAttachment& attachment) {
    attachment.encodeWithCoder(archiver);
}

Result<ArchivedObject> decodeChecklist(const ArchivedFields& fields) {
    return ArchivedObject(QLTChecklistTextAttachment::initWithCoder(fields));
}

// The flags that a cell has which is nothing but its own state.
void encodeChecklistCell(KeyedArchiver& archiver, const QLTChecklistAttachmentCell& cell) {
    constexpr std::int64_t kCellFlags = 130560, kCellFlags2 = 0;
    archiver.encodeInteger("NSCellFlags", kCellFlags);
    archiver.encodeInteger("NSCellFlags2", kCellFlags2);
    archiver.encodeBool(kCellOnKey, cell.isOn());
}

Result<ArchivedObject> decodeChecklistCell(const ArchivedFields& fields) {
    auto cell = std::make_shared<QLTChecklistAttachmentCell>();
    cell->setOn(fields.decodeBool(kCellOnKey));
    return ArchivedObject(cell);
}

void encodeDivider(KeyedArchiver& archiver, const QLTDividerTextAttachment& attachment) {
    platform::encodeTextAttachment(archiver, attachment);
}

Result<ArchivedObject> decodeDivider(const ArchivedFields& fields) {
    auto attachment = std::make_shared<QLTDividerTextAttachment>();
    platform::decodeTextAttachment(fields, *attachment);
    return ArchivedObject(attachment);
}

template<class T, class Base, class Encode, class Decode>
void add(std::vector<std::string> chain, Encode encode, Decode decode) {
    auto& registry = ClassRegistry::shared();
    std::string name = chain.front();
    registry.add({std::move(name), std::move(chain), {}, typeid(T), true, platform::encoderOf<T>(encode), decode});
    registry.addBase<T, Base>();
}

} // namespace

void registerArchivableAttachmentClasses() {
    platform::registerArchivableTextClasses();
    using Cell = platform::TextAttachmentCell;
    add<QLTFileAttachment, TextAttachment>({"QLTFileAttachment", "NSTextAttachment", "NSObject"}, encodeFileAttachment,
                                           decodeFileAttachment);
    add<QLTChecklistTextAttachment, TextAttachment>({"QLTChecklistTextAttachment", "NSTextAttachment", "NSObject"},
                                                    encodeChecklist, decodeChecklist);
    add<QLTDividerTextAttachment, TextAttachment>({"QLTDividerTextAttachment", "NSTextAttachment", "NSObject"},
                                                  encodeDivider, decodeDivider);
    add<QLTChecklistAttachmentCell, Cell>({"QLTChecklistAttachmentCell", "NSTextAttachmentCell", "NSCell", "NSObject"},
                                          encodeChecklistCell, decodeChecklistCell);
}

} // namespace quillet
