// Lets at most ten reports a second through, of as many as there are.
#pragma once

#include <chrono>

namespace quillet {

// Used on one import's thread.
class ProgressPace {
  public:
    static constexpr std::chrono::milliseconds kInterval{100};

    bool isDue() {
        const auto now = std::chrono::steady_clock::now();
        if (now - last_ < kInterval) return false;
        last_ = now;
        return true;
    }

  private:
    std::chrono::steady_clock::time_point last_{}; // long ago: the first report is due
};

} // namespace quillet
