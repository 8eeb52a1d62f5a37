// Code points are folded one by one: width first (a half width form may have case), then case, then decomposition,
// from which the marks are dropped. ASCII and letters without case, marks or width never reach the library.
#include "platform/foundation/TextFolding.h"

#include <algorithm>

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utf16.h>

namespace platform {

namespace {

constexpr std::uint8_t kViramaClass = 9; // joins consonants: part of the spelling

const icu::Normalizer2& decomposer() {
    UErrorCode status = U_ZERO_ERROR;
    static const icu::Normalizer2* const instance = icu::Normalizer2::getNFDInstance(status);
    return *instance;
}

// The ordinary character of a full or half width form; every other stays.
char32_t withoutWidth(char32_t point) {
    const int type = u_getIntPropertyValue(static_cast<UChar32>(point), UCHAR_DECOMPOSITION_TYPE);
    if (type != U_DT_WIDE && type != U_DT_NARROW) return point;
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* compatibility = icu::Normalizer2::getNFKDInstance(status);
    icu::UnicodeString ordinary;
    if (U_FAILURE(status) || !compatibility->getRawDecomposition(static_cast<UChar32>(point), ordinary)) return point;
    return static_cast<char32_t>(ordinary.char32At(0));
}

bool mayHaveWidth(char32_t point) {
    return point == 0x3000 || (point >= 0xFF00 && point <= 0xFFEF);
}

// Whether no option changes the code point.
bool staysAsItIs(char32_t point) {
    const auto c = static_cast<UChar32>(point);
    return !mayHaveWidth(point) && !u_hasBinaryProperty(c, UCHAR_CASED) && decomposer().isInert(c);
}

// Signs for vowels have class 0: without them an Indic or Thai word is another word.
bool isDiacritic(UChar32 point) {
    const std::uint8_t combiningClass = u_getCombiningClass(point);
    return combiningClass != 0 && combiningClass != kViramaClass;
}

void appendCodePoint(UChar32 point, std::u16string& out) {
    if (U_IS_BMP(point)) {
        out += static_cast<char16_t>(point);
    } else {
        out += static_cast<char16_t>(U16_LEAD(point));
        out += static_cast<char16_t>(U16_TRAIL(point));
    }
}

void appendASCII(char16_t unit, FoldingOptions options, std::u16string& out) {
    if (options.ignoreCase && unit >= u'A' && unit <= u'Z')
        unit = options.turkic && unit == u'I' ? u'ı' : static_cast<char16_t>(unit + (u'a' - u'A'));
    out += unit;
}

} // namespace

char32_t takeCodePoint(std::u16string_view text, std::size_t& position) {
    char32_t point = text[position++];
    if (U16_IS_LEAD(point) && position < text.size() && U16_IS_TRAIL(text[position]))
        point = static_cast<char32_t>(U16_GET_SUPPLEMENTARY(point, text[position++]));
    return point;
}

void appendFolded(char32_t point, FoldingOptions options, std::u16string& out) {
    if (point < 0x80) return appendASCII(static_cast<char16_t>(point), options, out);
    if (staysAsItIs(point)) return appendCodePoint(static_cast<UChar32>(point), out);
    if (options.ignoreWidth) point = withoutWidth(point);
    icu::UnicodeString text(static_cast<UChar32>(point));
    if (options.ignoreCase) text.foldCase(options.turkic ? U_FOLD_CASE_EXCLUDE_SPECIAL_I : U_FOLD_CASE_DEFAULT);
    UErrorCode status = U_ZERO_ERROR;
    text = decomposer().normalize(text, status);
    for (int32_t i = 0; i < text.length(); i = text.moveIndex32(i, 1)) {
        const UChar32 part = text.char32At(i);
        if (!options.ignoreDiacritics || !isDiacritic(part)) appendCodePoint(part, out);
    }
}

std::u16string foldedText(std::u16string_view text, FoldingOptions options) {
    std::u16string folded;
    folded.reserve(text.size());
    for (std::size_t position = 0; position < text.size();)
        appendFolded(takeCodePoint(text, position), options, folded);
    // Marks that stay have to be put in order again.
    return options.ignoreDiacritics ? folded : decomposedText(folded);
}

std::u16string decomposedText(std::u16string_view text) {
    if (std::ranges::all_of(text, [](char16_t unit) { return unit < 0x80; })) return std::u16string(text);
    UErrorCode status = U_ZERO_ERROR;
    const icu::UnicodeString source(false, text.data(), static_cast<int32_t>(text.size()));
    const icu::UnicodeString result = decomposer().normalize(source, status);
    return {result.getBuffer(), static_cast<std::size_t>(result.length())};
}

bool equalAsFilenames(std::u16string_view a, std::u16string_view b) {
    constexpr FoldingOptions options{.ignoreCase = true, .ignoreDiacritics = true, .ignoreWidth = true};
    return a == b || foldedText(a, options) == foldedText(b, options);
}

bool equalIgnoringCase(std::u16string_view a, std::u16string_view b) {
    constexpr FoldingOptions options{.ignoreCase = true};
    return a == b || foldedText(a, options) == foldedText(b, options);
}

} // namespace platform
