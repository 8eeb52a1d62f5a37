#include "service/ImportConfinement.h"

#include <cstdlib>
#include <filesystem>

#include "platform/base/SystemLog.h"
#include "platform/foundation/Environment.h"
#include "service/GroupSuite.h"

namespace quillet {

using platform::AllowedPath;
using platform::PathAccess;

namespace {

// A directory that the environment names; "" for none, also when the name is no absolute path.
std::string environmentPath(const char* variable) {
    const char* value = std::getenv(variable);
    return value && *value == '/' ? value : "";
}

std::string preferencesFile(std::string_view domain) {
    return std::filesystem::path(platform::Environment::current().preferencesDirectory) /
           (std::string(domain) + ".plist");
}

} // namespace

std::vector<AllowedPath> allowedPathsForImport(std::span<const std::string> exports, const std::string& directory) {
    const platform::Environment& environment = platform::Environment::current();
    const std::string home = environmentPath("HOME");
    const std::string dataHome = environmentPath("XDG_DATA_HOME");
    std::vector<AllowedPath> paths;
    for (const std::string& file : exports) paths.push_back({file, PathAccess::readFile, "the export"});
    paths.insert(
        paths.end(),
        {
            {directory, PathAccess::writeTree, "notes, pages, files, scratch directories and the log"},
            {environment.dataDirectory, PathAccess::readTree, "page template and lists"},
            {environment.catalogueDirectory, PathAccess::readTree, "translations"},
            {preferencesFile(environment.bundleIdentifier), PathAccess::readFile, "the service's preferences"},
            {preferencesFile(kGroupSuite), PathAccess::readFile, "the application's preferences"},
            {"/etc/localtime", PathAccess::readFile, "the time zone"},
            {"/usr/share", PathAccess::readTree, "time zones, fonts, locales"},
            {"/usr/local/share/fonts", PathAccess::readTree, "fonts"},
            {dataHome.empty() ? home + "/.local/share/fonts" : dataHome + "/fonts", PathAccess::readTree, "fonts"},
            {home + "/.fonts", PathAccess::readTree, "fonts"},
            {"/etc/fonts", PathAccess::readTree, "which fonts there are"},
            {"/var/cache/fontconfig", PathAccess::readTree, "what is known of them"},
            {"/etc/ld.so.cache", PathAccess::readFile, "where character set converters are"},
            {"/usr/lib", PathAccess::readTree, "character set converters, loaded for exports that are not UTF-8"},
            {"/dev/urandom", PathAccess::readFile, "random numbers, where the system call is missing"},
        });
    return paths;
}

platform::Result<> confineForImport(std::span<const std::string> exports, const std::string& directory) {
    const platform::Confinement confinement = TRY(platform::confine(allowedPathsForImport(exports, directory)));
    if (confinement != platform::Confinement::full)
        platform::systemLog("This kernel confines the import less than it should: " +
                            std::string(platform::confinementName(confinement)));
    return {};
}

} // namespace quillet
