#include "platform/foundation/CodePage.h"

#include <cstdint>
#include <memory>

#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>

namespace platform {

namespace {

struct CloseConverter {
    void operator()(UConverter* converter) const { ucnv_close(converter); }
};

// Every ill-formed or unknown sequence alike: left alone, some code pages would give a control character.
void replaceUnknown(const void*, UConverterToUnicodeArgs* arguments, const char*, std::int32_t,
                    UConverterCallbackReason reason, UErrorCode* status) {
    if (reason > UCNV_IRREGULAR) return;
    constexpr char16_t kReplacement = 0xFFFD;
    *status = U_ZERO_ERROR;
    ucnv_cbToUWriteUChars(arguments, &kReplacement, 1, 0, status);
}

} // namespace

std::optional<std::u16string> decodeBytes(std::string_view bytes, std::string_view codePageName) {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<UConverter, CloseConverter> converter(ucnv_open(std::string(codePageName).c_str(), &status));
    if (U_FAILURE(status) || codePageName.empty()) return std::nullopt;
    ucnv_setToUCallBack(converter.get(), replaceUnknown, nullptr, nullptr, nullptr, &status);
    const std::size_t piece = bytes.size() + 16; // enough at once for every code page but odd ones
    std::u16string text;
    const char* source = bytes.data();
    const char* const sourceEnd = source + bytes.size();
    do {
        const std::size_t before = text.size();
        text.resize(before + piece);
        char16_t* target = text.data() + before;
        status = U_ZERO_ERROR;
        ucnv_toUnicode(converter.get(), &target, text.data() + text.size(), &source, sourceEnd, nullptr, true, &status);
        text.resize(static_cast<std::size_t>(target - text.data()));
    } while (status == U_BUFFER_OVERFLOW_ERROR);
    return text;
}

} // namespace platform
