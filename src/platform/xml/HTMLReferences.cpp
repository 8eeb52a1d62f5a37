// One pass over the ampersands. What a reference without a semicolon means depends on where it stands (HTML standard,
// section 13.2.5.73): in an attribute "&copy=" is text, since addresses are full of such. The pass over the tags that
// tells is only made up to ampersands for which it matters.
#include "platform/xml/HTMLReferences.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include <fmt/format.h>

#include "platform/base/UTF16.h"
#include "platform/xml/HTMLEncoding.h"

namespace platform {

namespace {

struct NamedReference {
    std::string_view name;
    char32_t first, second; // 0: only one
    bool isBare;            // old enough to need no semicolon
};

constexpr NamedReference kNames[] = {
#include "platform/xml/HTMLReferenceTable.inc"
};
constexpr std::size_t kLongestName = 31, kLongestBareName = 6, kShortestBareName = 2;
static_assert(std::ranges::is_sorted(kNames, {}, &NamedReference::name));

constexpr char32_t kReplacement = 0xFFFD;

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isNameCharacter(char c) {
    return isLetter(c) || isDigit(c);
}

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\f' || c == '\r';
}

const NamedReference* referenceNamed(std::string_view name) {
    const auto* found = std::ranges::lower_bound(kNames, name, {}, &NamedReference::name);
    return found != std::end(kNames) && found->name == name ? found : nullptr;
}

// As a number where the character would be markup; the parser takes it for text then.
void append(std::string& out, char32_t character) {
    if (character < 0x80) {
        fmt::format_to(std::back_inserter(out), "&#{};", static_cast<unsigned>(character));
    } else if (character < 0x10000) {
        out += utf8FromUTF16(std::u16string(1, static_cast<char16_t>(character)));
    } else {
        const char32_t offset = character - 0x10000;
        out += utf8FromUTF16(std::u16string{static_cast<char16_t>(0xD800 + (offset >> 10)),
                                            static_cast<char16_t>(0xDC00 + (offset & 0x3FF))});
    }
}

// Follows the tags of a page, to say whether a place lies in one.
class TagFollower {
  public:
    explicit TagFollower(std::string_view page) : page_(page) {}

    // Places must ascend.
    bool isInTag(std::size_t place) {
        while (end_ <= place) nextTag();
        return start_ < place;
    }

  private:
    void nextTag() {
        start_ = std::min(page_.find('<', end_), page_.size());
        end_ = start_ + 1;
        if (start_ + 1 >= page_.size()) {
            start_ = end_ = page_.size();
            ++end_; // nothing more comes
        } else if (page_.substr(start_).starts_with("<!--")) {
            end_ = std::min(page_.find("-->", start_), page_.size()) + 1;
        } else if (isLetter(page_[start_ + 1])) {
            while (end_ < page_.size() && page_[end_] != '>')
                end_ = page_[end_] == '=' ? behindValue(end_ + 1) : end_ + 1;
            ++end_;
        }
    }

    std::size_t behindValue(std::size_t at) const {
        while (at < page_.size() && isBlank(page_[at])) ++at;
        if (at >= page_.size()) return at;
        if (page_[at] == '"' || page_[at] == '\'') return std::min(page_.find(page_[at], at + 1), page_.size() - 1) + 1;
        while (at < page_.size() && !isBlank(page_[at]) && page_[at] != '>') ++at;
        return at;
    }

    std::string_view page_;
    std::size_t start_ = 0, end_ = 0; // of the tag or comment that was found last
};

class Rewriter {
  public:
    Rewriter(std::string_view page, std::string& out) : page_(page), out_(out), tags_(page) {}

    bool run() {
        for (std::size_t at = page_.find('&'); at != std::string_view::npos; at = page_.find('&', at + 1)) {
            if (at + 1 >= page_.size()) break;
            page_[at + 1] == '#' ? number(at) : name(at);
        }
        if (copied_ > 0) out_ += page_.substr(copied_);
        return copied_ > 0;
    }

  private:
    void replace(std::size_t from, std::size_t to, char32_t first, char32_t second = 0) {
        if (copied_ == 0) {
            out_.clear();
            out_.reserve(page_.size() + page_.size() / 16);
        }
        out_ += page_.substr(copied_, from - copied_);
        append(out_, first);
        if (second != 0) append(out_, second);
        copied_ = to;
    }

    void name(std::size_t at) {
        const std::size_t start = at + 1, most = std::min(page_.size(), start + kLongestName);
        std::size_t end = start;
        while (end < most && isNameCharacter(page_[end])) ++end;
        const std::string_view name = page_.substr(start, end - start);
        if (end < page_.size() && page_[end] == ';') {
            for (const std::string_view plain : {"nbsp", "amp", "lt", "gt", "quot"})
                if (plain == name) return; // the most frequent ones, which the parser reads alike
            if (const NamedReference* known = referenceNamed(name))
                return replace(at, end + 1, known->first, known->second);
        }
        for (std::size_t length = std::min(name.size(), kLongestBareName); length >= kShortestBareName; --length) {
            const NamedReference* known = referenceNamed(name.substr(0, length));
            if (!known || !known->isBare) continue;
            const char next = start + length < page_.size() ? page_[start + length] : '\0';
            if ((next == '=' || isNameCharacter(next)) && tags_.isInTag(at)) return;
            return replace(at, start + length, known->first, known->second);
        }
    }

    void number(std::size_t at) {
        std::size_t end = at + 2;
        const bool isHexadecimal = end < page_.size() && (page_[end] == 'x' || page_[end] == 'X');
        if (isHexadecimal) ++end;
        const std::size_t digits = end;
        char32_t value = 0;
        constexpr char32_t kLargest = 0x10FFFF;
        for (; end < page_.size(); ++end) {
            const int digit = digitValue(page_[end], isHexadecimal);
            if (digit < 0) break;
            value = std::min(value * (isHexadecimal ? 16 : 10) + static_cast<char32_t>(digit), kLargest + 1);
        }
        if (end == digits) return replace(at, at + 1, U'&'); // the parser would drop it
        const bool hasEnd = end < page_.size() && page_[end] == ';';
        const char32_t meant = meaning(value);
        if (meant != value || !hasEnd) replace(at, end + (hasEnd ? 1 : 0), meant);
    }

    static int digitValue(char c, bool isHexadecimal) {
        if (isDigit(c)) return c - '0';
        if (!isHexadecimal) return -1;
        if (c >= 'a' && c <= 'f') return c - 'a' + 10;
        return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
    }

    static char32_t meaning(char32_t value) {
        if (value == 0 || value > 0x10FFFF || (value >= 0xD800 && value < 0xE000)) return kReplacement;
        return value >= 0x80 && value < 0xA0 ? windows1252(static_cast<unsigned char>(value)) : value;
    }

    std::string_view page_;
    std::string& out_;
    std::size_t copied_ = 0; // what of the page is in the new text; 0: nothing is rewritten so far
    TagFollower tags_;
};

} // namespace

bool rewriteReferences(std::string_view page, std::string& rewritten) {
    return Rewriter(page, rewritten).run();
}

} // namespace platform
