// A wait that is over before a thread would be asleep.
#pragma once

#include <chrono>
#include <thread>

namespace platform {

// To put a thread to sleep and to wake it takes 50 microseconds and more where an idle processor halts, and both
// threads of an import wait for each other once a note: for a page of 8 KB to be read about 100 microseconds, and 300
// for the next page to come. Sleeping through them costs a fifth of the import.
inline constexpr std::chrono::microseconds kWaitAwake{500};

// Returns when `isOver()` holds, or else after kWaitAwake; the caller then sleeps. Meanwhile the thread gives way to
// any other, so that with one processor the one it waits for runs at once.
template<class IsOver>
void waitAwake(const IsOver& isOver) {
    const auto sleepAt = std::chrono::steady_clock::now() + kWaitAwake;
    while (!isOver() && std::chrono::steady_clock::now() < sleepAt) std::this_thread::yield();
}

} // namespace platform
