// Counterpart of NSDateFormatter with a fixed pattern: text to date, in the environment's locale and time zone as they
// are when the formatter is made.
#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "platform/base/Date.h"

namespace platform {

// Making one costs some 20 microseconds: keep it. Use one from one thread at a time.
class DateFormatter {
  public:
    // A pattern of Unicode's date field symbols (UTS 35), as "yyyy-MM-dd'T'HH:mm:ss". Its years are Gregorian whatever
    // calendar the locale prefers: patterns are for stamps that programs wrote.
    explicit DateFormatter(std::string_view pattern);
    ~DateFormatter();
    DateFormatter(DateFormatter&&) noexcept;
    DateFormatter& operator=(DateFormatter&&) noexcept;

    // Nothing unless the whole text matches and names a day and time that exist: no thirteenth month, no second 60.
    // Fields that the pattern lacks are those of 1970-01-01 00:00. A wall time that the change to summer time skips
    // is no time; of one that occurs twice it is the second, standard time.
    std::optional<Date> dateFromString(std::string_view utf8) const;
    std::optional<Date> dateFromString(std::u16string_view text) const;

  private:
    struct Implementation;
    std::unique_ptr<Implementation> implementation_;
};

} // namespace platform
