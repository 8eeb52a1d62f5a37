// The most memory that this process has had, for tests and benchmarks of what a piece of work takes.
#pragma once

#include <cstddef>
#include <fstream>
#include <string>
#include <string_view>

#include <malloc.h>

namespace tests {

// The largest resident size, in bytes, of the process or since the last restartPeakMemory().
inline std::size_t peakMemory() {
    std::ifstream status("/proc/self/status");
    constexpr std::string_view kLabel = "VmHWM:";
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(kLabel)) return std::stoull(line.substr(kLabel.size())) * 1024;
    return 0;
}

// Gives free memory back first, so that it is counted when it is used again.
inline void restartPeakMemory() {
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << 5;
}

} // namespace tests
