// Counterpart of NSFileManager, as far as a path or URL is all that is at hand. Outputs go through OutputDirectory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "platform/base/Data.h"
#include "platform/base/Result.h"

namespace platform {

class URL;

// Whether anything is there. The last component is not followed, so a dangling symbolic link is there; what cannot be
// looked up is not, and nothing is under a name with a NUL, which no file system holds.
bool resourceIsReachable(const URL& url);
bool isDirectory(const URL& url); // links followed

// The bytes of a regular file, links followed. Directories, fifos and devices are errors, and so are more than `limit`
// bytes.
Result<Data> contentsAtURL(const URL& url, std::size_t limit = std::numeric_limits<std::uint32_t>::max());

// Writes a regular file. One that exists is replaced in one step when all has been written, and leaves its permissions
// to the new one; what is no regular file, or a link to one, is an error and stays. On failure nothing has changed.
Result<> writeContents(std::string_view bytes, const URL& url);

// A directory readable by its owner alone. Its parent must exist.
Result<> createDirectoryAtURL(const URL& url);
// With all in it; links are removed, not followed. An absent item is no error.
Result<> removeItemAtURL(const URL& url);

// The name to show for a path: its last component, without the extension when that is hidden. A path at which nothing
// is shows its last component.
std::string displayNameAtPath(std::string_view path);

} // namespace platform
