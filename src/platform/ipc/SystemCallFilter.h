// The system calls that a confined process is refused, as a filter in the kernel (seccomp).
#pragma once

#include "platform/base/Result.h"

namespace platform {

// Whether the kernel takes filters and this processor's calls are known here.
bool systemCallFilterAvailable();

// From now on the calling thread and those that it starts get an error for each call of the table in the source. Needs
// no_new_privs.
Result<> filterSystemCalls();

} // namespace platform
