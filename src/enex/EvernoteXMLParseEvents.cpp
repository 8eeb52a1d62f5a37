// The states of the reading. Which element is being read is kept per level, and only start tags and the end tags of
// containers change it: text behind an end tag still counts for the element that has ended. White space behind
// "title" thus becomes part of the title, and white space behind "width" reads as the number 0; whoever uses such a
// value trims it.
#include <algorithm>
#include <array>
#include <charconv>
#include <new>
#include <system_error>
#include <utility>

#include "enex/EvernoteXMLParseOperation.h"
#include "platform/base/SystemLog.h"
#include "platform/base/UTF16.h"
#include "platform/foundation/CharacterSet.h"
#include "util/FileNames.h"

namespace quillet {

using platform::XMLAttributes;
using platform::XMLParser;

namespace {

// Tasks stand beside the text of a note, which only says where they were shown.
constexpr std::string_view kTask = "task";
constexpr std::string_view kTasksLeftOut = "The tasks of the note \"%@\" are left out.";

template<class State>
struct Row {
    std::string_view name;
    State state;
};

template<class State, std::size_t count>
State stateForName(const std::array<Row<State>, count>& rows, std::string_view name, State otherwise) {
    const auto row = std::ranges::find(rows, name, &Row<State>::name);
    return row == rows.end() ? otherwise : row->state;
}

std::u16string_view trimmedText(std::u16string_view text) {
    return trimmed(text, platform::CharacterSet::whitespaceAndNewline());
}

// In UTF-8 from end to end; most texts are short and plain.
std::string trimmedUTF8(std::string_view text) {
    return platform::utf8FromUTF16(trimmedText(platform::utf16FromUTF8(text)));
}

// The number that the text begins with, behind an optional sign; 0 when it begins with none.
double doubleValue(std::string_view text) {
    if (text.starts_with('+')) text.remove_prefix(1);
    const auto digits = text.substr(text.starts_with('-') ? 1 : 0);
    // "inf" and "nan" are words here.
    if (digits.empty() || (digits[0] != '.' && (digits[0] < '0' || digits[0] > '9'))) return 0;
    double value = 0;
    const auto outcome = std::from_chars(text.data(), text.data() + text.size(), value);
    return outcome.ec == std::errc() ? value : 0;
}

std::optional<std::string_view> valueOfAttribute(XMLAttributes attributes, std::string_view name) {
    const auto found = std::ranges::find(attributes, name, &platform::XMLAttributeView::name);
    if (found == attributes.end()) return std::nullopt;
    return found->value;
}

} // namespace

// Which state the name of a start tag leads to, level by level.
struct EvernoteXMLParseOperation::StartTags {
    static constexpr auto kInNote = std::to_array<Row<NoteElement>>({
        {"title", NoteElement::title},
        {"content", NoteElement::content},
        {"created", NoteElement::created},
        {"updated", NoteElement::updated},
        {"resource", NoteElement::resource},
        {"tag", NoteElement::tag},
        {"note-attributes", NoteElement::noteAttributes},
    });
    static constexpr auto kInResource = std::to_array<Row<ResourceElement>>({
        {"data", ResourceElement::data},
        {"mime", ResourceElement::mime},
        {"width", ResourceElement::width},
        {"height", ResourceElement::height},
        {"duration", ResourceElement::none},
        {"recognition", ResourceElement::none},
        {"resource-attributes", ResourceElement::resourceAttributes},
    });
    static constexpr auto kInResourceAttributes = std::to_array<Row<ResourceAttributesElement>>({
        {"file-name", ResourceAttributesElement::fileName},
        {"timestamp", ResourceAttributesElement::timestamp},
    });
    static constexpr auto kInNoteAttributes = std::to_array<Row<NoteAttributesElement>>({
        {"source", NoteAttributesElement::source},
        {"source-url", NoteAttributesElement::sourceURL},
    });
};

void EvernoteXMLParseOperation::logEvent(std::string_view format, platform::FormatArgument argument) {
    if (debugMode_) log(platform::formatted(format, {argument}));
}

void EvernoteXMLParseOperation::parserDidStartElement(XMLParser&, std::string_view name, XMLAttributes attributes) {
    logEvent("parser:didStartElement: %@", name);
    abortWhenCancelled();
    if (currentElement_ == Element::outside) {
        startOutside(name, attributes);
    } else if (currentNoteElement_ == NoteElement::resource) {
        startInResource(name, attributes);
    } else if (currentNoteElement_ == NoteElement::noteAttributes) {
        currentNoteAttributesElement_ = stateForName(StartTags::kInNoteAttributes, name, NoteAttributesElement::none);
    } else {
        startInNote(name);
    }
    tagHandled();
}

void EvernoteXMLParseOperation::startOutside(std::string_view name, XMLAttributes attributes) {
    if (name == "en-export")
        log(platform::formatted("ENEX file created by: %@", {valueOfAttribute(attributes, "version")}));
    if (name == "note") {
        currentElement_ = Element::note;
        currentItemHasTasks_ = false;
        currentItem_.emplace(directoryURL_).saveWebClippingsAsNotes = saveWebClippingsAsNotes_;
    }
}

void EvernoteXMLParseOperation::startInNote(std::string_view name) {
    if (name == kTask && !std::exchange(currentItemHasTasks_, true))
        platform::systemLog(platform::formatted(
            kTasksLeftOut, {platform::utf8FromUTF16(stringByTrimmingWhitespace(currentItem_->title))}));
    currentNoteElement_ = stateForName(StartTags::kInNote, name, NoteElement::none);
    if (currentNoteElement_ == NoteElement::resource) {
        currentResource_.emplace();
        currentResourceElement_ = ResourceElement::none;
        currentResourceAttributesElement_ = ResourceAttributesElement::none;
    } else if (currentNoteElement_ == NoteElement::tag) {
        currentTag_.emplace();
    } else if (currentNoteElement_ == NoteElement::noteAttributes) {
        currentNoteAttributesElement_ = NoteAttributesElement::none;
    }
}

void EvernoteXMLParseOperation::startInResource(std::string_view name, XMLAttributes attributes) {
    if (name == "data") {
        const auto encoding = valueOfAttribute(attributes, "encoding").value_or("");
        if (!encoding.empty() && encoding != "base64") return finishForEncoding(encoding);
    }
    if (name == "resource-attributes") currentResourceAttributesElement_ = ResourceAttributesElement::none;
    currentResourceElement_ = stateForName(StartTags::kInResource, name, currentResourceElement_);
    if (currentResourceElement_ == ResourceElement::resourceAttributes)
        currentResourceAttributesElement_ =
            stateForName(StartTags::kInResourceAttributes, name, ResourceAttributesElement::none);
}

void EvernoteXMLParseOperation::parserFoundCharacters(XMLParser&, std::string_view text) {
    constexpr std::string_view kEvent = "parser:foundCharacters:";
    // One line a run of text: where its pieces end depends on the reading alone.
    if (std::exchange(loggedRun_, kEvent) != kEvent) logEvent(kEvent);
    takeUp([&] { readText(text); });
}

// Memory that runs out is the failure of this note alone: what it holds is let go, and the reading goes on.
template<class Taking>
void EvernoteXMLParseOperation::takeUp(Taking taking) {
    if (currentItemIsTooLarge_) return;
    try {
        taking();
    } catch (const std::bad_alloc&) {
        currentItemIsTooLarge_ = true;
        currentItem_->contentData = std::string(); // frees the memory, which clear() would not
        currentItem_->resources.clear();
        if (currentResource_) currentResource_.emplace();
    }
}

void EvernoteXMLParseOperation::readText(std::string_view text) {
    switch (currentNoteElement_) {
    case NoteElement::title:
        currentItem_->title += platform::utf16FromUTF8(text);
        break;
    case NoteElement::created:
        readDate(text, currentItem_->created);
        break;
    case NoteElement::updated:
        readDate(text, currentItem_->updated);
        break;
    case NoteElement::tag:
        *currentTag_ += platform::utf16FromUTF8(text);
        break;
    case NoteElement::resource:
        if (currentResource_) readResourceText(text);
        break;
    case NoteElement::noteAttributes:
        readNoteAttributeText(text);
        break;
    case NoteElement::content: // the body is in CDATA sections
    case NoteElement::none:
        break;
    }
}

void EvernoteXMLParseOperation::readResourceText(std::string_view text) {
    switch (currentResourceElement_) {
    case ResourceElement::data:
        currentResource_->appendBase64Data(text);
        break;
    case ResourceElement::mime:
        currentResource_->mime += trimmedUTF8(text);
        break;
    case ResourceElement::width:
        currentResource_->width = doubleValue(trimmedUTF8(text));
        break;
    case ResourceElement::height:
        currentResource_->height = doubleValue(trimmedUTF8(text));
        break;
    case ResourceElement::resourceAttributes:
        if (currentResourceAttributesElement_ == ResourceAttributesElement::timestamp) {
            readDate(text, currentResource_->attributes.timestamp);
        } else if (currentResourceAttributesElement_ == ResourceAttributesElement::fileName) {
            currentResource_->attributes.filename += platform::utf16FromUTF8(text);
        }
        break;
    case ResourceElement::none:
        break;
    }
}

void EvernoteXMLParseOperation::readNoteAttributeText(std::string_view text) {
    auto& attributes = currentItem_->noteAttributes;
    if (currentNoteAttributesElement_ == NoteAttributesElement::source) {
        attributes.source += trimmedUTF8(text);
    } else if (currentNoteAttributesElement_ == NoteAttributesElement::sourceURL) {
        attributes.sourceURL += trimmedUTF8(text);
    }
}

// A text of white space alone leaves the date as it is; an unreadable one takes it away.
void EvernoteXMLParseOperation::readDate(std::string_view text, std::optional<platform::Date>& date) const {
    const auto repaired = fixedInvalidDateString(platform::utf16FromUTF8(text));
    const auto stamp = trimmedText(repaired);
    if (!stamp.empty()) date = dateFormatter_.dateFromString(stamp);
}

void EvernoteXMLParseOperation::parserFoundCDATA(XMLParser&, std::string_view bytes) {
    constexpr std::string_view kEvent = "parser:foundCDATA:";
    if (std::exchange(loggedRun_, kEvent) != kEvent) logEvent(kEvent);
    if (currentNoteElement_ == NoteElement::content) takeUp([&] { currentItem_->contentData += bytes; });
}

void EvernoteXMLParseOperation::parserDidEndElement(XMLParser&, std::string_view name) {
    logEvent("parser:didEndElement: %@", name);
    if (name == "note") {
        endNote();
    } else if (name == "resource") {
        endResource();
    } else if (name == "note-attributes") {
        currentNoteElement_ = NoteElement::none;
        currentNoteAttributesElement_ = NoteAttributesElement::none;
    } else if (name == "resource-attributes") {
        currentResourceAttributesElement_ = ResourceAttributesElement::none;
    } else if (name == "tag" && currentItem_ && currentTag_) {
        currentItem_->tags.emplace_back(trimmedText(*currentTag_));
    }
    abortWhenCancelled();
    tagHandled();
}

void EvernoteXMLParseOperation::endResource() {
    if (currentItem_ && currentResource_) currentItem_->resources.push_back(*std::move(currentResource_));
    currentResource_.reset();
    currentNoteElement_ = NoteElement::none;
    currentResourceElement_ = ResourceElement::none;
}

// Base64 text is taken piece by piece, and so is what nobody reads: neither is then held twice, or at all.
bool EvernoteXMLParseOperation::readsPieces() const {
    if (currentNoteElement_ == NoteElement::none || currentNoteElement_ == NoteElement::content) return true;
    if (currentNoteElement_ != NoteElement::resource) return false;
    return currentResourceElement_ == ResourceElement::none || currentResourceElement_ == ResourceElement::data;
}

void EvernoteXMLParseOperation::tagHandled() {
    loggedRun_ = {};
    parser_->setDeliversPieces(readsPieces());
}

} // namespace quillet
