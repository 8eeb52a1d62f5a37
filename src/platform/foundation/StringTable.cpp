#include "platform/foundation/StringTable.h"

#include <fstream>
#include <iterator>
#include <memory>
#include <mutex>

#include "platform/foundation/Environment.h"
#include "platform/foundation/Locale.h"
#include "platform/foundation/MessageCatalogue.h"

namespace platform {

namespace {

constexpr std::string_view kCatalogueFile = "/LC_MESSAGES/quillet-enex-import.mo";

// The first catalogue that there is for the locale; an empty one when there is none.
std::shared_ptr<const MessageCatalogue> loadedCatalogue(const std::string& directory, const std::string& locale) {
    for (const std::string& name : catalogueNamesForLocale(locale)) {
        std::string path = directory;
        path.append("/").append(name).append(kCatalogueFile);
        std::ifstream stream(path, std::ios::binary);
        if (!stream) continue;
        const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
        if (auto catalogue = MessageCatalogue::fromData(bytes))
            return std::make_shared<const MessageCatalogue>(std::move(*catalogue));
    }
    return std::make_shared<const MessageCatalogue>();
}

std::shared_ptr<const MessageCatalogue> currentCatalogue() {
    static std::mutex mutex;
    static std::string directory, locale;
    static std::shared_ptr<const MessageCatalogue> catalogue;
    const Environment& environment = Environment::current();
    const std::lock_guard lock(mutex);
    if (!catalogue || directory != environment.catalogueDirectory || locale != environment.localeIdentifier) {
        directory = environment.catalogueDirectory;
        locale = environment.localeIdentifier;
        catalogue = loadedCatalogue(directory, locale);
    }
    return catalogue;
}

} // namespace

std::string localizedString(std::string_view english) {
    const std::shared_ptr<const MessageCatalogue> catalogue = currentCatalogue();
    return std::string(catalogue->translation(english).value_or(english));
}

} // namespace platform
