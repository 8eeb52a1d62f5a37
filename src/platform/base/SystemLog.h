// Counterpart of NSLog: diagnostics of the conversion, for those who look after the machine.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace platform {

// One entry, in UTF-8; goes to the journal or syslog unless a sink is set. Callable from any thread.
void systemLog(std::string_view entry);

// Where entries go instead; an empty function restores syslog. Returns the sink before. Calls to a sink are
// serialised.
using SystemLogSink = std::function<void(std::string_view entry)>;
SystemLogSink setSystemLogSink(SystemLogSink sink);

// The text with every control and format character that could act on a terminal written as \u{hex}; UTF-8 in and out,
// ill-formed bytes become U+FFFD.
std::string escapedForTerminal(std::string_view text);

} // namespace platform
