#include "conversion/NoteMarkup.h"

#include <algorithm>
#include <optional>
#include <utility>

#include <fmt/core.h>

#include "conversion/ConversionErrors.h"
#include "conversion/MarkupScan.h"
#include "conversion/MediaTags.h"
#include "documents/attachments/AttachmentConstants.h"
#include "documents/attachments/QLTChecklistTextAttachment.h"
#include "enex/EvernoteXMLItem.h"
#include "platform/files/FileDescriptor.h"
#include "platform/foundation/Environment.h"
#include "platform/foundation/StringTable.h"
#include "platform/xml/XMLDocument.h"
#include "platform/xml/XMLNode.h"
#include "styles/QLTNoteTextStyle.h"

namespace quillet {

using platform::Error;
using platform::Result;
using platform::XMLDocument;
using platform::XMLDocumentParsing;
using platform::XMLElement;

namespace {

constexpr std::string_view kNoteOpening = "<en-note>";
constexpr std::string_view kNoteClosing = "</en-note>";

constexpr std::string_view kInvalidTodoTag = platform::localizable("Invalid todo tag.");
constexpr std::string_view kInvalidCryptTag = platform::localizable("Invalid crypt tag.");
constexpr std::string_view kEncryptedReplacement = "********";

// Markers of the page template.
constexpr std::string_view kFontFamilyMarker = "/* QLT FONT-FAMILY */";
constexpr std::string_view kFontSizeMarker = "/* QLT FONT-SIZE */";
constexpr std::string_view kTitleMarker = "<!-- QLTTITLE -->";
constexpr std::string_view kBodyMarker = "<!-- QLTBODY -->";

// A tag that ends with the first occurrence of `closing` behind its opening literal.
TagRewriting tagEndingIn(std::string_view opening, std::string_view closing, std::string_view invalidTag) {
    return {.opening = opening,
            .findEnd = [opening, closing](std::string_view markup, std::size_t start) -> std::optional<std::size_t> {
                const std::size_t end = markup.find(closing, start + opening.size());
                if (end == std::string_view::npos) return std::nullopt;
                return end + closing.size();
            },
            .replace = nullptr,
            .missingEnd =
                [invalidTag] {
                    return Error::withDescription(EvernoteXMLItemErrorDomain, kInvalidTagErrorCode,
                                                  platform::localizedString(invalidTag));
                }};
}

// How a checkbox stands in the serialised note unless its markup is unusual.
struct PlainTodo {
    std::string_view tag;
    bool isOn;
};
constexpr PlainTodo kPlainTodos[] = {
    {"<en-todo checked=\"false\"></en-todo>", false},
    {"<en-todo checked=\"true\"></en-todo>", true},
    {"<en-todo></en-todo>", false},
};

// Only the exact value "true" is a tick.
Result<bool> isTicked(std::string_view tag) {
    const auto* const plain = std::ranges::find(kPlainTodos, tag, &PlainTodo::tag);
    if (plain != std::end(kPlainTodos)) return plain->isOn;
    const XMLDocument element = TRY(XMLElement::initWithXMLString(tag));
    return element.rootElement()->attributeForName("checked") == "true";
}

// What stands inside the tag goes with it.
Result<std::string> replaceTodoTags(std::string markup) {
    TagRewriting todo = tagEndingIn("<en-todo", "/en-todo>", kInvalidTodoTag);
    todo.replace = [](std::string_view tag, std::string& out) -> Result<> {
        const bool isOn = TRY(isTicked(tag));
        out += platform::utf8FromUTF16(isOn ? QLTChecklistOnValueReplacementString
                                            : QLTChecklistOffValueReplacementString);
        return {};
    };
    return rewriteTags(std::move(markup), todo);
}

// The cipher text is never decrypted, only checked to be one well-formed element.
Result<std::string> replaceCryptTags(std::string markup) {
    TagRewriting crypt = tagEndingIn("<en-crypt", "</en-crypt>", kInvalidCryptTag);
    crypt.replace = [](std::string_view tag, std::string& out) -> Result<> {
        TRY(XMLElement::initWithXMLString(tag));
        out += kEncryptedReplacement;
        return {};
    };
    return rewriteTags(std::move(markup), crypt);
}

struct ShapeFix {
    std::string_view shape, replacement;
    bool onlyWithDividers;
};

// In this order: what one makes, the next may match.
constexpr ShapeFix kShapeFixes[] = {
    {"<li><div>", "<li>", false},
    {"</div></li>", "</li>", false},
    {"</div><div><br></br></div><div>", "</div><br /><div>", false}, // an empty paragraph between two is a line break
    {"<hr></hr>", kDividerMarker, true},
};

std::string fixShapes(std::string markup, ConvertDividers convertDividers) {
    for (const ShapeFix& fix : kShapeFixes)
        if (!fix.onlyWithDividers || convertDividers == ConvertDividers::yes)
            markup = replaceAll(std::move(markup), fix.shape, fix.replacement);
    return markup;
}

// The template with font, title and body in it; the title as it stands, without escaping. Only the template's own
// markers count: a title made of body markers would multiply the body.
Result<std::string> filledTemplate(std::u16string_view title, std::string_view body) {
    const std::string path = platform::Environment::current().dataDirectory + "/Template.html";
    const std::string page = TRY(platform::contentsOfFile(path));
    const platform::Font& font = QLTNoteTextStyle::bodyNoteTextStyle()->font();
    const std::string size = fmt::format("{:.0f}px", font.pointSize());
    const std::string titleText = platform::utf8FromUTF16(title);
    const LiteralReplacement replacements[] = {
        {kFontFamilyMarker, font.fontName()},
        {kFontSizeMarker, size},
        {kTitleMarker, titleText},
        {kBodyMarker, body},
    };
    return replaceAll(page, replacements);
}

Result<std::string> innerMarkup(EvernoteXMLItem& item, NoteScratch& scratch, const XMLElement& noteElement,
                                UseInlineImages useInlineImages, InlineImages& images) {
    std::string markup = noteElement.XMLString();
    markup = replaceAll(std::move(markup), kNoteOpening, "");
    markup = replaceAll(std::move(markup), kNoteClosing, "");
    return replaceMediaTags(std::move(markup), item, scratch, useInlineImages, images);
}

} // namespace

Result<std::string> XMLStringFromNoteElement(EvernoteXMLItem& item, NoteScratch& scratch, const XMLElement& noteElement,
                                             UseInlineImages useInlineImages) {
    InlineImages images(item.identifier);
    return images.filledIn(TRY(innerMarkup(item, scratch, noteElement, useInlineImages, images)));
}

Result<NotePage> notePageFromNoteElement(EvernoteXMLItem& item, NoteScratch& scratch, const XMLElement& noteElement,
                                         UseInlineImages useInlineImages, ConvertDividers convertDividers) {
    NotePage page(item.identifier);
    std::string markup = TRY(innerMarkup(item, scratch, noteElement, useInlineImages, page.images));
    markup = TRY(replaceTodoTags(std::move(markup)));
    markup = TRY(replaceCryptTags(std::move(markup)));
    markup = fixShapes(std::move(markup), convertDividers);

    const std::string poured = TRY(filledTemplate(item.title, markup));
    page.setDocument(TRY(XMLDocument::initWithXMLString(poured, XMLDocumentParsing::tidyHTML)));
    if (!page.document().rootElement()) return platform::failure(noPageError());
    return page;
}

Result<std::string> noteXHTMLStringFromNoteElement(EvernoteXMLItem& item, NoteScratch& scratch,
                                                   const XMLElement& noteElement, UseInlineImages useInlineImages,
                                                   ConvertDividers convertDividers) {
    NotePage page = TRY(notePageFromNoteElement(item, scratch, noteElement, useInlineImages, convertDividers));
    return page.images.filledIn(page.markup());
}

} // namespace quillet
