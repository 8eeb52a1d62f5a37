#include "platform/graphics/Font.h"

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <unordered_map>

#include "platform/graphics/FontTable.h"
#include "platform/graphics/InstalledFonts.h"

namespace platform {

// A font name, once in the process, with what is known about it.
struct FontName {
    std::string name;
    const FontFamily* family = nullptr; // null: not in the table
    const FontFace* face = nullptr;

    // What this machine says of a font outside the table, asked once, when somebody first wants to know.
    const std::optional<InstalledFont>& installed() const {
        std::call_once(asked_, [this] {
            if (!face) installed_ = installedFontNamed(name);
        });
        return installed_;
    }

  private:
    mutable std::once_flag asked_;
    mutable std::optional<InstalledFont> installed_;
};

namespace {

constexpr int kRegularWeight = 5;
constexpr int kBoldWeight = 9;
// What a font of unknown metrics is measured by: the user font's.
constexpr std::string_view kFallbackFont = "Helvetica";

bool equalIgnoringCase(std::string_view a, std::string_view b) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::ranges::equal(a, b, {}, lower, lower);
}

const FontName* interned(std::string_view name) {
    static auto& mutex = *new std::mutex;
    static auto& names = *new std::unordered_map<std::string, FontName>;
    const std::scoped_lock lock(mutex);
    const auto [entry, isNew] = names.try_emplace(std::string(name));
    FontName& font = entry->second;
    if (!isNew) return &font;
    font.name = name;
    for (const FontFamily& family : fontFamilies()) {
        const auto face = std::ranges::find(family.faces, name, &FontFace::postScriptName);
        if (face == family.faces.end()) continue;
        font.family = &family;
        font.face = &*face;
        break;
    }
    return &font;
}

const FontMetrics& metricsOf(const FontName& font) {
    if (font.family) return font.family->metrics;
    return font.installed() ? font.installed()->metrics : interned(kFallbackFont)->family->metrics;
}

double scaled(int units, const FontName& font, double pointSize) {
    return pointSize * units / metricsOf(font).unitsPerEm;
}

struct FoundFamily {
    const FontFamily* family = nullptr;
    const FontFace* face = nullptr; // when the name was a face's
};

// What a family name or a face's PostScript name names, ignoring case.
FoundFamily findFamily(std::string_view name) {
    for (const FontFamily& family : fontFamilies())
        if (equalIgnoringCase(family.name, name)) return {&family, nullptr};
    for (const FontFamily& family : fontFamilies())
        for (const FontFace& face : family.faces)
            if (equalIgnoringCase(face.postScriptName, name)) return {&family, &face};
    return {};
}

const FontFace& nearestFace(const FontFamily& family, bool italic, int weight) {
    constexpr int kSlantMatters = 100; // more than any difference of weights
    const auto distance = [&](const FontFace& face) {
        const bool faceIsItalic = (face.traits & kItalicFontTrait) != 0;
        return (faceIsItalic == italic ? 0 : kSlantMatters) + std::abs(face.weight - weight);
    };
    return *std::ranges::min_element(family.faces, {}, distance);
}

} // namespace

Font::Font(std::string_view postScriptName, double pointSize) : Font(interned(postScriptName), pointSize) {}

std::optional<Font> Font::named(std::string_view postScriptName, double pointSize) {
    const FontName* name = interned(postScriptName);
    if (!name->face && !name->installed()) return std::nullopt;
    return Font(name, pointSize);
}

Font Font::userFont(double pointSize) {
    return Font("Helvetica", pointSize);
}

Font Font::systemFont(double pointSize) {
    return Font(".SFNS-Regular", pointSize);
}

const std::string& Font::fontName() const {
    return name_->name;
}

std::string Font::familyName() const {
    if (name_->family) return std::string(name_->family->name);
    return name_->installed() ? name_->installed()->family : name_->name;
}

std::uint32_t Font::traits() const {
    if (name_->face) return name_->face->traits;
    return name_->installed() ? name_->installed()->traits : 0;
}

int Font::weight() const {
    if (name_->face) return name_->face->weight;
    return name_->installed() ? name_->installed()->weight : kRegularWeight;
}

double Font::ascender() const {
    return scaled(metricsOf(*name_).ascent, *name_, pointSize_);
}

double Font::descender() const {
    return -scaled(metricsOf(*name_).descent, *name_, pointSize_);
}

double Font::leading() const {
    return scaled(metricsOf(*name_).lineGap, *name_, pointSize_);
}

Font Font::withSize(double pointSize) const {
    return Font(name_, pointSize);
}

std::optional<Font> fontWithFamily(std::string_view family, std::uint32_t traits, int weight, double pointSize) {
    const FoundFamily found = findFamily(family);
    if (!found.family) return std::nullopt;
    bool italic = (traits & kItalicFontTrait) != 0;
    if (found.face) {
        italic = italic || (found.face->traits & kItalicFontTrait) != 0;
        if (weight == kRegularWeight) weight = found.face->weight;
    }
    if (traits & kBoldFontTrait) weight = std::max(weight, kBoldWeight);
    return Font(nearestFace(*found.family, italic, weight).postScriptName, pointSize);
}

std::optional<std::string> knownFontFamily(std::string_view familyOrFace) {
    const FontFamily* family = findFamily(familyOrFace).family;
    if (!family) return std::nullopt;
    return std::string(family->name);
}

namespace {

// The face of the font's family with one trait set or cleared; the same font where the family has none.
Font withTrait(const Font& font, FontTrait trait, bool set) {
    if (((font.traits() & trait) != 0) == set) return font;
    const FontFamily* family = findFamily(font.fontName()).family;
    if (!family) return font;
    bool italic = (font.traits() & kItalicFontTrait) != 0;
    int weight = font.weight();
    if (trait == kItalicFontTrait) italic = set;
    if (trait == kBoldFontTrait) weight = set ? kBoldWeight : kRegularWeight;
    const FontFace& face = nearestFace(*family, italic, weight);
    const bool achieved = ((face.traits & trait) != 0) == set;
    return achieved ? Font(face.postScriptName, font.pointSize()) : font;
}

} // namespace

Font convertFontToHaveTrait(const Font& font, FontTrait trait) {
    return withTrait(font, trait, true);
}

Font convertFontToNotHaveTrait(const Font& font, FontTrait trait) {
    return withTrait(font, trait, false);
}

} // namespace platform
