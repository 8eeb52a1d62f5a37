#include "platform/foundation/Capitalization.h"

#include <memory>

#include <unicode/brkiter.h>
#include <unicode/unistr.h>

#include "platform/foundation/Environment.h"

namespace platform {

namespace {

// The word boundaries of one locale, made anew when the environment's locale has changed. One a thread: making one
// costs far more than a word's capitalization, and threads must not share it.
struct WordRules {
    std::string localeIdentifier;
    icu::Locale locale;
    std::unique_ptr<icu::BreakIterator> words;
};

WordRules& wordRules() {
    static thread_local WordRules rules;
    const std::string& identifier = Environment::current().localeIdentifier;
    if (!rules.words || rules.localeIdentifier != identifier) {
        UErrorCode status = U_ZERO_ERROR;
        rules.localeIdentifier = identifier;
        rules.locale = icu::Locale(identifier.c_str());
        rules.words.reset(icu::BreakIterator::createWordInstance(rules.locale, status));
    }
    return rules;
}

} // namespace

std::u16string localizedCapitalized(std::u16string_view text) {
    WordRules& rules = wordRules();
    icu::UnicodeString title(text.data(), static_cast<int32_t>(text.size()));
    title.toTitle(rules.words.get(), rules.locale);
    return {title.getBuffer(), static_cast<std::size_t>(title.length())};
}

std::u16string localizedWordStartsCapitalized(std::u16string_view text) {
    WordRules& rules = wordRules();
    icu::UnicodeString title(text.data(), static_cast<int32_t>(text.size()));
    title.toTitle(rules.words.get(), rules.locale, U_TITLECASE_NO_LOWERCASE);
    return {title.getBuffer(), static_cast<std::size_t>(title.length())};
}

std::u16string localizedUppercased(std::u16string_view text) {
    icu::UnicodeString upper(text.data(), static_cast<int32_t>(text.size()));
    upper.toUpper(wordRules().locale);
    return {upper.getBuffer(), static_cast<std::size_t>(upper.length())};
}

std::u16string localizedLowercased(std::u16string_view text) {
    icu::UnicodeString lower(text.data(), static_cast<int32_t>(text.size()));
    lower.toLower(wordRules().locale);
    return {lower.getBuffer(), static_cast<std::size_t>(lower.length())};
}

} // namespace platform
