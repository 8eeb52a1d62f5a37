// A web address as a document: a property list "Name.webloc" that browsers and file managers open.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/Result.h"
#include "platform/foundation/URL.h"

namespace platform {
class Pasteboard;
}

namespace quillet {

inline constexpr std::string_view QLTWebLinkFileErrorDomain = "QLTWebLinkFileErrorDomain";
enum QLTWebLinkFileErrorCode : std::int64_t {
    QLTWebLinkFileNoURLErrorCode = 10001,
    QLTWebLinkFileInvalidFormatErrorCode = 10002,
};

// A browser's pasteboard type: an array whose first element is an array of addresses, its second one of titles.
inline constexpr std::string_view QLTWebURLsWithTitlesPboardType = "WebURLsWithTitlesPboardType";
// Addresses of a browser's reader view begin so.
inline constexpr std::u16string_view QLTFirefoxReaderURLPrefix = u"about:reader";

class QLTWebLinkFile {
  public:
    QLTWebLinkFile() = default;
    // @sel initWithFileURL:error:
    static platform::Result<std::unique_ptr<QLTWebLinkFile>> initWithFileURL(const platform::URL& fileURL);

    const std::optional<platform::URL>& URL() const { return url_; }
    void setURL(std::optional<platform::URL> url) { url_ = std::move(url); }
    // The name is provisional: the page's title replaces it when the page is first loaded.
    bool renameOnFirstLoad() const { return renameOnFirstLoad_; }
    void setRenameOnFirstLoad(bool renames) { renameOnFirstLoad_ = renames; }

    // Whether the address's scheme begins with "http".
    static bool canInitWithURL(const platform::URL& url);
    // The host as a file name; without one, "Untitled Web Link".
    static std::u16string suggestedNameForURL(const std::optional<platform::URL>& url);
    // The address from its host on and without its query; without host, the whole address.
    static std::string summaryStringForURL(const platform::URL& url);
    std::string summaryString() const { return url_ ? summaryStringForURL(*url_) : std::string(); }

    // Every web address on the pasteboard once, in no particular order; nothing when rich text is offered but cannot be
    // read.
    static std::optional<std::vector<platform::URL>> webLinkURLsOnPasteboard(const platform::Pasteboard& pasteboard);

    // The file's bytes. @sel webLinkData:
    platform::Result<std::string> webLinkData() const;
    // An existing file keeps its hidden-extension flag, a new one hides its extension. @sel writeToURL:error:
    platform::Result<> writeToURL(const platform::URL& fileURL) const;
    // On failure the document is left as it was. @sel readFromURL:error:
    platform::Result<> readFromURL(const platform::URL& fileURL);

  private:
    std::optional<platform::URL> url_;
    bool renameOnFirstLoad_ = false;
};

} // namespace quillet
