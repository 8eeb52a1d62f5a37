// The filter is a table of refused calls and a table of calls that are allowed with certain arguments only, turned into
// one classic BPF program. It is a list of refusals, not of permissions: what a C library calls differs by version,
// while what Landlock does not rule over, and an import never needs, is known.
#include "platform/ipc/SystemCallFilter.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/fs.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace platform {

namespace {

#if defined(__x86_64__)
constexpr std::uint32_t kProcessor = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr std::uint32_t kProcessor = AUDIT_ARCH_AARCH64;
#else
constexpr std::uint32_t kProcessor = 0; // unknown: no filter
#endif

// Calls that have the same number on every processor and that older kernel headers do not name.
constexpr int kFchmodat2 = 452, kSetxattrat = 463, kRemovexattrat = 466, kFileSetattr = 469, kIoUringSetup = 425,
              kIoUringEnter = 426, kIoUringRegister = 427, kClone3 = 435, kMountSetattr = 442, kOpenTreeAttr = 467;

struct Refusal {
    int call;
    int error;
};

// By purpose. The calls under #ifdef exist on some processors only.
constexpr std::array kRefusals{
    // Modes and owners: outputs get theirs when they are made.
    Refusal{SYS_fchmodat, EPERM},
    Refusal{kFchmodat2, EPERM},
    Refusal{SYS_fchmod, EPERM},
    Refusal{SYS_fchownat, EPERM},
    Refusal{SYS_fchown, EPERM},
    // Attributes, times and lengths by path; the forms that take a descriptor stay.
    Refusal{SYS_setxattr, EPERM},
    Refusal{SYS_lsetxattr, EPERM},
    Refusal{kSetxattrat, EPERM},
    Refusal{SYS_removexattr, EPERM},
    Refusal{SYS_lremovexattr, EPERM},
    Refusal{kRemovexattrat, EPERM},
    Refusal{kFileSetattr, EPERM},
    Refusal{SYS_truncate, EPERM},
#ifdef SYS_chmod
    Refusal{SYS_chmod, EPERM},
    Refusal{SYS_chown, EPERM},
    Refusal{SYS_lchown, EPERM},
    Refusal{SYS_utime, EPERM},
    Refusal{SYS_utimes, EPERM},
    Refusal{SYS_futimesat, EPERM},
#endif
    // Programs and processes. clone3 passes its flags through memory, which a filter cannot read; the C library takes
    // ENOSYS as a reason to use clone.
    Refusal{SYS_execve, EPERM},
    Refusal{SYS_execveat, EPERM},
    Refusal{kClone3, ENOSYS},
#ifdef SYS_fork
    Refusal{SYS_fork, EPERM},
    Refusal{SYS_vfork, EPERM},
#endif
    // Sockets: none is made or put to use; those open already stay.
    Refusal{SYS_socket, EPERM},
    Refusal{SYS_socketpair, EPERM},
    Refusal{SYS_connect, EPERM},
    Refusal{SYS_bind, EPERM},
    Refusal{SYS_listen, EPERM},
    Refusal{SYS_accept, EPERM},
    Refusal{SYS_accept4, EPERM},
    Refusal{SYS_sendmsg, EPERM}, // its address lies in memory, out of a filter's sight
    Refusal{SYS_sendmmsg, EPERM},
    // Other processes.
    Refusal{SYS_ptrace, EPERM},
    Refusal{SYS_process_vm_readv, EPERM},
    Refusal{SYS_process_vm_writev, EPERM},
    Refusal{SYS_pidfd_open, EPERM},
    Refusal{SYS_pidfd_getfd, EPERM},
    Refusal{SYS_pidfd_send_signal, EPERM},
    Refusal{SYS_tkill, EPERM},
    Refusal{SYS_rt_sigqueueinfo, EPERM},
    Refusal{SYS_rt_tgsigqueueinfo, EPERM},
    // What other processes may have open under a number or a name that is no path.
    Refusal{SYS_shmget, EPERM},
    Refusal{SYS_shmat, EPERM},
    Refusal{SYS_shmctl, EPERM},
    Refusal{SYS_msgget, EPERM},
    Refusal{SYS_msgsnd, EPERM},
    Refusal{SYS_msgrcv, EPERM},
    Refusal{SYS_msgctl, EPERM},
    Refusal{SYS_semget, EPERM},
    Refusal{SYS_semctl, EPERM},
    Refusal{SYS_mq_open, EPERM},
    Refusal{SYS_mq_unlink, EPERM},
    // Ways around this filter and around Landlock.
    Refusal{kIoUringSetup, ENOSYS},
    Refusal{kIoUringEnter, ENOSYS},
    Refusal{kIoUringRegister, ENOSYS},
    Refusal{SYS_open_by_handle_at, EPERM},
    Refusal{SYS_mount, EPERM},
    Refusal{SYS_umount2, EPERM},
    Refusal{SYS_pivot_root, EPERM},
    Refusal{SYS_chroot, EPERM},
    Refusal{SYS_open_tree, EPERM},
    Refusal{SYS_move_mount, EPERM},
    Refusal{SYS_fsopen, EPERM},
    Refusal{SYS_fsmount, EPERM},
    Refusal{SYS_fspick, EPERM},
    Refusal{kMountSetattr, EPERM},
    Refusal{kOpenTreeAttr, EPERM},
    Refusal{SYS_unshare, EPERM},
    Refusal{SYS_setns, EPERM},
    // Parts of the kernel that an import has no business with.
    Refusal{SYS_bpf, EPERM},
    Refusal{SYS_perf_event_open, EPERM},
    Refusal{SYS_userfaultfd, EPERM},
    Refusal{SYS_keyctl, EPERM},
    Refusal{SYS_add_key, EPERM},
    Refusal{SYS_request_key, EPERM},
    Refusal{SYS_kexec_load, EPERM},
    Refusal{SYS_init_module, EPERM},
    Refusal{SYS_finit_module, EPERM},
    Refusal{SYS_delete_module, EPERM},
    Refusal{SYS_reboot, EPERM},
    Refusal{SYS_swapon, EPERM},
    Refusal{SYS_syslog, EPERM},
};

enum class Holds { allowed, refused };

// A call that is allowed, or refused, exactly when (argument & mask) == value; otherwise the opposite.
struct ArgumentRule {
    int call;
    int argument;
    std::uint64_t mask;
    std::uint64_t value;
    Holds whenEqual;
};

constexpr std::uint64_t kWhole = std::numeric_limits<std::uint64_t>::max();
constexpr std::uint64_t kLowHalf = std::numeric_limits<std::uint32_t>::max(); // of an argument that is an int
constexpr std::uint64_t kNewNamespaces =
    CLONE_NEWNS | CLONE_NEWCGROUP | CLONE_NEWUTS | CLONE_NEWIPC | CLONE_NEWUSER | CLONE_NEWPID | CLONE_NEWNET;

std::array<ArgumentRule, 10> argumentRules(pid_t self) {
    const auto own = static_cast<std::uint64_t>(self);
    return {{
        {SYS_utimensat, 1, kWhole, 0, Holds::allowed}, // no path: the descriptor's own times
        {SYS_clone, 0, CLONE_THREAD | kNewNamespaces, CLONE_THREAD, Holds::allowed}, // threads, no processes
        {SYS_kill, 0, kLowHalf, own, Holds::allowed},
        {SYS_tgkill, 0, kLowHalf, own, Holds::allowed}, // abort() signals itself
        {SYS_prlimit64, 0, kLowHalf, 0, Holds::allowed},
        {SYS_sendto, 4, kWhole, 0, Holds::allowed}, // to whom a socket has been connected, and to nobody else
        {SYS_ioctl, 1, kLowHalf, FS_IOC_SETFLAGS, Holds::refused}, // a file's flags, which a reader may set, too
        {SYS_ioctl, 1, kLowHalf, FS_IOC_FSSETXATTR, Holds::refused},
        {SYS_ioctl, 1, kLowHalf, TIOCSTI, Holds::refused}, // typing into the terminal that the command runs in
        {SYS_ioctl, 1, kLowHalf, 0x541C, Holds::refused},  // TIOCLINUX: the console's clipboard
    }};
}

class FilterProgram {
  public:
    explicit FilterProgram(pid_t self) {
        load(offsetof(seccomp_data, arch));
        skipUnlessEqual(kProcessor, 1);
        add(BPF_JMP | BPF_JA, 1);
        refuse(EPERM); // another processor's calls, such as 32-bit ones
        load(offsetof(seccomp_data, nr));
#if defined(__x86_64__)
        constexpr std::uint32_t kX32Calls = 0x40000000; // the same calls once more, under other numbers
        instructions_.push_back(BPF_JUMP(BPF_JMP | BPF_JGE | BPF_K, kX32Calls, 0, 1));
        refuse(EPERM);
#endif
        for (const Refusal& refusal : kRefusals) {
            skipUnlessEqual(static_cast<std::uint32_t>(refusal.call), 1);
            refuse(refusal.error);
        }
        for (const ArgumentRule& rule : argumentRules(self)) addRule(rule);
        add(BPF_RET | BPF_K, SECCOMP_RET_ALLOW);
    }

    sock_fprog program() { return {static_cast<unsigned short>(instructions_.size()), instructions_.data()}; }

  private:
    void add(std::uint16_t code, std::uint32_t value) { instructions_.push_back(BPF_STMT(code, value)); }
    void load(std::size_t offset) { add(BPF_LD | BPF_W | BPF_ABS, static_cast<std::uint32_t>(offset)); }
    void refuse(int error) { add(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | static_cast<std::uint32_t>(error)); }
    void skipUnlessEqual(std::uint32_t value, std::uint8_t count) {
        instructions_.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, value, 0, count));
    }

    // The call's number is loaded again after each rule: comparing an argument overwrites it, and a call may have more
    // than one rule.
    void addRule(const ArgumentRule& rule) {
        constexpr std::uint8_t kRuleLength = 8;
        skipUnlessEqual(static_cast<std::uint32_t>(rule.call), kRuleLength);
        const std::size_t argument =
            offsetof(seccomp_data, args) + static_cast<std::size_t>(rule.argument) * sizeof(std::uint64_t);
        compareHalf(argument, rule.mask, rule.value, 4); // little-endian: the low half comes first
        compareHalf(argument + sizeof(std::uint32_t), rule.mask >> 32, rule.value >> 32, 1);
        if (rule.whenEqual == Holds::allowed) {
            add(BPF_JMP | BPF_JA, 1);
            refuse(EPERM);
        } else {
            refuse(EPERM);
            add(BPF_JMP | BPF_JA, 0);
        }
        load(offsetof(seccomp_data, nr));
    }
    void compareHalf(std::size_t offset, std::uint64_t mask, std::uint64_t value, std::uint8_t unequalSkips) {
        load(offset);
        add(BPF_ALU | BPF_AND | BPF_K, static_cast<std::uint32_t>(mask & kLowHalf));
        skipUnlessEqual(static_cast<std::uint32_t>(value & kLowHalf), unequalSkips);
    }

    std::vector<sock_filter> instructions_;
};

} // namespace

bool systemCallFilterAvailable() {
    const std::uint32_t action = SECCOMP_RET_ERRNO;
    return kProcessor != 0 && ::syscall(SYS_seccomp, SECCOMP_GET_ACTION_AVAIL, 0U, &action) == 0;
}

Result<> filterSystemCalls() {
    FilterProgram filter(::getpid());
    sock_fprog program = filter.program();
    if (::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0)
        return failure(Error::withDescription(kPOSIXErrorDomain, errno, "prctl(PR_SET_SECCOMP)"));
    return {};
}

} // namespace platform
