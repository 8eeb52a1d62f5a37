#include "programs/export/ReadRichText.h"

#include "documents/QLTNoteFile.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/archive/KeyedUnarchiver.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/FileWrapper.h"
#include "platform/foundation/PathString.h"
#include "platform/html/HTMLReader.h"
#include "platform/html/HTMLWriter.h"
#include "platform/rtf/RTFReader.h"
#include "platform/rtf/RTFWriter.h"

namespace quillet {

using platform::AttributedString;
using platform::Data;
using platform::FileWrapper;
using platform::Result;
using platform::URL;

namespace {

Result<AttributedString> readPage(const std::string& path, const std::optional<std::string>& baseDirectory) {
    const URL file = URL::fileURLWithPath(path);
    platform::HTMLReadOptions options;
    options.baseURL = baseDirectory ? URL::fileURLWithPath(*baseDirectory, true) : file.deletingLastPathComponent();
    options.readAccessURL = options.baseURL;
    return TRY(platform::attributedStringFromHTMLFile(file, options)).text;
}

Result<AttributedString> readArchive(const std::string& path) {
    platform::UnarchiveOptions options;
    options.requiresSecureCoding = false;
    const auto root = TRY(platform::unarchivedObject(TRY(platform::contentsOfFile(path)), options));
    if (const auto text = root.as<AttributedString>()) return *text;
    return platform::failure(platform::Error::withDescription(
        platform::kCocoaErrorDomain, static_cast<std::int64_t>(platform::CocoaError::fileReadCorruptFile),
        "“" + path + "” holds no attributed string."));
}

Result<std::shared_ptr<FileWrapper>> fileIn(const AttributedString& text, RichTextFormat format) {
    const platform::Range all{0, text.length()};
    switch (format) {
    case RichTextFormat::rtf:
        return FileWrapper::regularFile(Data(TRY(platform::rtfFromRange(text, all))));
    case RichTextFormat::rtfd:
        return platform::rtfdFileWrapperFromRange(text, all);
    case RichTextFormat::html:
        return FileWrapper::regularFile(Data(TRY(platform::htmlDataFromAttributedString(text))));
    case RichTextFormat::archive:
        break;
    }
    const auto root = std::make_shared<const AttributedString>(text);
    return FileWrapper::regularFile(TRY(
        platform::KeyedArchiver::archivedData(platform::ArchivedObject(root), platform::KeyedArchiver::Coding::plain)));
}

} // namespace

Result<AttributedString> readRichText(const std::string& path, const std::optional<std::string>& baseDirectory) {
    const std::string extension = platform::pathExtension(std::string_view(path));
    if (extension == "html" || extension == "htm") return readPage(path, baseDirectory);
    if (extension == "rtf") return platform::attributedStringFromRTF(TRY(platform::contentsOfFile(path)));
    if (extension == "rtfd")
        return platform::attributedStringFromRTFD(*TRY(FileWrapper::readingURL(URL::fileURLWithPath(path, true))));
    if (extension == QLTNoteFileExtension)
        return TRY(QLTNoteFile::initWithFileURL(URL::fileURLWithPath(path, true)))->noteText();
    return readArchive(path);
}

Result<> writeRichText(const AttributedString& text, RichTextFormat format, const std::string& path) {
    return TRY(fileIn(text, format))->writeToURL(URL::fileURLWithPath(path));
}

} // namespace quillet
