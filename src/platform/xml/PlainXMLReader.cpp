// Reads plain XML: a declaration, a document type that declares nothing itself, then elements and texts only.
#include <algorithm>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/xml/PlainMarkup.h"
#include "platform/xml/PlainReader.h"

namespace platform {

namespace {

class PlainXMLReader : PlainReader {
  public:
    PlainXMLReader(std::string_view xml, XMLTreeBuilder& builder) : PlainReader(Language::xml, xml, builder) {
        open_.reserve(kUsualDepth);
    }

    bool run() {
        if (!takeDeclaration() || !takeDocumentType()) return false;
        do {
            if (!skip("<") || !takeTag()) return false;
            if (!open_.empty() && !addText(takeTextBeforeTag())) return false;
        } while (!open_.empty());
        skipBlanks();
        return rest_.empty();
    }

  private:
    bool takeDeclaration();
    bool takeDocumentType();
    bool takeTag();

    std::vector<std::string_view> open_; // names
};

// Encodings are not read from it, but one that cannot be true would be an error.
bool PlainXMLReader::takeDeclaration() {
    if (!skip("<?xml ")) return true;
    const auto takeValue = [this](std::string_view name) -> std::optional<std::string_view> {
        return skip(name) && skip("=") ? takeQuoted() : std::nullopt;
    };
    if (takeValue("version") != "1.0") return false;
    bool isApart = skipBlanks();
    if (isApart && rest_.starts_with("encoding")) {
        const auto encoding = takeValue("encoding");
        if (encoding != "UTF-8" && encoding != "utf-8") return false;
        isApart = skipBlanks();
    }
    if (isApart && rest_.starts_with("standalone")) {
        const auto standalone = takeValue("standalone");
        if (standalone != "yes" && standalone != "no") return false;
        skipBlanks();
    }
    if (!skip("?>")) return false;
    skipBlanks();
    return true;
}

bool PlainXMLReader::takeDocumentType() {
    if (!skip("<!DOCTYPE ")) return true;
    const std::string_view name = takeName();
    std::optional<std::string_view> publicID, systemID;
    if (name.empty()) return false;
    if (skipBlanks() && rest_.starts_with('P')) {
        publicID = skip("PUBLIC ") ? takeQuoted() : std::nullopt;
        systemID = publicID && skip(" ") ? takeQuoted() : std::nullopt;
        if (!systemID) return false;
    } else if (rest_.starts_with('S')) {
        systemID = skip("SYSTEM ") ? takeQuoted() : std::nullopt;
        if (!systemID) return false;
    }
    const auto isPlain = [](std::optional<std::string_view> text) {
        return std::ranges::all_of(text.value_or(""), [](char c) {
            return isNameCharacter(c) || c == ' ' || c == '/' || c == ':' || c == '.';
        });
    };
    skipBlanks();
    if (!isPlain(publicID) || !isPlain(systemID) || !skip(">")) return false;
    skipBlanks();
    builder_.setDocumentType(name, publicID.value_or(""), systemID.value_or(""));
    return true;
}

bool PlainXMLReader::takeTag() {
    if (skip("/")) {
        if (open_.empty() || !skipName(open_.back())) return false;
        skipBlanks();
        open_.pop_back();
        builder_.closeElement();
        return skip(">");
    }
    const std::string_view name = takeName();
    if (name.empty() || !takeAttributes() || !builder_.openElement(name, attributes_)) return false;
    if (skip(">")) {
        open_.push_back(name);
        return true;
    }
    builder_.closeElement();
    return skip("/>");
}

} // namespace

// "]]>" may not stand in the text of XML.
bool readPlainXML(std::string_view xml, XMLTreeBuilder& builder) {
    return isPlainDocument(xml) && !xml.contains("]]>") && PlainXMLReader(builder.storedSource(xml), builder).run();
}

} // namespace platform
