#include "platform/ipc/LandlockRules.h"

#include <array>
#include <cerrno>
#include <cstdint>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include "platform/ipc/Descriptor.h"

namespace platform {

namespace {

// The kernel's interface, written out: the headers of a stable distribution know only its first versions.
struct RulesetAttributes {
    std::uint64_t handledFileAccess;
    std::uint64_t handledNetworkAccess;
    std::uint64_t scoped;
};
struct __attribute__((packed)) PathBeneathAttributes {
    std::uint64_t allowedAccess;
    std::int32_t parentDescriptor;
};
constexpr unsigned kCreateRulesetVersion = 1;
constexpr int kRulePathBeneath = 1;
constexpr int kFirstUsableVersion = 2;

constexpr std::uint64_t bit(int number) {
    return std::uint64_t{1} << number;
}

constexpr std::uint64_t kWriteFile = bit(1), kReadFile = bit(2), kReadDirectory = bit(3), kRemoveDirectory = bit(4),
                        kRemoveFile = bit(5), kMakeDirectory = bit(7), kMakeRegularFile = bit(8), kRefer = bit(13),
                        kTruncate = bit(14);
constexpr std::uint64_t kFileRights = kWriteFile | kReadFile | kTruncate;

// What each version can rule over. Everything that is ruled over is forbidden unless a rule allows it.
struct Version {
    int version;
    std::uint64_t fileAccess;
    std::uint64_t networkAccess; // TCP bind and connect
    std::uint64_t scoped;        // abstract sockets and signals to the outside
};
constexpr std::array kVersions{
    Version{2, bit(14) - 1, 0, 0},
    Version{3, bit(15) - 1, 0, 0},
    Version{4, bit(15) - 1, bit(0) | bit(1), 0},
    Version{5, bit(16) - 1, bit(0) | bit(1), 0},
    Version{6, bit(16) - 1, bit(0) | bit(1), bit(0) | bit(1)},
};

struct AccessRow {
    PathAccess access;
    std::uint64_t rights;
};
constexpr std::array kAccesses{
    AccessRow{PathAccess::readFile, kReadFile},
    AccessRow{PathAccess::readTree, kReadFile | kReadDirectory},
    AccessRow{PathAccess::writeTree, kReadFile | kReadDirectory | kWriteFile | kTruncate | kMakeDirectory |
                                         kMakeRegularFile | kRemoveFile | kRemoveDirectory | kRefer},
};

std::uint64_t rightsFor(PathAccess access) {
    for (const AccessRow& row : kAccesses)
        if (row.access == access) return row.rights;
    return 0;
}

Version rulesOf(int version) {
    Version newest = kVersions.front();
    for (const Version& row : kVersions)
        if (row.version <= version) newest = row;
    return newest;
}

Error kernelError(std::string_view what, int errorNumber) {
    return Error::withDescription(kPOSIXErrorDomain, errorNumber, what);
}

Result<> allow(int ruleset, const AllowedPath& path, std::uint64_t handled) {
    const Descriptor target(::open(path.path.c_str(), O_PATH | O_CLOEXEC));
    struct stat status{};
    if (target.get() < 0 || ::fstat(target.get(), &status) != 0) return {}; // nothing there to reach
    std::uint64_t rights = rightsFor(path.access) & handled;
    // The kernel refuses rights over directories for what is none; a rule for one file is not to open a directory.
    if (!S_ISDIR(status.st_mode)) rights &= kFileRights;
    if (S_ISDIR(status.st_mode) && path.access == PathAccess::readFile) return {};
    const PathBeneathAttributes attributes{rights, target.get()};
    if (::syscall(SYS_landlock_add_rule, ruleset, kRulePathBeneath, &attributes, 0) == 0) return {};
    if (errno == EBADFD) return {}; // a pipe or a socket, as /dev/stdin may be: no rule is about it
    return failure(kernelError("landlock_add_rule: " + path.path, errno));
}

} // namespace

int landlockVersion() {
    const long version = ::syscall(SYS_landlock_create_ruleset, nullptr, std::size_t{0}, kCreateRulesetVersion);
    return version >= kFirstUsableVersion ? static_cast<int>(version) : 0;
}

Result<> restrictPaths(std::span<const AllowedPath> paths, int version) {
    const Version rules = rulesOf(version);
    const RulesetAttributes attributes{rules.fileAccess, rules.networkAccess, rules.scoped};
    // An older kernel refuses a longer structure unless what it does not know is zero, which the table sees to.
    const Descriptor ruleset(
        static_cast<int>(::syscall(SYS_landlock_create_ruleset, &attributes, sizeof attributes, 0U)));
    if (ruleset.get() < 0) return failure(kernelError("landlock_create_ruleset", errno));
    for (const AllowedPath& path : paths) TRY(allow(ruleset.get(), path, rules.fileAccess));
    if (::syscall(SYS_landlock_restrict_self, ruleset.get(), 0U) != 0)
        return failure(kernelError("landlock_restrict_self", errno));
    return {};
}

} // namespace platform
