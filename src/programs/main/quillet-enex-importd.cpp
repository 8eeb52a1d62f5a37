// The service: started by the bus when somebody calls, gone when nobody has called for a while. With --worker it is the
// confined process of one import, started by the service.
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string_view>

#include <fmt/core.h>

#include "platform/foundation/Environment.h"
#include "platform/ipc/Listener.h"
#include "programs/RegisterClasses.h"
#include "programs/StandardStreams.h"
#include "service/ImportWorker.h"
#include "service/ServiceDelegate.h"

namespace quillet {
namespace {

constexpr std::string_view kProgram = "quillet-enex-importd";
constexpr int kWrongUsage = 64;  // EX_USAGE
constexpr int kUnavailable = 69; // EX_UNAVAILABLE
constexpr std::string_view kWorkerArgument = "--worker";
constexpr std::chrono::milliseconds kIdleTime = std::chrono::seconds(30);

constexpr std::string_view kHelp = R"(Usage: quillet-enex-importd [OPTION]

Imports Evernote exports on behalf of other programs. The session bus starts it
when it is called and it leaves after 30 seconds without work; there is no need
to start it by hand.

  --version     print the version
  -h, --help    print this text

QUILLET_IDLE_TIME_MS in the environment changes the 30 seconds, in milliseconds.
See quillet-enex-importd(1) for the bus interface.
)";

std::chrono::milliseconds idleTime() {
    const std::string_view text = [] {
        const char* value = std::getenv("QUILLET_IDLE_TIME_MS");
        return std::string_view(value ? value : "");
    }();
    std::chrono::milliseconds::rep milliseconds = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), milliseconds);
    const bool isNumber = failure == std::errc() && end == text.data() + text.size();
    constexpr auto kLongest = std::numeric_limits<std::int32_t>::max();
    return isNumber && milliseconds >= 0 && milliseconds <= kLongest ? std::chrono::milliseconds(milliseconds)
                                                                     : kIdleTime;
}

int serve() {
    // The worker is this very program, also when a newer one has been installed meanwhile.
    ServiceDelegate delegate({.path = "/proc/self/exe", .arguments = {std::string(kWorkerArgument)}});
    platform::Listener listener(serviceDescription(), delegate, idleTime());
    if (const auto end = listener.run(); !end) {
        printMessage(kProgram, end.error().localizedDescription());
        return kUnavailable;
    }
    return EXIT_SUCCESS;
}

int run(int argc, char** argv) {
    const std::string_view argument = argc > 1 ? argv[1] : "";
    if (argc == 1) return serve();
    if (argc == 2 && argument == kWorkerArgument) {
        registerClasses();
        runWorker(importInWorker);
    }
    if (argc == 2 && (argument == "-h" || argument == "--help")) {
        fmt::print("{}", kHelp);
    } else if (argc == 2 && argument == "--version") {
        fmt::print("quillet-enex-importd {}\n", platform::Environment::current().bundleShortVersion);
    } else {
        printMessage(kProgram, "no such option; --help says more");
        return kWrongUsage;
    }
    return EXIT_SUCCESS;
}

} // namespace
} // namespace quillet

int main(int argc, char** argv) {
    quillet::occupyStandardDescriptors();
    return quillet::run(argc, argv);
}
