// Objects in the user defaults, as securely archived data under a key.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/archive/ArchivedObject.h"
#include "platform/base/Result.h"

namespace platform {
class UserDefaults;
}

namespace quillet {

inline constexpr std::string_view QLTUserDefaultsArchivingErrorDomain = "QLTUserDefaultsArchivingErrorDomain";
enum QLTUserDefaultsArchivingErrorCode : std::int64_t { QLTUserDefaultsArchivingNoDataErrorCode = 10001 };

// An object that cannot be archived leaves no value under the key. @sel archiveObject:forKey:error:
platform::Result<> archiveObject(platform::UserDefaults& defaults, const platform::ArchivedObject& object,
                                 std::string_view key);

// The object under the key, of the class or one derived from it; `contentClasses` are further classes inside it. No
// value is an error (10001), and so are bytes that are no archive; an archive that does not hold such an object gives
// null. What fails is logged, save for the missing value. @sel unarchiveObjectOfClass:forKey:error:
platform::Result<platform::ArchivedObject> unarchiveObjectOfClass(platform::UserDefaults& defaults,
                                                                  std::string_view className, std::string_view key,
                                                                  const std::vector<std::string>& contentClasses = {});

} // namespace quillet
