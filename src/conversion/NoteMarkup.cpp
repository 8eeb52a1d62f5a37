#include "conversion/NoteMarkup.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include <fmt/core.h>

#include "conversion/ConversionErrors.h"
#include "conversion/MarkupScan.h"
#include "conversion/MediaTags.h"
#include "documents/attachments/AttachmentConstants.h"
#include "documents/attachments/QLTChecklistTextAttachment.h"
#include "enex/EvernoteXMLItem.h"
#include "platform/base/ByteSearch.h"
#include "platform/base/SystemLog.h"
#include "platform/files/FileDescriptor.h"
#include "platform/foundation/Environment.h"
#include "platform/foundation/StringFormat.h"
#include "platform/foundation/StringTable.h"
#include "platform/xml/XMLDocument.h"
#include "platform/xml/XMLNode.h"
#include "platform/xml/XMLWriter.h"
#include "styles/QLTNoteTextStyle.h"

namespace quillet {

using platform::Error;
using platform::NodeEdge;
using platform::Result;
using platform::XMLDocument;
using platform::XMLDocumentParsing;
using platform::XMLElement;
using platform::XMLNode;
using platform::XMLNodeKind;

namespace {

constexpr std::string_view kNoteName = "en-note";
constexpr std::string_view kNoteOpening = "<en-note>";
constexpr std::string_view kNoteClosing = "</en-note>";
constexpr std::string_view kTodoOpening = "<en-todo"; // and what else begins so
constexpr std::string_view kCryptOpening = "<en-crypt";

constexpr std::string_view kItemTick = "--en-checked:true";

constexpr std::string_view kTicksLost = "List items of the note \"%@\" lose their ticks: %@.";
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
    reportTextInside(*element.rootElement());
    return element.rootElement()->attributeForName("checked") == "true";
}

// What stands inside the tag goes with it.
Result<std::string> replaceTodoTags(std::string markup) {
    TagRewriting todo = tagEndingIn(kTodoOpening, "/en-todo>", kInvalidTodoTag);
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
    TagRewriting crypt = tagEndingIn(kCryptOpening, "</en-crypt>", kInvalidCryptTag);
    crypt.replace = [](std::string_view tag, std::string& out) -> Result<> {
        TRY(XMLElement::initWithXMLString(tag));
        out += kEncryptedReplacement;
        return {};
    };
    return rewriteTags(std::move(markup), crypt);
}

// None of them can be part of what another one makes, so that one pass finds them all.
constexpr LiteralReplacement kShapes[] = {
    {"<li><div>", "<li>"},
    {"</div></li>", "</li>"},
    {"</div><div><br></br></div><div>", "</div><br /><div>"}, // an empty paragraph between two is a line break
    {"<hr></hr>", kDividerMarker},                            // the last: not always replaced
};

std::string fixShapes(std::string_view markup, ConvertDividers convertDividers) {
    constexpr std::span kAll(kShapes);
    return replaceTags(markup, convertDividers == ConvertDividers::yes ? kAll : kAll.first(kAll.size() - 1));
}

// The text of the page template. The program's own files do not change while it runs, so that it is read once, and not
// for each of twenty thousand notes.
Result<std::shared_ptr<const std::string>> pageTemplate() {
    static std::mutex mutex;
    static std::string knownPath; // another one where the data directory is another
    static std::shared_ptr<const std::string> known;
    const std::string path = platform::Environment::current().dataDirectory + "/Template.html";
    const std::lock_guard lock(mutex);
    if (!known || path != knownPath) {
        known = std::make_shared<const std::string>(TRY(platform::contentsOfFile(path)));
        knownPath = path;
    }
    return known;
}

// The template with font, title and body in it; the title as it stands, without escaping. Only the template's own
// markers count: a title made of body markers would multiply the body.
Result<std::string> filledTemplate(std::u16string_view title, std::string_view body) {
    const auto page = TRY(pageTemplate());
    const platform::Font& font = QLTNoteTextStyle::bodyNoteTextStyle()->font();
    const std::string size = fmt::format("{:.0f}px", font.pointSize());
    const std::string titleText = platform::utf8FromUTF16(title);
    const LiteralReplacement replacements[] = {
        {kFontFamilyMarker, font.fontName()},
        {kFontSizeMarker, size},
        {kTitleMarker, titleText},
        {kBodyMarker, body},
    };
    return replaceAll(*page, replacements);
}

// What is to be rewritten in a note. Most notes have little of it, and looking in their markup for what is not there
// would cost as much as rewriting it.
struct Rewritable {
    bool innerNotes = false, media = false, todos = false, crypts = false;
    std::size_t tickedItems = 0; // list items that their style alone ticks; their ticks are lost
};

bool isTickedItem(const XMLElement& item) {
    const auto style = item.attributeForName("style");
    return style && platform::findLiteral(*style, kItemTick) != std::string_view::npos;
}

Rewritable rewritableIn(const XMLElement& note) {
    Rewritable found;
    platform::forEachNodeInOrder(note, [&](const XMLNode& node, NodeEdge edge) {
        // Of text that only looks like tags, as in a comment, note tags alone are taken out.
        if (edge == NodeEdge::leaf && node.kind() != XMLNodeKind::text) found.innerNotes = true;
        if (edge != NodeEdge::enter) return;
        const std::string_view name = node.name();
        if (name == "li" && isTickedItem(*node.asElement())) ++found.tickedItems;
        if (!name.starts_with("en-")) return;
        found.innerNotes = found.innerNotes || (&node != &note && name == kNoteName);
        found.media = found.media || name == "en-media";
        found.todos = found.todos || name.starts_with(kTodoOpening.substr(1));
        found.crypts = found.crypts || name.starts_with(kCryptOpening.substr(1));
    });
    return found;
}

// Without note tags; one that has attributes loses its end alone.
std::string markupWithoutNoteTags(const XMLElement& note, std::size_t expected, bool hasInnerNotes) {
    std::string markup;
    markup.reserve(expected);
    if (!hasInnerNotes && note.name() == kNoteName && note.attributes().empty()) { // as nearly all are
        for (const XMLNode* child : note.children()) platform::writeXML(*child, markup);
        return markup;
    }
    platform::writeXML(note, markup);
    if (hasInnerNotes) return replaceAll(replaceAll(std::move(markup), kNoteOpening, ""), kNoteClosing, "");
    if (markup.ends_with(kNoteClosing)) markup.resize(markup.size() - kNoteClosing.size());
    return markup;
}

Result<std::string> innerMarkup(EvernoteXMLItem& item, NoteScratch& scratch, const XMLElement& noteElement,
                                const Rewritable& rewritable, UseInlineImages useInlineImages, InlineImages& images) {
    const std::size_t expected = item.contentData.size() + item.contentData.size() / 4; // end tags make it longer
    std::string markup = markupWithoutNoteTags(noteElement, expected, rewritable.innerNotes);
    if (!rewritable.media && item.resources.empty()) return markup;
    return replaceMediaTags(std::move(markup), item, scratch, useInlineImages, images);
}

} // namespace

Result<std::string> XMLStringFromNoteElement(EvernoteXMLItem& item, NoteScratch& scratch, const XMLElement& noteElement,
                                             UseInlineImages useInlineImages) {
    InlineImages images(item.identifier);
    return images.filledIn(
        TRY(innerMarkup(item, scratch, noteElement, rewritableIn(noteElement), useInlineImages, images)));
}

Result<NotePage> notePageFromNoteElement(EvernoteXMLItem& item, NoteScratch& scratch, const XMLElement& noteElement,
                                         UseInlineImages useInlineImages, ConvertDividers convertDividers) {
    NotePage page(item.identifier);
    const Rewritable rewritable = rewritableIn(noteElement);
    if (rewritable.tickedItems > 0 && convertDividers == ConvertDividers::yes) // a page keeps them in its styles
        platform::systemLog(platform::formatted(
            kTicksLost, {platform::utf8FromUTF16(item.title), std::to_string(rewritable.tickedItems)}));
    std::string markup = TRY(innerMarkup(item, scratch, noteElement, rewritable, useInlineImages, page.images));
    if (rewritable.todos) markup = TRY(replaceTodoTags(std::move(markup)));
    if (rewritable.crypts) markup = TRY(replaceCryptTags(std::move(markup)));
    markup = fixShapes(markup, convertDividers);

    page.setSource(TRY(filledTemplate(item.title, markup)));
    return page;
}

Result<std::string> noteXHTMLStringFromNoteElement(EvernoteXMLItem& item, NoteScratch& scratch,
                                                   const XMLElement& noteElement, UseInlineImages useInlineImages,
                                                   ConvertDividers convertDividers) {
    NotePage page = TRY(notePageFromNoteElement(item, scratch, noteElement, useInlineImages, convertDividers));
    TRY(page.parse());
    return page.images.filledIn(page.markup());
}

} // namespace quillet
