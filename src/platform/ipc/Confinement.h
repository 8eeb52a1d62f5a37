// Takes from the calling process, for good, what reading a stranger's file does not need.
//
// Three layers, each closing what the one before leaves open: Landlock for the file tree, a system call filter for what
// Landlock does not rule over (modes, owners, attributes and times by path, programs, sockets, other processes), and
// resource limits for memory, descriptors and processes. A forbidden call fails with an error; nothing is killed.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "platform/base/Result.h"

namespace platform {

enum class PathAccess {
    readFile,  // one regular file
    readTree,  // a directory and all below it
    writeTree, // that, and making, writing, renaming and removing files and directories below it
};

// One row of what stays within reach. A path that does not exist is passed over.
struct AllowedPath {
    std::string path;
    PathAccess access;
    std::string_view reason;
};

struct ResourceLimits {
    std::uint64_t addressSpace = std::uint64_t{4} << 30; // bytes
    std::uint64_t openFiles = 1024;
    std::uint64_t processes = 4096; // of the user in all; new processes are refused by the filter, threads count here
};

enum class Confinement {
    none,
    partial, // the kernel lacks the filter, Landlock, or Landlock's rights over truncation (before Linux 6.2)
    full,
};
std::string_view confinementName(Confinement confinement); // "none", "partial", "full"

// What confine() reaches on this kernel.
Confinement availableConfinement();

// Confines the process; it stays confined until its end, and so do all that it starts. To be called while the process
// has one thread: Landlock binds the calling thread and those that it starts later, hence more than one is an error.
// What is open stays usable. Answers what is in force; on an error part of it may be.
Result<Confinement> confine(std::span<const AllowedPath> paths, const ResourceLimits& limits = {});

} // namespace platform
