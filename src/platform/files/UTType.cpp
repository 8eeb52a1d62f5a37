#include "platform/files/UTType.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <unordered_map>
#include <vector>

#include "platform/files/UTTypeTable.h"

namespace platform {

namespace {

// The parts of a list separated by blanks.
std::vector<std::string_view> parts(std::string_view list) {
    std::vector<std::string_view> result;
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(' '), list.size());
        result.push_back(list.substr(0, end));
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return result;
}

std::string lowercaseASCII(std::string_view text) {
    std::string lower(text);
    for (char& c : lower)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return lower;
}

using Index = std::unordered_map<std::string_view, const UTTypeDeclaration*>;

// From every part of one column to its first row.
Index indexOf(std::string_view UTTypeDeclaration::* column) {
    Index index;
    for (const UTTypeDeclaration& row : utTypeDeclarations())
        for (const std::string_view part : parts(row.*column)) index.try_emplace(part, &row);
    return index;
}

const UTTypeDeclaration* find(const Index& index, std::string_view key) {
    const auto found = index.find(key);
    return found == index.end() ? nullptr : found->second;
}

const UTTypeDeclaration* rowOfIdentifier(std::string_view identifier) {
    static const Index index = indexOf(&UTTypeDeclaration::identifier);
    return find(index, identifier);
}

// ---- dynamic identifiers
//
// "dyn.a" and the tag in base 32: the bytes of "?0=6:1=EXTENSION" or "?0=6:3=MIME" as one bit string, most significant
// first, filled up with zero bits. "0=6" says that the type conforms to public.data; without it the text is "1=…".

constexpr std::string_view kDynamicPrefix = "dyn.a";
constexpr std::string_view kAlphabet = "abcdefghkmnpqrstuvwxyz0123456789";
constexpr std::string_view kConformsToData = "?0=6:";
constexpr char kFilenameExtensionKind = '1';
constexpr char kMIMETypeKind = '3';

std::string base32(std::string_view bytes) {
    std::string text;
    std::uint32_t bits = 0;
    unsigned count = 0;
    for (const char byte : bytes) {
        bits = bits << 8 | static_cast<unsigned char>(byte);
        for (count += 8; count >= 5; count -= 5) text += kAlphabet[bits >> (count - 5) & 31];
    }
    if (count > 0) text += kAlphabet[bits << (5 - count) & 31];
    return text;
}

std::optional<std::string> bytesFromBase32(std::string_view text) {
    std::string bytes;
    std::uint32_t bits = 0;
    unsigned count = 0;
    for (const char character : text) {
        const std::size_t digit = kAlphabet.find(character);
        if (digit == std::string_view::npos) return std::nullopt;
        bits = bits << 5 | static_cast<std::uint32_t>(digit);
        count += 5;
        if (count < 8) continue;
        count -= 8;
        bytes += static_cast<char>(bits >> count & 0xFF);
    }
    return bytes;
}

// A type's parents, and the parents' parents, each once.
bool descendsFrom(const UTTypeDeclaration& row, std::string_view identifier) {
    std::vector<const UTTypeDeclaration*> pending{&row};
    for (std::size_t i = 0; i < pending.size(); ++i) {
        if (pending[i]->identifier == identifier) return true;
        for (const std::string_view parent : parts(pending[i]->parents)) {
            const UTTypeDeclaration* found = rowOfIdentifier(parent);
            if (found && std::ranges::find(pending, found) == pending.end()) pending.push_back(found);
        }
    }
    return false;
}

std::optional<std::string> firstPart(std::string_view list) {
    if (list.empty()) return std::nullopt;
    return std::string(list.substr(0, list.find(' ')));
}

} // namespace

UTType UTType::declared(const UTTypeDeclaration& declaration) {
    UTType type;
    type.identifier_ = declaration.identifier;
    type.declaration_ = &declaration;
    return type;
}

UTType UTType::dynamic(char kind, std::string_view value) {
    UTType type;
    type.tag_ = {true, kind, std::string(value)};
    type.identifier_ =
        std::string(kDynamicPrefix) + base32(std::string(kConformsToData) + kind + '=' + std::string(value));
    return type;
}

std::optional<UTType> UTType::readDynamic(std::string_view identifier) {
    const auto bytes = bytesFromBase32(identifier.substr(kDynamicPrefix.size()));
    if (!bytes) return std::nullopt;
    std::string_view text = *bytes;
    UTType type;
    type.identifier_ = identifier;
    type.tag_.conformsToData = text.starts_with(kConformsToData);
    if (type.tag_.conformsToData) text.remove_prefix(kConformsToData.size());
    if (text.size() < 3 || text[0] < '1' || text[0] > '4' || text[1] != '=') return std::nullopt;
    type.tag_.kind = text[0];
    type.tag_.value = text.substr(2);
    return type;
}

std::optional<UTType> UTType::typeWithIdentifier(std::string_view identifier) {
    if (const UTTypeDeclaration* row = rowOfIdentifier(identifier)) return declared(*row);
    if (identifier.starts_with(kDynamicPrefix)) return readDynamic(identifier);
    return std::nullopt;
}

std::optional<UTType> UTType::typeWithFilenameExtension(std::string_view extension) {
    static const Index index = indexOf(&UTTypeDeclaration::extensions);
    if (extension.empty()) return std::nullopt;
    const std::string tag = lowercaseASCII(extension);
    const UTTypeDeclaration* row = find(index, tag);
    return row ? declared(*row) : dynamic(kFilenameExtensionKind, tag);
}

std::optional<UTType> UTType::typeWithMIMEType(std::string_view mimeType) {
    static const Index index = indexOf(&UTTypeDeclaration::mimeTypes);
    if (mimeType.empty()) return std::nullopt;
    const std::string tag = lowercaseASCII(mimeType);
    const UTTypeDeclaration* row = find(index, tag);
    return row ? declared(*row) : dynamic(kMIMETypeKind, tag);
}

bool UTType::conformsTo(std::string_view identifier) const {
    if (identifier == identifier_) return true;
    if (declaration_) return descendsFrom(*declaration_, identifier);
    return tag_.conformsToData && (identifier == kUTTypeData || identifier == kUTTypeItem);
}

std::optional<std::string> UTType::preferredFilenameExtension() const {
    if (declaration_) return firstPart(declaration_->extensions);
    return tag_.kind == kFilenameExtensionKind ? std::optional(tag_.value) : std::nullopt;
}

std::optional<std::string> UTType::preferredMIMEType() const {
    if (declaration_) return firstPart(declaration_->mimeTypes);
    return tag_.kind == kMIMETypeKind ? std::optional(tag_.value) : std::nullopt;
}

bool mimeTypeConformsTo(std::string_view mimeType, std::string_view identifier) {
    const auto type = UTType::typeWithMIMEType(mimeType);
    return type && type->conformsTo(identifier);
}

} // namespace platform
