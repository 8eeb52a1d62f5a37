// The extended attributes that hold a file's resource values.
#pragma once

namespace platform {

inline constexpr const char* kFinderInfoAttribute = "user.com.apple.FinderInfo";
inline constexpr const char* kCreationDateAttribute = "user.com.tesseral.quillet.creationDate";
inline constexpr const char* kSharedTagsAttribute = "user.xdg.tags";
inline constexpr const char* kExactTagsAttribute = "user.com.apple.metadata:_kMDItemUserTags";

} // namespace platform
