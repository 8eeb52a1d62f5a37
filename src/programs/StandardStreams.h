// The standard descriptors of a program, whatever it was started with.
#pragma once

#include <string_view>

namespace quillet {

// To be called first of all. A descriptor that was closed before the start would be given to the first file that is
// opened: a message would then land in a note or in the log. It is opened here, so that using it fails as before.
void occupyStandardDescriptors();

// "program: message" as a line of standard error, made safe for a terminal. Nobody can be told when that fails.
void printMessage(std::string_view program, std::string_view message);
// A line of standard error as it stands, made safe for a terminal.
void printErrorLine(std::string_view line);

} // namespace quillet
