#include "platform/ipc/ServiceManager.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>

#include <sys/socket.h>
#include <sys/un.h>

#include "platform/ipc/Descriptor.h"

namespace platform {

void notifyServiceManager(std::string_view state) {
    const char* path = std::getenv("NOTIFY_SOCKET");
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::size_t length = path ? std::strlen(path) : 0;
    if (length == 0 || length >= sizeof address.sun_path) return;
    std::memcpy(address.sun_path, path, length);
    if (address.sun_path[0] == '@') address.sun_path[0] = '\0'; // an abstract name
    const Descriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + length);
    (void)::sendto(socket.get(), state.data(), state.size(), MSG_NOSIGNAL, reinterpret_cast<const sockaddr*>(&address),
                   size);
}

} // namespace platform
