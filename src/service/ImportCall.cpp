#include "service/ImportCall.h"

#include <array>
#include <cstdint>
#include <string>
#include <utility>

#include "platform/ipc/BusError.h"
#include "service/QLTImportENEXProtocol.h"

namespace quillet {

using platform::BusError;
using platform::Dictionary;
using platform::Result;
using platform::URL;
using platform::Value;

namespace {

constexpr std::array kBooleanOptions{kDebugOption, QLTImportENEXOptionWebClippingsAsNotes};

platform::Error invalid(const std::string& text) {
    return platform::busError(BusError::invalidArguments, text);
}

// As much of a caller's text as belongs into a message to it.
std::string shown(const std::string& text) {
    constexpr std::size_t kMost = 200;
    if (text.size() <= kMost) return text;
    std::size_t end = kMost;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end; // not inside a character
    return text.substr(0, end) + "…";
}

Result<URL> fileURL(const Value& argument, std::string_view what) {
    const std::string text = argument.utf8();
    const auto url = URL::fromString(text);
    const bool isHere = url && url->isFileURL() && (url->host().value_or("").empty() || url->host() == "localhost");
    if (!isHere || !url->path().starts_with('/') || url->path().find('\0') != std::string::npos)
        return platform::failure(invalid("The " + std::string(what) + " \"" + shown(text) + "\" is no file URL."));
    return *url;
}

// Numbers pass for booleans, as everywhere; unknown options are for later versions.
Result<> checkOptions(const Dictionary& options) {
    for (const std::string_view key : kBooleanOptions) {
        const Value* value = platform::find(options, key);
        if (value && !value->as<bool>() && !value->as<std::int64_t>())
            return platform::failure(invalid("The option \"" + std::string(key) + "\" is no boolean."));
    }
    return {};
}

} // namespace

Result<ImportCall> ImportCall::fromArguments(const platform::Array& arguments) {
    constexpr std::size_t kArguments = 3;
    const auto* options = arguments.size() == kArguments ? arguments[1].as<Dictionary>() : nullptr;
    if (!options) return platform::failure(invalid("The arguments are a file URL, options and a directory URL."));
    TRY(checkOptions(*options));
    // Not inside the braces: g++ 12 forgets what it has made there when a later member returns.
    URL file = TRY(fileURL(arguments[0], "export"));
    URL directory = TRY(fileURL(arguments[2], "directory"));
    return ImportCall{std::move(file), *options, std::move(directory)};
}

} // namespace quillet
