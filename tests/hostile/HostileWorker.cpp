// A worker whose body attacks instead of importing: confined exactly as the real one, it tries the one thing that its
// argument names. An attack that works is reported as a written note, one that is refused as a failed note with errno.
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <map>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/ptrace.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "enex/EvernoteXMLParseOperation.h"
#include "service/ImportWorker.h"

namespace {

using namespace quillet;
using platform::Error;
using platform::Value;

struct Target {
    std::string inside;  // the destination
    std::string outside; // a directory beside it
    platform::MessageChannel& channel;
};

int answer(long result) {
    return result < 0 ? errno : 0;
}

int opened(const std::string& path, int flags) {
    return answer(::open(path.c_str(), flags, 0600));
}

template<class Address>
int connected(int family, int type, const Address& address) {
    const int descriptor = ::socket(family, type, 0);
    if (descriptor < 0) return errno;
    return answer(::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address));
}

sockaddr_in loopback() {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(9);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

// Pages are touched only now and then: the limit is on addresses.
int filledMemory() {
    constexpr std::size_t kPiece = std::size_t{64} << 20, kPieces = 80;
    std::vector<char*> pieces;
    for (std::size_t count = 0; count < kPieces; ++count) {
        char* piece = new (std::nothrow) char[kPiece];
        if (!piece) return ENOMEM;
        *piece = 'x';
        pieces.push_back(piece);
    }
    return 0;
}

const std::map<std::string, std::function<int(const Target&)>> kAttacks{
    {"read outside", [](const Target& target) { return opened(target.outside + "/secret", O_RDONLY); }},
    {"read a system file", [](const Target&) { return opened("/etc/passwd", O_RDONLY); }},
    {"list outside", [](const Target& target) { return opened(target.outside, O_RDONLY | O_DIRECTORY); }},
    {"write outside", [](const Target& target) { return opened(target.outside + "/secret", O_WRONLY); }},
    {"make outside", [](const Target& target) { return opened(target.outside + "/new", O_WRONLY | O_CREAT); }},
    {"move out",
     [](const Target& target) {
         if (opened(target.inside + "/loot", O_WRONLY | O_CREAT) != 0) return 0;
         return answer(::rename((target.inside + "/loot").c_str(), (target.outside + "/loot").c_str()));
     }},
    {"read through a planted link", [](const Target& target) { return opened(target.inside + "/link", O_RDONLY); }},
    {"write through a planted link", [](const Target& target) { return opened(target.inside + "/link", O_WRONLY); }},
    {"plant a link",
     [](const Target& target) { return answer(::symlink("/etc/passwd", (target.inside + "/planted").c_str())); }},
    {"start a program", [](const Target&) { return answer(::execl("/bin/true", "true", nullptr)); }},
    {"start a process", [](const Target&) { return answer(::fork()); }},
    {"connect by TCP", [](const Target&) { return connected(AF_INET, SOCK_STREAM, loopback()); }},
    {"connect by UDP", [](const Target&) { return connected(AF_INET, SOCK_DGRAM, loopback()); }},
    {"connect to the bus",
     [](const Target&) {
         return connected(AF_UNIX, SOCK_STREAM, sockaddr_un{AF_UNIX, "/run/dbus/system_bus_socket"});
     }},
    {"trace", [](const Target&) { return answer(::ptrace(PTRACE_ATTACH, ::getppid(), nullptr, nullptr)); }},
    {"kill the service", [](const Target&) { return answer(::kill(::getppid(), SIGKILL)); }},
    {"chmod outside", [](const Target& target) { return answer(::chmod((target.outside + "/secret").c_str(), 0777)); }},
    {"setxattr outside",
     [](const Target& target) {
         return answer(::setxattr((target.outside + "/secret").c_str(), "user.hostile", "", 0, 0));
     }},
    {"utime outside",
     [](const Target& target) {
         return answer(::utimensat(AT_FDCWD, (target.outside + "/secret").c_str(), nullptr, 0));
     }},
    {"fill memory", [](const Target&) { return filledMemory(); }},
    // These do not come back.
    {"crash", [](const Target&) -> int { std::abort(); }},
    {"leave", [](const Target&) -> int { std::_Exit(0); }},
    {"stall",
     [](const Target&) -> int {
         for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
     }},
    {"talk nonsense",
     [](const Target& target) -> int {
         (void)target.channel.send({{"surprise", Value(true)}});
         for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
     }},
};

std::optional<Error> attack(const std::string& name, const WorkerRequest& request, const WorkerReport& report,
                            platform::MessageChannel& channel) {
    const std::string inside = request.directory.path();
    const int refusal = kAttacks.at(name)(Target{inside, inside + "/../outside", channel});
    if (refusal == 0) {
        report.exported(ItemEntry{{"name", Value(name)}});
    } else {
        report.exported(
            platform::failure(Error(platform::kPOSIXErrorDomain, refusal, {{std::string(kNoteNameKey), Value(name)}})));
    }
    return std::nullopt;
}

} // namespace

int main(int argc, char** argv) {
    const std::string name = argc > 1 ? argv[1] : "";
    quillet::runWorker([&name](const auto& request, const auto& report, auto& channel) {
        return attack(name, request, report, channel);
    });
}
