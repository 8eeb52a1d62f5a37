#include "platform/xml/HTMLEncoding.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <memory>
#include <optional>

#include <libxml/encoding.h>

#include "platform/base/UTF16.h"
#include "platform/xml/QuietLibrary.h"

namespace platform {

namespace {

constexpr std::string_view kDeclaration = "charset";
constexpr std::size_t kDeclarationSearch = 1024; // bytes in which a page's declaration must lie

// 0x80 to 0x9F of Windows-1252, which pages mean when they say ISO-8859-1.
constexpr std::array<char16_t, 32> kWindows1252{
    0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x8D,   0x017D, 0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178,
};

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower;
}

// The value of the first "charset=" of a meta element near the start; "" without one.
std::string declaredEncoding(std::string_view bytes) {
    const std::string start = lowerCase(bytes.substr(0, kDeclarationSearch));
    for (std::size_t at = start.find("<meta"); at != std::string::npos; at = start.find("<meta", at + 1)) {
        const std::size_t end = std::min(start.find('>', at), start.size());
        std::size_t value = start.find(kDeclaration, at);
        if (value == std::string::npos || value >= end) continue;
        value = start.find_first_not_of(" \t\n\r\f", value + kDeclaration.size());
        if (value == std::string::npos || start[value] != '=') continue;
        value = start.find_first_not_of(" \t\n\r\f\"'", value + 1);
        if (value == std::string::npos) continue;
        return start.substr(value, start.find_first_of(" \t\n\r\f\"';/>", value) - value);
    }
    return {};
}

std::string fromWindows1252(std::string_view bytes) {
    std::u16string text;
    text.reserve(bytes.size());
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        text += value >= 0x80 && value < 0xA0 ? kWindows1252[value - 0x80] : static_cast<char16_t>(value);
    }
    return utf8FromUTF16(text);
}

std::string fromUTF16(std::string_view bytes, bool bigEndian) {
    std::u16string text;
    text.reserve(bytes.size() / 2);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto first = static_cast<unsigned char>(bytes[i]), second = static_cast<unsigned char>(bytes[i + 1]);
        text += static_cast<char16_t>(bigEndian ? first << 8 | second : second << 8 | first);
    }
    return utf8FromUTF16(text);
}

struct ReleaseBuffer {
    void operator()(xmlBuffer* buffer) const { xmlBufferFree(buffer); }
};
struct ReleaseHandler {
    void operator()(xmlCharEncodingHandler* handler) const { xmlCharEncCloseFunc(handler); }
};

// With the system's converter; nothing when it has none of that name or the bytes are not of that encoding.
std::optional<std::string> converted(std::string_view bytes, const std::string& encoding) {
    if (bytes.size() > static_cast<std::size_t>(INT32_MAX)) return std::nullopt;
    const QuietLibrary quiet;
    const std::unique_ptr<xmlCharEncodingHandler, ReleaseHandler> handler(xmlFindCharEncodingHandler(encoding.c_str()));
    const std::unique_ptr<xmlBuffer, ReleaseBuffer> in(xmlBufferCreate()), out(xmlBufferCreate());
    if (!handler || !in || !out) return std::nullopt;
    if (xmlBufferAdd(in.get(), reinterpret_cast<const xmlChar*>(bytes.data()), static_cast<int>(bytes.size())) != 0)
        return std::nullopt;
    while (xmlBufferLength(in.get()) > 0) {
        const int before = xmlBufferLength(in.get());
        if (xmlCharEncInFunc(handler.get(), out.get(), in.get()) < 0 || xmlBufferLength(in.get()) >= before)
            return std::nullopt;
    }
    return std::string(reinterpret_cast<const char*>(xmlBufferContent(out.get())),
                       static_cast<std::size_t>(xmlBufferLength(out.get())));
}

DecodedHTML decodedBytes(std::string_view bytes) {
    if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
    if (bytes.starts_with("\xFE\xFF")) return {fromUTF16(bytes.substr(2), true), "utf-16be"};
    if (bytes.starts_with("\xFF\xFE")) return {fromUTF16(bytes.substr(2), false), "utf-16le"};
    const std::string declared = declaredEncoding(bytes);
    const bool isUnicode = namesUnicode(declared);
    const bool isLatin = declared == "iso-8859-1" || declared == "latin1" || declared == "windows-1252" ||
                         declared == "us-ascii" || declared == "ascii" || declared == "cp1252";
    if (!isUnicode && !isLatin && !declared.empty())
        if (auto text = converted(bytes, declared)) return {std::move(*text), declared};
    if (isLatin) return {fromWindows1252(bytes), "windows-1252"};
    if (isValidUTF8(bytes)) return {std::string(bytes), "utf-8"};
    if (isUnicode) return {utf8FromUTF16(utf16FromUTF8(bytes)), "utf-8"};
    return {fromWindows1252(bytes), "windows-1252"};
}

constexpr std::string_view kSectionStart = "<![CDATA[", kSectionEnd = "]]>";

void appendEscaped(std::string& out, std::string_view text) {
    for (const char byte : text) {
        if (byte == '&') {
            out += "&amp;";
        } else if (byte == '<') {
            out += "&lt;";
        } else {
            out += byte;
        }
    }
}

// Whether a script or style element is open behind a piece of markup, given whether one was before it.
bool endsInScript(std::string_view piece, bool before) {
    const auto last = [piece](std::string_view a, std::string_view b) {
        const std::size_t first = piece.rfind(a), second = piece.rfind(b);
        return std::max(first == piece.npos ? 0 : first + 1, second == piece.npos ? 0 : second + 1);
    };
    const std::size_t opened = last("<script", "<style"), closed = last("</script", "</style");
    return opened == closed ? before : opened > closed;
}

// A script that is commented out as XML keeps its marks: inside script and style they are no markup.
std::string withEscapedSections(std::string_view text) {
    std::string out;
    out.reserve(text.size() + text.size() / 16);
    std::size_t from = 0;
    bool inScript = false;
    for (std::size_t at; (at = text.find(kSectionStart, from)) != std::string_view::npos;) {
        const std::size_t end = text.find(kSectionEnd, at);
        const std::size_t start = at + kSectionStart.size();
        out += text.substr(from, at - from);
        inScript = endsInScript(text.substr(from, at - from), inScript);
        const std::string_view content = text.substr(start, end == std::string_view::npos ? end : end - start);
        if (inScript) {
            out += content;
        } else {
            appendEscaped(out, content);
        }
        if (end == std::string_view::npos) return out;
        from = end + kSectionEnd.size();
    }
    out += text.substr(from);
    return out;
}

// NUL would end the page for the parser; a line ends in LF alone.
void removeNulAndReturn(std::string& text) {
    std::size_t kept = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\0') continue;
        if (text[i] == '\r') {
            if (i + 1 < text.size() && text[i + 1] == '\n') continue;
            text[kept++] = '\n';
        } else {
            text[kept++] = text[i];
        }
    }
    text.resize(kept);
}

} // namespace

char16_t windows1252(unsigned char byte) {
    return kWindows1252[byte % kWindows1252.size()];
}

// A declaration that could be read byte by byte is not of a two-byte encoding, whatever it says.
bool namesUnicode(std::string_view declared) {
    const std::string name = lowerCase(declared);
    return name.starts_with("utf-") || name == "utf8" || name == "unicode";
}

bool mentionsEncoding(std::string_view text) {
    return lowerCase(text).contains(kDeclaration);
}

DecodedHTML decodedHTML(std::string_view bytes) {
    DecodedHTML decoded = decodedBytes(bytes);
    if (decoded.text.find('\0') != std::string::npos || decoded.text.find('\r') != std::string::npos)
        removeNulAndReturn(decoded.text);
    if (decoded.text.find(kSectionStart) != std::string::npos) decoded.text = withEscapedSections(decoded.text);
    return decoded;
}

} // namespace platform
