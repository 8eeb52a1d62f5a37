#include "conversion/MarkupScan.h"

#include <utility>

namespace quillet {

using platform::Result;

Result<std::string> rewriteTags(std::string markup, const TagRewriting& rewriting) {
    const std::string_view source = markup;
    std::size_t start = source.find(rewriting.opening);
    if (start == std::string_view::npos) return markup;

    std::string out;
    out.reserve(markup.size());
    std::size_t copied = 0;
    for (; start != std::string_view::npos; start = source.find(rewriting.opening, copied)) {
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
    std::size_t found = markup.find(literal);
    if (found == std::string::npos) return markup;

    std::string out;
    out.reserve(markup.size());
    std::size_t copied = 0;
    for (; found != std::string::npos; found = markup.find(literal, copied)) {
        out.append(markup, copied, found - copied);
        out += replacement;
        copied = found + literal.size();
    }
    out.append(markup, copied);
    return out;
}

} // namespace quillet
