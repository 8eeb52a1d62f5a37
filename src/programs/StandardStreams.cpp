#include "programs/StandardStreams.h"

#include <cerrno>
#include <cstdio>
#include <string>

#include <fcntl.h>
#include <fmt/core.h>
#include <unistd.h>

#include "platform/base/SystemLog.h"

namespace quillet {

void occupyStandardDescriptors() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(descriptor, F_GETFD) != -1 || errno != EBADF) continue;
        // The wrong way round: who reads or writes is told so. The lowest free number is this one.
        (void)::open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
}

void printMessage(std::string_view program, std::string_view message) {
    printErrorLine(fmt::format("{}: {}", program, message));
}

void printErrorLine(std::string_view line) {
    const std::string safe = platform::escapedForTerminal(line) + "\n";
    (void)std::fwrite(safe.data(), 1, safe.size(), stderr);
}

} // namespace quillet
