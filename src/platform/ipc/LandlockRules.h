// Landlock: the kernel's rules on which parts of the file tree a process may touch.
#pragma once

#include <span>

#include "platform/base/Result.h"
#include "platform/ipc/Confinement.h"

namespace platform {

// The kernel's Landlock version; 0 without Landlock, or where it has no right to rename across directories, which the
// writing of outputs needs (version 1).
int landlockVersion();

// The version from which truncation is ruled over.
inline constexpr int kLandlockWithTruncation = 3;

// From now on the calling thread reaches these paths alone. Needs no_new_privs.
Result<> restrictPaths(std::span<const AllowedPath> paths, int version);

} // namespace platform
