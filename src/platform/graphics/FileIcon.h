// What a file looks like in an icon view. Drawn here, so that it does not depend on a desktop's icon theme.
#pragma once

#include <string_view>

#include "platform/graphics/Image.h"

namespace platform {

class FileWrapper;

inline constexpr double kFileIconSide = 32; // points

// A folder for a directory, else a sheet with the sign of the file's kind, by the extension of its name.
Image iconForFileWrapper(const FileWrapper& wrapper);
// A sheet with the sign of that uniform type's kind; an empty sheet for an unknown one.
Image iconForContentType(std::string_view typeIdentifier);

} // namespace platform
