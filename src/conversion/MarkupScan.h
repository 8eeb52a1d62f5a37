// Literal rewriting of serialised markup, in one pass: what was scanned or replaced is never scanned again, so the cost
// is linear in the markup whatever the number of tags. Comments, CDATA sections and instructions hold no tags, whatever
// stands in them.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/base/Result.h"

namespace quillet {

// One kind of tag to rewrite.
struct TagRewriting {
    std::string_view opening; // the literal with which a tag begins
    // Where the tag that begins at `start` ends (exclusive), or nothing when its end is missing.
    std::function<std::optional<std::size_t>(std::string_view markup, std::size_t start)> findEnd;
    // Appends what stands in the tag's place; `tag` is its whole text.
    std::function<platform::Result<>(std::string_view tag, std::string& out)> replace;
    // The error for a tag whose end is missing.
    std::function<platform::Error()> missingEnd;
};

// The markup with every tag of that kind replaced, in order. Without such a tag the markup is handed back uncopied.
platform::Result<std::string> rewriteTags(std::string markup, const TagRewriting& rewriting);

// Every occurrence replaced, left to right, without looking into what was put in. Uncopied when there is none.
std::string replaceAll(std::string markup, std::string_view literal, std::string_view replacement);

// What stands in the place of a literal.
struct LiteralReplacement {
    std::string_view literal;
    std::string_view replacement;
};

// Every occurrence of each literal replaced, in one pass over the text. No literal begins with the whole of another.
std::string replaceAll(std::string_view text, std::span<const LiteralReplacement> replacements);
// The same for literals that are tags, which may occur often: each begins with "<" and is longer than that.
std::string replaceTags(std::string_view markup, std::span<const LiteralReplacement> replacements);

} // namespace quillet
