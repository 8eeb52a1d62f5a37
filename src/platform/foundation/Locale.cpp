#include "platform/foundation/Locale.h"

#include <algorithm>
#include <array>

namespace platform {

namespace {

// Modifiers that name a script; "@euro" and the like say nothing that ICU does not know by itself.
struct ScriptModifier {
    std::string_view modifier, script;
};
constexpr std::array kScriptModifiers{
    ScriptModifier{"latin", "Latn"},
    ScriptModifier{"cyrillic", "Cyrl"},
    ScriptModifier{"devanagari", "Deva"},
};

constexpr std::string_view kZoneDirectory = "zoneinfo/";

} // namespace

std::string localeIdentifierFromPOSIX(std::string_view name) {
    const std::string_view base = name.substr(0, name.find_first_of(".@"));
    if (base.empty() || base == "C" || base == "POSIX") return "en_US_POSIX";
    const std::size_t at = name.find('@');
    const std::string_view modifier = at == std::string_view::npos ? std::string_view() : name.substr(at + 1);
    std::string identifier(base);
    for (const ScriptModifier& row : kScriptModifiers)
        if (modifier == row.modifier)
            identifier.insert(std::min(base.find('_'), base.size()), "_" + std::string(row.script));
    return identifier;
}

std::vector<std::string> catalogueNamesForLocale(std::string_view identifier) {
    identifier = identifier.substr(0, identifier.find('@'));
    std::string language, modifier, region;
    for (bool isFirst = true; !identifier.empty(); isFirst = false) {
        const std::size_t end = std::min(identifier.find('_'), identifier.size());
        const std::string_view part = identifier.substr(0, end);
        identifier.remove_prefix(std::min(end + 1, identifier.size()));
        if (isFirst) {
            language = part;
        } else if (part.size() == 4) {
            const auto* row = std::ranges::find(kScriptModifiers, part, &ScriptModifier::script);
            if (row != kScriptModifiers.end()) modifier.assign("@").append(row->modifier);
        } else if (region.empty() && !part.empty()) {
            region.assign("_").append(part);
        }
    }
    std::vector<std::string> names;
    const std::string regional = language + region;
    for (const std::string& name : {regional + modifier, language + modifier, regional, language})
        if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
    return names;
}

std::string timeZoneNameFromTZ(std::string_view value) {
    if (value.starts_with(':')) value.remove_prefix(1);
    if (const std::size_t directory = value.rfind(kZoneDirectory); directory != std::string_view::npos)
        value.remove_prefix(directory + kZoneDirectory.size());
    for (const std::string_view variant : {"posix/", "right/"})
        if (value.starts_with(variant)) value.remove_prefix(variant.size());
    // Another absolute path names a file that says nothing about the zone's name.
    return value.empty() || value.starts_with('/') ? "UTC" : std::string(value);
}

} // namespace platform
