// The reader's machine: from bytes of a code page, and from words for characters, to where the group's text goes.
#include <algorithm>
#include <array>
#include <utility>

#include "platform/base/UTF16.h"
#include "platform/foundation/CodePage.h"
#include "platform/rtf/RTFOutput.h"
#include "platform/rtf/RTFReading.h"

namespace platform {

namespace {

constexpr unsigned char kGraphicPlaceholder = 0xAC;

// Upper half of Windows-1252 as characters; holes are the controls of the same number.
std::array<char16_t, 128> makeWindows1252() {
    std::array<char16_t, 128> units{};
    for (char16_t unit = 0; unit < 128; ++unit) units[unit] = static_cast<char16_t>(0x80 + unit);
    for (char16_t unit = 0x100; unit < 0x2200; ++unit)
        if (const char byte = windows1252Byte(unit)) units[static_cast<unsigned char>(byte) - 0x80U] = unit;
    return units;
}

char16_t windows1252Character(unsigned char byte) {
    static const std::array<char16_t, 128> kUnits = makeWindows1252();
    return byte < 0x80 ? byte : kUnits[byte - 0x80U];
}

} // namespace

void RTFReading::text(std::string_view bytes) {
    if (group_.destination == RTFDestination::skip) return;
    while (replacement_ > 0 && !bytes.empty()) {
        --replacement_;
        bytes.remove_prefix(1);
    }
    if (group_.destination == RTFDestination::picture) return pictureText(bytes);
    if (group_.destination == RTFDestination::graphic && !graphicNameEnded_) {
        graphicName_ += bytes;
        return;
    }
    while (!bytes.empty()) {
        std::size_t plain = 0;
        if (bytes_.empty())
            while (plain < bytes.size() && static_cast<unsigned char>(bytes[plain]) < 0x80) ++plain;
        if (plain > 0) {
            outputPlain(bytes.substr(0, plain));
            bytes.remove_prefix(plain);
            continue;
        }
        textByte(static_cast<unsigned char>(bytes.front()));
        bytes.remove_prefix(1);
    }
}

void RTFReading::outputPlain(std::string_view ascii) {
    std::array<char16_t, 512> units;
    while (!ascii.empty()) {
        const std::size_t count = std::min(ascii.size(), units.size());
        for (std::size_t i = 0; i < count; ++i) units[i] = static_cast<unsigned char>(ascii[i]);
        output({units.data(), count});
        ascii.remove_prefix(count);
    }
}

std::int32_t RTFReading::codePage() const {
    return group_.destination == RTFDestination::fonts ? document_.codePage
                                                       : fonts_.codePageOf(group_.characters.font, document_.codePage);
}

// A byte as text. Bytes of other code pages than Windows-1252 are held until the run of them ends, since one
// character may take two.
void RTFReading::textByte(unsigned char byte) {
    if (group_.destination == RTFDestination::graphic) {
        if (!graphicNameEnded_) graphicName_ += static_cast<char>(byte);
        return;
    }
    if (group_.destination == RTFDestination::listLevelText) return lists_.levelTextByte(byte);
    if (graphicWaits_ && byte == kGraphicPlaceholder && group_.destination == RTFDestination::body)
        return placeGraphic();
    const std::int32_t page = codePage();
    if (page == 1252) {
        const char16_t unit = windows1252Character(byte);
        output({&unit, 1});
        return;
    }
    bytesCodePage_ = page;
    bytes_ += static_cast<char>(byte);
}

void RTFReading::flushBytes() {
    if (bytes_.empty()) return;
    const std::string bytes = std::exchange(bytes_, {});
    const auto text = decodeBytes(bytes, codePageName(bytesCodePage_));
    output(text ? *text : utf16FromUTF8(bytes));
}

void RTFReading::unicode(std::int32_t number) {
    flushBytes();
    replacement_ = group_.replacements;
    const auto unit = static_cast<char16_t>(number & 0xFFFF); // negative numbers are 16-bit ones
    if (group_.destination == RTFDestination::graphic) {
        if (!graphicNameEnded_) graphicName_ += utf8FromUTF16({&unit, 1});
        return;
    }
    output({&unit, 1});
}

void RTFReading::output(std::u16string_view text) {
    switch (group_.destination) {
    case RTFDestination::body:
        placeGraphic();
        builder_.append(text, group_.characters);
        break;
    case RTFDestination::fonts:
        fonts_.text(text);
        break;
    case RTFDestination::colors:
        colors_.text(text);
        break;
    case RTFDestination::expandedColors:
        colors_.expandedText(text);
        break;
    case RTFDestination::listMarker:
        lists_.text(RTFReadLists::Part::marker, text);
        break;
    case RTFDestination::listLevelText:
        lists_.text(RTFReadLists::Part::levelText, text);
        break;
    case RTFDestination::fieldInstruction:
        if (group_.field != 0) fields_[group_.field - 1].instruction += utf8FromUTF16(text);
        break;
    case RTFDestination::marker:
        marker_ += text;
        break;
    case RTFDestination::graphic:
        if (!graphicNameEnded_) graphicName_ += utf8FromUTF16(text);
        break;
    default:
        break;
    }
}

} // namespace platform
