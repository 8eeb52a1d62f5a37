// Metrics are those of a family's regular face and stand for all its faces. None were read from the fonts themselves,
// which are not to be had here. Where the figures come from:
//   Helvetica Neue, Helvetica, Arial, Georgia, Verdana, Times New Roman, Courier New, Trebuchet MS and the system font:
//   the npm package @capsizecss/metrics, checked figure by figure.
//   Menlo: DejaVu Sans Mono, which it was made from.
//   Times, Courier: chosen so that lines are 14, 18, 22 and 28 points high at 12, 16, 18 and 24, as text from HTML is.
//   Monaco, Gill Sans, Apple Chancery, Papyrus: estimates; a line of the right order of height, and no more.
//
// Faces are listed as they are known from documents that name them; a face missing here is taken for a font outside the
// table. Weights are the font manager's numbers for the weight words in face names: ultralight 1, thin 2, light 3,
// regular 5, medium 6, semibold 8, bold 9, black 12.

#include "platform/graphics/FontTable.h"

#include "platform/graphics/Font.h"

namespace platform {

namespace {

constexpr std::uint32_t kRoman = 0;
constexpr std::uint32_t kItalic = kItalicFontTrait;
constexpr std::uint32_t kBold = kBoldFontTrait;
constexpr std::uint32_t kFixed = kFixedPitchFontTrait;

constexpr FontFace kHelveticaNeue[] = {
    {"HelveticaNeue", kRoman, 5},
    {"HelveticaNeue-Italic", kItalic, 5},
    {"HelveticaNeue-UltraLight", kRoman, 1},
    {"HelveticaNeue-UltraLightItalic", kItalic, 1},
    {"HelveticaNeue-Thin", kRoman, 2},
    {"HelveticaNeue-ThinItalic", kItalic, 2},
    {"HelveticaNeue-Light", kRoman, 3},
    {"HelveticaNeue-LightItalic", kItalic, 3},
    {"HelveticaNeue-Medium", kRoman, 6},
    {"HelveticaNeue-MediumItalic", kItalic, 6},
    {"HelveticaNeue-Bold", kBold, 9},
    {"HelveticaNeue-BoldItalic", kBold | kItalic, 9},
};
constexpr FontFace kHelvetica[] = {
    {"Helvetica", kRoman, 5},       {"Helvetica-Oblique", kItalic, 5},
    {"Helvetica-Light", kRoman, 3}, {"Helvetica-LightOblique", kItalic, 3},
    {"Helvetica-Bold", kBold, 9},   {"Helvetica-BoldOblique", kBold | kItalic, 9},
};
constexpr FontFace kTimes[] = {
    {"Times-Roman", kRoman, 5},
    {"Times-Italic", kItalic, 5},
    {"Times-Bold", kBold, 9},
    {"Times-BoldItalic", kBold | kItalic, 9},
};
constexpr FontFace kCourier[] = {
    {"Courier", kFixed, 5},
    {"Courier-Oblique", kFixed | kItalic, 5},
    {"Courier-Bold", kFixed | kBold, 9},
    {"Courier-BoldOblique", kFixed | kBold | kItalic, 9},
};
constexpr FontFace kMenlo[] = {
    {"Menlo-Regular", kFixed, 5},
    {"Menlo-Italic", kFixed | kItalic, 5},
    {"Menlo-Bold", kFixed | kBold, 9},
    {"Menlo-BoldItalic", kFixed | kBold | kItalic, 9},
};
constexpr FontFace kMonaco[] = {
    {"Monaco", kFixed, 5},
};
constexpr FontFace kArial[] = {
    {"ArialMT", kRoman, 5},
    {"Arial-ItalicMT", kItalic, 5},
    {"Arial-BoldMT", kBold, 9},
    {"Arial-BoldItalicMT", kBold | kItalic, 9},
};
constexpr FontFace kGeorgia[] = {
    {"Georgia", kRoman, 5},
    {"Georgia-Italic", kItalic, 5},
    {"Georgia-Bold", kBold, 9},
    {"Georgia-BoldItalic", kBold | kItalic, 9},
};
constexpr FontFace kVerdana[] = {
    {"Verdana", kRoman, 5},
    {"Verdana-Italic", kItalic, 5},
    {"Verdana-Bold", kBold, 9},
    {"Verdana-BoldItalic", kBold | kItalic, 9},
};
constexpr FontFace kTimesNewRoman[] = {
    {"TimesNewRomanPSMT", kRoman, 5},
    {"TimesNewRomanPS-ItalicMT", kItalic, 5},
    {"TimesNewRomanPS-BoldMT", kBold, 9},
    {"TimesNewRomanPS-BoldItalicMT", kBold | kItalic, 9},
};
constexpr FontFace kCourierNew[] = {
    {"CourierNewPSMT", kFixed, 5},
    {"CourierNewPS-ItalicMT", kFixed | kItalic, 5},
    {"CourierNewPS-BoldMT", kFixed | kBold, 9},
    {"CourierNewPS-BoldItalicMT", kFixed | kBold | kItalic, 9},
};
constexpr FontFace kTrebuchet[] = {
    {"TrebuchetMS", kRoman, 5},
    {"TrebuchetMS-Italic", kItalic, 5},
    {"TrebuchetMS-Bold", kBold, 9},
    {"Trebuchet-BoldItalic", kBold | kItalic, 9},
};
constexpr FontFace kGillSans[] = {
    {"GillSans", kRoman, 5},           {"GillSans-Italic", kItalic, 5},
    {"GillSans-Light", kRoman, 3},     {"GillSans-LightItalic", kItalic, 3},
    {"GillSans-SemiBold", kRoman, 8},  {"GillSans-SemiBoldItalic", kItalic, 8},
    {"GillSans-Bold", kBold, 9},       {"GillSans-BoldItalic", kBold | kItalic, 9},
    {"GillSans-UltraBold", kBold, 12},
};
constexpr FontFace kAppleChancery[] = {
    {"Apple-Chancery", kRoman, 5},
};
constexpr FontFace kPapyrus[] = {
    {"Papyrus", kRoman, 5},
    {"Papyrus-Condensed", kRoman, 5},
};
constexpr FontFace kSystem[] = {
    {".SFNS-Regular", kRoman, 5}, {".SFNS-RegularItalic", kItalic, 5},
    {".SFNS-Medium", kRoman, 6},  {".SFNS-Semibold", kRoman, 8},
    {".SFNS-Bold", kBold, 9},     {".SFNS-BoldItalic", kBold | kItalic, 9},
};

constexpr FontFamily kFamilies[] = {
    {"Helvetica Neue", {1000, 952, 213, 28}, kHelveticaNeue},
    {"Helvetica", {2048, 1577, 471, 0}, kHelvetica},
    {"Times", {2048, 1536, 512, 0}, kTimes},
    {"Courier", {2048, 1544, 504, 0}, kCourier},
    {"Menlo", {2048, 1901, 483, 0}, kMenlo},
    {"Monaco", {2048, 2048, 512, 0}, kMonaco},
    {"Arial", {2048, 1854, 434, 67}, kArial},
    {"Georgia", {2048, 1878, 449, 0}, kGeorgia},
    {"Verdana", {2048, 2059, 430, 0}, kVerdana},
    {"Times New Roman", {2048, 1825, 443, 87}, kTimesNewRoman},
    {"Courier New", {2048, 1705, 615, 0}, kCourierNew},
    {"Trebuchet MS", {2048, 1923, 455, 0}, kTrebuchet},
    {"Gill Sans", {2048, 1880, 471, 0}, kGillSans},
    {"Apple Chancery", {2048, 2048, 768, 0}, kAppleChancery},
    {"Papyrus", {2048, 1921, 1234, 0}, kPapyrus},
    {".AppleSystemUIFont", {2048, 1980, 432, 0}, kSystem},
};

} // namespace

std::span<const FontFamily> fontFamilies() {
    return kFamilies;
}

} // namespace platform
