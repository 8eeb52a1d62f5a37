// Rich text and what it consists of in keyed archives.
#pragma once

namespace platform {

class ArchivedFields;
class KeyedArchiver;
class TextAttachment;

// NSAttributedString, NSParagraphStyle, NSTextTab, NSTextList, NSTextBlock, NSTextTable, NSTextTableBlock,
// NSTextAttachment and NSShadow, with their mutable subclasses; fonts and colors as well. Classes of the Foundation and
// file wrappers are registered by their own libraries.
void registerArchivableTextClasses();

// The fields that every attachment class shares, for the coding functions of derived classes. Decoding takes the file
// wrapper through setFileWrapper and leaves out what is missing.
void encodeTextAttachment(KeyedArchiver& archiver, const TextAttachment& attachment);
void decodeTextAttachment(const ArchivedFields& fields, TextAttachment& attachment);

} // namespace platform
