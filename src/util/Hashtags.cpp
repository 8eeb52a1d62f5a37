// Candidates are runs of "#" and what is no space. A candidate with more number signs in it is split into pieces, and
// the pieces' places come from a running position and length whose arithmetic is off by one from the second piece on.
// Tags made with it are in users' notes, so it stays; HashtagPieces has the details.
#include "util/Hashtags.h"

#include <algorithm>
#include <optional>

#include "platform/defaults/UserDefaults.h"
#include "platform/foundation/CharacterSet.h"

namespace quillet {

using platform::CharacterSet;
using platform::Range;

namespace {

constexpr char16_t kNumberSign = u'#';

// Where the pieces of one candidate are said to be.
class HashtagPieces {
  public:
    HashtagPieces(std::u16string_view text, Range candidate)
        : text_(text), position_(candidate.location), length_(candidate.length) {}

    // The start of the next piece; nothing once position and length reach beyond the text, which also drops the
    // candidate's later pieces. So a short second piece at the very end of the text is lost ("#a#b" yields only a).
    std::optional<std::size_t> next() {
        if (position_ + length_ > text_.size()) return std::nullopt;
        const std::size_t start = position_;
        const std::size_t sign = signAfter(start);
        if (sign < start + length_) {
            length_ = sign - start;
            position_ = sign + 1; // behind the sign: the next piece's range does not hold its own number sign
        } else {
            // No sign within the length, which is the one of the piece before and may be shorter than this piece: the
            // position stays, and the piece after this one is said to begin here too.
            ++length_;
        }
        return start;
    }

  private:
    // The first number sign behind `position`, looked for once while the position stays, so that all pieces together
    // take linear time.
    std::size_t signAfter(std::size_t position) {
        if (sign_ <= position) sign_ = std::min(text_.find(kNumberSign, position + 1), text_.size());
        return sign_;
    }

    std::u16string_view text_;
    std::size_t position_;
    std::size_t length_;
    std::size_t sign_ = 0;
};

const CharacterSet& nameSet() {
    static const CharacterSet set = CharacterSet::alphanumeric().united(CharacterSet::withCharacters(u"_"));
    return set;
}

bool isNumber(std::u16string_view name) {
    return std::ranges::all_of(name, [](char16_t unit) { return unit >= u'0' && unit <= u'9'; });
}

// Adds the tag of one piece, if it is one. The range counts one unit for the number sign.
void addTag(std::u16string_view piece, std::size_t start, NumericHashtags numeric, TagNamesAndRanges& tags) {
    const std::u16string_view kept = piece.substr(0, platform::findFirstNotOf(piece, nameSet()));
    if (kept.empty() || (numeric == NumericHashtags::ignored && isNumber(kept))) return;
    std::u16string name(kept);
    std::ranges::replace(name, u'_', u' ');
    tags.names.push_back(std::move(name));
    tags.ranges.push_back({start, kept.size() + 1});
}

void addCandidate(std::u16string_view text, Range candidate, NumericHashtags numeric, TagNamesAndRanges& tags) {
    HashtagPieces pieces(text, candidate);
    std::size_t pieceStart = candidate.location + 1;
    while (pieceStart <= candidate.end()) {
        const std::optional<std::size_t> start = pieces.next();
        if (!start) return;
        const std::size_t pieceEnd = std::min(text.find(kNumberSign, pieceStart), candidate.end());
        addTag(text.substr(pieceStart, pieceEnd - pieceStart), *start, numeric, tags);
        pieceStart = pieceEnd + 1;
    }
}

NumericHashtags storedPreference() {
    const bool allowed = platform::UserDefaults::standard().boolForKey(QLTAllowNumericHashtagsKey);
    return allowed ? NumericHashtags::allowed : NumericHashtags::ignored;
}

// What the pattern "#\S+" takes for a space: Unicode's White_Space, to which U+200B does not belong.
const CharacterSet& spaceSet() {
    static const CharacterSet set =
        CharacterSet::whitespaceAndNewline().subtracting(CharacterSet::withCharacters(u"\u200B"));
    return set;
}

} // namespace

// The candidates are the matches of "#\S+", found by hand: a pattern's matcher keeps a state a character and gives up
// on a run of a megabyte.
TagNamesAndRanges tagNamesAndRangesFromHashtags(std::u16string_view text, NumericHashtags numeric) {
    TagNamesAndRanges tags;
    for (std::size_t start = text.find(kNumberSign); start < text.size();) {
        const std::size_t end = std::min(platform::findFirstOf(text, spaceSet(), start), text.size());
        const bool countsHere = start == 0 || CharacterSet::whitespaceAndNewline().containsUnit(text[start - 1]);
        if (countsHere && end - start > 1) addCandidate(text, {start, end - start}, numeric, tags);
        start = text.find(kNumberSign, end);
    }
    return tags;
}

std::set<std::u16string> uniqueTagNamesFromHashtags(std::u16string_view text, NumericHashtags numeric) {
    std::vector<std::u16string> names = tagNamesAndRangesFromHashtags(text, numeric).names;
    return {std::make_move_iterator(names.begin()), std::make_move_iterator(names.end())};
}

TagNamesAndRanges tagNamesAndRangesFromHashtags(std::u16string_view text) {
    return tagNamesAndRangesFromHashtags(text, storedPreference());
}

std::set<std::u16string> uniqueTagNamesFromHashtags(std::u16string_view text) {
    return uniqueTagNamesFromHashtags(text, storedPreference());
}

} // namespace quillet
