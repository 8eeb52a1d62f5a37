// Progress of one import on a terminal: bytes read, notes done and failed, time left.
#pragma once

#include <chrono>
#include <mutex>
#include <string>

#include "service/Quillet_ENEX_Import.h"

namespace quillet {

// Draws on standard error, at most ten times a second, and erases itself at the end. Callable from any thread.
class ProgressBar {
  public:
    explicit ProgressBar(std::string label);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void show(const ImportProgress& progress);

    // The line for a progress, after so many seconds; without escapes. For tests.
    static std::string line(const std::string& label, const ImportProgress& progress, double seconds,
                            std::size_t columns);

  private:
    using Clock = std::chrono::steady_clock;

    std::mutex mutex_;
    std::string label_;
    Clock::time_point started_ = Clock::now();
    Clock::time_point shown_{};
};

} // namespace quillet
