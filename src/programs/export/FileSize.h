// How large an attachment's file is.
#pragma once

#include <cstddef>

namespace platform {
class FileWrapper;
}

namespace quillet {

// Bytes; of a directory, those of all its files together.
std::size_t sizeOfFiles(const platform::FileWrapper& wrapper);

} // namespace quillet
