// What an attachment's group says besides its name.
#pragma once

#include "platform/rtf/RTFWriter.h"

namespace platform {

struct CellSize {
    double width = 0, height = 0; // points
};

// A picture's own size, one point a pixel; an icon with the name below for anything else.
CellSize attachmentCellSize(const RTFDEntry& entry);

// The entry's file as a wrapper of its own (the attachment's keeps its name); contents are shared, not copied.
std::shared_ptr<FileWrapper> fileForEntry(const RTFDEntry& entry);

} // namespace platform
