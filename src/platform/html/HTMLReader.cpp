// The ways into the reader: a file, bytes, or a page that is a tree already.
#include "platform/html/HTMLReader.h"

#include <cerrno>
#include <utility>

#include "platform/files/FileWrapper.h"
#include "platform/html/HTMLDocumentAttributes.h"
#include "platform/html/HTMLPageWalk.h"

namespace platform {

HTMLDocumentText attributedStringFromHTMLDocument(HTMLDocument page, const HTMLReadOptions& options) {
    HTMLDocumentText read;
    HTMLPageWalk walk(std::move(page), HTMLImages(options));
    walk.run();
    if (options.readsDocumentAttributes)
        read.documentAttributes = htmlDocumentAttributes(walk.page(), walk.background());
    walk.releasePage();
    read.text = textWithListMarkers(std::move(walk.written()), walk.listLinks());
    return read;
}

Result<HTMLDocumentText> attributedStringFromHTMLData(std::string_view bytes, const HTMLReadOptions& options) {
    return attributedStringFromHTMLDocument(TRY(HTMLDocument::parse(bytes)), options);
}

Result<HTMLDocumentText> attributedStringFromHTMLFile(const URL& file, const HTMLReadOptions& options) {
    const auto wrapper = TRY(FileWrapper::readingURL(file));
    if (wrapper->isDirectory()) return failure(errorFromErrno(EISDIR, FileAccess::reading, file.path()));
    HTMLReadOptions resolved = options;
    if (!resolved.baseURL) resolved.baseURL = file;
    return attributedStringFromHTMLData(wrapper->regularFileContents().bytes(), resolved);
}

} // namespace platform
