// Rich text and what it consists of in keyed archives.
#pragma once

namespace platform {

class ArchivedFields;
class KeyedArchiver;
class TextAttachment;

// NSAttributedString, NSParagraphStyle, NSTextTab, NSTextList, NSTextBlock, NSTextTable, NSTextTableBlock,
// NSTextAttachment and NSShadow, with their mutable subclasses; and all that they refer to: fonts, colors, file
// wrappers and the Foundation's classes.
void registerArchivableTextClasses();

// The fields that every attachment class shares, for the coding functions of derived classes. Decoding takes the file
// wrapper through setFileWrapper and leaves out what is missing.
void encodeTextAttachment(KeyedArchiver& archiver, const TextAttachment& attachment);
void decodeTextAttachment(const ArchivedFields& fields, TextAttachment& attachment);

} // namespace platform
