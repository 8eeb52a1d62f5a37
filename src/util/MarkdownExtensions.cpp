// Which file name extensions are Markdown: a data file in the form of the platform's imported type declarations, so
// that the list can grow without a new program.
#include <algorithm>
#include <fstream>
#include <iterator>

#include "platform/base/SystemLog.h"
#include "platform/foundation/Environment.h"
#include "platform/foundation/TextFolding.h"
#include "platform/plist/PropertyList.h"
#include "util/Markdown.h"

namespace quillet {

namespace {

using platform::Value;

constexpr std::string_view kFileName = "MarkdownExtensions.plist";

const Value* valueForKey(const Value* value, std::string_view key) {
    const auto* dictionary = value ? value->as<platform::Dictionary>() : nullptr;
    return dictionary ? platform::find(*dictionary, key) : nullptr;
}

// Empty when the file cannot be read: then nothing is Markdown, and the system log says why.
std::vector<std::u16string> installedExtensions() {
    const std::string path = platform::Environment::current().dataDirectory + '/' + std::string(kFileName);
    std::ifstream file(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    if (!file) {
        platform::systemLog("cannot read " + path);
        return {};
    }
    const auto propertyList = platform::propertyListFromData(bytes);
    if (!propertyList) {
        platform::systemLog(path + ": " + propertyList.error().description());
        return {};
    }
    return markdownExtensionsOfDeclarations(*propertyList);
}

} // namespace

std::vector<std::u16string> markdownExtensionsOfDeclarations(const Value& propertyList) {
    std::vector<std::u16string> extensions;
    const Value* declarations = valueForKey(&propertyList, "UTImportedTypeDeclarations");
    const auto* list = declarations ? declarations->as<platform::Array>() : nullptr;
    if (!list) return extensions;
    const auto declaration = std::ranges::find_if(*list, [](const Value& entry) {
        const Value* identifier = valueForKey(&entry, "UTTypeIdentifier");
        return identifier && identifier->utf8() == QLTMarkdownType;
    });
    if (declaration == list->end()) return extensions;
    const Value* tags = valueForKey(&*declaration, "UTTypeTagSpecification");
    const Value* names = valueForKey(tags, "public.filename-extension");
    const auto* nameList = names ? names->as<platform::Array>() : nullptr;
    for (const Value& name : nameList ? *nameList : platform::Array())
        if (const auto* text = name.as<std::u16string>()) extensions.push_back(*text);
    return extensions;
}

bool isFileExtensionSupportedMarkdownExtension(std::u16string_view extension) {
    static const std::vector<std::u16string> extensions = installedExtensions();
    return std::ranges::any_of(
        extensions, [extension](const std::u16string& known) { return platform::equalIgnoringCase(known, extension); });
}

} // namespace quillet
