// The XML form as the platform lays it out: one element a line, indented by tabs, data in base64 lines.
#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include <fmt/format.h>

#include "platform/foundation/Base64.h"
#include "platform/plist/PropertyList.h"
#include "platform/plist/PropertyListLimits.h"
#include "platform/plist/PropertyListWalk.h"

namespace platform {

namespace {

constexpr std::string_view kHead = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                   "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                                   "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                                   "<plist version=\"1.0\">\n";
constexpr std::string_view kTail = "</plist>\n";

// Base64 lines get shorter by a tab's eight columns a level, down to the eighth.
constexpr std::size_t kBase64Columns = 76, kTabColumns = 8, kShortestBase64Level = 8;

bool isXMLCharacter(char32_t character) {
    if (character < 0x20) return character == '\t' || character == '\n' || character == '\r';
    return character != 0xFFFE && character != 0xFFFF;
}

// Nothing when XML cannot hold the text.
std::optional<std::string> escaped(std::u16string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!isXMLCharacter(text[i])) return std::nullopt;
        if (isLowSurrogate(text[i])) return std::nullopt;
        if (isHighSurrogate(text[i]) && (i + 1 == text.size() || !isLowSurrogate(text[++i]))) return std::nullopt;
    }
    std::string out;
    for (const char byte : utf8FromUTF16(text)) {
        if (byte == '&')
            out += "&amp;";
        else if (byte == '<')
            out += "&lt;";
        else if (byte == '>')
            out += "&gt;";
        else if (byte == '\r')
            out += "&#13;"; // a bare one would be read as a line feed
        else
            out += byte;
    }
    return out;
}

std::string realText(double real) {
    if (std::isnan(real)) return "nan";
    if (std::isinf(real)) return real > 0 ? "+infinity" : "-infinity";
    return fmt::format("{:.17g}", real);
}

class XMLVisitor {
  public:
    explicit XMLVisitor(std::string& out) : out_(out) {}

    Result<> scalar(const Value& value) {
        if (const auto* text = value.as<std::u16string>()) return textElement("string", *text);
        if (const auto* boolean = value.as<bool>())
            line(*boolean ? "<true/>" : "<false/>");
        else if (const auto* integer = value.as<std::int64_t>())
            line(fmt::format("<integer>{}</integer>", *integer));
        else if (const auto* real = value.as<double>())
            line(fmt::format("<real>{}</real>", realText(*real)));
        else if (const auto* date = value.as<Date>())
            line(fmt::format("<date>{}</date>", date->iso8601()));
        else if (const auto* data = value.as<Data>())
            dataElement(data->bytes());
        else
            return uidElement(*value.as<UID>());
        return {};
    }

    void openArray(const Array& array) { openContainer("array", array.empty()); }
    void openDictionary(const Dictionary& dictionary) { openContainer("dict", dictionary.empty()); }
    Result<> key(const std::string& name) { return textElement("key", utf16FromUTF8(name)); }

    void closeContainer() {
        const Container closed = open_.back();
        open_.pop_back();
        if (!closed.isEmpty) line(fmt::format("</{}>", closed.name));
    }

  private:
    struct Container {
        std::string_view name;
        bool isEmpty;
    };

    void line(std::string_view text) {
        out_.append(open_.size(), '\t');
        out_ += text;
        out_ += '\n';
    }

    void openContainer(std::string_view name, bool isEmpty) {
        line(fmt::format("<{}{}>", name, isEmpty ? "/" : ""));
        open_.push_back({name, isEmpty});
    }

    Result<> textElement(std::string_view name, std::u16string_view text) {
        const std::optional<std::string> content = escaped(text);
        if (!content) return unwritable("the text holds a character that XML has no form for");
        line(fmt::format("<{0}>{1}</{0}>", name, *content));
        return {};
    }

    void dataElement(std::string_view bytes) {
        const std::size_t columns = kBase64Columns - kTabColumns * std::min(open_.size(), kShortestBase64Level);
        const std::size_t bytesALine = columns / 4 * 3;
        line("<data>");
        for (; !bytes.empty(); bytes.remove_prefix(std::min(bytesALine, bytes.size()))) {
            out_.append(open_.size(), '\t');
            appendBase64(out_, bytes.substr(0, bytesALine));
            out_ += '\n';
        }
        line("</data>");
    }

    Result<> uidElement(UID uid) {
        if (!std::in_range<std::int64_t>(uid.value)) return unwritable("the UID is larger than an integer of XML");
        line("<dict>");
        line("\t<key>CF$UID</key>");
        line(fmt::format("\t<integer>{}</integer>", uid.value));
        line("</dict>");
        return {};
    }

    std::string& out_;
    std::vector<Container> open_;
};

} // namespace

Result<std::string> xmlDataFromPropertyList(const Value& value) {
    std::string out(kHead);
    XMLVisitor visitor(out);
    TRY(PropertyListWalk().run(value, visitor));
    out += kTail;
    return out;
}

} // namespace platform
