// Counterpart of NSURL: an address as its percent-encoded string (RFC 3986), with an optional base.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace platform {

class URL {
  public:
    URL() = default;

    // Nothing for a text that is no URL reference: an empty text, or one with characters that RFC 3986 does not allow
    // ("%" not followed by two hexadecimal digits, blanks, controls, non-ASCII).
    static std::optional<URL> fromString(std::string_view text);
    // Resolved against the base at once (RFC 3986, section 5.2).
    static std::optional<URL> fromString(std::string_view text, const URL& base);
    // The URL whose relative string is the bytes with what a URL may not hold percent-encoded. Never fails.
    static URL fromDataRepresentation(std::string_view bytes);
    // A file URL; a relative path is taken from the working directory. Bytes that a URL may not hold are
    // percent-encoded, so any path round-trips. A directory's URL ends in "/".
    static URL fileURLWithPath(std::string_view path, bool isDirectory = false);

    const std::string& absoluteString() const { return text_; }
    std::string scheme() const;                  // lower case; "" when absent
    std::optional<std::string> host() const;     // percent-decoded
    std::optional<std::string> query() const;    // still encoded
    std::optional<std::string> fragment() const; // still encoded
    std::string path() const;                    // percent-decoded bytes, without a trailing "/" (save for the root)
    // Name and value of each query item, percent-decoded; a value is absent without "=".
    std::vector<std::pair<std::string, std::optional<std::string>>> queryItems() const;

    bool isFileURL() const;
    std::string lastPathComponent() const;           // percent-decoded bytes
    std::string pathExtension() const;               // without the dot; "" when none
    std::vector<std::string> pathComponents() const; // "/" first for an absolute path
    URL appendingPathComponent(std::string_view component, bool isDirectory = false) const;
    URL appendingPathExtension(std::string_view extension) const;
    URL deletingPathExtension() const;
    URL deletingLastPathComponent() const;
    URL withScheme(std::string_view scheme) const;

    bool empty() const { return text_.empty(); }
    friend bool operator==(const URL&, const URL&) = default;

  private:
    std::string text_;
};

} // namespace platform
