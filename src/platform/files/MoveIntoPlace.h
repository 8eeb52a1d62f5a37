// Renaming inside one directory without ever replacing something unasked.
#pragma once

#include <string>

namespace platform {

enum class EntryKind { file, directory };
// Not every file system knows the flags of renameat2 (EINVAL); `without` takes the other way from the start.
enum class RenameFlags { tryThem, without };

// All answer 0 or an errno. EEXIST: the name is taken, nothing has changed.
int moveWithoutReplacing(int directory, const std::string& from, const std::string& to, EntryKind kind,
                         RenameFlags flags = RenameFlags::tryThem);

// Puts `from` in the place of `to`, and what was there under the name `from`; one step where the flags are known.
// Without them there is a moment in which `to` is absent, and on failure it is put back. ENOENT: there is no `to`.
int exchange(int directory, const std::string& from, const std::string& to, RenameFlags flags = RenameFlags::tryThem);

} // namespace platform
