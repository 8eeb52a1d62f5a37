#include "platform/base/SystemLog.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <utility>

#include <fmt/core.h>
#include <syslog.h>

#include "platform/base/TextScan.h"
#include "platform/base/UTF16.h"

namespace platform {

namespace {

std::mutex logMutex;
SystemLogSink logSink; // guarded by logMutex

// Cc, and the Cf characters that reorder or hide text on a terminal.
bool actsOnTerminal(char16_t unit) {
    constexpr std::array<std::pair<char16_t, char16_t>, 7> kRanges{{
        {0x0000, 0x001F},
        {0x007F, 0x009F},
        {0x061C, 0x061C},
        {0x200B, 0x200F},
        {0x2028, 0x202E},
        {0x2066, 0x2069},
        {0xFEFF, 0xFEFF},
    }};
    return std::ranges::any_of(kRanges,
                               [unit](const auto& range) { return unit >= range.first && unit <= range.second; });
}

} // namespace

void systemLog(std::string_view entry) {
    const std::lock_guard lock(logMutex);
    if (logSink) {
        logSink(entry);
    } else {
        ::syslog(LOG_USER | LOG_NOTICE, "%s", escapedForTerminal(entry).c_str());
    }
}

SystemLogSink setSystemLogSink(SystemLogSink sink) {
    const std::lock_guard lock(logMutex);
    return std::exchange(logSink, std::move(sink));
}

std::string escapedForTerminal(std::string_view text) {
    using NotPlain = StopUnits<char, ' ', '~'>;
    if (lengthBefore<NotPlain>(text) == text.size()) return std::string(text);
    std::u16string escaped;
    for (const char16_t unit : utf16FromUTF8(text)) {
        if (actsOnTerminal(unit)) {
            escaped += utf16FromUTF8(fmt::format("\\u{{{:x}}}", static_cast<unsigned>(unit)));
        } else {
            escaped += unit;
        }
    }
    return utf8FromUTF16(escaped);
}

} // namespace platform
