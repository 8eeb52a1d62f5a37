// Listing directories, and removing whole trees of any depth without following a link out of them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/base/Result.h"

namespace platform {

// Removes the entry of the directory, with all in it when it is a directory. Symbolic links are removed, never
// followed. Needs two descriptors whatever the depth. An absent entry is no error. On failure what could not be
// removed stays, and the error names it; `directoryPath` is for that error.
Result<> removeTree(int directory, std::string_view name, std::string_view directoryPath);

// The names in an open directory without "." and "..", in the file system's order.
Result<std::vector<std::string>> entryNames(int directory, std::string_view path);

} // namespace platform
