// What an import may touch: its exports, its destination, and the read-only data that conversion needs.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "platform/ipc/Confinement.h"

namespace quillet {

// One row a path, each with its reason; rows for what does not exist here do no harm.
std::vector<platform::AllowedPath> allowedPathsForImport(std::span<const std::string> exports,
                                                         const std::string& directory);

// Confines the process to these paths, before it reads the first byte of an export. What the kernel cannot do is a line
// in the system log.
platform::Result<> confineForImport(std::span<const std::string> exports, const std::string& directory);

} // namespace quillet
