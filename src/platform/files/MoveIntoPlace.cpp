#include "platform/files/MoveIntoPlace.h"

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/files/FileDescriptor.h"

namespace platform {

namespace {

// A placeholder reserves the name, since making it fails when the name is taken; renaming over one's own empty
// placeholder then replaces nothing. A directory that somebody has filled meanwhile refuses to be replaced.
int moveOverPlaceholder(int directory, const std::string& from, const std::string& to, EntryKind kind) {
    if (kind == EntryKind::directory) {
        if (::mkdirat(directory, to.c_str(), 0700) != 0) return errno;
    } else if (!openAt(directory, to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600)) {
        return errno;
    }
    if (::renameat(directory, from.c_str(), directory, to.c_str()) == 0) return 0;
    const int reason = errno;
    ::unlinkat(directory, to.c_str(), kind == EntryKind::directory ? AT_REMOVEDIR : 0);
    return reason == ENOTEMPTY ? EEXIST : reason;
}

} // namespace

int moveWithoutReplacing(int directory, const std::string& from, const std::string& to, EntryKind kind,
                         RenameFlags flags) {
    if (flags == RenameFlags::tryThem) {
        if (::renameat2(directory, from.c_str(), directory, to.c_str(), RENAME_NOREPLACE) == 0) return 0;
        if (errno != EINVAL && errno != ENOSYS) return errno;
    }
    if (kind == EntryKind::file) {
        if (::linkat(directory, from.c_str(), directory, to.c_str(), 0) == 0)
            return ::unlinkat(directory, from.c_str(), 0) == 0 ? 0 : errno;
        if (errno == EEXIST || errno == ENOENT || errno == ENOSPC || errno == ENAMETOOLONG) return errno;
    }
    return moveOverPlaceholder(directory, from, to, kind);
}

int exchange(int directory, const std::string& from, const std::string& to, RenameFlags flags) {
    if (flags == RenameFlags::tryThem) {
        if (::renameat2(directory, from.c_str(), directory, to.c_str(), RENAME_EXCHANGE) == 0) return 0;
        if (errno != EINVAL && errno != ENOSYS) return errno;
    }
    // Not under the temporary name's prefix: should the process die here, no sweep may take the old entry for a
    // leftover.
    const std::string aside = ".old" + from;
    if (::renameat(directory, to.c_str(), directory, aside.c_str()) != 0) return errno;
    if (::renameat(directory, from.c_str(), directory, to.c_str()) != 0) {
        const int reason = errno;
        ::renameat(directory, aside.c_str(), directory, to.c_str());
        return reason;
    }
    return ::renameat(directory, aside.c_str(), directory, from.c_str()) == 0 ? 0 : errno;
}

} // namespace platform
