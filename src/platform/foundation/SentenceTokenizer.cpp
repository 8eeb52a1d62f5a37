#include "platform/foundation/SentenceTokenizer.h"

#include <memory>

#include <unicode/brkiter.h>
#include <unicode/utext.h>

#include "platform/foundation/CharacterSet.h"

namespace platform {

namespace {

// One iterator a thread: making one reads the rules anew (about 30 times the cost of a short text), and an iterator
// must not be shared between threads.
icu::BreakIterator* sentenceIterator() {
    static thread_local const std::unique_ptr<icu::BreakIterator> iterator = [] {
        UErrorCode status = U_ZERO_ERROR;
        return std::unique_ptr<icu::BreakIterator>(
            icu::BreakIterator::createSentenceInstance(icu::Locale::getRoot(), status));
    }();
    return iterator.get();
}

} // namespace

std::optional<Range> sentenceRangeAt(std::u16string_view text, std::size_t position) {
    icu::BreakIterator* iterator = sentenceIterator();
    if (!iterator || position >= text.size()) return std::nullopt;
    UErrorCode status = U_ZERO_ERROR;
    UText source = UTEXT_INITIALIZER;
    utext_openUChars(&source, text.data(), static_cast<int64_t>(text.size()), &status);
    iterator->setText(&source, status);
    std::optional<Range> found;
    if (U_SUCCESS(status)) {
        const int32_t end = iterator->following(static_cast<int32_t>(position));
        const int32_t start = iterator->previous();
        const Range range{static_cast<std::size_t>(start), static_cast<std::size_t>(end - start)};
        if (!trimmed(text.substr(range.location, range.length), CharacterSet::whitespaceAndNewline()).empty())
            found = range;
    }
    // The iterator outlives this text: leave it on an empty one.
    UText none = UTEXT_INITIALIZER;
    status = U_ZERO_ERROR;
    utext_openUChars(&none, u"", 0, &status);
    iterator->setText(&none, status);
    utext_close(&none);
    utext_close(&source);
    return found;
}

} // namespace platform
