// Counterpart of NSFont, as a value: a PostScript name and a size. Families, faces and metrics come from a built-in
// table, so that notes do not differ by machine; names outside it are kept, with fontconfig's metrics.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace platform {

// Bits of the font manager's trait mask.
enum FontTrait : std::uint32_t { kItalicFontTrait = 1, kBoldFontTrait = 2, kFixedPitchFontTrait = 0x400 };

struct FontName;

class Font {
  public:
    // A font of any name; nothing is looked up.
    Font(std::string_view postScriptName, double pointSize);

    // Counterpart of fontWithName:size: nothing when no such font is known (table or fontconfig).
    static std::optional<Font> named(std::string_view postScriptName, double pointSize);
    static Font userFont(double pointSize);   // Helvetica
    static Font systemFont(double pointSize); // .SFNS-Regular
    static constexpr double kSmallSystemFontSize = 11;

    const std::string& fontName() const; // PostScript name
    double pointSize() const { return pointSize_; }
    std::string familyName() const;
    std::uint32_t traits() const; // FontTrait bits
    int weight() const;           // 0 to 15; 5 regular, 9 bold

    // Points at this size. The descender is negative.
    double ascender() const;
    double descender() const;
    double leading() const;

    Font withSize(double pointSize) const;

    friend bool operator==(const Font& a, const Font& b) { return a.name_ == b.name_ && a.pointSize_ == b.pointSize_; }

  private:
    using Name = std::shared_ptr<const FontName>;
    Font(Name name, double pointSize) : name_(std::move(name)), pointSize_(pointSize) {}
    Name name_; // one object a name, as long as a font has it
    double pointSize_;
};

// Counterpart of NSFontManager's fontWithFamily:traits:weight:size: the nearest face of the family; nothing when the
// family is not in the table. The family name may also be a face's PostScript name: weight 5 and no italic then mean
// that face's own.
std::optional<Font> fontWithFamily(std::string_view family, std::uint32_t traits, int weight, double pointSize);

// Whether the table has a family (or a face) of that name, ignoring case; gives the table's own spelling.
std::optional<std::string> knownFontFamily(std::string_view familyOrFace);

// Counterparts of NSFontManager's convertFont:toHaveTrait: and convertFont:toNotHaveTrait: (bold or italic): the face
// of the font's own family that differs in this trait; the same font where the family has no such face or is unknown.
Font convertFontToHaveTrait(const Font& font, FontTrait trait);
Font convertFontToNotHaveTrait(const Font& font, FontTrait trait);

} // namespace platform
