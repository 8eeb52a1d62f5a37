// Where lines and paragraphs begin and end. CR LF is one terminator wherever a position falls inside it.

#include <cassert>

#include "platform/text/AttributedString.h"

namespace platform {

namespace {

using IsTerminator = bool (*)(char16_t);

constexpr bool endsParagraph(char16_t unit) {
    return unit == u'\n' || unit == u'\r' || unit == 0x2029;
}

// Two comparisons are enough for ASCII, of which most text is.
constexpr bool endsLine(char16_t unit) {
    if (unit < 0x0080) return unit <= u'\r' && endsParagraph(unit);
    return unit == 0x0085 || unit == 0x2028 || unit == 0x2029;
}

// The line that starts at `start` and ends at the first terminator, at `limit` at the latest.
template<IsTerminator isTerminator>
Line lineFrom(std::u16string_view text, std::size_t start, std::size_t limit) {
    std::size_t end = start;
    while (end < limit && !isTerminator(text[end])) ++end;
    std::size_t enclosingEnd = end;
    if (end < limit) enclosingEnd += text[end] == u'\r' && end + 1 < limit && text[end + 1] == u'\n' ? 2 : 1;
    return {{start, end - start}, {start, enclosingEnd - start}};
}

template<IsTerminator isTerminator>
Line enclosingLine(std::u16string_view text, std::size_t position) {
    assert(position <= text.size());
    std::size_t start = position;
    while (start > 0) {
        const bool insidePair = start < text.size() && text[start - 1] == u'\r' && text[start] == u'\n';
        if (isTerminator(text[start - 1]) && !insidePair) break;
        --start;
    }
    return lineFrom<isTerminator>(text, start, text.size());
}

} // namespace

std::vector<Line> linesInRange(std::u16string_view text, Range range) {
    assert(range.end() <= text.size());
    std::vector<Line> lines;
    for (std::size_t start = range.location; start < range.end(); start = lines.back().enclosing.end())
        lines.push_back(lineFrom<endsLine>(text, start, range.end()));
    return lines;
}

std::vector<Line> linesOf(std::u16string_view text) {
    return linesInRange(text, {0, text.size()});
}

Line lineAt(std::u16string_view text, std::size_t position) {
    return enclosingLine<endsLine>(text, position);
}

Line paragraphAt(std::u16string_view text, std::size_t position) {
    return enclosingLine<endsParagraph>(text, position);
}

} // namespace platform
