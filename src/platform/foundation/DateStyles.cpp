#include "platform/foundation/DateStyles.h"

#include <memory>

#include <unicode/datefmt.h>
#include <unicode/udisplaycontext.h>

#include "platform/base/UTF16.h"
#include "platform/foundation/Environment.h"
#include "platform/foundation/TimeZone.h"

namespace platform {

namespace {

constexpr double kMillisecondsPerSecond = 1000;

icu::DateFormat::EStyle libraryStyle(DateFormatterStyle style) {
    switch (style) {
    case DateFormatterStyle::shortStyle:
        return icu::DateFormat::kShort;
    case DateFormatterStyle::medium:
        return icu::DateFormat::kMedium;
    case DateFormatterStyle::longStyle:
        return icu::DateFormat::kLong;
    case DateFormatterStyle::full:
        return icu::DateFormat::kFull;
    case DateFormatterStyle::none:
        break;
    }
    return icu::DateFormat::kNone;
}

// The moment whose UTC reading is the local reading of `date`, written as ISO 8601.
std::u16string isoLocal(Date date) {
    int32_t rawOffset = 0;
    int32_t daylightOffset = 0;
    UErrorCode status = U_ZERO_ERROR;
    environmentTimeZone()->getOffset(date.unixTime() * kMillisecondsPerSecond, false, rawOffset, daylightOffset,
                                     status);
    const double offset = (rawOffset + daylightOffset) / kMillisecondsPerSecond;
    return utf16FromUTF8(Date{date.secondsSinceReferenceDate + offset}.iso8601());
}

} // namespace

std::u16string localizedDateAndTime(Date date, DateFormatterStyle dateStyle, DateFormatterStyle timeStyle) {
    const icu::DateFormat::EStyle datePart = libraryStyle(dateStyle);
    const icu::DateFormat::EStyle timePart = libraryStyle(timeStyle);
    if (datePart == icu::DateFormat::kNone && timePart == icu::DateFormat::kNone) return {};
    const icu::Locale locale(Environment::current().localeIdentifier.c_str());
    const std::unique_ptr<icu::DateFormat> formatter(
        icu::DateFormat::createDateTimeInstance(datePart, timePart, locale));
    if (!formatter) return {};
    UErrorCode status = U_ZERO_ERROR;
    formatter->setContext(UDISPCTX_CAPITALIZATION_FOR_STANDALONE, status);
    formatter->adoptTimeZone(environmentTimeZone().release());
    icu::UnicodeString text;
    formatter->format(date.unixTime() * kMillisecondsPerSecond, text);
    return {text.getBuffer(), static_cast<std::size_t>(text.length())};
}

std::u16string isoLocalDateAndTime(Date date) {
    std::u16string text = isoLocal(date);
    text.pop_back(); // the Z
    return text;
}

std::u16string isoLocalDate(Date date) {
    const std::u16string text = isoLocal(date);
    return text.substr(0, text.find(u'T'));
}

std::u16string isoLocalTime(Date date) {
    const std::u16string text = isoLocalDateAndTime(date);
    return text.substr(text.find(u'T') + 1);
}

} // namespace platform
