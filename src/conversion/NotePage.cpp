#include "conversion/NotePage.h"

#include <charconv>
#include <utility>

#include <fmt/core.h>

#include "conversion/ConversionErrors.h"
#include "conversion/MarkupScan.h"
#include "enex/EvernoteXMLResource.h"
#include "platform/foundation/Base64.h"
#include "platform/xml/XMLWriter.h"

namespace quillet {

using platform::Result;

namespace {

constexpr char kSlotEnd = ';';

} // namespace

InlineImages::InlineImages(std::string_view identifier) : prefix_(fmt::format("quillet-image:{}/", identifier)) {}

std::string InlineImages::addSlot(InlineImage image) {
    images_.push_back(std::move(image));
    return fmt::format("{}{}{}", prefix_, images_.size() - 1, kSlotEnd);
}

std::optional<std::size_t> InlineImages::indexOf(std::string_view address) const {
    if (!address.starts_with(prefix_) || !address.ends_with(kSlotEnd)) return std::nullopt;
    const std::string_view digits = address.substr(prefix_.size(), address.size() - prefix_.size() - 1);
    std::size_t index = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), index);
    const bool isNumber = error == std::errc() && end == digits.data() + digits.size();
    return isNumber && index < images_.size() ? std::optional(index) : std::nullopt;
}

InlineImage* InlineImages::imageAt(std::string_view address) {
    const auto index = indexOf(address);
    return index ? &images_[*index] : nullptr;
}

Result<std::string> InlineImages::filledIn(std::string markup) const {
    if (images_.empty()) return markup;
    return rewriteTags(std::move(markup),
                       {.opening = prefix_,
                        .findEnd = [](std::string_view text, std::size_t start) -> std::optional<std::size_t> {
                            const std::size_t end = text.find(kSlotEnd, start);
                            return end == std::string_view::npos ? text.size() : end + 1;
                        },
                        .replace = [this](std::string_view address, std::string& out) -> Result<> {
                            const auto index = indexOf(address);
                            if (!index) return out += address, Result<>();
                            const InlineImage& image = images_[*index];
                            const platform::Data bytes = TRY(image.resource->getContentData());
                            out += "data:";
                            platform::appendEscapedAttribute(image.mimeType, out);
                            out += ";base64,";
                            platform::appendBase64(out, bytes.bytes());
                            return {};
                        },
                        .missingEnd = nullptr});
}

Result<> NotePage::parse() {
    const std::string source = std::exchange(source_, {});
    document_ = TRY(platform::XMLDocument::initWithXMLString(source, platform::XMLDocumentParsing::tidyHTML));
    if (!document_.rootElement()) return platform::failure(noPageError());
    return {};
}

const std::string& NotePage::markup() {
    if (document_.rootElement()) markup_ = document_.prettyPrintedPage();
    document_ = {};
    return markup_;
}

} // namespace quillet
