// The rows of the text classes, one function a source file; TextCoding.h registers them.
#pragma once

#include <vector>

#include "platform/archive/ClassRegistry.h"

namespace platform {

std::vector<ArchivableClass> archivableAttributedStringClasses();
std::vector<ArchivableClass> archivableParagraphStyleClasses();
std::vector<ArchivableClass> archivableTextBlockClasses();
std::vector<ArchivableClass> archivableTextAttachmentClasses();

} // namespace platform
