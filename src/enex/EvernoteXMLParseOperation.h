// Reads one export as a stream, one note at a time, and hands each note over at its end tag.
//
// Everything runs on the thread that runs start: the reading, getItemDict and both blocks. Only cancel may come from
// another thread.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "enex/EvernoteXMLItem.h"
#include "platform/base/Result.h"
#include "platform/foundation/DateFormatter.h"
#include "platform/foundation/StringFormat.h"
#include "platform/foundation/URL.h"
#include "platform/xml/XMLParser.h"
#include "service/operations/OutputStream.h"
#include "service/operations/QLTAsynchronousOperation.h"

namespace quillet {

inline constexpr std::string_view EvernoteXMLParseOperationErrorDomain = "EvernoteXMLParseOperationErrorDomain";
// Under this key the error of one note carries the note's title.
inline constexpr std::string_view kNoteNameKey = "QLTNoteName";

enum class EvernoteXMLParseOperationError {
    cannotCreateInputStream = 1001,
    cannotCreateParser = 1002,
    cannotParseData = 1003, // a resource's encoding is not base64
    exceptionDuringConversion = 1004,
    noItemAndNoError = 1005,
    problemWithNote = 1006, // the parser's error, inside a note with a title
};

class EvernoteXMLParseOperation : public QLTAsynchronousOperation, private platform::XMLParserDelegate {
  public:
    EvernoteXMLParseOperation(platform::URL evernoteFileURL, platform::URL directoryURL);
    ~EvernoteXMLParseOperation() override;

    // @sel evernoteParseOperationForFileAtURL:toExportToDirectoryAtURL:
    static std::shared_ptr<EvernoteXMLParseOperation>
    evernoteParseOperationForFileAtURL(const platform::URL& file, const platform::URL& directory);

    // Converts one note, for its entry; nothing and no error at all is a failure too. Set by the import.
    std::function<platform::Result<std::optional<ItemEntry>>(EvernoteXMLItem&)> getItemDict;
    // Called once a note, with its entry or its error.
    std::function<void(platform::Result<ItemEntry>)> parseOperationDidExportItemBlock;
    // Called once at the end, with the error that ended the import or nothing.
    std::function<void(const std::optional<platform::Error>&)> parseOperationCompletionBlock;
    // Bytes done so far and size of the file in bytes; called at the start, at the end of each note, before it is
    // converted, and after each piece that is read.
    std::function<void(std::uint64_t, std::uint64_t)> progressHandler;

    void setSaveWebClippingsAsNotes(bool asNotes) { saveWebClippingsAsNotes_ = asNotes; }
    void setDebugMode(bool debug) { debugMode_ = debug; } // logs every event of the parser
    void setLogStream(std::shared_ptr<OutputStream> stream) { logStream_ = std::move(stream); }
    // How many bytes are read at a time; for tests.
    void setPieceSize(std::size_t size) { pieceSize_ = size; }
    const std::optional<platform::Error>& operationError() const { return operationError_; }
    const platform::URL& evernoteFileURL() const { return evernoteFileURL_; }
    const platform::URL& directoryURL() const { return directoryURL_; }
    bool saveWebClippingsAsNotes() const { return saveWebClippingsAsNotes_; }
    bool debugMode() const { return debugMode_; }
    const std::shared_ptr<OutputStream>& logStream() const { return logStream_; }

    void start() override;
    // A note under way is finished first; then the import ends with the parser's error 512.
    void cancel() override;

  protected:
    void changeOperationFinished(bool finished) override;
    void finishWithError(platform::Error error);

  private:
    // The states, each with the element whose text is being read.
    enum class Element { outside, note };
    enum class NoteElement { none, title, content, created, updated, tag, resource, noteAttributes };
    enum class ResourceElement { none, data, mime, width, height, resourceAttributes };
    enum class ResourceAttributesElement { none, timestamp, fileName };
    enum class NoteAttributesElement { none, source, sourceURL };
    struct StartTags;

    void parserDidStartElement(platform::XMLParser&, std::string_view, platform::XMLAttributes) override;
    void parserFoundCharacters(platform::XMLParser&, std::string_view) override;
    void parserFoundCDATA(platform::XMLParser&, std::string_view) override;
    void parserDidEndElement(platform::XMLParser&, std::string_view) override;
    void parserParseErrorOccurred(platform::XMLParser&, const platform::Error&) override;
    void parserDidEndDocument(platform::XMLParser&) override;

    void startOutside(std::string_view name, platform::XMLAttributes attributes);
    void startInNote(std::string_view name);
    void startInResource(std::string_view name, platform::XMLAttributes attributes);
    template<class Taking>
    void takeUp(Taking taking);
    void readText(std::string_view text);
    void readResourceText(std::string_view text);
    void readNoteAttributeText(std::string_view text);
    void endNote();
    void endResource();

    void readDate(std::string_view text, std::optional<platform::Date>& date) const;
    bool readsPieces() const;
    void tagHandled();
    void reportProgress();
    void abortWhenCancelled();
    platform::Result<std::optional<ItemEntry>> convertCurrentItem();
    void finishForEncoding(std::string_view encoding);
    void log(std::string_view text);
    void logEvent(std::string_view format, platform::FormatArgument argument = std::nullopt); // in debug mode

    platform::URL evernoteFileURL_;
    platform::URL directoryURL_;
    bool saveWebClippingsAsNotes_ = false;
    bool debugMode_ = false;
    std::shared_ptr<OutputStream> logStream_;
    std::uint64_t fileSize_ = 0;
    std::size_t pieceSize_ = platform::InputStream::kPieceSize;
    std::optional<platform::Error> operationError_;
    std::unique_ptr<platform::XMLParser> parser_;
    platform::DateFormatter dateFormatter_;

    Element currentElement_ = Element::outside;
    NoteElement currentNoteElement_ = NoteElement::none;
    ResourceElement currentResourceElement_ = ResourceElement::none;
    ResourceAttributesElement currentResourceAttributesElement_ = ResourceAttributesElement::none;
    NoteAttributesElement currentNoteAttributesElement_ = NoteAttributesElement::none;
    std::optional<EvernoteXMLItem> currentItem_;
    bool currentItemHasTasks_ = false;
    bool currentItemIsTooLarge_ = false; // memory has run out: the rest of the note is passed over
    std::optional<EvernoteXMLResource> currentResource_;
    std::optional<std::u16string> currentTag_;
    std::string_view loggedRun_; // debug mode: the kind of text whose run has its line already
};

} // namespace quillet
