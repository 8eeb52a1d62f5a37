// The event parser over libxml2's push interface.
//
// libxml2 gets a handler table of our own with nothing else in it: its default handlers would build a tree, keep
// entity declarations and open what they name. It is fed pieces of 1 MiB, since an unfinished comment or CDATA section
// is scanned again from its start with every piece. XML_PARSE_HUGE lifts its limits on sections and attributes; the
// attack that those limits stop, entity expansion, ends here at the declaration, and nesting, attributes and tags have
// limits of their own.
#include "platform/xml/XMLParser.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include <fmt/core.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/xmlerror.h>

#include "platform/base/SystemLog.h"
#include "platform/xml/QuietLibrary.h"

namespace platform {

namespace {

std::string_view view(const xmlChar* text) {
    return text ? std::string_view(reinterpret_cast<const char*>(text)) : std::string_view();
}

std::string_view view(const xmlChar* text, int length) {
    return {reinterpret_cast<const char*>(text), static_cast<std::size_t>(length)};
}

// The library's message as one line.
std::string oneLine(const char* message) {
    std::string line(message ? message : "");
    while (line.ends_with('\n')) line.pop_back();
    std::ranges::replace(line, '\n', ' ');
    return line;
}

} // namespace

struct XMLParser::Machine {
    Machine(XMLParser& owner, std::unique_ptr<InputStream> input) : parser(owner), stream(std::move(input)) {
        xmlInitParser();
    }
    ~Machine() {
        if (!context) return;
        // For an entity declaration libxml2 makes a document behind our back, which it leaves to its caller.
        if (context->myDoc) xmlFreeDoc(context->myDoc);
        xmlFreeParserCtxt(context);
    }
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    XMLParser& parser;
    std::unique_ptr<InputStream> stream;
    XMLParserDelegate silent; // stands in until there is a delegate
    XMLParserDelegate* delegate = &silent;
    std::function<void(std::uint64_t)> progress;
    xmlParserCtxtPtr context = nullptr;

    std::string text; // characters since the last tag or section
    std::vector<XMLAttributeView> attributes;
    std::deque<std::string> joinedNames; // what the views of one tag point into
    std::uint64_t bytesRead = 0;         // of the stream, with the piece that is being parsed
    std::size_t pieceSize = 0;           // of that piece
    std::size_t depth = 0;
    bool sawElement = false; // a start tag, of the root at least
    bool deliversPieces = false;
    bool aborted = false;
    std::optional<Error> error;

    // Events are over: an abort or an error ends them, though libxml2 may still finish the piece that it has begun. An
    // abort leaves it alone, since what the event told that asked for it lies in memory that stopping would free.
    bool isOver() const { return aborted || error; }

    std::int64_t line() const { return context && context->input ? context->input->line : 0; }
    std::int64_t column() const { return context && context->input ? context->input->col : 0; }

    Error errorAt(std::int64_t code, std::string_view message, std::int64_t atLine, std::int64_t atColumn) const {
        const auto name = stream->name();
        auto result = Error::withDescription(
            kXMLParserErrorDomain, code,
            fmt::format("{}{}line {}, column {}: {}", name, name.empty() ? "" : ": ", atLine, atColumn, message));
        result.userInfo["NSXMLParserErrorLineNumber"] = Value(atLine);
        result.userInfo["NSXMLParserErrorColumn"] = Value(atColumn);
        result.userInfo["NSXMLParserErrorMessage"] = Value(message);
        return result;
    }

    // Ends the parse with an error of this place; the first one counts.
    void fail(std::int64_t code, std::string_view message) {
        if (isOver()) return;
        error = errorAt(code, message, line(), column());
        stop();
    }

    void stop() const {
        if (context) xmlStopParser(context);
    }

    void flushText() {
        if (text.empty() || isOver()) return;
        delegate->parserFoundCharacters(parser, text);
        text.clear();
    }

    // The name as it was written; libxml2 has split it at its colon.
    std::string_view joined(const xmlChar* prefix, const xmlChar* localName) {
        if (!prefix) return view(localName);
        if (!localName) return view(prefix);
        return joinedNames.emplace_back(fmt::format("{}:{}", view(prefix), view(localName)));
    }

    static constexpr int kFieldsOfAttribute = 5; // local name, prefix, address of the namespace, start and end of value

    // Namespace declarations first, then the others in document order. Returns the bytes of all names and values.
    std::size_t collectAttributes(std::span<const xmlChar*> namespaces, std::span<const xmlChar*> fields) {
        attributes.clear();
        for (std::size_t i = 0; i + 1 < namespaces.size(); i += 2)
            attributes.push_back({joined(BAD_CAST "xmlns", namespaces[i]), view(namespaces[i + 1])});
        for (std::size_t i = 0; i + kFieldsOfAttribute <= fields.size(); i += kFieldsOfAttribute)
            attributes.push_back({joined(fields[i + 1], fields[i]),
                                  view(fields[i + 3], static_cast<int>(fields[i + 4] - fields[i + 3]))});
        std::size_t size = 0;
        for (const auto& attribute : attributes) size += attribute.name.size() + attribute.value.size();
        return size;
    }

    void startElement(const xmlChar* prefix, const xmlChar* localName, std::span<const xmlChar*> namespaces,
                      std::span<const xmlChar*> fields) {
        // libxml2 reports a tag that breaks off before it reports the error.
        if (isOver()) return;
        const xmlChar next = context->input->cur < context->input->end ? *context->input->cur : 0;
        if (next != '>' && next != '/') return;
        sawElement = true;
        flushText();
        if (isOver()) return;
        if (++depth > kMaximumDepth)
            return fail(kInternalError, fmt::format("elements are nested deeper than {}", kMaximumDepth));
        joinedNames.clear();
        const auto size = collectAttributes(namespaces, fields);
        if (attributes.size() > kMaximumAttributes)
            return fail(kInternalError, fmt::format("an element has more than {} attributes", kMaximumAttributes));
        if (size > maximumTagSize()) return failForTagSize();
        delegate->parserDidStartElement(parser, joined(prefix, localName), attributes);
    }

    void endElement(std::string_view name) {
        if (isOver()) return;
        flushText();
        if (isOver()) return;
        if (depth > 0) --depth;
        delegate->parserDidEndElement(parser, name);
    }

    void characters(std::string_view piece) {
        if (isOver()) return;
        if (deliversPieces) return delegate->parserFoundCharacters(parser, piece);
        try {
            text += piece;
        } catch (const std::bad_alloc&) { // not to be thrown through the library
            text = std::string();
            fail(XML_ERR_NO_MEMORY, "out of memory");
        }
    }

    void cdata(std::string_view piece) {
        if (isOver()) return;
        flushText();
        if (!isOver()) delegate->parserFoundCDATA(parser, piece);
    }

    // Bytes that are already in memory are as large as they may be; a file is held to the limit.
    std::size_t maximumTagSize() const { return stream->name().empty() ? SIZE_MAX : kMaximumTagSize; }

    void failForTagSize() { fail(kInternalError, fmt::format("a tag is larger than {} bytes", kMaximumTagSize)); }

    // libxml2 waits for the end of a tag before it looks at it, so a tag without end would be collected for ever.
    void checkUnfinishedTag() {
        const bool inTag = context->instate == XML_PARSER_START_TAG;
        if (inTag && static_cast<std::size_t>(context->input->end - context->input->cur) > maximumTagSize())
            failForTagSize();
    }

    // Levels below the third (an undeclared prefix or entity) do not make the document unreadable.
    void report(const xmlError& problem) {
        if (aborted) return; // what follows in the piece is nobody's concern
        if (problem.level != XML_ERR_FATAL) {
            systemLog(
                errorAt(problem.code, oneLine(problem.message), problem.line, problem.int2).localizedDescription());
            return;
        }
        if (isOver()) return;
        flushText();
        if (isOver()) return;
        std::string message = problem.message ? oneLine(problem.message) : "not well-formed";
        // The library's text for this speaks of extra content at the end.
        if (problem.code == XML_ERR_DOCUMENT_END && !sawElement) message = "the document is empty";
        error = errorAt(problem.code, message, problem.line, problem.int2);
    }

    void makeContext();
    void feed(std::string_view bytes, bool last);
    // After each call of libxml2: tells the delegate of what ended the parse. False when the parse is over.
    bool goOn();
    bool readAll();

    // The C side of the events: libxml2's user data is the machine.
    static Machine& of(void* data) { return *static_cast<Machine*>(data); }
    static xmlSAXHandler handlers();
};

xmlSAXHandler XMLParser::Machine::handlers() {
    xmlSAXHandler table;
    std::memset(&table, 0, sizeof table);
    table.initialized = XML_SAX2_MAGIC; // without it the structured errors would not come
    table.startElementNs = [](void* data, const xmlChar* localName, const xmlChar* prefix, const xmlChar*,
                              int namespaceCount, const xmlChar** namespaces, int attributeCount, int,
                              const xmlChar** fields) {
        of(data).startElement(prefix, localName, {namespaces, static_cast<std::size_t>(namespaceCount) * 2},
                              {fields, static_cast<std::size_t>(attributeCount) * kFieldsOfAttribute});
    };
    table.endElementNs = [](void* data, const xmlChar* localName, const xmlChar* prefix, const xmlChar*) {
        of(data).joinedNames.clear();
        of(data).endElement(of(data).joined(prefix, localName));
    };
    table.characters = [](void* data, const xmlChar* piece, int length) { of(data).characters(view(piece, length)); };
    table.ignorableWhitespace = table.characters;
    table.cdataBlock = [](void* data, const xmlChar* piece, int length) { of(data).cdata(view(piece, length)); };
    table.comment = [](void* data, const xmlChar* piece) {
        Machine& machine = of(data);
        if (!machine.isOver()) machine.delegate->parserFoundComment(machine.parser, view(piece));
    };
    table.processingInstruction = [](void* data, const xmlChar* target, const xmlChar* rest) {
        Machine& machine = of(data);
        if (machine.isOver()) return;
        machine.delegate->parserFoundProcessingInstructionWithTarget(machine.parser, view(target), view(rest));
    };
    table.internalSubset = [](void* data, const xmlChar* name, const xmlChar* publicID, const xmlChar* systemID) {
        Machine& machine = of(data);
        if (machine.isOver()) return;
        machine.delegate->parserFoundDocumentType(machine.parser, view(name), view(publicID), view(systemID));
    };
    table.entityDecl = [](void* data, const xmlChar* name, int, const xmlChar*, const xmlChar*, xmlChar*) {
        of(data).fail(kInternalError, fmt::format("entity \"{}\" is declared, which is not accepted", view(name)));
    };
    table.serror = [](void* data, xmlErrorPtr problem) {
        if (problem) of(data).report(*problem);
    };
    return table;
}

void XMLParser::Machine::makeContext() {
    xmlSAXHandler table = handlers();
    context = xmlCreatePushParserCtxt(&table, this, nullptr, 0, nullptr);
    // NOENT only keeps "&amp;" in attribute values from being left half-written: there are no other entities.
    if (context) xmlCtxtUseOptions(context, XML_PARSE_HUGE | XML_PARSE_NONET | XML_PARSE_NOENT);
}

void XMLParser::Machine::feed(std::string_view bytes, bool last) {
    // A piece is far below what an int holds, and memory is given in pieces too.
    const int status = xmlParseChunk(context, bytes.data(), static_cast<int>(bytes.size()), last ? 1 : 0);
    if (isOver()) return;
    if (!last) {
        checkUnfinishedTag();
    } else if (status != XML_ERR_OK || !context->wellFormed) {
        fail(status == XML_ERR_OK ? kInternalError : status,
             status == XML_ERR_INVALID_ENCODING ? "there are bytes that the document's encoding does not have"
                                                : "the document is not well-formed");
    }
}

bool XMLParser::Machine::goOn() {
    if (!isOver()) return true;
    delegate->parserParseErrorOccurred(parser, *error);
    return false;
}

bool XMLParser::Machine::readAll() {
    for (;;) {
        auto piece = stream->read();
        if (!piece) {
            error = std::move(piece).error();
            return goOn();
        }
        if (piece->empty()) break;
        pieceSize = piece->size();
        bytesRead += pieceSize;
        feed(*piece, false);
        if (progress) progress(bytesRead);
        if (!goOn()) return false;
    }
    feed({}, true);
    return goOn();
}

XMLParser::XMLParser(std::unique_ptr<InputStream> stream)
    : machine_(std::make_unique<Machine>(*this, std::move(stream))) {
    machine_->makeContext();
}

XMLParser::~XMLParser() = default;

void XMLParser::setDelegate(XMLParserDelegate* delegate) {
    machine_->delegate = delegate ? delegate : &machine_->silent;
}

void XMLParser::setProgressHandler(std::function<void(std::uint64_t)> handler) {
    machine_->progress = std::move(handler);
}

bool XMLParser::isReady() const {
    return machine_->context != nullptr;
}

bool XMLParser::parse() {
    const QuietLibrary quiet;
    Machine& machine = *machine_;
    if (!machine.readAll()) return false;
    machine.aborted = true; // nothing comes after the end, whatever the delegate asks for there
    machine.delegate->parserDidEndDocument(*this);
    return true;
}

void XMLParser::abortParsing() {
    Machine& machine = *machine_;
    if (machine.isOver()) return;
    machine.aborted = true;
    machine.error = machine.errorAt(kDelegateAborted, "the parse was aborted", machine.line(), machine.column());
}

void XMLParser::setDeliversPieces(bool pieces) {
    machine_->deliversPieces = pieces;
}

void XMLParser::ignoreDeclaredEncoding() {
    xmlCtxtUseOptions(machine_->context, machine_->context->options | XML_PARSE_IGNORE_ENC);
}

std::uint64_t XMLParser::bytesParsed() const {
    const Machine& machine = *machine_;
    const xmlParserInput* input = machine.context ? machine.context->input : nullptr;
    // The library counts in UTF-8; the pieces are bounds in the document's own encoding.
    const std::uint64_t position =
        input ? input->consumed + static_cast<std::uint64_t>(input->cur - input->base) : machine.bytesRead;
    return std::clamp(position, machine.bytesRead - machine.pieceSize, machine.bytesRead);
}

std::int64_t XMLParser::lineNumber() const {
    return machine_->line();
}

std::int64_t XMLParser::columnNumber() const {
    return machine_->column();
}

const Error* XMLParser::parserError() const {
    return machine_->error ? &*machine_->error : nullptr;
}

} // namespace platform
