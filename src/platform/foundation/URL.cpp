// The text is the whole state; every question splits it anew into the five parts of RFC 3986, appendix B, which costs
// one pass over an address of some dozen bytes. Path operations work on the encoded path, so that an encoded "/" never
// counts as a separator.
#include "platform/foundation/URL.h"

#include <array>
#include <filesystem>
#include <system_error>

#include "platform/foundation/PathString.h"
#include "platform/foundation/Percent.h"

namespace platform {

namespace {

struct Parts {
    std::optional<std::string_view> scheme, authority;
    std::string_view path;
    std::optional<std::string_view> query, fragment;
};

constexpr bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
constexpr bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Unreserved and reserved characters; "%" is judged with what follows it, "#" by its place.
constexpr std::array<bool, 256> kAllowed = [] {
    std::array<bool, 256> allowed{};
    for (int c = 0; c < 128; ++c)
        allowed[static_cast<std::size_t>(c)] = isLetter(static_cast<char>(c)) || isDigit(static_cast<char>(c));
    for (const char c : std::string_view("-._~:/?[]@!$&'()*+,;=")) allowed[static_cast<unsigned char>(c)] = true;
    return allowed;
}();

// Cuts `text` at the first `separator`; what follows it, if there is one.
std::optional<std::string_view> cutBehind(std::string_view& text, char separator) {
    const std::size_t place = text.find(separator);
    if (place == std::string_view::npos) return std::nullopt;
    const std::string_view behind = text.substr(place + 1);
    text = text.substr(0, place);
    return behind;
}

std::optional<std::string_view> takeScheme(std::string_view& text) {
    if (text.empty() || !isLetter(text.front())) return std::nullopt;
    for (std::size_t i = 1; i < text.size(); ++i) {
        const char c = text[i];
        if (c == ':') {
            const std::string_view scheme = text.substr(0, i);
            text.remove_prefix(i + 1);
            return scheme;
        }
        if (!isLetter(c) && !isDigit(c) && c != '+' && c != '-' && c != '.') break;
    }
    return std::nullopt;
}

Parts split(std::string_view text) {
    Parts parts;
    parts.fragment = cutBehind(text, '#');
    parts.query = cutBehind(text, '?');
    parts.scheme = takeScheme(text);
    if (text.starts_with("//")) {
        const std::size_t end = std::min(text.find('/', 2), text.size());
        parts.authority = text.substr(2, end - 2);
        text.remove_prefix(end);
    }
    parts.path = text;
    return parts;
}

std::string join(const Parts& parts) {
    std::string text;
    if (parts.scheme) text.append(*parts.scheme) += ':';
    if (parts.authority) text.append("//").append(*parts.authority);
    // Without an authority, a path that begins with two slashes would be taken for one.
    if (!parts.authority && parts.path.starts_with("//")) text += "/.";
    text += parts.path;
    if (parts.query) (text += '?').append(*parts.query);
    if (parts.fragment) (text += '#').append(*parts.fragment);
    return text;
}

struct HostAndPort {
    std::string_view host; // brackets of an IP literal included
    std::string_view port; // with its colon
};

HostAndPort hostAndPort(std::string_view authority) {
    authority.remove_prefix(authority.rfind('@') + 1); // npos + 1 is 0
    const std::size_t literalEnd = authority.starts_with('[') ? authority.find(']') : 0;
    const std::size_t colon = std::min(authority.find(':', std::min(literalEnd, authority.size())), authority.size());
    return {authority.substr(0, colon), authority.substr(colon)};
}

bool isAuthority(std::string_view authority) {
    const auto [host, port] = hostAndPort(authority);
    if (host.starts_with('[') != host.ends_with(']')) return false;
    const std::string_view inside = host.starts_with('[') ? host.substr(1, host.size() - 2) : host;
    if (inside.contains('[') || inside.contains(']')) return false;
    return port.find_first_not_of("0123456789", 1) == std::string_view::npos;
}

bool isReference(std::string_view text) {
    if (text.empty()) return false;
    const std::size_t fragment = text.find('#');
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (kAllowed[static_cast<unsigned char>(text[i])]) continue;
        const bool good = text[i] == '%' ? isPercentSequence(text, i) : text[i] == '#' && i == fragment;
        if (!good) return false;
    }
    const Parts parts = split(text);
    if (parts.authority) return isAuthority(*parts.authority);
    // The first segment of a relative path may hold no colon: it would read as a scheme.
    return parts.scheme || parts.path.substr(0, parts.path.find('/')).find(':') == std::string_view::npos;
}

// RFC 3986, section 5.2.4, in one pass: what is kept so far is a stack of segments.
std::string withoutDotSegments(std::string_view path) {
    std::string kept;
    kept.reserve(path.size());
    const bool isAbsolute = path.starts_with('/');
    if (isAbsolute) path.remove_prefix(1);
    std::vector<std::size_t> starts; // of the segments kept
    for (bool more = true; more;) {
        const std::size_t end = std::min(path.find('/'), path.size());
        const std::string_view segment = path.substr(0, end);
        more = end < path.size();
        path.remove_prefix(more ? end + 1 : end);
        if (segment == "..") {
            if (!starts.empty()) {
                kept.resize(starts.back());
                starts.pop_back();
            }
        } else if (segment != ".") {
            starts.push_back(kept.size());
            kept += segment;
            if (more) kept += '/';
        }
    }
    return isAbsolute ? "/" + kept : kept;
}

// A relative path put in the place of the base path's last segment.
std::string mergedPath(const Parts& base, std::string_view path) {
    if (base.authority && base.path.empty()) return "/" + std::string(path);
    return std::string(base.path.substr(0, base.path.rfind('/') + 1)) + std::string(path);
}

std::string resolved(const Parts& reference, const Parts& base) {
    Parts target = reference;
    std::string path;
    if (reference.scheme || reference.authority) {
        path = withoutDotSegments(reference.path);
    } else {
        target.authority = base.authority;
        if (reference.path.empty()) {
            path = base.path;
            if (!reference.query) target.query = base.query;
        } else {
            path = withoutDotSegments(reference.path.starts_with('/') ? std::string(reference.path)
                                                                      : mergedPath(base, reference.path));
        }
    }
    if (!reference.scheme) target.scheme = base.scheme;
    target.path = path;
    return join(target);
}

std::string_view withoutTrailingSlashes(std::string_view path) {
    while (path.size() > 1 && path.ends_with('/')) path.remove_suffix(1);
    return path;
}

// The last segment, still encoded; slashes at the end do not count. Empty for the root.
std::string_view lastSegment(std::string_view path) {
    path = withoutTrailingSlashes(path);
    return path.substr(path.rfind('/') + 1);
}

} // namespace

std::optional<URL> URL::fromString(std::string_view text) {
    if (!isReference(text)) return std::nullopt;
    URL url;
    url.text_ = text;
    return url;
}

std::optional<URL> URL::fromString(std::string_view text, const URL& base) {
    // An empty reference names the base's own document.
    if (!text.empty() && !isReference(text)) return std::nullopt;
    const Parts parts = split(text);
    URL url;
    // An absolute address as it is mostly written: what is made of its parts is the text again.
    const bool isResolved = parts.scheme && parts.authority && !parts.path.contains("/.");
    url.text_ = isResolved ? std::string(text) : resolved(parts, split(base.text_));
    return url;
}

URL URL::fromDataRepresentation(std::string_view bytes) {
    URL url;
    url.text_.reserve(bytes.size());
    const std::size_t fragment = bytes.find('#');
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (kAllowed[static_cast<unsigned char>(bytes[i])] || i == fragment || isPercentSequence(bytes, i))
            url.text_ += bytes[i];
        else
            appendPercentEncoded(url.text_, bytes[i]);
    }
    return url;
}

URL URL::fileURLWithPath(std::string_view path, bool isDirectory) {
    URL url;
    url.text_ = "file://";
    if (!path.starts_with('/')) {
        std::error_code error;
        const std::string directory = std::filesystem::current_path(error).string();
        url.text_ += percentEncodedForURLPath(error ? "/" : directory);
        if (!path.empty() && !url.text_.ends_with('/')) url.text_ += '/';
    }
    url.text_ += percentEncodedForURLPath(path);
    if (isDirectory && !url.text_.ends_with('/')) url.text_ += '/';
    return url;
}

std::string URL::scheme() const {
    std::string scheme(split(text_).scheme.value_or(""));
    for (char& c : scheme)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return scheme;
}

std::optional<std::string> URL::host() const {
    const std::optional<std::string_view> authority = split(text_).authority;
    if (!authority) return std::nullopt;
    std::string_view host = hostAndPort(*authority).host;
    if (host.starts_with('[') && host.ends_with(']')) host = host.substr(1, host.size() - 2);
    return percentDecodedBytes(host);
}

std::optional<std::string> URL::query() const {
    return split(text_).query.transform([](std::string_view text) { return std::string(text); });
}

std::optional<std::string> URL::fragment() const {
    return split(text_).fragment.transform([](std::string_view text) { return std::string(text); });
}

std::string URL::path() const {
    return percentDecodedBytes(withoutTrailingSlashes(split(text_).path));
}

std::vector<std::pair<std::string, std::optional<std::string>>> URL::queryItems() const {
    std::vector<std::pair<std::string, std::optional<std::string>>> items;
    std::optional<std::string_view> rest = split(text_).query;
    if (!rest || rest->empty()) return items;
    while (rest) {
        std::string_view name = *rest;
        rest = cutBehind(name, '&');
        const std::optional<std::string_view> value = cutBehind(name, '=');
        items.emplace_back(percentDecodedBytes(name), value.transform(percentDecodedBytes));
    }
    return items;
}

bool URL::isFileURL() const {
    return scheme() == "file";
}

std::string URL::lastPathComponent() const {
    const std::string_view path = split(text_).path;
    if (withoutTrailingSlashes(path) == "/") return "/";
    return percentDecodedBytes(lastSegment(path));
}

std::string URL::pathExtension() const {
    return percentDecodedBytes(platform::pathExtension(lastSegment(split(text_).path)));
}

std::vector<std::string> URL::pathComponents() const {
    std::vector<std::string> components = platform::pathComponents(withoutTrailingSlashes(split(text_).path));
    for (std::string& component : components) component = percentDecodedBytes(component);
    return components;
}

URL URL::appendingPathComponent(std::string_view component, bool isDirectory) const {
    Parts parts = split(text_);
    std::string path(withoutTrailingSlashes(parts.path));
    while (component.starts_with('/')) component.remove_prefix(1);
    if (!path.ends_with('/') && (!path.empty() || parts.authority)) path += '/';
    path += percentEncodedForURLPath(component);
    if (isDirectory && !path.ends_with('/')) path += '/';
    parts.path = path;
    URL url;
    url.text_ = join(parts);
    return url;
}

URL URL::appendingPathExtension(std::string_view extension) const {
    Parts parts = split(text_);
    if (lastSegment(parts.path).empty()) return *this;
    std::string path = platform::appendingPathExtension(parts.path, percentEncodedForURLPath(extension));
    if (parts.path.ends_with('/') && !path.ends_with('/')) path += '/';
    parts.path = path;
    URL url;
    url.text_ = join(parts);
    return url;
}

URL URL::deletingPathExtension() const {
    Parts parts = split(text_);
    std::string path = platform::deletingPathExtension(parts.path);
    if (parts.path.ends_with('/') && !path.ends_with('/')) path += '/';
    parts.path = path;
    URL url;
    url.text_ = join(parts);
    return url;
}

URL URL::deletingLastPathComponent() const {
    Parts parts = split(text_);
    const std::string_view path = withoutTrailingSlashes(parts.path);
    const std::size_t slash = path.rfind('/');
    parts.path = slash == std::string_view::npos ? std::string_view("./") : path.substr(0, slash + 1);
    URL url;
    url.text_ = join(parts);
    return url;
}

URL URL::withScheme(std::string_view scheme) const {
    Parts parts = split(text_);
    parts.scheme = scheme;
    URL url;
    url.text_ = join(parts);
    return url;
}

} // namespace platform
