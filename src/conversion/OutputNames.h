// Names for outputs and scratch files: the numbering of taken names, within what a file system takes.
#pragma once

#include <string>
#include <string_view>

namespace platform {
class OutputDirectory;
}

namespace quillet {

// The name while it is free in the directory, else "Name 1.ext", "Name 2.ext"… A name of more than 255 bytes of UTF-8
// is cut first, the extension kept, with room for the number where one is needed. UTF-8.
std::string freeNameInDirectory(platform::OutputDirectory& directory, std::u16string_view name);

// The name itself when it is one path component, else made into one.
std::u16string namedAsOneComponent(std::u16string_view name);

} // namespace quillet
