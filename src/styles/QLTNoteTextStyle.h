// A named text style: what text written in it gets, and which text counts as written in it. Its class operations are
// the process's catalogue of styles: five standard ones, of which the user may have changed some, and custom ones.
//
// The catalogue is kept in process-wide caches without locks: one thread at a time uses it.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/text/Attributes.h"

namespace quillet {

inline constexpr std::string_view QLTNoteTextStylesDefaultsKey = "QLTNoteTextStyles";
inline constexpr std::string_view QLTNoteTextStyleDefaultIdentifierKey = "QLTNoteTextStyleDefaultIdentifier";
inline constexpr std::string_view QLTNoteTextStyleDefaultsDidChangeNotification =
    "QLTNoteTextStyleDefaultsDidChangeNotification";
// The attribute that records the style of a run: its identifier, a string.
inline const platform::AttributeName QLTNoteTextStyleIdentifierKey{"QLTNoteTextStyleIdentifier"};

class QLTNoteTextStyle {
  public:
    using Reference = std::shared_ptr<QLTNoteTextStyle>;
    using AttributeNames = std::vector<platform::AttributeName>;

    // Types, numbered as archives have them. Only these are ever made; a style read with another number has its custom
    // identifier and name.
    enum : std::int64_t {
        kBodyType = 0,
        kTitleType = 1,
        kHeadingType = 2,
        kMonospacedType = 3,
        kSubheadingType = 4,
        kCustomType = 9999
    };

    QLTNoteTextStyle() = default;
    QLTNoteTextStyle& operator=(const QLTNoteTextStyle&) = delete;
    // A new style with everything but the other allowed attribute names. @sel copyWithZone:
    Reference copy() const { return Reference(new QLTNoteTextStyle(*this)); }

    std::int64_t type() const { return type_; }
    // A style that becomes custom gets a new random identifier, unless it has one.
    void setType(std::int64_t type);
    std::optional<std::u16string> identifier() const;
    const std::optional<std::u16string>& customStyleIdentifier() const { return customStyleIdentifier_; }
    void setCustomStyleIdentifier(std::optional<std::u16string> identifier);
    // What the user sees: localized for the standard types, whose stored name counts for nothing.
    std::optional<std::u16string> name() const;
    void setName(std::optional<std::u16string> name) { name_ = std::move(name); }
    const std::optional<std::u16string>& storedName() const { return name_; }

    // Whole paragraphs take the style, its paragraph style included.
    bool applyToParagraph() const { return applyToParagraph_; }
    void setApplyToParagraph(bool applies) { applyToParagraph_ = applies; }
    // A line break after text in this style returns to the default style.
    bool resetOnNewLine() const { return resetOnNewLine_; }
    void setResetOnNewLine(bool resets) { resetOnNewLine_ = resets; }

    // Without a stored font, the user's font at 12 points.
    platform::Font font() const;
    void setFont(std::optional<platform::Font> font) { font_ = std::move(font); }
    const std::optional<platform::Font>& storedFont() const { return font_; }
    // The PostScript name and the size of the font. Setting either looks the font up anew; when there is no such font,
    // none is stored.
    std::string fontName() const { return font().fontName(); }
    void setFontName(std::string_view fontName);
    double fontSize() const { return font().pointSize(); }
    void setFontSize(double fontSize);
    static std::vector<std::string_view> keyPathsForValuesAffectingFontName() { return {"font"}; }
    static std::vector<std::string_view> keyPathsForValuesAffectingFontSize() { return {"font"}; }

    // Never null: the default paragraph style when none is stored.
    const platform::ParagraphStyleReference& paragraphStyle() const;
    void setParagraphStyle(platform::ParagraphStyleReference style) { paragraphStyle_ = std::move(style); }
    const platform::ParagraphStyleReference& storedParagraphStyle() const { return paragraphStyle_; }

    // Black and white are never stored: they stand for the text color, which follows the appearance.
    platform::Color foregroundColor() const;
    void setForegroundColor(const std::optional<platform::Color>& color);
    static platform::Color standardForegroundColor() { return platform::Color::textColor(); }

    // Values of the attributes; 0 is none.
    std::int64_t underlineStyle() const { return underlineStyle_; }
    void setUnderlineStyle(std::int64_t style) { underlineStyle_ = style; }
    std::int64_t strikethrough() const { return strikethrough_; }
    void setStrikethrough(std::int64_t style) { strikethrough_ = style; }

    // Attributes that text may have besides the style's own. Not archived.
    AttributeNames otherAllowedAttributeNames() const;
    void setOtherAllowedAttributeNames(std::optional<AttributeNames> names);

    // Font, paragraph style, color, underline, strikethrough, and the identifier when there is one.
    platform::AttributeSet attributes() const;

    // Whether text with these attributes is in this style. An attribute that the text lacks never speaks against it;
    // text with nothing but ignored attributes is in no style.
    bool matchesAttributes(const platform::AttributeSet& attributes) const;
    bool matchesAttributes(const platform::AttributeSet& attributes,
                           std::span<const platform::AttributeName> ignored) const;
    bool matchesStyle(const QLTNoteTextStyle& style) const;

    // What existing text with these attributes gets when the style is applied to it: highlights and the allowed
    // attributes stay, and, unless the style is one of paragraphs, the paragraph's own settings save line spacing.
    platform::AttributeSet attributesWithOtherAttributes(const platform::AttributeSet& attributes) const;

    // A custom style, or a standard one that differs from its factory settings.
    bool shouldSaveToDefaults() const;

    // Title, Heading, Subheading, Body, Monospaced.
    static std::vector<Reference> standardStyles();
    // Sorted by name as a file manager would.
    static std::vector<Reference> customStyles();
    static std::vector<Reference> allStyles();

    // The current styles: saved by the user, else of the factory. Cached: the same object until a reload.
    static Reference titleNoteTextStyle();
    static Reference headingNoteTextStyle();
    static Reference subheadingNoteTextStyle();
    static Reference bodyNoteTextStyle();
    static Reference monospacedNoteTextStyle();

    // Factory styles, a new object at every call.
    static Reference defaultTitleNoteTextStyle() { return defaultStyleForType(kTitleType); }
    static Reference defaultHeadingNoteTextStyle() { return defaultStyleForType(kHeadingType); }
    static Reference defaultSubheadingNoteTextStyle() { return defaultStyleForType(kSubheadingType); }
    static Reference defaultBodyNoteTextStyle() { return defaultStyleForType(kBodyType); }
    static Reference defaultMonospacedNoteTextStyle() { return defaultStyleForType(kMonospacedType); }
    // Null for a type without factory settings.
    static Reference defaultStyleForType(std::int64_t type);

    // The style that the user's defaults name, else Body.
    static Reference defaultStyle();
    // The first of all styles, standard ones before custom ones; null when none.
    static Reference styleWithIdentifier(std::u16string_view identifier);
    static Reference styleThatMatchesAttributes(const platform::AttributeSet& attributes);
    // 1 to 3: Title, Heading, Subheading; null for another level.
    static Reference styleForParagraphHeaderLevel(std::int64_t level);
    static Reference customStyleFromAttributes(const platform::AttributeSet& attributes);

    // The display scale of a note text size, 1 to 4; any other number means the small one.
    static double scaleFactorForNoteTextSize(std::int64_t textSize);

    // The saved style of a standard type, or null; reads the defaults at every call.
    static Reference savedStyleForType(std::int64_t type);
    // Saves those that need it. Observers of the notification hear of one save twice.
    static void saveStylesToDefaults(const std::vector<Reference>& styles);
    static void addCustomStyle(const Reference& style);
    // Drops the caches and posts the notification.
    static void reloadStylesFromDefaults();

  private:
    QLTNoteTextStyle(const QLTNoteTextStyle& other);

    bool applyToParagraph_ = false;
    bool resetOnNewLine_ = false;
    std::optional<platform::Color> foregroundColor_;
    std::optional<std::u16string> name_;
    std::int64_t type_ = kBodyType;
    platform::ParagraphStyleReference paragraphStyle_;
    std::int64_t underlineStyle_ = 0;
    std::int64_t strikethrough_ = 0;
    std::optional<platform::Font> font_;
    std::optional<AttributeNames> otherAllowedAttributeNames_;
    std::optional<std::u16string> customStyleIdentifier_;
};

} // namespace quillet
