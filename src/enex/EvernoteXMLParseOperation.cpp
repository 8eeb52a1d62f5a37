// The course of the operation: start, the end of each note, the end of all, errors. The states of the reading are in
// EvernoteXMLParseEvents.cpp.
#include "enex/EvernoteXMLParseOperation.h"

#include <array>
#include <exception>
#include <new>
#include <utility>

#include "platform/base/SystemLog.h"
#include "platform/base/UTF16.h"
#include "platform/foundation/CharacterSet.h"
#include "platform/foundation/StringTable.h"

namespace quillet {

using platform::Error;
using platform::Result;

namespace {

using Code = EvernoteXMLParseOperationError;

struct ErrorText {
    Code code;
    std::string_view text;
};
constexpr auto kErrorTexts = std::to_array<ErrorText>({
    {Code::cannotCreateInputStream, platform::localizable("Cannot create input stream.")},
    {Code::cannotCreateParser, platform::localizable("Cannot create parser.")},
    {Code::cannotParseData, platform::localizable("Cannot parse \"%@\" data.")},
    // Other exceptions bring their own text.
    {Code::exceptionDuringConversion, platform::localizable("The note does not fit into memory.")},
    {Code::problemWithNote, platform::localizable("There is a problem with the note “%@”. Try editing the note and "
                                                  "exporting a new ENEX file.")},
});

Error operationErrorWithDescription(Code code, std::string_view description) {
    return Error::withDescription(EvernoteXMLParseOperationErrorDomain, static_cast<std::int64_t>(code), description);
}

Error operationErrorWithCode(Code code, platform::FormatArgument argument = std::nullopt) {
    for (const auto& row : kErrorTexts)
        if (row.code == code)
            return operationErrorWithDescription(code,
                                                 platform::formatted(platform::localizedString(row.text), {argument}));
    return Error(EvernoteXMLParseOperationErrorDomain, static_cast<std::int64_t>(code));
}

// Week-based year and all: the time stamps are read in the process's time zone, and the Z is no more than a letter.
constexpr std::string_view kDatePattern = "YYYYMMdd'T'HHmmss'Z'";

} // namespace

EvernoteXMLParseOperation::EvernoteXMLParseOperation(platform::URL evernoteFileURL, platform::URL directoryURL)
    : evernoteFileURL_(std::move(evernoteFileURL)), directoryURL_(std::move(directoryURL)),
      dateFormatter_(kDatePattern) {}

EvernoteXMLParseOperation::~EvernoteXMLParseOperation() = default;

std::shared_ptr<EvernoteXMLParseOperation>
EvernoteXMLParseOperation::evernoteParseOperationForFileAtURL(const platform::URL& file,
                                                              const platform::URL& directory) {
    return std::make_shared<EvernoteXMLParseOperation>(file, directory);
}

void EvernoteXMLParseOperation::start() {
    setOperationExecuting(true);
    auto stream = platform::InputStream::inputStreamWithURL(evernoteFileURL_, pieceSize_);
    if (!stream) {
        platform::systemLog(stream.error().description());
        return finishWithError(operationErrorWithCode(Code::cannotCreateInputStream));
    }
    fileSize_ = (*stream)->size();
    parser_ = std::make_unique<platform::XMLParser>(std::move(*stream));
    if (!parser_->isReady()) return finishWithError(operationErrorWithCode(Code::cannotCreateParser));
    parser_->setDelegate(this);
    parser_->setProgressHandler([this](std::uint64_t) { reportProgress(); });
    reportProgress();
    tagHandled();
    parser_->parse();
}

void EvernoteXMLParseOperation::cancel() {
    // The reading thread aborts the parser itself, between two notes.
    QLTAsynchronousOperation::cancel();
}

void EvernoteXMLParseOperation::abortWhenCancelled() {
    if (isCancelled() && currentElement_ == Element::outside) parser_->abortParsing();
}

void EvernoteXMLParseOperation::changeOperationFinished(bool finished) {
    if (finished == operationFinished()) return;
    QLTAsynchronousOperation::changeOperationFinished(finished);
    if (!finished) return;
    setOperationExecuting(false);
    if (parser_) parser_->abortParsing();
    if (operationError_) {
        log(platform::formatted("Finish parsing ENEX file with error: %@", {operationError_->description()}));
    } else {
        log("Finish parsing ENEX file.");
    }
    if (parseOperationCompletionBlock) parseOperationCompletionBlock(operationError_);
}

void EvernoteXMLParseOperation::finishWithError(Error error) {
    operationError_ = std::move(error);
    setOperationFinished(true);
}

void EvernoteXMLParseOperation::finishForEncoding(std::string_view encoding) {
    finishWithError(operationErrorWithCode(Code::cannotParseData, encoding));
}

void EvernoteXMLParseOperation::parserDidEndDocument(platform::XMLParser&) {
    setOperationFinished(true);
}

void EvernoteXMLParseOperation::parserParseErrorOccurred(platform::XMLParser&, const Error& parserError) {
    // The abort that belongs to the end is reported too, and changes nothing about it.
    if (operationFinished()) return;
    const auto title = currentItem_ ? trimmed(currentItem_->title, platform::CharacterSet::whitespaceAndNewline())
                                    : std::u16string_view();
    if (title.empty()) return finishWithError(parserError);
    Error error = operationErrorWithCode(Code::problemWithNote, title);
    error.userInfo[std::string(platform::kUnderlyingErrorKey)] = platform::Value(parserError);
    finishWithError(std::move(error));
}

// Exceptions end here: one note's trouble is no reason to lose the others.
Result<std::optional<ItemEntry>> EvernoteXMLParseOperation::convertCurrentItem() {
    if (!currentItem_ || !getItemDict) return std::nullopt;
    if (currentItemIsTooLarge_) return platform::failure(operationErrorWithCode(Code::exceptionDuringConversion));
    try {
        return getItemDict(*currentItem_);
    } catch (const std::bad_alloc&) {
        return platform::failure(operationErrorWithCode(Code::exceptionDuringConversion));
    } catch (const std::exception& exception) {
        return platform::failure(operationErrorWithDescription(Code::exceptionDuringConversion, exception.what()));
    } catch (...) {
        return platform::failure(operationErrorWithDescription(Code::exceptionDuringConversion, "unknown exception"));
    }
}

void EvernoteXMLParseOperation::reportProgress() {
    if (progressHandler) progressHandler(parser_->bytesParsed(), fileSize_);
}

void EvernoteXMLParseOperation::endNote() {
    reportProgress();
    const std::optional<std::u16string> title =
        currentItem_ ? std::optional(currentItem_->title) : std::nullopt; // none behind a note inside a note
    log(platform::formatted("Converting \"%@\"", {title}));
    auto entry = convertCurrentItem();
    if (entry && *entry) {
        if (parseOperationDidExportItemBlock) parseOperationDidExportItemBlock(**std::move(entry));
    } else {
        log(platform::formatted("Skipping \"%@\"", {title}));
        Error error = entry ? operationErrorWithCode(Code::noItemAndNoError) : std::move(entry).error();
        if (title) error.userInfo[std::string(kNoteNameKey)] = platform::Value(*title);
        if (parseOperationDidExportItemBlock) parseOperationDidExportItemBlock(platform::failure(std::move(error)));
    }
    currentItem_.reset();
    currentItemIsTooLarge_ = false;
    currentElement_ = Element::outside;
    currentNoteElement_ = NoteElement::none;
}

void EvernoteXMLParseOperation::log(std::string_view text) {
    if (logStream_) writeLogLine(*logStream_, text);
}

} // namespace quillet
