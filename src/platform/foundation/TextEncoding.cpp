#include "platform/foundation/TextEncoding.h"

#include <algorithm>
#include <memory>

#include <unicode/ucnv.h>

namespace platform {

namespace {

struct EncodingName {
    TextEncoding encoding;
    const char* name; // of the library's converter
};

constexpr EncodingName kEncodingNames[] = {
    {TextEncoding::ascii, "US-ASCII"},
    {TextEncoding::japaneseEUC, "EUC-JP"},
    {TextEncoding::utf8, "UTF-8"},
    {TextEncoding::isoLatin1, "ISO-8859-1"},
    {TextEncoding::shiftJIS, "Shift_JIS"},
    {TextEncoding::isoLatin2, "ISO-8859-2"},
    {TextEncoding::utf16, "UTF-16"},
    {TextEncoding::windowsCP1251, "windows-1251"},
    {TextEncoding::windowsCP1252, "windows-1252"},
    {TextEncoding::windowsCP1253, "windows-1253"},
    {TextEncoding::windowsCP1254, "windows-1254"},
    {TextEncoding::windowsCP1250, "windows-1250"},
    {TextEncoding::iso2022JP, "ISO-2022-JP"},
    {TextEncoding::macOSRoman, "macintosh"},
    {TextEncoding::utf16BigEndian, "UTF-16BE"},
    {TextEncoding::utf16LittleEndian, "UTF-16LE"},
};

using Converter = std::unique_ptr<UConverter, decltype(&ucnv_close)>;

} // namespace

std::optional<std::u16string> decodedText(std::string_view bytes, TextEncoding encoding) {
    const auto* known = std::ranges::find(kEncodingNames, encoding, &EncodingName::encoding);
    if (known == std::end(kEncodingNames)) return std::nullopt;
    UErrorCode status = U_ZERO_ERROR;
    const Converter converter(ucnv_open(known->name, &status), ucnv_close);
    ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    std::u16string text(bytes.size() + 1, u'\0'); // no encoding of the table gives more units than it has bytes
    const int32_t length = ucnv_toUChars(converter.get(), text.data(), static_cast<int32_t>(text.size()), bytes.data(),
                                         static_cast<int32_t>(bytes.size()), &status);
    if (U_FAILURE(status)) return std::nullopt;
    text.resize(static_cast<std::size_t>(length));
    return text;
}

} // namespace platform
