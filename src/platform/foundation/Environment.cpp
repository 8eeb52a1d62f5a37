#include "platform/foundation/Environment.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
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

// The tree that this program is installed in: the nearest directory above it that has our data. Nothing for a program
// that is run from where it was built.
std::optional<std::filesystem::path> installedTree() {
    std::error_code error;
    std::filesystem::path directory = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    for (; directory.has_relative_path(); directory = directory.parent_path())
        if (std::filesystem::is_directory(directory / QUILLET_DATA_IN_TREE, error)) return directory;
    return std::nullopt;
}

// A tree that was installed under another prefix than planned, or moved, has what it brought along.
std::string installedDirectory(const char* inTree, const char* planned) {
    static const std::optional<std::filesystem::path> tree = installedTree();
    return tree ? (*tree / inTree).string() : planned;
}

std::string systemDataDirectory() {
    std::string directory = environmentVariable("QUILLET_DATA_DIR");
    if (!directory.empty()) return directory;
    return installedDirectory(QUILLET_DATA_IN_TREE, QUILLET_INSTALLED_DATA_DIRECTORY);
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
        .catalogueDirectory = installedDirectory(QUILLET_CATALOGUES_IN_TREE, QUILLET_INSTALLED_CATALOGUE_DIRECTORY),
    };
}

} // namespace

Environment& Environment::current() {
    static Environment environment = systemEnvironment();
    return environment;
}

} // namespace platform
