#include "platform/foundation/LocalizedCompare.h"

#include <memory>
#include <string>

#include <unicode/coll.h>

#include "platform/foundation/Environment.h"

namespace platform {

namespace {

// The C locale orders by code unit, capitals first, which is no order for people: there the root order is taken.
icu::Locale orderingLocale(const std::string& identifier) {
    return identifier == "en_US_POSIX" ? icu::Locale::getRoot() : icu::Locale(identifier.c_str());
}

// Of the environment's locale at the last call; one a thread.
const icu::Collator* standardCollator() {
    static thread_local std::string localeIdentifier;
    static thread_local std::unique_ptr<icu::Collator> collator;
    const std::string& wanted = Environment::current().localeIdentifier;
    if (!collator || localeIdentifier != wanted) {
        UErrorCode status = U_ZERO_ERROR;
        localeIdentifier = wanted;
        collator.reset(icu::Collator::createInstance(orderingLocale(wanted), status));
        if (!collator || U_FAILURE(status)) return nullptr;
        collator->setAttribute(UCOL_STRENGTH, UCOL_SECONDARY, status);
        collator->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
    }
    return collator.get();
}

} // namespace

std::weak_ordering localizedStandardCompare(std::u16string_view a, std::u16string_view b) {
    const icu::Collator* collator = standardCollator();
    if (!collator) return a <=> b; // no collation data: by code unit
    UErrorCode status = U_ZERO_ERROR;
    const UCollationResult result =
        collator->compare(a.data(), static_cast<int32_t>(a.size()), b.data(), static_cast<int32_t>(b.size()), status);
    if (result == UCOL_EQUAL) return std::weak_ordering::equivalent;
    return result == UCOL_LESS ? std::weak_ordering::less : std::weak_ordering::greater;
}

} // namespace platform
