// Counterpart of UTType: what kind of thing a file is, by identifier, filename extension or MIME type.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform {

inline constexpr std::string_view kUTTypeItem = "public.item";
inline constexpr std::string_view kUTTypeData = "public.data";
inline constexpr std::string_view kUTTypeText = "public.text";
inline constexpr std::string_view kUTTypePlainText = "public.plain-text";
inline constexpr std::string_view kUTTypeHTML = "public.html";
inline constexpr std::string_view kUTTypeRTF = "public.rtf";
inline constexpr std::string_view kUTTypeRTFD = "com.apple.rtfd";
inline constexpr std::string_view kUTTypeImage = "public.image";
inline constexpr std::string_view kUTTypeAudio = "public.audio";
inline constexpr std::string_view kUTTypeMovie = "public.movie";
inline constexpr std::string_view kUTTypePDF = "com.adobe.pdf";
inline constexpr std::string_view kUTTypePackage = "com.apple.package";
inline constexpr std::string_view kUTTypeDirectory = "public.directory";

// A declared type, from one built-in table, or a dynamic one, which stands for a tag that no declared type has.
class UTType {
  public:
    // Nothing for an identifier that is neither declared nor a readable dynamic one.
    static std::optional<UTType> typeWithIdentifier(std::string_view identifier);
    // Tags are compared without regard to ASCII case. Unknown tags give a dynamic type, empty ones nothing.
    static std::optional<UTType> typeWithFilenameExtension(std::string_view extension);
    static std::optional<UTType> typeWithMIMEType(std::string_view mimeType);

    const std::string& identifier() const { return identifier_; }
    bool isDynamic() const { return declaration_ == nullptr; }

    // Whether the type is the other one or descends from it. A dynamic type descends from public.data and public.item.
    bool conformsTo(std::string_view identifier) const;
    std::optional<std::string> preferredFilenameExtension() const;
    std::optional<std::string> preferredMIMEType() const;

    friend bool operator==(const UTType& a, const UTType& b) { return a.identifier_ == b.identifier_; }

  private:
    struct DynamicTag {
        bool conformsToData = true;
        char kind = 0; // '1' filename extension, '3' MIME type; others are kept but mean nothing here
        std::string value;
    };

    UTType() = default;
    static UTType declared(const struct UTTypeDeclaration& declaration);
    static UTType dynamic(char kind, std::string_view value);
    static std::optional<UTType> readDynamic(std::string_view identifier);

    std::string identifier_;
    const struct UTTypeDeclaration* declaration_ = nullptr; // null when dynamic
    DynamicTag tag_;
};

// Whether files of that MIME type conform to the other type; an unknown MIME type conforms to data and item.
bool mimeTypeConformsTo(std::string_view mimeType, std::string_view identifier);

} // namespace platform
