// Each test forks: the child confines itself, tries one thing, and its exit status says what came of it.
#include "platform/ipc/Confinement.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/fs.h>
#include <linux/seccomp.h>
#include <mqueue.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/shm.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <utime.h>

#include "tests/support/ScratchDirectory.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

constexpr int kNotConfined = 255;

// What an attempt comes to: 0 when it was let through, else its errno. -1 for a process that died of a signal.
using Attempt = std::function<int()>;

int answer(long result) {
    return result < 0 ? errno : 0;
}

class ConfinedProcess : public testing::Test {
  protected:
    void SetUp() override {
        if (availableConfinement() != Confinement::full)
            GTEST_SKIP() << "this kernel confines " << confinementName(availableConfinement());
        fs::create_directory(inside_);
        fs::create_directory(outside_);
        tests::writeFile(secret_, "secret");
        tests::writeFile(export_, "export");
        tests::writeFile(inside_ / "own", "own");
    }

    int confined(const Attempt& attempt, const ResourceLimits& limits = {}) const {
        const pid_t child = ::fork();
        if (child == 0) {
            const std::array paths{AllowedPath{export_, PathAccess::readFile, "the file to read"},
                                   AllowedPath{inside_, PathAccess::writeTree, "where outputs go"},
                                   AllowedPath{scratch_ / "missing", PathAccess::readTree, "not there"}};
            ::_exit(confine(paths, limits) == Confinement::full ? attempt() : kNotConfined);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    tests::ScratchDirectory scratch_;
    const fs::path inside_ = scratch_ / "inside";
    const fs::path outside_ = scratch_ / "outside";
    const fs::path secret_ = outside_ / "secret";
    const fs::path export_ = scratch_ / "export.enex";
};

int openedFor(const fs::path& path, int flags) {
    return answer(::open(path.c_str(), flags, 0600));
}

TEST_F(ConfinedProcess, ReadsTheExportAndWorksInTheDestination) {
    EXPECT_EQ(confined([this] { return openedFor(export_, O_RDONLY); }), 0);
    EXPECT_EQ(confined([this] {
                  const fs::path scratch = inside_ / "scratch";
                  if (::mkdir(scratch.c_str(), 0777) != 0) return errno;
                  const int file = ::open((scratch / "note").c_str(), O_CREAT | O_WRONLY | O_EXCL, 0666);
                  if (file < 0 || ::write(file, "x", 1) != 1 || ::ftruncate(file, 0) != 0) return errno;
                  // Attributes and times by descriptor: the destination's file system may have no attributes.
                  if (::fsetxattr(file, "user.test", "", 0, 0) != 0 && errno == EPERM) return errno;
                  if (::futimens(file, nullptr) != 0 || ::fsync(file) != 0) return errno;
                  if (::rename((scratch / "note").c_str(), (inside_ / "note").c_str()) != 0) return errno;
                  return answer(::rmdir(scratch.c_str()));
              }),
              0);
    EXPECT_TRUE(fs::exists(inside_ / "note"));
}

TEST_F(ConfinedProcess, StartsThreads) {
    EXPECT_EQ(confined([] {
                  int result = 1;
                  std::thread([&] { result = 0; }).join();
                  return result;
              }),
              0);
}

struct ForbiddenFileCall {
    const char* what;
    int error;
    std::function<int(const fs::path& secret, const fs::path& inside, const fs::path& exportFile)> attempt;
};

TEST_F(ConfinedProcess, IsRefusedTheFilesOutside) {
    fs::create_symlink(secret_, inside_ / "planted");
    fs::create_directory_symlink(outside_, inside_ / "planted directory");
    const std::vector<ForbiddenFileCall> cases{
        {"read", EACCES, [](auto& secret, auto&, auto&) { return openedFor(secret, O_RDONLY); }},
        {"list", EACCES, [](auto& secret, auto&, auto&) { return openedFor(secret.parent_path(), O_DIRECTORY); }},
        {"write", EACCES, [](auto& secret, auto&, auto&) { return openedFor(secret, O_WRONLY); }},
        {"make", EACCES,
         [](auto& secret, auto&, auto&) { return openedFor(secret.parent_path() / "new", O_CREAT | O_WRONLY); }},
        {"remove", EACCES, [](auto& secret, auto&, auto&) { return answer(::unlink(secret.c_str())); }},
        {"write the export", EACCES, [](auto&, auto&, auto& file) { return openedFor(file, O_WRONLY); }},
        {"truncate the export by opening", EACCES,
         [](auto&, auto&, auto& file) { return openedFor(file, O_RDONLY | O_TRUNC); }},
        {"truncate", EPERM, [](auto& secret, auto&, auto&) { return answer(::truncate(secret.c_str(), 0)); }},
        {"read through a planted link", EACCES,
         [](auto&, auto& inside, auto&) { return openedFor(inside / "planted", O_RDONLY); }},
        {"write through a planted link", EACCES,
         [](auto&, auto& inside, auto&) { return openedFor(inside / "planted", O_WRONLY); }},
        {"make through a planted directory link", EACCES,
         [](auto&, auto& inside, auto&) { return openedFor(inside / "planted directory/new", O_CREAT | O_WRONLY); }},
        {"plant a link", EACCES,
         [](auto& secret, auto& inside, auto&) {
             return answer(::symlink(secret.c_str(), (inside / "link").c_str()));
         }},
        {"plant a FIFO", EACCES,
         [](auto&, auto& inside, auto&) { return answer(::mkfifo((inside / "fifo").c_str(), 0600)); }},
        {"link a file in", EXDEV,
         [](auto& secret, auto& inside, auto&) { return answer(::link(secret.c_str(), (inside / "hard").c_str())); }},
        {"move a file out", EACCES,
         [](auto& secret, auto& inside, auto&) {
             return answer(::rename((inside / "own").c_str(), (secret.parent_path() / "own").c_str()));
         }},
        {"chmod", EPERM, [](auto& secret, auto&, auto&) { return answer(::chmod(secret.c_str(), 0777)); }},
        {"fchmod", EPERM,
         [](auto&, auto&, auto& file) { return answer(::fchmod(::open(file.c_str(), O_RDONLY), 0777)); }},
        {"set flags", EPERM,
         [](auto&, auto&, auto& file) {
             int flags = 0;
             return answer(::ioctl(::open(file.c_str(), O_RDONLY), FS_IOC_SETFLAGS, &flags));
         }},
        {"chown", EPERM, [](auto& secret, auto&, auto&) { return answer(::chown(secret.c_str(), 1, 1)); }},
        {"lchown", EPERM, [](auto& secret, auto&, auto&) { return answer(::lchown(secret.c_str(), 1, 1)); }},
        {"setxattr", EPERM,
         [](auto& secret, auto&, auto&) { return answer(::setxattr(secret.c_str(), "user.test", "", 0, 0)); }},
        {"lsetxattr", EPERM,
         [](auto& secret, auto&, auto&) { return answer(::lsetxattr(secret.c_str(), "user.test", "", 0, 0)); }},
        {"removexattr", EPERM,
         [](auto& secret, auto&, auto&) { return answer(::removexattr(secret.c_str(), "user.test")); }},
        {"utime", EPERM, [](auto& secret, auto&, auto&) { return answer(::utime(secret.c_str(), nullptr)); }},
        {"utimensat", EPERM,
         [](auto& secret, auto&, auto&) { return answer(::utimensat(AT_FDCWD, secret.c_str(), nullptr, 0)); }},
    };
    for (const ForbiddenFileCall& test : cases)
        EXPECT_EQ(confined([&] { return test.attempt(secret_, inside_, export_); }), test.error) << test.what;
    EXPECT_EQ(tests::readFile(secret_), "secret");
    EXPECT_EQ(tests::readFile(export_), "export");
    EXPECT_FALSE(fs::exists(outside_ / "new"));
    EXPECT_EQ(fs::status(secret_).permissions() & fs::perms::others_write, fs::perms::none);
}

int connectTo(int family, int type, const sockaddr* address, socklen_t size) {
    const int descriptor = ::socket(family, type, 0);
    return descriptor < 0 ? errno : answer(::connect(descriptor, address, size));
}

TEST_F(ConfinedProcess, IsRefusedSockets) {
    sockaddr_in loopback{};
    loopback.sin_family = AF_INET;
    loopback.sin_port = htons(9);
    loopback.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const auto* address = reinterpret_cast<const sockaddr*>(&loopback);
    EXPECT_EQ(confined([&] { return connectTo(AF_INET, SOCK_STREAM, address, sizeof loopback); }), EPERM);
    EXPECT_EQ(confined([&] { return connectTo(AF_INET, SOCK_DGRAM, address, sizeof loopback); }), EPERM);
    const sockaddr_un local{AF_UNIX, "/run/dbus/system_bus_socket"};
    EXPECT_EQ(confined([&] {
                  return connectTo(AF_UNIX, SOCK_STREAM, reinterpret_cast<const sockaddr*>(&local), sizeof local);
              }),
              EPERM);
    // One that was open before is not put to a new use.
    const int open = ::socket(AF_INET, SOCK_DGRAM, 0);
    EXPECT_EQ(confined([&] { return answer(::connect(open, address, sizeof loopback)); }), EPERM);
    EXPECT_EQ(confined([&] { return answer(::sendto(open, "x", 1, 0, address, sizeof loopback)); }), EPERM);
    EXPECT_EQ(confined([&] {
                  msghdr message{};
                  message.msg_name = &loopback;
                  message.msg_namelen = sizeof loopback;
                  return answer(::sendmsg(open, &message, 0));
              }),
              EPERM);
    ::close(open);
    // One that was connected before still says what it has to: the system log's.
    std::array<int, 2> ends{};
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_DGRAM, 0, ends.data()), 0);
    EXPECT_EQ(confined([&] { return answer(::send(ends[0], "x", 1, MSG_NOSIGNAL)); }), 0);
    for (const int end : ends) ::close(end);
}

TEST_F(ConfinedProcess, IsRefusedProgramsAndOtherProcesses) {
    const std::vector<std::pair<const char*, Attempt>> cases{
        {"execve", [] { return answer(::execl("/bin/true", "true", nullptr)); }},
        {"fork", [] { return answer(::fork()); }},
        {"ptrace", [] { return answer(::ptrace(PTRACE_ATTACH, ::getppid(), nullptr, nullptr)); }},
        {"kill", [] { return answer(::kill(::getppid(), SIGCONT)); }},
        {"unshare", [] { return answer(::unshare(CLONE_NEWUSER)); }},
        {"prlimit",
         [] {
             const rlimit limit{1, 1};
             return answer(::prlimit(::getppid(), RLIMIT_CORE, &limit, nullptr));
         }},
        {"pidfd_open", [] { return answer(::syscall(SYS_pidfd_open, ::getppid(), 0)); }},
        {"shmget", [] { return answer(::shmget(IPC_PRIVATE, 4096, IPC_CREAT | 0600)); }},
        {"mq_open", [] { return answer(::mq_open("/quillet-test", O_RDWR | O_CREAT, 0600, nullptr)); }},
#if defined(__x86_64__)
        {"x32", [] { return answer(::syscall(0x40000000 | SYS_getpid)); }},
#endif
    };
    for (const auto& [what, attempt] : cases) EXPECT_EQ(confined(attempt), EPERM) << what;
    EXPECT_EQ(confined([] { return answer(::syscall(SYS_io_uring_setup, 1, nullptr)); }), ENOSYS);
    EXPECT_EQ(confined([] { return answer(::kill(::getpid(), 0)); }), 0);
}

TEST_F(ConfinedProcess, IsLimited) {
    EXPECT_EQ(confined(
                  [] {
                      rlimit files{};
                      ::getrlimit(RLIMIT_NOFILE, &files);
                      rlimit core{};
                      ::getrlimit(RLIMIT_CORE, &core);
                      return files.rlim_max <= 64 && core.rlim_max == 0 ? 0 : 1;
                  },
                  {.openFiles = 64}),
              0);
    EXPECT_EQ(confined([] {
                  rlimit files{}, processes{};
                  ::getrlimit(RLIMIT_NOFILE, &files);
                  ::getrlimit(RLIMIT_NPROC, &processes);
                  return files.rlim_max <= 1024 && processes.rlim_max <= 4096 ? 0 : 1;
              }),
              0);
#if !defined(__SANITIZE_ADDRESS__)
    EXPECT_EQ(confined([] {
                  rlimit memory{};
                  ::getrlimit(RLIMIT_AS, &memory);
                  return memory.rlim_max == std::uint64_t{4} << 30 ? 0 : 1;
              }),
              0);
    EXPECT_EQ(confined([] {
                  constexpr std::size_t kFiveGigabytes = std::size_t{5} << 30;
                  try {
                      const std::vector<char> memory(kFiveGigabytes);
                      return memory.empty() ? 1 : 0;
                  } catch (const std::bad_alloc&) {
                      return ENOMEM;
                  }
              }),
              ENOMEM);
#endif
}

TEST_F(ConfinedProcess, MustHaveOneThread) {
    const pid_t child = ::fork();
    if (child == 0) {
        std::thread([] { ::pause(); }).detach();
        const Result<Confinement> result = confine({});
        ::_exit(result ? 0 : static_cast<int>(result.error().code));
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), EBUSY);
}

// Makes this process's kernel one that does not know the call.
void forget(long call) {
    std::array<sock_filter, 4> program{{BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
                                        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(call), 0, 1),
                                        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOSYS),
                                        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)}};
    sock_fprog filter{static_cast<unsigned short>(program.size()), program.data()};
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter);
}

// What a kernel without some calls confines, and which of its layers is missing.
TEST_F(ConfinedProcess, IsConfinedByWhatTheKernelHas) {
    struct Kernel {
        std::vector<long> missing;
        Confinement level;
        int reading, forking;
    };
    const std::array kKernels{
        Kernel{{}, Confinement::full, EACCES, EPERM},
        Kernel{{SYS_landlock_create_ruleset}, Confinement::partial, 0, EPERM},
        Kernel{{SYS_seccomp}, Confinement::partial, EACCES, 0},
        Kernel{{SYS_seccomp, SYS_landlock_create_ruleset}, Confinement::none, 0, 0},
    };
    for (const Kernel& kernel : kKernels) {
        const auto attempted = [&](const Attempt& attempt) {
            const pid_t child = ::fork();
            if (child == 0) {
                for (const long call : kernel.missing) forget(call);
                if (availableConfinement() != kernel.level) ::_exit(kNotConfined);
                const Result<Confinement> confined = confine(std::array<AllowedPath, 0>{});
                ::_exit(confined && *confined == kernel.level ? attempt() : kNotConfined);
            }
            int status = 0;
            ::waitpid(child, &status, 0);
            return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        };
        SCOPED_TRACE(confinementName(kernel.level));
        EXPECT_EQ(attempted([this] { return openedFor(secret_, O_RDONLY); }), kernel.reading);
        EXPECT_EQ(attempted([] {
                      const pid_t child = ::fork();
                      if (child == 0) ::_exit(0);
                      return answer(child);
                  }),
                  kernel.forking);
        // The limits need nothing of the kernel that it has not always had.
        EXPECT_EQ(attempted([] {
                      rlimit core{};
                      ::getrlimit(RLIMIT_CORE, &core);
                      return static_cast<int>(core.rlim_max);
                  }),
                  0);
    }
}

TEST(Confinement, Names) {
    EXPECT_EQ(confinementName(Confinement::none), "none");
    EXPECT_EQ(confinementName(Confinement::partial), "partial");
    EXPECT_EQ(confinementName(Confinement::full), "full");
}

} // namespace
} // namespace platform
