// Whole exports through the event parser and the reading of notes. The first byte is the size of the pieces; whatever
// the rest is, the import ends once, and each attachment either gives its bytes or an error.
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include <sys/mman.h>
#include <unistd.h>

#include "enex/EvernoteXMLParseOperation.h"
#include "platform/base/SystemLog.h"

namespace {

using platform::Result;
using platform::URL;

void import(const std::string& path, std::size_t pieceSize) {
    quillet::EvernoteXMLParseOperation operation(URL::fileURLWithPath(path), URL::fileURLWithPath("/tmp", true));
    int ends = 0;
    operation.setPieceSize(pieceSize);
    operation.setDebugMode(true);
    operation.getItemDict = [](quillet::EvernoteXMLItem& item) -> Result<std::optional<quillet::ItemEntry>> {
        for (auto& resource : item.resources)
            if (resource.md5Hash().has_value() != resource.getContentData().has_value()) std::abort();
        return quillet::ItemEntry{};
    };
    operation.parseOperationCompletionBlock = [&](const std::optional<platform::Error>&) { ++ends; };
    operation.start();
    if (ends != 1 || !operation.isFinished()) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    platform::setSystemLogSink([](std::string_view) {});
    const int file = ::memfd_create("export", MFD_CLOEXEC);
    if (file < 0 || ::write(file, data + 1, size - 1) != static_cast<ssize_t>(size - 1)) std::abort();
    import("/proc/self/fd/" + std::to_string(file), data[0] == 0 ? 65536 : data[0]);
    ::close(file);
    return 0;
}
