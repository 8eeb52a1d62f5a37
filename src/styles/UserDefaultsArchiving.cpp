#include "styles/UserDefaultsArchiving.h"

#include <optional>

#include "platform/archive/KeyedArchiver.h"
#include "platform/archive/KeyedUnarchiver.h"
#include "platform/base/SystemLog.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/foundation/StringFormat.h"
#include "platform/foundation/StringTable.h"
#include "platform/plist/PropertyList.h"

namespace quillet {

using platform::ArchivedObject;
using platform::Error;
using platform::Result;

namespace {

// Whether an unarchiver would take these bytes at all, whatever they hold.
bool isKeyedArchive(std::string_view bytes) {
    const auto list = platform::propertyListFromData(bytes);
    const auto* top = list ? list->as<platform::Dictionary>() : nullptr;
    return top && platform::find(*top, "$archiver") != nullptr;
}

Error noSuchValue() {
    return Error::withDescription(QLTUserDefaultsArchivingErrorDomain, QLTUserDefaultsArchivingNoDataErrorCode,
                                  platform::localizedString("No such value."));
}

// The code alone decides, whatever the domain, and so does the domain: either one keeps the error out of the log.
bool isLogged(const std::optional<Error>& error) {
    return !error || (error->domain != QLTUserDefaultsArchivingErrorDomain &&
                      error->code != QLTUserDefaultsArchivingNoDataErrorCode);
}

} // namespace

Result<> archiveObject(platform::UserDefaults& defaults, const ArchivedObject& object, std::string_view key) {
    auto data = platform::KeyedArchiver::archivedData(object, platform::KeyedArchiver::Coding::secure);
    if (data) return defaults.setObject(key, *std::move(data));
    TRY(defaults.removeObject(key));
    return platform::failure(std::move(data).error());
}

Result<ArchivedObject> unarchiveObjectOfClass(platform::UserDefaults& defaults, std::string_view className,
                                              std::string_view key, const std::vector<std::string>& contentClasses) {
    std::optional<Error> error;
    if (const auto data = defaults.dataForKey(key)) {
        platform::UnarchiveOptions options;
        options.allowedClasses = contentClasses;
        options.allowedClasses.emplace_back(className);
        auto object = platform::unarchivedObject(data->bytes(), options);
        if (object && !object->isNull()) return object;
        if (!object && !isKeyedArchive(data->bytes())) error = std::move(object).error();
    } else {
        error = noSuchValue();
    }
    if (isLogged(error))
        platform::systemLog(platform::formatted("Error unarchiving defaults object %@: %@",
                                                {key, error ? std::optional(error->description()) : std::nullopt}));
    if (error) return platform::failure(*std::move(error));
    return ArchivedObject();
}

} // namespace quillet
