#include "conversion/MarkupScan.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "platform/base/ByteSearch.h"
#include "platform/base/TextScan.h"

namespace quillet {

using platform::Result;

namespace {

constexpr auto npos = std::string_view::npos;

struct Shield {
    std::string_view opening, closing;
};

// What holds text that only looks like tags.
constexpr Shield kShields[] = {{"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}};

// Finds tags by the literal with which they begin. Positions only grow.
class TagSearch {
  public:
    TagSearch(std::string_view markup, std::string_view opening) : markup_(markup), opening_(opening) {}

    // The first tag at or behind a position; npos when there is none.
    std::size_t next(std::size_t from) {
        for (;;) {
            const std::size_t found = platform::findLiteral(markup_, opening_, from);
            if (found == npos) return npos;
            while (shieldEnd_ <= found && shieldStart_ != npos) findShield(std::max(shieldEnd_, from));
            if (found < shieldStart_) return found;
            from = shieldEnd_;
        }
    }

  private:
    // The first shield from a position on. What never closes ends with the markup.
    void findShield(std::size_t from) {
        using SecondOfOpening = platform::StopUnits<char, '\0', '\xFF', '!', '?'>; // far rarer than "<"
        for (std::size_t at = from + 1; at < markup_.size(); ++at) {
            at += platform::lengthBefore<SecondOfOpening>(markup_.substr(at));
            for (const auto& [opening, closing] : kShields) {
                if (!markup_.substr(at - 1).starts_with(opening)) continue;
                const std::size_t end = markup_.find(closing, at - 1 + opening.size());
                shieldStart_ = at - 1;
                shieldEnd_ = end == npos ? markup_.size() : end + closing.size();
                return;
            }
        }
        shieldStart_ = npos;
    }

    std::string_view markup_;
    std::string_view opening_;
    std::size_t shieldStart_ = 0; // npos when no further one follows
    std::size_t shieldEnd_ = 0;
};

} // namespace

Result<std::string> rewriteTags(std::string markup, const TagRewriting& rewriting) {
    const std::string_view source = markup;
    TagSearch search(source, rewriting.opening);
    std::size_t start = search.next(0);
    if (start == npos) return markup;

    std::string out;
    out.reserve(markup.size());
    std::size_t copied = 0;
    for (; start != npos; start = search.next(copied)) {
        const std::optional<std::size_t> end = rewriting.findEnd(source, start);
        if (!end) return platform::failure(rewriting.missingEnd());
        out.append(source, copied, start - copied);
        TRY(rewriting.replace(source.substr(start, *end - start), out));
        copied = *end;
    }
    out.append(source, copied);
    return out;
}

std::string replaceAll(std::string markup, std::string_view literal, std::string_view replacement) {
    std::size_t found = platform::findLiteral(markup, literal);
    if (found == std::string::npos) return markup;

    std::string out;
    out.reserve(markup.size());
    std::size_t copied = 0;
    for (; found != std::string::npos; found = platform::findLiteral(markup, literal, copied)) {
        out.append(markup, copied, found - copied);
        out += replacement;
        copied = found + literal.size();
    }
    out.append(markup, copied);
    return out;
}

std::string replaceAll(std::string_view text, std::span<const LiteralReplacement> replacements) {
    std::vector<std::size_t> found; // the next occurrence of each
    found.reserve(replacements.size());
    std::size_t expected = text.size();
    for (const auto& row : replacements) {
        found.push_back(platform::findLiteral(text, row.literal));
        expected += row.replacement.size();
    }
    std::string out;
    out.reserve(expected);
    std::size_t copied = 0;
    for (;;) {
        const auto first = std::ranges::min_element(found);
        if (first == found.end() || *first == npos) break;
        const auto& [literal, replacement] = replacements[static_cast<std::size_t>(first - found.begin())];
        out.append(text, copied, *first - copied).append(replacement);
        copied = *first + literal.size();
        for (std::size_t index = 0; index < found.size(); ++index)
            if (found[index] < copied) found[index] = platform::findLiteral(text, replacements[index].literal, copied);
    }
    out.append(text, copied);
    return out;
}

std::string replaceTags(std::string_view markup, std::span<const LiteralReplacement> replacements) {
    std::string out;
    out.reserve(markup.size());
    std::size_t copied = 0;
    for (std::size_t at = markup.find('<'); at != npos; at = markup.find('<', at)) {
        const std::string_view rest = markup.substr(at);
        // Most tags differ in the first letter.
        const auto found = std::ranges::find_if(replacements, [rest](const LiteralReplacement& row) {
            return rest.size() >= row.literal.size() && rest[1] == row.literal[1] && rest.starts_with(row.literal);
        });
        if (found == replacements.end()) {
            ++at;
            continue;
        }
        out.append(markup, copied, at - copied).append(found->replacement);
        at = copied = at + found->literal.size();
    }
    out.append(markup, copied);
    return out;
}

} // namespace quillet
