// The file: a magic number that shows the byte order, a revision, the number of texts, the places of two tables with
// length and offset of each text, the English ones and the translations. All numbers have 32 bits.
#include "platform/foundation/MessageCatalogue.h"

#include <cstdint>

#include "platform/base/UTF16.h"

namespace platform {

namespace {

constexpr std::uint32_t kMagic = 0x950412DE;
constexpr std::size_t kWord = 4, kTableRow = 8;

class Reader {
  public:
    explicit Reader(std::string_view bytes) : bytes_(bytes) {}

    bool takeByteOrder() {
        isLittleEndian_ = number(0) == kMagic;
        if (isLittleEndian_) return true;
        isLittleEndian_ = false;
        return number(0) == kMagic;
    }

    // 0 behind the end.
    std::uint32_t number(std::size_t offset) const {
        if (offset > bytes_.size() || bytes_.size() - offset < kWord) return 0;
        std::uint32_t result = 0;
        for (std::size_t i = 0; i < kWord; ++i) {
            const std::size_t place = isLittleEndian_ ? kWord - 1 - i : i;
            result = result << 8 | static_cast<unsigned char>(bytes_[offset + place]);
        }
        return result;
    }

    // The text that a row of a table names, up to its first NUL; nothing when it lies outside the file.
    std::optional<std::string_view> text(std::size_t row) const {
        const std::size_t length = number(row), offset = number(row + kWord);
        if (offset > bytes_.size() || length > bytes_.size() - offset) return std::nullopt;
        const std::string_view whole = bytes_.substr(offset, length);
        return whole.substr(0, whole.find('\0'));
    }

  private:
    std::string_view bytes_;
    bool isLittleEndian_ = true;
};

} // namespace

std::optional<MessageCatalogue> MessageCatalogue::fromData(std::string_view bytes) {
    Reader reader(bytes);
    if (!reader.takeByteOrder() || reader.number(kWord) >> 16 > 1) return std::nullopt;
    const std::size_t count = reader.number(2 * kWord);
    const std::size_t originals = reader.number(3 * kWord), translations = reader.number(4 * kWord);
    if (count > bytes.size() / kTableRow) return std::nullopt;
    MessageCatalogue catalogue;
    for (std::size_t i = 0; i < count; ++i) {
        const auto english = reader.text(originals + i * kTableRow);
        const auto translation = reader.text(translations + i * kTableRow);
        if (!english || !translation || !isValidUTF8(*translation)) return std::nullopt;
        // The empty text is the catalogue's header.
        if (!english->empty() && !translation->empty()) catalogue.translations_.emplace(*english, *translation);
    }
    return catalogue;
}

std::optional<std::string_view> MessageCatalogue::translation(std::string_view english) const {
    const auto place = translations_.find(english);
    if (place == translations_.end()) return std::nullopt;
    return place->second;
}

} // namespace platform
