#include "platform/graphics/Font.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <unordered_map>
#include <utility>

#include "platform/graphics/FontTable.h"
#include "platform/graphics/InstalledFonts.h"

namespace platform {

// A font name with what is known about it; one object a name at any time.
struct FontName {
    explicit FontName(std::string spelling, const FontFamily* ofFamily = nullptr, const FontFace* itsFace = nullptr)
        : name(std::move(spelling)), family(ofFamily), face(itsFace) {}

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

using Reference = std::shared_ptr<const FontName>;

constexpr int kRegularWeight = 5;
constexpr int kBoldWeight = 9;
// What a font of unknown metrics is measured by: the user font's.
constexpr std::string_view kFallbackFont = "Helvetica";

bool equalIgnoringCase(std::string_view a, std::string_view b) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::ranges::equal(a, b, {}, lower, lower);
}

// The names of the table are made once and stay. Any other name lives as long as a font has it, since notes may invent
// as many as they like; the ones asked for last stay a while longer, so that a font made again and again is looked up
// once.
class FontNames {
  public:
    static FontNames& shared() {
        static auto& names = *new FontNames; // fonts of other files' static objects may outlive any other
        return names;
    }

    Reference find(std::string_view name) {
        const auto known = known_.find(name);
        if (known != known_.end()) return known->second;
        Reference replaced; // dies after the lock is gone: its end takes the lock
        const std::scoped_lock lock(mutex_);
        std::weak_ptr<const FontName>& entry = others_[std::string(name)];
        Reference found = entry.lock();
        if (!found) {
            found = Reference(new FontName(std::string(name)), [this](const FontName* gone) { forget(gone); });
            entry = found;
        }
        replaced = std::exchange(recent_[nextRecent_++ % recent_.size()], found);
        return found;
    }

  private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view name) const { return std::hash<std::string_view>()(name); }
    };
    static constexpr std::size_t kRecentNames = 64;

    FontNames() {
        for (const FontFamily& family : fontFamilies())
            for (const FontFace& face : family.faces) {
                // Never freed, hence without a count that threads would share.
                const auto* const name = new FontName(std::string(face.postScriptName), &family, &face);
                known_.emplace(name->name, Reference(Reference(), name));
            }
    }

    void forget(const FontName* gone) {
        {
            const std::scoped_lock lock(mutex_);
            const auto entry = others_.find(gone->name); // may be a new object of that name already
            if (entry != others_.end() && entry->second.expired()) others_.erase(entry);
        }
        delete gone;
    }

    std::unordered_map<std::string, Reference, Hash, std::equal_to<>> known_;
    std::mutex mutex_;
    std::unordered_map<std::string, std::weak_ptr<const FontName>> others_;
    std::array<Reference, kRecentNames> recent_;
    std::size_t nextRecent_ = 0;
};

Reference interned(std::string_view name) {
    return FontNames::shared().find(name);
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
    Name name = interned(postScriptName);
    if (!name->face && !name->installed()) return std::nullopt;
    return Font(std::move(name), pointSize);
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
