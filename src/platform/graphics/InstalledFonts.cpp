#include "platform/graphics/InstalledFonts.h"

#include <array>
#include <memory>
#include <mutex>

#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H

#include "platform/graphics/Font.h"

namespace platform {

namespace {

template<auto destroy>
struct Destroyer {
    template<class T>
    void operator()(T* object) const {
        destroy(object);
    }
};
using Pattern = std::unique_ptr<FcPattern, Destroyer<FcPatternDestroy>>;
using ObjectSet = std::unique_ptr<FcObjectSet, Destroyer<FcObjectSetDestroy>>;
using FontSet = std::unique_ptr<FcFontSet, Destroyer<FcFontSetDestroy>>;

struct WeightRow {
    int upTo; // fontconfig's weight
    int weight;
};
constexpr std::array kWeights{
    WeightRow{FC_WEIGHT_THIN, 2},        WeightRow{FC_WEIGHT_LIGHT, 3},      WeightRow{FC_WEIGHT_BOOK, 4},
    WeightRow{FC_WEIGHT_REGULAR, 5},     WeightRow{FC_WEIGHT_MEDIUM, 6},     WeightRow{FC_WEIGHT_DEMIBOLD, 8},
    WeightRow{FC_WEIGHT_BOLD, 9},        WeightRow{FC_WEIGHT_EXTRABOLD, 10}, WeightRow{FC_WEIGHT_BLACK, 12},
    WeightRow{FC_WEIGHT_EXTRABLACK, 14},
};

int weightFrom(int fontconfigWeight) {
    for (const WeightRow& row : kWeights)
        if (fontconfigWeight <= row.upTo) return row.weight;
    return kWeights.back().weight;
}

int integerOf(FcPattern* pattern, const char* object, int otherwise) {
    int value = otherwise;
    FcPatternGetInteger(pattern, object, 0, &value);
    return value;
}

std::string stringOf(FcPattern* pattern, const char* object) {
    FcChar8* value = nullptr;
    return FcPatternGetString(pattern, object, 0, &value) == FcResultMatch ? reinterpret_cast<const char*>(value) : "";
}

std::optional<FontMetrics> metricsOfFile(const std::string& path, int index) {
    FT_Library library = nullptr;
    if (FT_Init_FreeType(&library) != 0) return std::nullopt;
    const std::unique_ptr<FT_LibraryRec_, Destroyer<FT_Done_FreeType>> ownedLibrary(library);
    FT_Face face = nullptr;
    if (FT_New_Face(library, path.c_str(), index, &face) != 0) return std::nullopt;
    const std::unique_ptr<FT_FaceRec_, Destroyer<FT_Done_Face>> ownedFace(face);
    if (face->units_per_EM == 0) return std::nullopt;
    const int lineGap = face->height - face->ascender + face->descender;
    return FontMetrics{face->units_per_EM, face->ascender, -face->descender, lineGap};
}

std::optional<InstalledFont> described(FcPattern* pattern) {
    const auto metrics = metricsOfFile(stringOf(pattern, FC_FILE), integerOf(pattern, FC_INDEX, 0));
    if (!metrics) return std::nullopt;
    InstalledFont font{stringOf(pattern, FC_FAMILY), 0, weightFrom(integerOf(pattern, FC_WEIGHT, FC_WEIGHT_REGULAR)),
                       *metrics};
    if (integerOf(pattern, FC_SLANT, FC_SLANT_ROMAN) != FC_SLANT_ROMAN) font.traits |= kItalicFontTrait;
    if (integerOf(pattern, FC_SPACING, FC_PROPORTIONAL) >= FC_MONO) font.traits |= kFixedPitchFontTrait;
    if (font.weight >= 9) font.traits |= kBoldFontTrait;
    return font;
}

} // namespace

std::optional<InstalledFont> installedFontNamed(const std::string& postScriptName) {
    static auto& mutex = *new std::mutex;
    const std::scoped_lock lock(mutex);
    const Pattern wanted(FcPatternCreate());
    FcPatternAddString(wanted.get(), FC_POSTSCRIPT_NAME, reinterpret_cast<const FcChar8*>(postScriptName.c_str()));
    FcPatternAddBool(wanted.get(), FC_SCALABLE, FcTrue);
    const ObjectSet fields(
        FcObjectSetBuild(FC_FAMILY, FC_FILE, FC_INDEX, FC_WEIGHT, FC_SLANT, FC_SPACING, static_cast<char*>(nullptr)));
    const FontSet found(FcFontList(nullptr, wanted.get(), fields.get()));
    if (!found || found->nfont == 0) return std::nullopt;
    return described(found->fonts[0]);
}

} // namespace platform
