// Counterpart of NSAttributedString and NSMutableAttributedString: rich text as one value.
//
// UTF-16 text and an ascending table of runs, each pointing to a shared, immutable attribute set. Equal neighbours are
// merged, so two texts are equal when their tables are. Copies share storage until one of them changes. Positions are
// UTF-16 units; a position or range beyond the end is a programming error (checked in debug builds).
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "platform/base/Range.h"
#include "platform/text/Attributes.h"

namespace platform {

struct TextEdit;

class AttributedString {
  public:
    // One run: up to `end` (exclusive), from the end of the run before.
    struct Run {
        std::size_t end = 0;
        AttributeSet::Reference attributes; // never null
    };

    AttributedString() = default;
    explicit AttributedString(std::u16string text, AttributeSet::Reference attributes = AttributeSet::empty());
    // The runs ascend, none is empty, and the last one ends with the text. Equal neighbours are merged.
    AttributedString(std::u16string text, std::vector<Run> runs);
    static AttributedString withAttachment(TextAttachmentReference attachment); // one U+FFFC

    const std::u16string& string() const;
    std::size_t length() const { return string().size(); }
    bool empty() const { return length() == 0; }
    const std::vector<Run>& runs() const;

    // The attribute set at a position and, when asked, the range of its run. O(log runs).
    const AttributeSet& attributesAt(std::size_t position, Range* effectiveRange = nullptr) const;
    const AttributeValue* attributeAt(AttributeName name, std::size_t position) const; // null when absent

    // Counterpart of enumerateAttribute:inRange: longest runs of equal value inside the range, in order; null is "no
    // value" and makes runs too. The text must not change during the walk (walk a copy, which costs nothing, or
    // collect first). Return false from the body to stop, or use a body that returns nothing.
    template<class Body>
    void enumerateAttribute(AttributeName name, Range range, Body&& body) const {
        walkAttribute(name, range, stoppable<const AttributeValue*>(body));
    }
    // Runs of equal attribute sets.
    template<class Body>
    void enumerateAttributes(Range range, Body&& body) const {
        walkAttributes(range, stoppable<const AttributeSet&>(body));
    }

    AttributedString substring(Range range) const;

    // Single edits: each costs up to the length of the text. For many, use Edits.
    void replaceCharacters(Range range, const AttributedString& replacement);
    // The replacement takes the attributes of the first replaced character (of the one before, for an empty range).
    void replaceCharacters(Range range, std::u16string_view replacement);
    void append(const AttributedString& other);
    void append(std::u16string_view text, const AttributeSet::Reference& attributes);
    void deleteCharacters(Range range) { replaceCharacters(range, AttributedString()); }

    void setAttributes(AttributeSet::Reference attributes, Range range);
    void addAttribute(AttributeName name, const AttributeValue& value, Range range);
    void addAttributes(const AttributeSet& attributes, Range range);
    void removeAttribute(AttributeName name, Range range);
    // Replaces the set of every run in the range by what the body makes of it; one pass.
    void transformAttributes(Range range,
                             const std::function<AttributeSet::Reference(const AttributeSet::Reference&, Range)>& body);
    // The same over many ranges, which ascend and do not overlap, still in one pass; the body gets the number of the
    // range in which the set is.
    void transformAttributesInRanges(
        const std::vector<Range>& ranges,
        const std::function<AttributeSet::Reference(const AttributeSet::Reference&, std::size_t number)>& body);

    // The same for the whole text with a body that looks at nothing but the set, and is asked less than once a run.
    // Runs that share a set go on sharing one, and a text in which nothing changes is not touched.
    void mapAttributes(const std::function<AttributeSet::Reference(const AttributeSet::Reference&)>& body);

    // Many replacements in one pass, O(length + edits). Ranges refer to the text before, ascend and do not overlap.
    void applyEdits(const std::vector<TextEdit>& edits);

    friend bool operator==(const AttributedString& a, const AttributedString& b);

  private:
    struct Storage;

    // The body as one that says whether to go on; a body that returns nothing always does.
    template<class Argument, class Body>
    static auto stoppable(Body& body) {
        return [&body](Argument argument, Range range) {
            if constexpr (std::is_void_v<std::invoke_result_t<Body&, Argument, Range>>) {
                body(argument, range);
                return true;
            } else {
                return static_cast<bool>(body(argument, range));
            }
        };
    }
    void walkAttribute(AttributeName name, Range range,
                       const std::function<bool(const AttributeValue*, Range)>& body) const;
    void walkAttributes(Range range, const std::function<bool(const AttributeSet&, Range)>& body) const;

    Storage& mutableStorage();
    void setRuns(std::vector<Run> runs);
    void replaceRuns(Range range, std::size_t newLength, std::vector<Run> middle);

    std::shared_ptr<Storage> storage_; // null for the empty text; shared between copies; made our own before a change
};

// One replacement of AttributedString::applyEdits; the range refers to the text before all edits.
struct TextEdit {
    Range range;
    AttributedString replacement;
};

// A line as the platform's line enumeration gives it: ended by LF, CR, CR LF, U+0085, U+2028 or U+2029.
struct Line {
    Range contents;  // without the terminator
    Range enclosing; // with it
};

// The lines that the range touches, each cut to the range, in order. An empty range has none; text that ends in a
// terminator has no empty line behind it.
std::vector<Line> linesInRange(std::u16string_view text, Range range);
std::vector<Line> linesOf(std::u16string_view text);
// Whether a line begins at a position of the text.
bool startsLine(std::u16string_view text, std::size_t position);
// The whole line that holds a position (which may be the end of the text).
Line lineAt(std::u16string_view text, std::size_t position);
// The whole paragraph that holds a position: ended by LF, CR, CR LF or U+2029 only (U+2028 breaks a line, not a
// paragraph).
Line paragraphAt(std::u16string_view text, std::size_t position);

} // namespace platform
