#include "documents/QLTWebLinkFile.h"

#include <utility>

#include "platform/base/Value.h"
#include "platform/files/FileManager.h"
#include "platform/files/ResourceValues.h"
#include "platform/foundation/StringTable.h"
#include "platform/plist/PropertyList.h"
#include "util/FileNames.h"

namespace quillet {

using platform::Dictionary;
using platform::Result;
using platform::Value;

namespace {

constexpr std::string_view kURLKey = "URL", kRenameKey = "QLTRenameOnFirstLoad";
constexpr std::string_view kNoURL = platform::localizable("No URL.");
constexpr std::string_view kInvalid = platform::localizable("The file is not a valid webloc file.");

platform::Error webLinkError(QLTWebLinkFileErrorCode code, std::string_view message) {
    return platform::Error::withDescription(QLTWebLinkFileErrorDomain, code, platform::localizedString(message));
}

// Where the host begins in an address, and whether there is one: behind "//" and what says who asks ("user:password@").
std::optional<std::size_t> hostPosition(std::string_view address) {
    const std::size_t slashes = address.find("//");
    if (slashes == std::string_view::npos) return std::nullopt;
    const std::size_t start = slashes + 2;
    const std::string_view authority = address.substr(start, address.find_first_of("/?#", start) - start);
    const std::size_t userEnd = authority.rfind('@');
    return userEnd == std::string_view::npos ? start : start + userEnd + 1;
}

} // namespace

Result<std::unique_ptr<QLTWebLinkFile>> QLTWebLinkFile::initWithFileURL(const platform::URL& fileURL) {
    auto file = std::make_unique<QLTWebLinkFile>();
    TRY(file->readFromURL(fileURL));
    return file;
}

bool QLTWebLinkFile::canInitWithURL(const platform::URL& url) {
    return url.scheme().starts_with("http");
}

std::u16string QLTWebLinkFile::suggestedNameForURL(const std::optional<platform::URL>& url) {
    const std::optional<std::string> host = url ? url->host() : std::nullopt;
    std::u16string name = stringSanitizedForFileName(platform::utf16FromUTF8(host.value_or("")));
    if (name.empty()) name = platform::utf16FromUTF8(platform::localizedString("Untitled Web Link"));
    return stringSanitizedForFileName(name);
}

std::string QLTWebLinkFile::summaryStringForURL(const platform::URL& url) {
    const std::string& address = url.absoluteString();
    const std::optional<std::string> host = url.host();
    const auto position = hostPosition(address);
    if (!host || host->empty() || !position) return address;

    std::string_view summary = std::string_view(address).substr(*position);
    if (url.query()) summary = summary.substr(0, summary.find('?'));
    const std::size_t hostEnd = std::min(summary.find_first_of(":/?#"), summary.size());
    if (summary.size() == hostEnd + 1 && summary.ends_with('/')) summary.remove_suffix(1);
    return std::string(summary);
}

Result<std::string> QLTWebLinkFile::webLinkData() const {
    if (!url_) return platform::failure(webLinkError(QLTWebLinkFileNoURLErrorCode, kNoURL));
    Dictionary link{{std::string(kURLKey), Value(url_->absoluteString())}};
    if (renameOnFirstLoad_) link.emplace(kRenameKey, Value(true));
    return platform::xmlDataFromPropertyList(link);
}

Result<> QLTWebLinkFile::writeToURL(const platform::URL& fileURL) const {
    const std::string bytes = TRY(webLinkData());
    // What the file system says of an old file stays with the new one that takes its place, save when it was changed.
    platform::ResourceValues values = platform::resourceValuesOfItemAtURL(fileURL).value_or(platform::ResourceValues());
    values.contentModificationDate.reset();
    if (!values.hasHiddenExtension) values.hasHiddenExtension = true;
    TRY(platform::writeContents(bytes, fileURL));
    // A file system that keeps no flags keeps the address all the same.
    (void)platform::setResourceValuesOfItemAtURL(values, fileURL);
    return {};
}

Result<> QLTWebLinkFile::readFromURL(const platform::URL& fileURL) {
    constexpr std::size_t kLargestFile = 1 << 24;
    const platform::Data bytes = TRY(platform::contentsAtURL(fileURL, kLargestFile));
    const Value root = TRY(platform::propertyListFromData(bytes.bytes()));
    const auto* link = root.as<Dictionary>();
    if (!link) return platform::failure(webLinkError(QLTWebLinkFileInvalidFormatErrorCode, kInvalid));
    const Value* address = platform::find(*link, kURLKey);
    if (!address || !address->as<std::u16string>())
        return platform::failure(webLinkError(QLTWebLinkFileNoURLErrorCode, kNoURL));
    url_ = platform::URL::fromString(address->utf8());
    const Value* renames = platform::find(*link, kRenameKey);
    renameOnFirstLoad_ = renames && renames->boolValue();
    return {};
}

} // namespace quillet
