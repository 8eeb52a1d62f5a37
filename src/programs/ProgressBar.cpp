#include "programs/ProgressBar.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numeric>

#include <fmt/core.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "platform/base/SystemLog.h"
#include "platform/base/UTF16.h"

namespace quillet {

namespace {

constexpr auto kShortestInterval = std::chrono::milliseconds(100);
constexpr std::size_t kBarCells = 20;
constexpr std::size_t kUsualColumns = 80;

std::size_t terminalColumns() {
    winsize size{};
    return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsualColumns;
}

std::string megabytes(std::uint64_t bytes) {
    return fmt::format("{:.1f}", static_cast<double>(bytes) / 1e6);
}

// How many columns of a terminal a unit takes, at most: a wide character takes two, and none comes before the first; of
// a surrogate pair each half counts as one.
std::size_t columnsOf(char16_t unit) {
    constexpr char16_t kFirstWide = 0x1100;
    const bool isSurrogate = unit >= 0xD800 && unit <= 0xDFFF;
    return unit < kFirstWide || isSurrogate ? 1 : 2;
}

// The end of the text, since files of one series differ there, behind "…" when the whole does not fit.
std::string fitted(const std::string& text, std::size_t columns) {
    const std::u16string units = platform::utf16FromUTF8(text);
    const std::size_t whole = std::accumulate(units.begin(), units.end(), std::size_t{0},
                                              [](std::size_t sum, char16_t unit) { return sum + columnsOf(unit); });
    if (whole <= columns) return text;
    std::size_t start = units.size(), taken = 1; // the ellipsis
    while (taken + columnsOf(units[start - 1]) <= columns) taken += columnsOf(units[--start]);
    if (start < units.size() && platform::isLowSurrogate(units[start])) ++start;
    return "…" + platform::utf8FromUTF16(std::u16string_view(units).substr(start));
}

std::string duration(double seconds) {
    const auto whole = static_cast<long>(std::ceil(seconds));
    return whole >= 3600 ? fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60)
                         : fmt::format("{}:{:02}", whole / 60, whole % 60);
}

} // namespace

ProgressBar::ProgressBar(std::string label) : label_(platform::escapedForTerminal(label)) {}

ProgressBar::~ProgressBar() {
    fmt::print(stderr, "\r\x1b[K");
}

std::string ProgressBar::line(const std::string& label, const ImportProgress& progress, double seconds,
                              std::size_t columns) {
    const double share =
        progress.bytesTotal == 0
            ? 0
            : std::min(1.0, static_cast<double>(progress.bytesRead) / static_cast<double>(progress.bytesTotal));
    const auto filled = static_cast<std::size_t>(share * kBarCells);
    std::string text =
        fmt::format(" [{}{}] {}/{} MB, {} notes", std::string(filled, '#'), std::string(kBarCells - filled, '.'),
                    megabytes(progress.bytesRead), megabytes(progress.bytesTotal), progress.notesWritten);
    if (progress.notesFailed != 0) text += fmt::format(", {} failed", progress.notesFailed);
    // The first moments say nothing of the rest.
    if (share > 0.02 && share < 1) text += fmt::format(", {} left", duration(seconds * (1 - share) / share));
    // One column stays free: a terminal may break the line behind its last one.
    const std::size_t room = columns > 0 ? columns - 1 : 0;
    constexpr std::size_t kShortestLabel = 4;
    if (text.size() + kShortestLabel > room) return text.substr(0, room);
    return fitted(label, room - text.size()) + text;
}

void ProgressBar::show(const ImportProgress& progress) {
    const std::lock_guard lock(mutex_);
    const auto now = Clock::now();
    if (now - shown_ < kShortestInterval) return;
    shown_ = now;
    const double seconds = std::chrono::duration<double>(now - started_).count();
    fmt::print(stderr, "\r{}\x1b[K", line(label_, progress, seconds, terminalColumns()));
    std::fflush(stderr);
}

} // namespace quillet
