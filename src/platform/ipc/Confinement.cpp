#include "platform/ipc/Confinement.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <iterator>

#include <sys/prctl.h>
#include <sys/resource.h>

#include "platform/ipc/LandlockRules.h"
#include "platform/ipc/SystemCallFilter.h"

namespace platform {

namespace {

// The sanitizers reserve terabytes of address space at the start.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kLimitsAddressSpace = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool kLimitsAddressSpace = false;
#else
constexpr bool kLimitsAddressSpace = true;
#endif
#else
constexpr bool kLimitsAddressSpace = true;
#endif

Error systemError(std::string_view what, int errorNumber) {
    return Error::withDescription(kPOSIXErrorDomain, errorNumber, what);
}

// Lowers a limit for good; one that is lower already stays.
Result<> lowerLimit(__rlimit_resource resource, std::uint64_t value) {
    rlimit limit{};
    if (::getrlimit(resource, &limit) != 0) return failure(systemError("getrlimit", errno));
    limit.rlim_max = std::min<rlim_t>(limit.rlim_max, value);
    limit.rlim_cur = std::min(limit.rlim_cur, limit.rlim_max);
    if (::setrlimit(resource, &limit) != 0) return failure(systemError("setrlimit", errno));
    return {};
}

Result<> lowerLimits(const ResourceLimits& limits) {
    if (kLimitsAddressSpace) TRY(lowerLimit(RLIMIT_AS, limits.addressSpace));
    TRY(lowerLimit(RLIMIT_CORE, 0)); // a dump would hold the notes
    TRY(lowerLimit(RLIMIT_NOFILE, limits.openFiles));
    return lowerLimit(RLIMIT_NPROC, limits.processes);
}

// Without /proc the answer is yes: the caller's word is taken.
bool hasOneThread() {
    std::error_code unreadable;
    const std::filesystem::directory_iterator tasks("/proc/self/task", unreadable);
    return unreadable || std::distance(begin(tasks), end(tasks)) == 1;
}

Confinement level(int landlock, bool filter) {
    if (landlock >= kLandlockWithTruncation && filter) return Confinement::full;
    return landlock > 0 || filter ? Confinement::partial : Confinement::none;
}

} // namespace

std::string_view confinementName(Confinement confinement) {
    constexpr std::array<std::string_view, 3> kNames{"none", "partial", "full"};
    return kNames.at(static_cast<std::size_t>(confinement));
}

Confinement availableConfinement() {
    return level(landlockVersion(), systemCallFilterAvailable());
}

Result<Confinement> confine(std::span<const AllowedPath> paths, const ResourceLimits& limits) {
    if (!hasOneThread()) return failure(systemError("confining a process with more than one thread", EBUSY));
    TRY(lowerLimits(limits));
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) return failure(systemError("prctl(PR_SET_NO_NEW_PRIVS)", errno));
    const int landlock = landlockVersion();
    if (landlock > 0) TRY(restrictPaths(paths, landlock));
    const bool filter = systemCallFilterAvailable();
    if (filter) TRY(filterSystemCalls());
    return level(landlock, filter);
}

} // namespace platform
