// A child process that works for this one and talks to it over a channel.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <sys/types.h>

#include "platform/base/Result.h"
#include "platform/ipc/MessageChannel.h"

namespace platform {

class WorkerProcess {
  public:
    // The descriptor under which the child finds its end of the channel.
    static constexpr int kChannelDescriptor = 3;

    // Starts the program. It gets the channel, /dev/null as standard input, this process's standard output and error,
    // and nothing else that is open here.
    static Result<std::unique_ptr<WorkerProcess>> start(const std::string& program,
                                                        const std::vector<std::string>& arguments);
    // A child that still runs is killed; either way it is waited for.
    ~WorkerProcess();
    WorkerProcess(const WorkerProcess&) = delete;
    WorkerProcess& operator=(const WorkerProcess&) = delete;

    MessageChannel& channel() { return channel_; }
    void kill();
    // Waits for the end; "exit status 3" or "signal 9 (Killed)".
    std::string waitUntilExit();

  private:
    WorkerProcess(pid_t process, Descriptor channel) : process_(process), channel_(std::move(channel)) {}

    pid_t process_; // 0 once it has been waited for
    MessageChannel channel_;
    std::string end_;
};

} // namespace platform
