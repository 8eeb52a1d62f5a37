// Fonts and colors in keyed archives.
#pragma once

namespace platform {

// NSFont (Font), NSColor (Color) and NSColorSpace.
void registerArchivableGraphicsClasses();

} // namespace platform
