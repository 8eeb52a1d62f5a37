// Counterpart of NSRegularExpression: patterns with ICU's syntax over UTF-16 text.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/Range.h"
#include "platform/base/Result.h"

namespace platform {

inline constexpr std::string_view kRegularExpressionErrorDomain = "QuilletRegularExpressionErrorDomain";

enum class RegularExpressionOption : unsigned {
    none = 0,
    caseInsensitive = 1,
    anchorsMatchLines = 2,
    dotMatchesNewlines = 4
};

struct RegularExpressionMatch {
    // The whole match, then each group; a group that took no part has the location kNotFound.
    std::vector<Range> groups;
    const Range& range() const { return groups.front(); }
};

// A compiled pattern; copies share it, and threads may use it at the same time.
class RegularExpression {
  public:
    // An error for a pattern that is none, with the place in it.
    static Result<RegularExpression> withPattern(std::u16string_view pattern,
                                                 RegularExpressionOption option = RegularExpressionOption::none);

    // Steps of matching that one call may take, in the library's units of about a millisecond; a pattern that runs away
    // on its text then ends in an error instead of a hang.
    static constexpr int kTimeLimit = 5000;
    RegularExpression withTimeLimit(int limit) const;

    // All matches in order, without overlap.
    Result<std::vector<RegularExpressionMatch>> matches(std::u16string_view text) const;

    // Whether there is a match that begins at the text's start.
    Result<bool> matchesAtStart(std::u16string_view text) const;

    // The text with every match replaced by `replacement`, literally.
    Result<std::u16string> replacingMatches(std::u16string_view text, std::u16string_view replacement) const;

  private:
    struct Pattern;
    explicit RegularExpression(std::shared_ptr<const Pattern> pattern) : pattern_(std::move(pattern)) {}

    std::shared_ptr<const Pattern> pattern_; // immutable once compiled
    int timeLimit_ = kTimeLimit;
};

} // namespace platform
