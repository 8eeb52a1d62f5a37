// File wrappers in keyed archives.
#pragma once

namespace platform {

// NSFileWrapper (FileWrapper): its serialized form under one key.
void registerArchivableFileWrapper();

} // namespace platform
