#include "platform/foundation/Environment.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <system_error>

#include <pwd.h>
#include <sys/random.h>
#include <unistd.h>

#include "platform/foundation/Locale.h"

namespace platform {

namespace {

std::string environmentVariable(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

Date systemNow() {
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return Date::fromUnixTime(std::chrono::duration<double>(sinceEpoch).count());
}

UUID randomUUID() {
    UUID uuid;
    ssize_t count = 0;
    do {
        count = ::getrandom(uuid.bytes.data(), uuid.bytes.size(), 0);
    } while (count < 0 && errno == EINTR);
    // Sixteen bytes are never cut short; what is left is a kernel or a sandbox without the call.
    if (count < 0) throw std::system_error(errno, std::generic_category(), "getrandom");
    uuid.bytes[6] = static_cast<std::uint8_t>((uuid.bytes[6] & 0x0F) | 0x40); // version 4
    uuid.bytes[8] = static_cast<std::uint8_t>((uuid.bytes[8] & 0x3F) | 0x80); // the variant of RFC 4122
    return uuid;
}

std::string systemLocaleIdentifier() {
    for (const char* name : {"LC_ALL", "LANG"}) {
        const std::string value = environmentVariable(name);
        if (!value.empty()) return localeIdentifierFromPOSIX(value);
    }
    return localeIdentifierFromPOSIX("C");
}

std::string systemTimeZoneName() {
    if (const char* zone = std::getenv("TZ")) return timeZoneNameFromTZ(zone);
    std::array<char, 4096> target{};
    const ssize_t length = ::readlink("/etc/localtime", target.data(), target.size());
    if (length > 0) return timeZoneNameFromTZ({target.data(), static_cast<std::size_t>(length)});
    std::string name;
    std::ifstream("/etc/timezone") >> name;
    return timeZoneNameFromTZ(name);
}

std::string homeDirectory() {
    std::string home = environmentVariable("HOME");
    if (!home.empty()) return home;
    const passwd* entry = ::getpwuid(::getuid());
    return entry && entry->pw_dir ? entry->pw_dir : "/";
}

std::string systemPreferencesDirectory() {
    std::string directory = environmentVariable("XDG_CONFIG_HOME");
    return directory.starts_with('/') ? directory : homeDirectory() + "/.config";
}

std::string systemDataDirectory() {
    const std::string directory = environmentVariable("QUILLET_DATA_DIR");
    return directory.empty() ? QUILLET_INSTALLED_DATA_DIRECTORY : directory;
}

Environment systemEnvironment() {
    return {
        .now = systemNow,
        .newUUID = randomUUID,
        .localeIdentifier = systemLocaleIdentifier(),
        .timeZoneName = systemTimeZoneName(),
        .darkAppearance = false,
        .bundleIdentifier = "com.tesseral.Quillet.ENEXImport",
        .bundleShortVersion = QUILLET_VERSION,
        .dataDirectory = systemDataDirectory(),
        .preferencesDirectory = systemPreferencesDirectory(),
        .catalogueDirectory = QUILLET_INSTALLED_CATALOGUE_DIRECTORY,
    };
}

} // namespace

Environment& Environment::current() {
    static Environment environment = systemEnvironment();
    return environment;
}

} // namespace platform
