// What the readers of plain markup share: names, values and texts, taken from the front of what is left to read. For
// PlainMarkup.cpp and the files of the readers only; PlainMarkup.h is for all others.
//
// The steps taken at every tag and text stand here, so that the compiler can put them into each reader.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <forward_list>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/xml/XMLTreeBuilder.h"

namespace platform {

// Whether a document may be plain at all: both readers take the bytes as UTF-8 without a mark in front.
bool isPlainDocument(std::string_view markup);

// The base of the reader of a language. Markup and builder must outlive it. What skips or takes one thing leaves the
// rest as it was when that is not there.
class PlainReader {
  protected:
    enum class Language : std::uint8_t { xml, html };

    static constexpr std::size_t kUsualDepth = 16;     // room for a note's, so that what is there need not move
    static constexpr std::size_t kUsualAttributes = 8; // of a tag, likewise

    PlainReader(Language language, std::string_view markup, XMLTreeBuilder& builder)
        : rest_(markup), builder_(builder), language_(language) {
        attributes_.reserve(kUsualAttributes);
    }
    ~PlainReader() = default;

    static constexpr bool isBlank(char c) { return c == ' ' || c == '\n' || c == '\t'; }
    static constexpr bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
    static bool isNameCharacter(char c) { return kIsNameCharacter[static_cast<unsigned char>(c)]; }

    bool skip(std::string_view literal) {
        if (!rest_.starts_with(literal)) return false;
        rest_.remove_prefix(literal.size());
        return true;
    }
    // False when there is none.
    bool skipBlanks() {
        const std::size_t before = rest_.size();
        while (!rest_.empty() && isBlank(rest_.front())) rest_.remove_prefix(1);
        return rest_.size() < before;
    }
    std::string_view take(std::size_t length) {
        const std::string_view taken = rest_.substr(0, length);
        rest_.remove_prefix(taken.size());
        return taken;
    }
    std::string_view takeTextBeforeTag() {
        if (rest_.starts_with('<')) return {}; // as behind most tags
        return take(std::min(rest_.find('<'), rest_.size()));
    }
    // "" when there is none.
    std::string_view takeName() {
        if (rest_.empty() || !isLetter(rest_.front())) return {};
        std::size_t length = 1;
        while (length < rest_.size() && isNameCharacter(rest_[length])) ++length;
        return take(length);
    }
    // The name in an end tag, when it is that one.
    bool skipName(std::string_view name) {
        if (!rest_.starts_with(name) || (rest_.size() > name.size() && isNameCharacter(rest_[name.size()])))
            return false;
        rest_.remove_prefix(name.size());
        return true;
    }
    std::optional<std::string_view> takeQuoted() {
        if (rest_.empty() || (rest_.front() != '"' && rest_.front() != '\'')) return std::nullopt;
        const std::size_t end = rest_.find(rest_.front(), 1);
        if (end == std::string_view::npos) return std::nullopt;
        return take(end + 1).substr(1, end - 1);
    }
    // Up to the ">" or "/>".
    bool takeAttributes() {
        attributes_.clear();
        return rest_.starts_with('>') || takeEachAttribute(); // most have none
    }

    // Calls piece(std::string_view) for the stretches between references and for what these stand for. False when one
    // of them is not plain.
    bool forEachPiece(std::string_view text, auto piece) const {
        for (std::size_t at = text.find('&'); at != std::string_view::npos; at = text.find('&')) {
            piece(text.substr(0, at));
            text.remove_prefix(at);
            const auto* const known =
                std::ranges::find_if(kReferences, [&](const auto& each) { return text.starts_with(each.name); });
            if (known != std::end(kReferences)) {
                piece(known->character);
                text.remove_prefix(known->name.size());
            } else if (language_ == Language::xml && text.starts_with("&#")) {
                const auto reference = characterReference(text);
                if (!reference) return false;
                piece(reference->character);
                text.remove_prefix(reference->length);
            } else {
                return false;
            }
        }
        if (!text.empty()) piece(text);
        return true;
    }
    bool addText(std::string_view text) {
        if (text.empty()) return true; // as between most tags
        return forEachPiece(text, [this](std::string_view piece) { builder_.addText(XMLNodeKind::text, piece); });
    }

    std::string_view rest_;
    XMLTreeBuilder& builder_;
    std::vector<XMLAttributeView> attributes_; // of the last start tag

  private:
    struct Reference {
        std::string_view name, character;
    };
    static constexpr Reference kReferences[] = {{"&amp;", "&"}, {"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}};

    // The character of a reference by number ("&#160;", "&#xA0;") at the start of the text, with the length of all of
    // it. None when the character is not plain.
    struct CharacterReference {
        std::string character;
        std::size_t length;
    };
    static std::optional<CharacterReference> characterReference(std::string_view text);

    bool takeEachAttribute();

    static const std::array<bool, 256> kIsNameCharacter;

    std::forward_list<std::string> decoded_; // values that had references in them
    Language language_;
};

inline constexpr std::array<bool, 256> PlainReader::kIsNameCharacter = [] {
    std::array<bool, 256> is{};
    for (std::size_t c = 0; c < 128; ++c)
        is[c] = isLetter(static_cast<char>(c)) || (c >= '0' && c <= '9') || c == '-' || c == '_';
    return is;
}();

} // namespace platform
