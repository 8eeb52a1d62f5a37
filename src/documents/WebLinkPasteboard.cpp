// The web addresses on a pasteboard: programs offer them as addresses, as rich text that is one link, as plain text,
// and browsers as lists with titles.
#include <algorithm>
#include <array>
#include <unordered_set>
#include <utility>

#include "documents/QLTWebLinkFile.h"
#include "platform/files/FileWrapper.h"
#include "platform/foundation/CharacterSet.h"
#include "platform/html/HTMLReader.h"
#include "platform/pasteboard/Pasteboard.h"
#include "platform/rtf/RTFReader.h"
#include "platform/text/AttributedString.h"
#include "util/FileNames.h"

namespace quillet {

using platform::Array;
using platform::AttributedString;
using platform::AttributeValue;
using platform::Data;
using platform::Pasteboard;
using platform::Range;
using platform::Result;
using platform::Value;
using Address = platform::URL;

namespace {

// Web addresses in the order in which they were found, each once.
class WebAddresses {
  public:
    void add(const std::optional<Address>& address) {
        const auto cleaned = address ? URLCleanedForImport(*address) : std::nullopt;
        if (!cleaned || !QLTWebLinkFile::canInitWithURL(*cleaned)) return;
        if (seen_.insert(cleaned->absoluteString()).second) addresses_.push_back(*cleaned);
    }
    std::vector<Address> take() { return std::move(addresses_); }

  private:
    std::vector<Address> addresses_;
    std::unordered_set<std::string> seen_;
};

std::optional<Data> dataOf(const Value& value) {
    if (const auto* data = value.as<Data>()) return *data;
    if (value.as<std::u16string>()) return Data(value.utf8());
    return std::nullopt;
}

Result<AttributedString> readRTFD(const Data& data) {
    return platform::attributedStringFromRTFD(*TRY(platform::FileWrapper::fromSerializedRepresentation(data.bytes())));
}
Result<AttributedString> readRTF(const Data& data) {
    return platform::attributedStringFromRTF(data.bytes());
}
Result<AttributedString> readHTML(const Data& data) {
    return TRY(platform::attributedStringFromHTMLData(data)).text;
}
Result<AttributedString> readPlainText(const Data& data) {
    return AttributedString(platform::utf16FromUTF8(data.bytes()));
}

// What rich text is read from, best first.
struct TextType {
    std::string_view type;
    Result<AttributedString> (*read)(const Data& data);
};
constexpr std::array kTextTypes{
    TextType{platform::kPasteboardTypeRTFD, readRTFD},
    TextType{platform::kPasteboardTypeRTF, readRTF},
    TextType{platform::kPasteboardTypeHTML, readHTML},
    TextType{platform::kPasteboardTypeString, readPlainText},
};

// The item's text in the best type that it offers.
std::optional<Result<AttributedString>> textOf(const Pasteboard::Item& item) {
    for (const TextType& type : kTextTypes) {
        const auto entry = std::ranges::find(item, type.type, &Pasteboard::Entry::first);
        const auto data = entry == item.end() ? std::nullopt : dataOf(entry->second);
        if (data) return type.read(*data);
    }
    return std::nullopt;
}

struct PasteboardText {
    bool offered = false;
    std::optional<AttributedString> first; // that can be read
};

PasteboardText textOnPasteboard(const Pasteboard& pasteboard) {
    PasteboardText found;
    for (const Pasteboard::Item& item : pasteboard.items()) {
        auto text = textOf(item);
        if (!text) continue;
        found.offered = true;
        if (!*text) continue;
        found.first = **std::move(text);
        break;
    }
    return found;
}

std::optional<Address> addressOfLink(const AttributeValue& link) {
    if (const auto* url = std::get_if<Address>(&link)) return *url;
    if (const auto* text = std::get_if<std::u16string>(&link))
        return Address::fromString(platform::utf8FromUTF16(*text));
    return std::nullopt;
}

// The one address that all of the text links to.
std::optional<Address> linkOverWholeText(const AttributedString& text) {
    std::optional<Address> candidate;
    std::size_t covered = 0;
    text.enumerateAttribute(platform::kLinkAttributeName, {0, text.length()},
                            [&](const AttributeValue* link, Range run) {
                                const auto address = link ? addressOfLink(*link) : std::nullopt;
                                if (!address) return;
                                if (!candidate) candidate = address;
                                if (*address == *candidate) covered += run.length;
                            });
    return covered == text.length() ? candidate : std::nullopt;
}

std::optional<Address> addressIn(const AttributedString& text) {
    const std::u16string& characters = text.string();
    const bool beginsAsAddress = characters.starts_with(u"http") || characters.starts_with(QLTFirefoxReaderURLPrefix);
    const auto& blanks = platform::CharacterSet::whitespaceAndNewline();
    if (beginsAsAddress && std::ranges::none_of(characters, [&](char16_t unit) { return blanks.contains(unit); }))
        return Address::fromString(platform::utf8FromUTF16(characters));
    return linkOverWholeText(text);
}

// [[address, …], [title, …]]
void addBrowserList(const Value& value, WebAddresses& found) {
    const auto* columns = value.as<Array>();
    const auto* addresses = columns && !columns->empty() ? columns->front().as<Array>() : nullptr;
    if (!addresses) return;
    for (const Value& address : *addresses) found.add(Address::fromString(address.utf8()));
}

} // namespace

std::optional<std::vector<Address>> QLTWebLinkFile::webLinkURLsOnPasteboard(const Pasteboard& pasteboard) {
    WebAddresses found;
    // The address of the pasteboard as a whole is that of its first item, so this loop has it too.
    for (const Pasteboard::Item& item : pasteboard.items())
        for (const auto& [type, value] : item)
            if (type == platform::kPasteboardTypeURL)
                if (const auto data = dataOf(value)) found.add(Address::fromString(data->bytes()));

    const PasteboardText text = textOnPasteboard(pasteboard);
    if (text.offered && !text.first) return std::nullopt;
    if (text.first) found.add(addressIn(*text.first));

    if (const Value* list = pasteboard.propertyListForType(QLTWebURLsWithTitlesPboardType))
        addBrowserList(*list, found);
    return found.take();
}

} // namespace quillet
