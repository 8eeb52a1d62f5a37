#include "programs/Interruption.h"

#include <cstdlib>
#include <thread>
#include <utility>

#include <pthread.h>

namespace quillet {

namespace {

bool isIgnored(int signal) {
    struct sigaction action{};
    return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

} // namespace

Interruption::Interruption() {
    sigemptyset(&signals_);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        if (!isIgnored(signal)) sigaddset(&signals_, signal);
    // Blocked before any other thread starts, so that all of them leave the signals to the waiting one.
    pthread_sigmask(SIG_BLOCK, &signals_, nullptr);
    std::thread([this] { wait(); }).detach();
}

void Interruption::setCancel(std::function<void()> cancel) {
    const std::lock_guard lock(mutex_);
    cancel_ = std::move(cancel);
    if (signal_ != 0 && cancel_) cancel_();
}

void Interruption::wait() {
    for (;;) {
        int received = 0;
        if (sigwait(&signals_, &received) != 0) continue;
        if (signal_.exchange(received) != 0) std::_Exit(kSignalBase + received);
        const std::lock_guard lock(mutex_);
        if (cancel_) cancel_();
    }
}

} // namespace quillet
