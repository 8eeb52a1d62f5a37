#include "enex/EvernoteXMLResource.h"

#include <cerrno>

#include <fcntl.h>

#include "platform/files/FileDescriptor.h"
#include "platform/foundation/Base64.h"
#include "platform/foundation/Digest.h"
#include "platform/foundation/StringTable.h"

namespace quillet {

using platform::Data;
using platform::Result;

namespace {

platform::Error resourceError(EvernoteXMLResourceError code) {
    const auto description = code == EvernoteXMLResourceError::noContentData
                                 ? platform::localizable("No content data for resource.")
                                 : platform::localizable("Invalid content data for resource.");
    return platform::Error::withDescription(EvernoteXMLResourceErrorDomain, static_cast<std::int64_t>(code),
                                            platform::localizedString(description));
}

} // namespace

// The decoder passes over line breaks wherever they stand, those at the ends too.
Result<Data> EvernoteXMLResource::getContentData() {
    if (contentData_) return *contentData_;
    if (base64Text_.empty()) return platform::failure(resourceError(EvernoteXMLResourceError::noContentData));
    auto bytes = platform::base64Decoded(base64Text_);
    if (!bytes) return platform::failure(resourceError(EvernoteXMLResourceError::invalidContentData));
    contentData_ = Data(*std::move(bytes));
    base64Text_ = std::string(); // frees the memory, which clear() would not
    return *contentData_;
}

Result<std::string> EvernoteXMLResource::md5Hash() {
    if (!cachedMD5Hash_) {
        const Data data = TRY(getContentData());
        cachedMD5Hash_ = platform::hexadecimalString(platform::md5Checksum(data.bytes()));
    }
    return *cachedMD5Hash_;
}

Result<> EvernoteXMLResource::writeToURL(const platform::URL& url) {
    const Data data = TRY(getContentData());
    const std::string path = url.path();
    // A link planted under the name is not followed, and a FIFO does not make the open wait.
    constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    constexpr mode_t kMode = 0666; // what the umask leaves
    const platform::FileDescriptor file(::open(path.c_str(), kFlags, kMode));
    if (!file) return platform::failure(platform::errorFromErrno(errno, platform::FileAccess::writing, path));
    return platform::writeAll(file.get(), data.bytes(), path);
}

std::string EvernoteXMLResource::base64Data() const {
    std::string result;
    appendBase64DataTo(result);
    return result;
}

void EvernoteXMLResource::appendBase64DataTo(std::string& out) const {
    if (contentData_) {
        platform::appendBase64(out, contentData_->bytes());
    } else {
        out += base64Text_;
    }
}

} // namespace quillet
