#include "platform/html/HTMLImages.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <string>
#include <system_error>
#include <utility>

#include "platform/base/SystemLog.h"
#include "platform/files/FileWrapper.h"
#include "platform/files/UTType.h"
#include "platform/foundation/Base64.h"
#include "platform/foundation/Percent.h"
#include "platform/html/CssTokenizer.h"

namespace platform {

namespace {

constexpr std::string_view kDataScheme = "data:";
constexpr std::string_view kUnnamed = "unknown"; // of what has no name, before its extension

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\n\r\f";
    const std::size_t start = text.find_first_not_of(kBlanks);
    if (start == std::string_view::npos) return {};
    return text.substr(start, text.find_last_not_of(kBlanks) - start + 1);
}

bool isDataAddress(std::string_view address) {
    return address.size() > kDataScheme.size() && asciiLowerCase(address.substr(0, kDataScheme.size())) == kDataScheme;
}

// A file of that name; without one it is called by its type.
std::shared_ptr<FileWrapper> fileNamed(std::string name, std::string_view mimeType, Data bytes) {
    auto wrapper = FileWrapper::regularFile(std::move(bytes));
    if (name.empty()) {
        name = kUnnamed;
        const auto type = UTType::typeWithMIMEType(mimeType);
        if (const auto extension = type ? type->preferredFilenameExtension() : std::nullopt) name += "." + *extension;
    }
    wrapper->setPreferredFilename(std::move(name));
    return wrapper;
}

// The bytes that stand in the address itself; null when they cannot be read.
std::shared_ptr<FileWrapper> fileInAddress(std::string_view address) {
    address.remove_prefix(kDataScheme.size());
    const std::size_t comma = address.find(',');
    if (comma == std::string_view::npos) return nullptr;
    const std::string head = asciiLowerCase(address.substr(0, comma));
    const std::string_view body = address.substr(comma + 1);
    const std::string_view type = trimmed(std::string_view(head).substr(0, head.find(';')));
    std::optional<std::string> bytes;
    if (trimmed(head).ends_with(";base64")) {
        // Percent sequences in base64, and a missing end, are rare: only then is the text copied.
        bytes =
            body.find('%') == std::string_view::npos ? base64Decoded(body) : base64Decoded(percentDecodedBytes(body));
        for (const std::string_view end : {"=", "=="})
            if (!bytes) bytes = base64Decoded(percentDecodedBytes(body) += end);
    } else {
        bytes = percentDecodedBytes(body);
    }
    if (!bytes) return nullptr;
    return fileNamed({}, type.empty() ? "text/plain" : type, Data(std::move(*bytes)));
}

} // namespace

HTMLImages::HTMLImages(const HTMLReadOptions& options)
    : base_(options.baseURL), readAccess_(options.readAccessURL), resourceForURL_(options.resourceForURL) {}

std::optional<URL> HTMLImages::resolved(std::string_view address) const {
    std::string_view text = trimmed(address);
    std::string cleaned; // of line breaks, which few addresses have
    const auto isBreak = [](char c) { return c == '\n' || c == '\t' || c == '\r'; };
    if (std::ranges::any_of(text, isBreak)) {
        std::ranges::remove_copy_if(text, std::back_inserter(cleaned), isBreak);
        text = cleaned;
    }
    if (text.empty()) return std::nullopt;
    const auto resolvedText = [this](std::string_view reference) {
        return base_ ? URL::fromString(reference, *base_) : URL::fromString(reference);
    };
    if (auto url = resolvedText(text)) return url; // most addresses need no encoding
    return resolvedText(URL::fromDataRepresentation(text).absoluteString());
}

void HTMLImages::setBase(std::string_view address) {
    if (auto base = resolved(address); base && !base->scheme().empty()) base_ = std::move(base);
}

// The file, if it lies below the directory that may be read once every link in both paths is followed.
std::shared_ptr<FileWrapper> HTMLImages::fileAt(const URL& url) const {
    if (!url.isFileURL() || !readAccess_ || !readAccess_->isFileURL()) return nullptr;
    std::error_code error;
    const auto directory = std::filesystem::canonical(readAccess_->path(), error);
    if (error) return nullptr;
    const auto file = std::filesystem::canonical(url.path(), error);
    if (error || !std::filesystem::is_regular_file(file, error)) return nullptr;
    const auto relative = file.lexically_relative(directory);
    if (relative.empty() || *relative.begin() == "..") return nullptr;
    auto wrapper = FileWrapper::readingURL(URL::fileURLWithPath(file.string()));
    if (!wrapper) {
        systemLog("Couldn't read image: " + wrapper.error().description());
        return nullptr;
    }
    (*wrapper)->setPreferredFilename(url.lastPathComponent());
    return std::move(*wrapper);
}

std::shared_ptr<FileWrapper> HTMLImages::file(std::string_view address) const {
    const std::string_view text = trimmed(address);
    if (auto resource = resourceForURL_ ? resourceForURL_(text) : std::nullopt)
        return fileNamed(std::move(resource->name), resource->mimeType, std::move(resource->bytes));
    if (isDataAddress(text)) return fileInAddress(text);
    const auto url = resolved(address);
    return url ? fileAt(*url) : nullptr;
}

std::optional<HTMLImage> HTMLImages::object(std::string_view address) const {
    std::shared_ptr<FileWrapper> wrapper = file(address);
    if (!wrapper) return std::nullopt;
    return HTMLImage{std::make_shared<TextAttachment>(std::move(wrapper)), std::nullopt};
}

HTMLImage HTMLImages::image(std::string_view address) const {
    if (auto found = object(address)) return std::move(*found);
    HTMLImage missing{std::make_shared<TextAttachment>(), std::nullopt};
    if (isDataAddress(trimmed(address))) return missing;
    if (auto url = resolved(address); url && !url->scheme().empty() && !url->isFileURL()) {
        systemLog("Not fetched: " + url->absoluteString());
        missing.link = std::move(url);
    }
    return missing;
}

} // namespace platform
