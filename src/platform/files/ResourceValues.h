// Counterpart of the URL resource values that files carry beside their bytes. What Linux has no place for lives in
// extended attributes:
//
//     modification date      the file's mtime
//     creation date          user.com.tesseral.quillet.creationDate, ISO 8601 in UTC
//     tags                   user.xdg.tags, for file managers, and user.com.apple.metadata:_kMDItemUserTags, exact
//     hidden extension,      user.com.apple.FinderInfo, 32 bytes with big-endian flags at offset 8
//     package flag
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/base/Date.h"
#include "platform/base/Result.h"

namespace platform {

class URL;

// A value that is absent is not read, or not changed.
struct ResourceValues {
    std::optional<bool> hasHiddenExtension;
    std::optional<bool> isPackage;
    std::optional<Date> creationDate;
    std::optional<std::vector<std::u16string>> tagNames; // an empty list removes the tags
    std::optional<Date> contentModificationDate;
    friend bool operator==(const ResourceValues&, const ResourceValues&) = default;
};

// One attribute that the file system would not take: no room, no support, no permission.
struct RefusedAttribute {
    std::string name;
    int errorNumber;
};

// Sets every value that is present: the short attributes first, then the tags, then the modification date, which the
// others would move. What is refused is listed and the rest is set all the same. `descriptor` must be open on the
// file or directory itself (not O_PATH); a directory's times stay only when nothing is made in it afterwards.
std::vector<RefusedAttribute> setResourceValues(int descriptor, const ResourceValues& values);

// "user.xdg.tags (No space left on device), …": for one log line.
std::string descriptionOfRefused(const std::vector<RefusedAttribute>& refused);

// All values of the open file. The creation date is the attribute's, else the file system's birth time; tags without
// the exact attribute are those of user.xdg.tags; no tags give an empty list.
Result<ResourceValues> resourceValues(int descriptor, std::string_view path);
bool hasHiddenExtension(int descriptor);

// The same by URL, without following a symbolic link. Setting is an error (512) when any attribute was refused; the
// description lists all of them.
Result<ResourceValues> resourceValuesOfItemAtURL(const URL& url);
Result<> setResourceValuesOfItemAtURL(const ResourceValues& values, const URL& url);

} // namespace platform
