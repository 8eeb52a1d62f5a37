// The attributes of a run of text: names (the platform's own), values (a closed variant), and immutable sets of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "platform/foundation/URL.h"
#include "platform/graphics/Color.h"
#include "platform/graphics/Font.h"
#include "platform/text/ParagraphStyle.h"
#include "platform/text/TextAttachment.h"

namespace platform {

// An attribute's name, interned for the life of the process: comparing two is comparing two pointers.
class AttributeName {
  public:
    // For names that the program itself has. One that comes from outside must go through known().
    explicit AttributeName(std::string_view name);
    // Nothing for a name that no part of the program has: invented names must not fill the memory for good.
    static std::optional<AttributeName> known(std::string_view name);
    const std::string& string() const { return *name_; }
    friend bool operator==(AttributeName, AttributeName) = default;

  private:
    explicit AttributeName(const std::string* name) : name_(name) {}

    const std::string* name_;
};

inline const AttributeName kFontAttributeName{"NSFont"};
inline const AttributeName kParagraphStyleAttributeName{"NSParagraphStyle"};
inline const AttributeName kForegroundColorAttributeName{"NSColor"};
inline const AttributeName kBackgroundColorAttributeName{"NSBackgroundColor"};
inline const AttributeName kLinkAttributeName{"NSLink"};
inline const AttributeName kAttachmentAttributeName{"NSAttachment"};
inline const AttributeName kUnderlineStyleAttributeName{"NSUnderline"};
inline const AttributeName kUnderlineColorAttributeName{"NSUnderlineColor"};
inline const AttributeName kStrikethroughStyleAttributeName{"NSStrikethrough"};
inline const AttributeName kStrikethroughColorAttributeName{"NSStrikethroughColor"};
inline const AttributeName kSuperscriptAttributeName{"NSSuperScript"};
inline const AttributeName kBaselineOffsetAttributeName{"NSBaselineOffset"};
inline const AttributeName kKernAttributeName{"NSKern"};
inline const AttributeName kLigatureAttributeName{"NSLigature"};
inline const AttributeName kStrokeColorAttributeName{"NSStrokeColor"};
inline const AttributeName kStrokeWidthAttributeName{"NSStrokeWidth"};
inline const AttributeName kShadowAttributeName{"NSShadow"};
inline const AttributeName kTextEffectAttributeName{"NSTextEffect"};
inline const AttributeName kObliquenessAttributeName{"NSObliqueness"};
inline const AttributeName kExpansionAttributeName{"NSExpansion"};
inline const AttributeName kWritingDirectionAttributeName{"NSWritingDirection"};
inline const AttributeName kVerticalGlyphFormAttributeName{"CTVerticalForms"}; // older files: NSVerticalGlyphForm
inline const AttributeName kTextHighlightStyleAttributeName{"NSTextHighlightStyle"};
inline const AttributeName kTextHighlightColorSchemeAttributeName{"NSTextHighlightColorScheme"};
inline const AttributeName kCursorAttributeName{"NSCursor"};
inline const AttributeName kToolTipAttributeName{"NSToolTip"};
// Not looked at by anybody here; kept when their values are of a kind that attributes have.
inline const AttributeName kMarkedClauseSegmentAttributeName{"NSMarkedClauseSegment"};
inline const AttributeName kTextAlternativesAttributeName{"NSTextAlternatives"};
inline const AttributeName kSpellingStateAttributeName{"NSSpellingState"};
inline const AttributeName kGlyphInfoAttributeName{"NSGlyphInfo"};
inline const AttributeName kCharacterShapeAttributeName{"NSCharacterShape"};
inline const AttributeName kTrackingAttributeName{"CTTracking"};
inline const AttributeName kAdaptiveImageAttributeName{"CTAdaptiveImageProvider"};
inline const AttributeName kOriginalFontAttributeName{"NSOriginalFont"};

// Counterpart of NSShadow, as a value. Offsets in points, y upwards. Copies share its parts: few texts have shadows,
// and every attribute value would be as large as one.
class Shadow {
  public:
    Shadow(double offsetX, double offsetY, double blurRadius, std::optional<Color> color)
        : parts_(std::make_shared<const Parts>(Parts{offsetX, offsetY, blurRadius, std::move(color)})) {}

    double offsetX() const { return parts_->offsetX; }
    double offsetY() const { return parts_->offsetY; }
    double blurRadius() const { return parts_->blurRadius; }
    const std::optional<Color>& color() const { return parts_->color; }

    friend bool operator==(const Shadow& a, const Shadow& b) { return a.parts_ == b.parts_ || *a.parts_ == *b.parts_; }

  private:
    struct Parts {
        double offsetX, offsetY, blurRadius;
        std::optional<Color> color;
        friend bool operator==(const Parts&, const Parts&) = default;
    };
    std::shared_ptr<const Parts> parts_;
};

using AttributeValue = std::variant<std::int64_t, double, std::u16string, URL, Font, Color, ParagraphStyleReference,
                                    TextAttachmentReference, Shadow, std::vector<std::int64_t>>;
// A large page holds a hundred thousand of them.
static_assert(sizeof(AttributeValue) <= 40);

// Equal by value; paragraph styles by what they say, attachments by identity; an integer equals a real of its value.
bool equalAttributeValues(const AttributeValue& a, const AttributeValue& b);
// Equal values have equal hashes, integers and reals of one value too.
std::size_t hashOf(const AttributeValue& value);

// A number's integer value (cut toward zero), 0 for what is no number.
std::int64_t integerValue(const AttributeValue& value);
double doubleValue(const AttributeValue& value);

// An immutable set of attributes, shared by pointer; sorted by name. Never holds a name twice.
class AttributeSet {
  public:
    using Entry = std::pair<AttributeName, AttributeValue>;
    using Reference = std::shared_ptr<const AttributeSet>;

    AttributeSet() = default;
    AttributeSet(std::initializer_list<Entry> entries);
    explicit AttributeSet(std::vector<Entry> entries); // the later of two entries of one name wins

    static const Reference& empty();

    const std::vector<Entry>& entries() const { return entries_; }
    // The value under a name, or null.
    const AttributeValue* find(AttributeName name) const {
        for (const Entry& entry : entries_)
            if (entry.first == name) return &entry.second;
        return nullptr;
    }
    template<class T>
    const T* find(AttributeName name) const {
        const AttributeValue* value = find(name);
        return value ? std::get_if<T>(value) : nullptr;
    }

    // Changed copies. with() replaces; merging lets the other set win.
    AttributeSet with(AttributeName name, AttributeValue value) const&;
    AttributeSet with(AttributeName name, AttributeValue value) &&; // changes a set that nobody else needs
    AttributeSet without(AttributeName name) const;
    AttributeSet merging(const AttributeSet& other) const;

    friend bool operator==(const AttributeSet& a, const AttributeSet& b);

  private:
    std::vector<Entry> entries_;
};

std::size_t hashOf(const AttributeSet& set); // equal sets have equal hashes

} // namespace platform
