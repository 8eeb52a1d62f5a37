// Counterpart of NSXMLParser: reads a document as a stream of events.
//
// Nothing outside the stream is ever opened: no DTD, no external entity, no network. An entity declaration ends the
// parse with an error, which leaves no way to make a small file expand into a large text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "platform/base/Result.h"
#include "platform/xml/InputStream.h"

namespace platform {

class XMLParser;

struct XMLAttributeView {
    std::string_view name; // as written, with its prefix
    std::string_view value;
};
// The attributes of one start tag in document order, valid during the callback.
using XMLAttributes = std::span<const XMLAttributeView>;

// Texts are UTF-8, whatever the encoding of the document, and valid during the call.
class XMLParserDelegate {
  public:
    virtual ~XMLParserDelegate() = default;

    // @sel parser:didStartElement:namespaceURI:qualifiedName:attributes:
    virtual void parserDidStartElement(XMLParser&, std::string_view /*name*/, XMLAttributes) {}
    // All the text between two tags or CDATA sections at once, unless pieces are asked for (setDeliversPieces).
    // @sel parser:foundCharacters:
    virtual void parserFoundCharacters(XMLParser&, std::string_view /*text*/) {}
    // A long section comes in several pieces. @sel parser:foundCDATA:
    virtual void parserFoundCDATA(XMLParser&, std::string_view /*bytes*/) {}
    // @sel parser:didEndElement:namespaceURI:qualifiedName:
    virtual void parserDidEndElement(XMLParser&, std::string_view /*name*/) {}
    // @sel parser:foundComment:
    virtual void parserFoundComment(XMLParser&, std::string_view /*text*/) {}
    // @sel parser:foundProcessingInstructionWithTarget:data:
    virtual void parserFoundProcessingInstructionWithTarget(XMLParser&, std::string_view /*target*/,
                                                            std::string_view /*data*/) {}
    // The document type declaration; absent identifiers are empty.
    virtual void parserFoundDocumentType(XMLParser&, std::string_view /*name*/, std::string_view /*publicID*/,
                                         std::string_view /*systemID*/) {}
    // Called once at most, and nothing is called after it. @sel parser:parseErrorOccurred:
    virtual void parserParseErrorOccurred(XMLParser&, const Error&) {}
    // Called when the whole document was well-formed. @sel parserDidEndDocument:
    virtual void parserDidEndDocument(XMLParser&) {}
};

class XMLParser {
  public:
    static constexpr std::size_t kMaximumDepth = 10'000;
    static constexpr std::size_t kMaximumAttributes = 1'000;             // of one element
    static constexpr std::size_t kMaximumTagSize = std::size_t{1} << 20; // bytes of one start tag with its attributes

    // NSXMLParserErrorDomain codes of our own making; all others are libxml2's numbers.
    static constexpr std::int64_t kInternalError = 1;
    static constexpr std::int64_t kDelegateAborted = 512;

    explicit XMLParser(std::unique_ptr<InputStream> stream);
    ~XMLParser();
    XMLParser(const XMLParser&) = delete;
    XMLParser& operator=(const XMLParser&) = delete;

    // False when there was no memory for a parser; it must not be used then.
    bool isReady() const;

    void setDelegate(XMLParserDelegate* delegate); // must outlive the parse
    // Called after each piece of the stream with the number of bytes read so far.
    void setProgressHandler(std::function<void(std::uint64_t)> handler);

    // Reads the stream to its end, an error or an abort, calling the delegate on this thread. True when the document
    // ended well. To be called once.
    bool parse();

    // Stops the events at once. When the running callback has returned, the delegate is told error 512, unless the
    // document has ended. To be called from a callback.
    void abortParsing();

    // Whether parserFoundCharacters gets each piece of text as it is read, without any being kept; where the borders
    // lie depends on the reading. To be changed from a callback for a tag; false at the start.
    void setDeliversPieces(bool pieces);

    // From now on reads the bytes as UTF-8, whatever the document declares. To be called before parse.
    void ignoreDeclaredEncoding();

    // How many bytes of the stream have been turned into events; about as many when the document is not UTF-8.
    std::uint64_t bytesParsed() const;

    // Line and column of what is being read, both from 1.
    std::int64_t lineNumber() const;
    std::int64_t columnNumber() const;

    // What ended the parse, or null.
    const Error* parserError() const;

  private:
    struct Machine;
    std::unique_ptr<Machine> machine_;
};

} // namespace platform
