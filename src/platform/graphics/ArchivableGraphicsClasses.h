// The rows of the graphics classes, one function a source file; GraphicsCoding.h registers them.
#pragma once

#include <vector>

#include "platform/archive/ClassRegistry.h"

namespace platform {

std::vector<ArchivableClass> archivableFontClasses();
std::vector<ArchivableClass> archivableColorClasses();

} // namespace platform
