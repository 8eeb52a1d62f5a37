#include "programs/ProgressBar.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include <fmt/core.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "platform/base/SystemLog.h"

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
    std::string text = fmt::format("{} [{}{}] {}/{} MB, {} notes", label, std::string(filled, '#'),
                                   std::string(kBarCells - filled, '.'), megabytes(progress.bytesRead),
                                   megabytes(progress.bytesTotal), progress.notesWritten);
    if (progress.notesFailed != 0) text += fmt::format(", {} failed", progress.notesFailed);
    // The first moments say nothing of the rest.
    if (share > 0.02 && share < 1) text += fmt::format(", {} left", duration(seconds * (1 - share) / share));
    return text.size() < columns ? text : text.substr(text.size() - std::min(text.size(), columns - 1));
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
