// ICU does the reading, at some 40 microseconds a date. Time stamps of one pattern are what an export is full of, two
// or more a note; for that pattern and the years around now, the fields are cut out by hand and
// only the time zone is asked, with the choice for repeated wall times that ICU's calendar makes.
// Everything else, unusual forms of the same pattern too, takes the long way, so the results are the same.
#include "platform/foundation/DateFormatter.h"

#include <chrono>
#include <string>

#include <unicode/basictz.h>
#include <unicode/calendar.h>
#include <unicode/smpdtfmt.h>
#include <unicode/uchar.h>

#include "platform/base/UTF16.h"
#include "platform/foundation/Environment.h"
#include "platform/foundation/TimeZone.h"

namespace platform {

namespace {

constexpr std::string_view kTimeStampPattern = "YYYYMMdd'T'HHmmss'Z'";
constexpr std::size_t kTimeStampLength = 16;
// Well inside the Gregorian calendar, whose change-over differs by locale.
constexpr int kFirstQuickYear = 1900, kLastQuickYear = 2199;
constexpr double kMilliseconds = 1000;

// The number that `count` digits at `start` make; -1 when one is no digit.
template<class C>
int digits(std::basic_string_view<C> text, std::size_t start, std::size_t count) {
    int number = 0;
    for (const C unit : text.substr(start, count)) {
        if (unit < C('0') || unit > C('9')) return -1;
        number = number * 10 + static_cast<int>(unit - C('0'));
    }
    return number;
}

// The wall time of a time stamp in milliseconds, as if it were UTC; nothing for a text that only ICU can judge.
template<class C>
std::optional<double> quickWallTime(std::basic_string_view<C> text) {
    if (text.size() != kTimeStampLength || text[8] != C('T') || text[15] != C('Z')) return std::nullopt;
    const int year = digits(text, 0, 4), month = digits(text, 4, 2), day = digits(text, 6, 2);
    const int hours = digits(text, 9, 2), minutes = digits(text, 11, 2), seconds = digits(text, 13, 2);
    if (year < kFirstQuickYear || year > kLastQuickYear || month < 0 || day < 0) return std::nullopt;
    if (hours < 0 || hours > 23 || minutes < 0 || minutes > 59 || seconds < 0 || seconds > 59) return std::nullopt;
    const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(static_cast<unsigned>(day))};
    if (!date.ok()) return std::nullopt;
    const auto days = std::chrono::sys_days(date).time_since_epoch().count();
    return (static_cast<double>(days) * 86400 + hours * 3600 + minutes * 60 + seconds) * kMilliseconds;
}

// What a pattern asks for behind its last field: ICU reads a text without it, too.
std::string trailingLiteral(std::string_view pattern) {
    std::string literal;
    bool isQuoted = false;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const char c = pattern[i];
        const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        if (c == '\'' && pattern.substr(i + 1).starts_with('\''))
            literal += pattern[++i];
        else if (c == '\'')
            isQuoted = !isQuoted;
        else if (isLetter && !isQuoted)
            literal.clear();
        else
            literal += c;
    }
    return literal;
}

icu::UnicodeString unicodeString(std::string_view utf8) {
    return icu::UnicodeString::fromUTF8(icu::StringPiece(utf8.data(), static_cast<std::int32_t>(utf8.size())));
}

} // namespace

struct DateFormatter::Implementation {
    std::unique_ptr<icu::SimpleDateFormat> format; // null when ICU's data is missing
    const icu::BasicTimeZone* quickZone = nullptr; // the format's, when time stamps can be read by hand

    icu::UnicodeString ending; // of every text that matches

    // The date of a text of any shape.
    std::optional<Date> read(const icu::UnicodeString& text) const {
        // ICU passes over blanks in front.
        if (!format || text.isEmpty() || u_isUWhiteSpace(text.char32At(0)) || !text.endsWith(ending))
            return std::nullopt;
        // A calendar that holds a date would lend its fields, the week among them, to the result.
        const std::unique_ptr<icu::Calendar> calendar(format->getCalendar()->clone());
        calendar->clear();
        icu::ParsePosition position(0);
        format->parse(text, *calendar, position);
        if (position.getErrorIndex() >= 0 || position.getIndex() != text.length()) return std::nullopt;
        UErrorCode status = U_ZERO_ERROR;
        const UDate moment = calendar->getTime(status);
        if (U_FAILURE(status)) return std::nullopt;
        return Date::fromUnixTime(moment / kMilliseconds);
    }

    template<class C>
    std::optional<Date> readQuickly(std::basic_string_view<C> text) const {
        if (!quickZone) return std::nullopt;
        const std::optional<double> wall = quickWallTime(text);
        if (!wall) return std::nullopt;
        std::int32_t offset = 0, summerTime = 0;
        UErrorCode status = U_ZERO_ERROR;
        quickZone->getOffsetFromLocal(*wall, UCAL_TZ_LOCAL_FORMER, UCAL_TZ_LOCAL_LATTER, offset, summerTime, status);
        const double moment = *wall - offset - summerTime;
        // A wall time that the clocks skip comes back as another one: no such time, to a strict reader.
        std::int32_t offsetThen = 0, summerTimeThen = 0;
        quickZone->getOffset(moment, false, offsetThen, summerTimeThen, status);
        if (U_FAILURE(status) || offsetThen + summerTimeThen != offset + summerTime) return std::nullopt;
        return Date::fromUnixTime(moment / kMilliseconds);
    }
};

DateFormatter::DateFormatter(std::string_view pattern) : implementation_(std::make_unique<Implementation>()) {
    icu::Locale locale(Environment::current().localeIdentifier.c_str());
    UErrorCode status = U_ZERO_ERROR;
    locale.setKeywordValue("calendar", "gregorian", status);
    auto format = std::make_unique<icu::SimpleDateFormat>(unicodeString(pattern), locale, status);
    if (U_FAILURE(status)) return;
    format->setLenient(false);
    format->adoptTimeZone(environmentTimeZone().release());
    if (pattern == kTimeStampPattern)
        implementation_->quickZone = dynamic_cast<const icu::BasicTimeZone*>(&format->getTimeZone());
    implementation_->ending = unicodeString(trailingLiteral(pattern));
    implementation_->format = std::move(format);
}

DateFormatter::~DateFormatter() = default;
DateFormatter::DateFormatter(DateFormatter&&) noexcept = default;
DateFormatter& DateFormatter::operator=(DateFormatter&&) noexcept = default;

std::optional<Date> DateFormatter::dateFromString(std::string_view utf8) const {
    if (const std::optional<Date> date = implementation_->readQuickly(utf8)) return date;
    return implementation_->read(unicodeString(utf8));
}

std::optional<Date> DateFormatter::dateFromString(std::u16string_view text) const {
    if (const std::optional<Date> date = implementation_->readQuickly(text)) return date;
    return implementation_->read(icu::UnicodeString(text.data(), static_cast<std::int32_t>(text.size())));
}

} // namespace platform
