// Everything that must be registered before rich text is archived or colors are looked up by name.
#pragma once

namespace quillet {

// Called once at the start of each program; calling it again does nothing.
void registerClasses();

} // namespace quillet
