// The signals that end a program in good order.
#pragma once

#include <atomic>
#include <csignal>
#include <functional>
#include <mutex>

namespace quillet {

// Waits for SIGINT, SIGTERM and SIGHUP on a thread of its own. The first one cancels the import: the note under way is
// finished. A second one ends the process at once. A signal that was ignored when the program started stays ignored:
// a script's background job does not end with the terminal's Ctrl-C, nor one under nohup with the terminal.
class Interruption {
  public:
    static constexpr int kSignalBase = 128; // of an exit status that tells of a signal

    // To be made before any other thread starts, and never destroyed.
    Interruption();

    // What ends the import that runs now; nothing between imports.
    void setCancel(std::function<void()> cancel);
    // The signal that came, or 0.
    int signal() const { return signal_; }

  private:
    void wait();

    sigset_t signals_{};
    std::atomic<int> signal_ = 0;
    std::mutex mutex_;
    std::function<void()> cancel_; // guarded by mutex_
};

} // namespace quillet
