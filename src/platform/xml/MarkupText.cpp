#include "platform/xml/MarkupText.h"

#include <algorithm>
#include <array>
#include <vector>

#include <libxml/HTMLparser.h>

#include "platform/base/ByteSearch.h"
#include "platform/base/UTF16.h"
#include "platform/xml/XMLParser.h"
#include "platform/xml/XMLWriter.h"

namespace platform {

namespace {

constexpr std::string_view kSectionStart = "<![CDATA[";
constexpr std::string_view kSectionEnd = "]]>";

constexpr bool isLetter(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

constexpr bool isNameCharacter(char character) {
    return isLetter(character) || (character >= '0' && character <= '9');
}

constexpr bool isBlank(char character) {
    return character == ' ' || character == '\t' || character == '\n' || character == '\r' || character == '\f';
}

// Where the element name in a tag ends that begins at `at`.
std::size_t endOfName(std::string_view markup, std::size_t at) {
    while (at < markup.size() && !isBlank(markup[at]) && markup[at] != '>' && markup[at] != '/') ++at;
    return at;
}

// Stretches in which nothing is markup.
struct Opaque {
    std::string_view start, end;
};
constexpr std::array<Opaque, 3> kOpaque{{{kSectionStart, kSectionEnd}, {"<!--", "-->"}, {"<?", "?>"}}};

// Where the opaque stretch that starts at `at` ends, or `at` when none starts there, as for nearly every "<".
inline std::size_t endOfOpaque(std::string_view text, std::size_t at) {
    if (at + 1 >= text.size() || (text[at + 1] != '!' && text[at + 1] != '?')) return at;
    for (const auto& opaque : kOpaque) {
        if (!text.substr(at).starts_with(opaque.start)) continue;
        const auto end = text.find(opaque.end, at + opaque.start.size());
        return end == std::string_view::npos ? text.size() : end + opaque.end.size();
    }
    return at;
}

// Finds the opaque stretch around a position. Positions only grow.
class OpaqueSearch {
  public:
    explicit OpaqueSearch(std::string_view text) : text_(text) { find(0); }

    // Where the stretch ends that the position lies in, or the position itself when it lies in none.
    std::size_t endAround(std::size_t at) {
        while (end_ <= at && start_ != std::string_view::npos) find(end_);
        return start_ < at ? end_ : at;
    }

  private:
    void find(std::size_t from) {
        for (start_ = text_.find('<', from); start_ != std::string_view::npos; start_ = text_.find('<', start_ + 1)) {
            end_ = endOfOpaque(text_, start_);
            if (end_ > start_) return;
        }
    }

    std::string_view text_;
    std::size_t start_ = 0, end_ = 0; // of the stretch at the position or the next one; no start when there is none
};

// What stands for "&name;"; empty when the reference is to stay.
std::string replacementForEntity(std::string_view name) {
    constexpr auto kOfXML = std::to_array<std::string_view>({"amp", "lt", "gt", "quot", "apos"});
    if (std::ranges::find(kOfXML, name) != kOfXML.end()) return {};
    const std::string terminated(name);
    const auto* entity = htmlEntityLookup(reinterpret_cast<const xmlChar*>(terminated.c_str()));
    if (!entity) return "&amp;" + terminated + ";";
    return utf8FromUTF16(std::u16string(1, static_cast<char16_t>(entity->value))); // all are in the first plane
}

// Position behind one attribute of a tag, as lenient readers see it; `at` is on its first character.
std::size_t endOfAttribute(std::string_view text, std::size_t at) {
    const auto isEnd = [&](std::size_t i) { return i >= text.size() || text[i] == '>' || isBlank(text[i]); };
    if (!isLetter(text[at]) && text[at] != '_' && text[at] != ':') {
        do ++at;
        while (!isEnd(at));
        return at;
    }
    while (!isEnd(at) && text[at] != '=' && text[at] != '/') ++at;
    std::size_t value = at;
    while (value < text.size() && isBlank(text[value])) ++value;
    if (value >= text.size() || text[value] != '=') return at;
    ++value;
    while (value < text.size() && isBlank(text[value])) ++value;
    if (value < text.size() && (text[value] == '"' || text[value] == '\'')) {
        const auto quote = text.find(text[value], value + 1);
        return quote == std::string_view::npos ? text.size() : quote + 1;
    }
    while (!isEnd(value)) ++value;
    return value;
}

// The open lists, items and cells, each with the divisions open directly in it.
class ListItemRepair {
  public:
    explicit ListItemRepair(std::string& out) : out_(out) {}

    void open(std::string_view name) {
        if (name == "div") {
            ++frames_.back().divisions;
        } else if (const auto kind = std::ranges::find(kKinds, name); kind != kKinds.end()) {
            const auto index = static_cast<std::size_t>(kind - kKinds.begin());
            ++openOfKind_.at(index);
            frames_.push_back({index, 0});
        }
    }

    // What has to end before is written; false when the end tag has nothing to end.
    bool close(std::string_view name) {
        if (name == "div") {
            if (frames_.back().divisions > 0) return --frames_.back().divisions, true;
            return frames_.back().kind != kItem;
        }
        const auto kind = std::ranges::find(kKinds, name);
        if (kind == kKinds.end()) return true;
        const auto index = static_cast<std::size_t>(kind - kKinds.begin());
        if (index == kItem) {
            if (frames_.back().kind != kItem) return true;
            for (; frames_.back().divisions > 0; --frames_.back().divisions) out_ += "</div>";
        }
        if (openOfKind_.at(index) == 0) return true;
        for (bool found = false; !found; frames_.pop_back()) {
            found = frames_.back().kind == index;
            --openOfKind_.at(frames_.back().kind);
        }
        return true;
    }

  private:
    static constexpr std::array<std::string_view, 6> kKinds{"li", "ul", "ol", "table", "td", "th"};
    static constexpr std::size_t kItem = 0;
    static constexpr std::size_t kPage = kKinds.size(); // the outermost frame, which nothing ends

    struct Frame {
        std::size_t kind;
        std::size_t divisions;
    };
    std::string& out_;
    std::vector<Frame> frames_{{kPage, 0}};
    std::array<std::size_t, kKinds.size()> openOfKind_{};
};

} // namespace

std::string resolvingHTMLEntities(std::string_view xml) {
    std::string result;
    result.reserve(xml.size());
    std::size_t copied = 0;
    OpaqueSearch opaque(xml);
    for (std::size_t at = xml.find('&'); at != std::string_view::npos; at = xml.find('&', at)) {
        if (const auto behind = opaque.endAround(at); behind > at) {
            at = behind;
            continue;
        }
        std::size_t end = at + 1;
        if (end < xml.size() && isLetter(xml[end]))
            while (end < xml.size() && isNameCharacter(xml[end])) ++end;
        if (end == at + 1 || end >= xml.size() || xml[end] != ';') {
            ++at;
            continue;
        }
        const auto replacement = replacementForEntity(xml.substr(at + 1, end - at - 1));
        if (!replacement.empty()) {
            result.append(xml.substr(copied, at - copied)).append(replacement);
            copied = end + 1;
        }
        at = end + 1;
    }
    return result.append(xml.substr(copied));
}

std::string escapingSections(std::string_view markup) {
    std::string result;
    result.reserve(markup.size());
    for (;;) {
        const auto start = findLiteral(markup, kSectionStart);
        result += markup.substr(0, start);
        if (start == std::string_view::npos) return result;
        markup.remove_prefix(start + kSectionStart.size());
        const auto end = markup.find(kSectionEnd);
        appendEscapedText(markup.substr(0, end), result);
        if (end == std::string_view::npos) return result;
        markup.remove_prefix(end + kSectionEnd.size());
    }
}

std::optional<std::string> escapingTitle(std::string_view page) {
    for (std::size_t at = page.find('<'); at != std::string_view::npos; at = page.find('<', at)) {
        if (const auto behind = endOfOpaque(page, at); behind > at) {
            at = behind;
            continue;
        }
        const auto nameEnd = endOfName(page, ++at);
        if (page.substr(at, nameEnd - at) != "title") continue;
        const auto start = page.find('>', nameEnd);
        const auto end = page.find("</title", nameEnd);
        if (end == std::string_view::npos || start >= end) return std::nullopt;
        const auto title = page.substr(start, end - start);
        if (title.find('<') == std::string_view::npos) return std::nullopt;
        std::string result(page.substr(0, start));
        for (const char character : title) {
            if (character == '<') {
                result += "&lt;";
            } else {
                result += character;
            }
        }
        result += page.substr(end);
        return result;
    }
    return std::nullopt;
}

std::string keepingListItemsWhole(std::string_view markup) {
    std::string result;
    result.reserve(markup.size());
    ListItemRepair repair(result);
    std::size_t copied = 0;
    for (std::size_t at = markup.find('<'); at != std::string_view::npos; at = markup.find('<', at)) {
        const auto behind = endOfOpaque(markup, at);
        if (behind > at) {
            at = behind;
            continue;
        }
        const bool isEnd = markup.substr(at).starts_with("</");
        const std::size_t nameStart = at + (isEnd ? 2 : 1);
        if (nameStart >= markup.size() || !isLetter(markup[nameStart])) {
            ++at;
            continue;
        }
        const auto nameEnd = endOfName(markup, nameStart);
        const auto name = markup.substr(nameStart, nameEnd - nameStart);
        std::size_t end = nameEnd;
        while (end < markup.size() && markup[end] != '>')
            end = isBlank(markup[end]) || markup[end] == '/' ? end + 1 : endOfAttribute(markup, end);
        if (end >= markup.size()) break;
        result += markup.substr(copied, at - copied);
        copied = at;
        at = end + 1;
        if (!isEnd) {
            if (markup[end - 1] != '/') repair.open(name);
        } else if (!repair.close(name)) {
            copied = at;
        }
    }
    return result.append(markup.substr(copied));
}

bool hasTagWithTooManyAttributes(std::string_view markup) {
    for (std::size_t at = markup.find('<'); at != std::string_view::npos; at = markup.find('<', at)) {
        const auto behind = endOfOpaque(markup, at);
        if (behind > at) {
            at = behind;
            continue;
        }
        if (++at >= markup.size() || !isLetter(markup[at])) continue;
        at = endOfName(markup, at);
        std::size_t count = 0;
        while (at < markup.size() && markup[at] != '>') {
            if (isBlank(markup[at]) || markup[at] == '/') {
                ++at;
                continue;
            }
            at = endOfAttribute(markup, at);
            if (++count > XMLParser::kMaximumAttributes) return true;
        }
    }
    return false;
}

std::string nameOfFirstTag(std::string_view markup) {
    for (std::size_t at = markup.find('<'); at != std::string_view::npos; at = markup.find('<', at)) {
        const auto behind = endOfOpaque(markup, at);
        if (behind > at) {
            at = behind;
            continue;
        }
        if (++at >= markup.size() || !isLetter(markup[at])) continue;
        std::string name(markup.substr(at, endOfName(markup, at) - at));
        std::ranges::transform(name, name.begin(), [](char character) {
            return character >= 'A' && character <= 'Z' ? static_cast<char>(character + ('a' - 'A')) : character;
        });
        return name;
    }
    return {};
}

} // namespace platform
