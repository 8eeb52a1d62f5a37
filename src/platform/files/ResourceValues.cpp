#include "platform/files/ResourceValues.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <set>
#include <string_view>

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <system_error>

#include "platform/base/UTF16.h"
#include "platform/files/FinderInfo.h"
#include "platform/files/ResourceAttributeNames.h"
#include "platform/plist/BinaryPropertyListWriter.h"

namespace platform {

namespace {

class AttributeSetter {
  public:
    explicit AttributeSetter(int descriptor) : descriptor_(descriptor) {}

    void set(const char* name, std::string_view bytes) {
        if (::fsetxattr(descriptor_, name, bytes.data(), bytes.size(), 0) != 0) refuse(name);
    }

    void remove(const char* name) {
        if (::fremovexattr(descriptor_, name) != 0 && errno != ENODATA) refuse(name);
    }

    void setFlags(const ResourceValues& values) {
        if (!values.hasHiddenExtension && !values.isPackage) return;
        FinderInfo info = FinderInfo::ofFile(descriptor_);
        if (values.hasHiddenExtension) info.setFlag(FinderInfo::kExtensionHidden, *values.hasHiddenExtension);
        if (values.isPackage) info.setFlag(FinderInfo::kHasBundle, *values.isPackage);
        if (info.allZero()) {
            remove(kFinderInfoAttribute);
        } else {
            set(kFinderInfoAttribute, info.bytes());
        }
    }

    void setModificationDate(Date date) {
        // Far dates are cut to what a time stamp holds; the file system narrows further without complaint.
        constexpr double kFarthest = 1e15;
        const double unixTime = std::isnan(date.unixTime()) ? 0 : std::clamp(date.unixTime(), -kFarthest, kFarthest);
        const double seconds = std::floor(unixTime);
        std::array<timespec, 2> times{};
        times[0].tv_nsec = UTIME_OMIT;
        times[1].tv_sec = static_cast<time_t>(seconds);
        times[1].tv_nsec = std::min(static_cast<long>((unixTime - seconds) * 1e9), 999'999'999L);
        if (::futimens(descriptor_, times.data()) != 0) refuse("modification date");
    }

    std::vector<RefusedAttribute> takeRefused() { return std::move(refused_); }

  private:
    void refuse(const char* name) { refused_.push_back({name, errno}); }

    int descriptor_;
    std::vector<RefusedAttribute> refused_;
};

// Tags separated by commas: empty ones dropped, repeated ones once. A comma inside a tag becomes U+201A, which looks
// the same and does not separate.
std::string commaSeparated(const std::vector<std::u16string>& tags) {
    std::set<std::u16string_view> seen;
    std::u16string joined;
    for (const std::u16string& tag : tags) {
        if (tag.empty() || !seen.insert(tag).second) continue;
        if (!joined.empty()) joined += u',';
        joined += tag;
        std::replace(joined.end() - static_cast<std::ptrdiff_t>(tag.size()), joined.end(), u',', u'\u201A');
    }
    return utf8FromUTF16(joined);
}

// A tag is its name, with a line feed and the number of its colour when it has one. A name that holds a line feed
// gets the number 0, so that its own last line is not taken for a colour.
std::string propertyListOfTags(const std::vector<std::u16string>& tags) {
    BinaryPropertyListWriter writer;
    const auto top = writer.reserve();
    std::vector<BinaryPropertyListWriter::Reference> elements;
    elements.reserve(tags.size());
    for (const std::u16string& tag : tags)
        elements.push_back(writer.string(tag.find(u'\n') == std::u16string::npos ? tag : tag + u"\n0"));
    writer.fillArray(top, elements);
    return writer.finish(top);
}

} // namespace

std::vector<RefusedAttribute> setResourceValues(int descriptor, const ResourceValues& values) {
    AttributeSetter setter(descriptor);
    setter.setFlags(values);
    if (values.creationDate) setter.set(kCreationDateAttribute, values.creationDate->iso8601());
    if (values.tagNames && values.tagNames->empty()) {
        setter.remove(kSharedTagsAttribute);
        setter.remove(kExactTagsAttribute);
    } else if (values.tagNames) {
        setter.set(kSharedTagsAttribute, commaSeparated(*values.tagNames));
        setter.set(kExactTagsAttribute, propertyListOfTags(*values.tagNames));
    }
    if (values.contentModificationDate) setter.setModificationDate(*values.contentModificationDate);
    return setter.takeRefused();
}

std::string descriptionOfRefused(const std::vector<RefusedAttribute>& refused) {
    std::string text;
    for (const RefusedAttribute& attribute : refused) {
        if (!text.empty()) text += ", ";
        text += fmt::format("{} ({})", attribute.name, std::generic_category().message(attribute.errorNumber));
    }
    return text;
}

bool hasHiddenExtension(int descriptor) {
    return FinderInfo::ofFile(descriptor).flag(FinderInfo::kExtensionHidden);
}

} // namespace platform
