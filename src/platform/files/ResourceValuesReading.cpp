#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include "platform/base/UTF16.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/FinderInfo.h"
#include "platform/files/ResourceAttributeNames.h"
#include "platform/files/ResourceValues.h"
#include "platform/foundation/URL.h"
#include "platform/plist/PropertyList.h"

namespace platform {

namespace {

// Nothing when the file has no such attribute, or not one that can be read.
std::optional<std::string> attribute(int descriptor, const char* name) {
    std::string bytes(4096, '\0');
    while (true) {
        const ssize_t size = ::fgetxattr(descriptor, name, bytes.data(), bytes.size());
        if (size >= 0) {
            bytes.resize(static_cast<std::size_t>(size));
            return bytes;
        }
        constexpr std::size_t kLargestAttribute = 65536; // Linux allows no more
        if (errno != ERANGE || bytes.size() >= kLargestAttribute) return std::nullopt;
        bytes.resize(kLargestAttribute);
    }
}

// The number that is all of the text.
std::optional<int> number(std::string_view text) {
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(value) : std::nullopt;
}

// "2024-05-01T09:15:02Z", as this program writes it.
std::optional<Date> dateFromISO8601(std::string_view text) {
    constexpr std::string_view kForm = "0000-00-00T00:00:00Z";
    if (text.size() != kForm.size()) return std::nullopt;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (kForm[i] == '0' ? text[i] < '0' || text[i] > '9' : text[i] != kForm[i]) return std::nullopt;
    const auto part = [text](std::size_t start, std::size_t length) { return *number(text.substr(start, length)); };
    const std::chrono::year_month_day day(std::chrono::year(part(0, 4)),
                                          std::chrono::month(static_cast<unsigned>(part(5, 2))),
                                          std::chrono::day(static_cast<unsigned>(part(8, 2))));
    if (!day.ok() || part(11, 2) > 23 || part(14, 2) > 59 || part(17, 2) > 60) return std::nullopt;
    const auto days = std::chrono::sys_days(day).time_since_epoch().count();
    const auto seconds = part(11, 2) * 3600 + part(14, 2) * 60 + part(17, 2);
    return Date::fromUnixTime(static_cast<double>(days) * 86400 + seconds);
}

std::optional<Date> creationDate(int descriptor) {
    if (const auto text = attribute(descriptor, kCreationDateAttribute))
        if (const auto date = dateFromISO8601(*text)) return date;
    struct statx status{};
    if (::statx(descriptor, "", AT_EMPTY_PATH, STATX_BTIME, &status) != 0 || !(status.stx_mask & STATX_BTIME))
        return std::nullopt;
    return Date::fromUnixTime(static_cast<double>(status.stx_btime.tv_sec) + status.stx_btime.tv_nsec / 1e9);
}

// Without the line feed and the colour's number.
std::u16string tagName(const std::u16string& tag) {
    const std::size_t size = tag.size();
    const bool hasColor = size >= 2 && tag[size - 2] == u'\n' && tag[size - 1] >= u'0' && tag[size - 1] <= u'9';
    return hasColor ? tag.substr(0, size - 2) : tag;
}

std::vector<std::u16string> sharedTags(const std::string& list) {
    constexpr std::string_view kBlanks = " \t";
    std::vector<std::u16string> tags;
    std::string_view rest = list;
    while (!rest.empty()) {
        const std::size_t comma = std::min(rest.find(','), rest.size());
        std::string_view tag = rest.substr(0, comma);
        rest.remove_prefix(std::min(comma + 1, rest.size()));
        tag.remove_prefix(std::min(tag.find_first_not_of(kBlanks), tag.size()));
        tag = tag.substr(0, tag.find_last_not_of(kBlanks) + 1);
        if (!tag.empty()) tags.push_back(utf16FromUTF8(tag));
    }
    return tags;
}

std::vector<std::u16string> tagNames(int descriptor) {
    std::vector<std::u16string> tags;
    if (const auto exact = attribute(descriptor, kExactTagsAttribute)) {
        const auto list = propertyListFromData(*exact);
        if (list && list->as<Array>()) {
            for (const Value& tag : *list->as<Array>())
                if (const auto* text = tag.as<std::u16string>()) tags.push_back(tagName(*text));
            return tags;
        }
    }
    if (const auto shared = attribute(descriptor, kSharedTagsAttribute)) return sharedTags(*shared);
    return tags;
}

// O_NONBLOCK: a fifo must not hold its reader up. Writing values needs no descriptor open for writing.
Result<FileDescriptor> openItem(const URL& url, FileAccess access) {
    const std::string path = url.path();
    FileDescriptor item = openAt(AT_FDCWD, path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
    if (!item) return failure(errorFromErrno(errno, access, path));
    return item;
}

} // namespace

Result<ResourceValues> resourceValues(int descriptor, std::string_view path) {
    struct stat status{};
    if (::fstat(descriptor, &status) != 0) return failure(errorFromErrno(errno, FileAccess::reading, path));
    const FinderInfo info = FinderInfo::ofFile(descriptor);
    ResourceValues values;
    values.hasHiddenExtension = info.flag(FinderInfo::kExtensionHidden);
    values.isPackage = info.flag(FinderInfo::kHasBundle);
    values.creationDate = creationDate(descriptor);
    values.tagNames = tagNames(descriptor);
    values.contentModificationDate = Date::fromUnixTime(static_cast<double>(status.st_mtim.tv_sec) +
                                                        static_cast<double>(status.st_mtim.tv_nsec) / 1e9);
    return values;
}

Result<ResourceValues> resourceValuesOfItemAtURL(const URL& url) {
    const FileDescriptor item = TRY(openItem(url, FileAccess::reading));
    return resourceValues(item.get(), url.path());
}

Result<> setResourceValuesOfItemAtURL(const ResourceValues& values, const URL& url) {
    const FileDescriptor item = TRY(openItem(url, FileAccess::writing));
    const auto refused = setResourceValues(item.get(), values);
    if (refused.empty()) return {};
    Error error = errorFromErrno(refused.front().errorNumber, FileAccess::writing, url.path());
    error.code = static_cast<std::int64_t>(CocoaError::fileWriteUnknown);
    error.userInfo.insert_or_assign(
        std::string(kLocalizedDescriptionKey),
        Value(fmt::format("Cannot set on “{}”: {}", url.path(), descriptionOfRefused(refused))));
    return failure(std::move(error));
}

} // namespace platform
