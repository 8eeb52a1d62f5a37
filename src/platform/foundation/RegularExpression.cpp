#include "platform/foundation/RegularExpression.h"

#include <fmt/format.h>
#include <unicode/regex.h>

namespace platform {

struct RegularExpression::Pattern {
    std::unique_ptr<icu::RegexPattern> compiled;
};

namespace {

icu::UnicodeString aliasOf(std::u16string_view text) {
    return icu::UnicodeString(false, text.data(), static_cast<int32_t>(text.size()));
}

std::uint32_t libraryFlags(RegularExpressionOption option) {
    switch (option) {
    case RegularExpressionOption::none:
        break;
    case RegularExpressionOption::caseInsensitive:
        return UREGEX_CASE_INSENSITIVE;
    case RegularExpressionOption::anchorsMatchLines:
        return UREGEX_MULTILINE;
    case RegularExpressionOption::dotMatchesNewlines:
        return UREGEX_DOTALL;
    }
    return 0;
}

Error matchError(UErrorCode status) {
    return Error::withDescription(kRegularExpressionErrorDomain, status,
                                  fmt::format("matching stopped: {}", u_errorName(status)));
}

Range groupRange(const icu::RegexMatcher& matcher, int32_t group, UErrorCode& status) {
    const int32_t start = matcher.start(group, status);
    if (start < 0) return {kNotFound, 0};
    return {static_cast<std::size_t>(start), static_cast<std::size_t>(matcher.end(group, status) - start)};
}

} // namespace

Result<RegularExpression> RegularExpression::withPattern(std::u16string_view pattern, RegularExpressionOption option) {
    UErrorCode status = U_ZERO_ERROR;
    UParseError place{};
    auto compiled = std::make_shared<Pattern>();
    compiled->compiled.reset(icu::RegexPattern::compile(aliasOf(pattern), libraryFlags(option), place, status));
    if (U_FAILURE(status))
        return failure(Error::withDescription(
            kRegularExpressionErrorDomain, status,
            fmt::format("bad pattern at line {}, unit {}: {}", place.line, place.offset, u_errorName(status))));
    return RegularExpression(std::move(compiled));
}

RegularExpression RegularExpression::withTimeLimit(int limit) const {
    RegularExpression copy = *this;
    copy.timeLimit_ = limit;
    return copy;
}

Result<std::vector<RegularExpressionMatch>> RegularExpression::matches(std::u16string_view text) const {
    UErrorCode status = U_ZERO_ERROR;
    const icu::UnicodeString source = aliasOf(text);
    const std::unique_ptr<icu::RegexMatcher> matcher(pattern_->compiled->matcher(source, status));
    if (U_FAILURE(status)) return failure(matchError(status));
    matcher->setTimeLimit(timeLimit_, status);
    std::vector<RegularExpressionMatch> found;
    while (matcher->find(status)) {
        RegularExpressionMatch match;
        for (int32_t group = 0; group <= matcher->groupCount(); ++group)
            match.groups.push_back(groupRange(*matcher, group, status));
        found.push_back(std::move(match));
    }
    if (U_FAILURE(status)) return failure(matchError(status));
    return found;
}

Result<bool> RegularExpression::matchesAtStart(std::u16string_view text) const {
    UErrorCode status = U_ZERO_ERROR;
    const icu::UnicodeString source = aliasOf(text);
    const std::unique_ptr<icu::RegexMatcher> matcher(pattern_->compiled->matcher(source, status));
    if (U_FAILURE(status)) return failure(matchError(status));
    matcher->setTimeLimit(timeLimit_, status);
    const bool matched = matcher->lookingAt(status);
    if (U_FAILURE(status)) return failure(matchError(status));
    return matched;
}

Result<std::u16string> RegularExpression::replacingMatches(std::u16string_view text,
                                                           std::u16string_view replacement) const {
    const std::vector<RegularExpressionMatch> found = TRY(matches(text));
    std::u16string result;
    result.reserve(text.size());
    std::size_t copied = 0;
    for (const RegularExpressionMatch& match : found) {
        result.append(text.substr(copied, match.range().location - copied)).append(replacement);
        copied = match.range().end();
    }
    return result.append(text.substr(copied));
}

} // namespace platform
