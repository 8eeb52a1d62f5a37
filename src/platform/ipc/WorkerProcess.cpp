#include "platform/ipc/WorkerProcess.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>

#include <fcntl.h>
#include <fmt/core.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>

extern char** environ;

namespace platform {

namespace {

// What the child starts with: all signals as the system has them, none blocked, and the descriptors above.
class SpawnSettings {
  public:
    explicit SpawnSettings(int channel) {
        posix_spawn_file_actions_init(&actions_);
        posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&actions_, channel, WorkerProcess::kChannelDescriptor);
        posix_spawn_file_actions_addclosefrom_np(&actions_, WorkerProcess::kChannelDescriptor + 1);
        posix_spawnattr_init(&attributes_);
        sigset_t signals;
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&attributes_, &signals);
        sigfillset(&signals);
        posix_spawnattr_setsigdefault(&attributes_, &signals);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~SpawnSettings() {
        posix_spawn_file_actions_destroy(&actions_);
        posix_spawnattr_destroy(&attributes_);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;

    const posix_spawn_file_actions_t* actions() const { return &actions_; }
    const posix_spawnattr_t* attributes() const { return &attributes_; }

  private:
    posix_spawn_file_actions_t actions_{};
    posix_spawnattr_t attributes_{};
};

} // namespace

Result<std::unique_ptr<WorkerProcess>> WorkerProcess::start(const std::string& program,
                                                            const std::vector<std::string>& arguments) {
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
        return failure(errorFromErrno(errno, FileAccess::writing, program));
    Descriptor own(ends[0]);
    const Descriptor child(ends[1]);

    std::vector<char*> argumentPointers{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments) argumentPointers.push_back(const_cast<char*>(argument.c_str()));
    argumentPointers.push_back(nullptr);
    const SpawnSettings settings(child.get());
    pid_t process = 0;
    const int refused = ::posix_spawn(&process, program.c_str(), settings.actions(), settings.attributes(),
                                      argumentPointers.data(), environ);
    if (refused != 0) return failure(errorFromErrno(refused, FileAccess::reading, program));
    return std::unique_ptr<WorkerProcess>(new WorkerProcess(process, std::move(own)));
}

WorkerProcess::~WorkerProcess() {
    kill();
    waitUntilExit();
}

void WorkerProcess::kill() {
    if (process_ > 0) ::kill(process_, SIGKILL);
}

std::string WorkerProcess::waitUntilExit() {
    int status = 0;
    while (process_ > 0) {
        if (::waitpid(process_, &status, 0) < 0 && errno == EINTR) continue;
        process_ = 0;
        end_ = WIFSIGNALED(status) ? fmt::format("signal {} ({})", WTERMSIG(status), ::sigdescr_np(WTERMSIG(status)))
                                   : fmt::format("exit status {}", WEXITSTATUS(status));
    }
    return end_;
}

} // namespace platform
