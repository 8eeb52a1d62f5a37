// A paragraph style stores what differs from the default, save its alignment and its tab stops, which always stand
// there: null stands for the default stops, an empty array for none.

#include <algorithm>
#include <array>
#include <limits>
#include <ranges>
#include <string_view>

#include "platform/archive/ArchivedFields.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/base/UTF16.h"
#include "platform/text/ArchivableTextClasses.h"
#include "platform/text/ParagraphStyle.h"
#include "platform/text/TextList.h"
#include "platform/text/TextTable.h"

namespace platform {

namespace {

struct LengthRow {
    std::string_view key;
    double ParagraphStyle::* member;
};
constexpr std::array kLengths{
    LengthRow{"NSFirstLineHeadIndent", &ParagraphStyle::firstLineHeadIndent},
    LengthRow{"NSHeadIndent", &ParagraphStyle::headIndent},
    LengthRow{"NSTailIndent", &ParagraphStyle::tailIndent},
    LengthRow{"NSParagraphSpacing", &ParagraphStyle::paragraphSpacing},
    LengthRow{"NSParagraphSpacingBefore", &ParagraphStyle::paragraphSpacingBefore},
    LengthRow{"NSLineSpacing", &ParagraphStyle::lineSpacing},
    LengthRow{"NSMinLineHeight", &ParagraphStyle::minimumLineHeight},
    LengthRow{"NSMaxLineHeight", &ParagraphStyle::maximumLineHeight},
    LengthRow{"NSLineHeightMultiple", &ParagraphStyle::lineHeightMultiple},
    LengthRow{"NSDefaultTabInterval", &ParagraphStyle::defaultTabInterval},
};

template<class Enumeration>
Enumeration enumerationOr(std::int64_t number, std::int64_t count, Enumeration otherwise) {
    return number >= 0 && number < count ? static_cast<Enumeration>(number) : otherwise;
}

TextAlignment alignmentFrom(std::int64_t number) {
    return enumerationOr(number, 5, TextAlignment::natural);
}

// Values of a tab's "NSType", which readers older than its alignment take.
enum TabType : std::int64_t { kLeftTab, kRightTab, kCenterTab, kDecimalTab };

TabType tabType(const TextTab& tab) {
    if (tab.decimal) return kDecimalTab;
    if (tab.alignment == TextAlignment::right) return kRightTab;
    return tab.alignment == TextAlignment::center ? kCenterTab : kLeftTab;
}

void encodeTab(KeyedArchiver& archiver, const TextTab& tab) {
    archiver.encodeDouble("NSLocation", tab.location);
    if (tab.alignment != TextAlignment::left)
        archiver.encodeInteger("NSTextAlignment", static_cast<std::int64_t>(tab.alignment));
    if (const TabType type = tabType(tab); type != kLeftTab) archiver.encodeInteger("NSType", type);
}

// Tabs are values here, objects in the archive: each one a new one.
void encodeTabStops(KeyedArchiver& archiver, const std::vector<TextTab>& tabs) {
    archiver.encodeArrayOfPlaces("NSTabStops",
                                 tabs | std::views::transform([&](const TextTab& tab) {
                                     return archiver.addObject<TextTab>([&] { encodeTab(archiver, tab); });
                                 }));
}

template<class T>
void encodeShared(KeyedArchiver& archiver, std::string_view key, const std::vector<std::shared_ptr<T>>& objects) {
    archiver.encodeArrayOfPlaces(key, objects | std::views::transform([&](const std::shared_ptr<T>& object) {
                                          return archiver.placeOf(object);
                                      }));
}

void encodeStyle(KeyedArchiver& archiver, const ParagraphStyle& style) {
    const ParagraphStyle& base = *ParagraphStyle::defaultParagraphStyle();
    archiver.encodeInteger("NSAlignment", static_cast<std::int64_t>(style.alignment));
    if (style.tabStops == base.tabStops) {
        archiver.encodeObject("NSTabStops", {});
    } else {
        encodeTabStops(archiver, style.tabStops);
    }
    for (const LengthRow& row : kLengths)
        if (style.*row.member != 0) archiver.encodeDouble(row.key, style.*row.member);
    if (style.baseWritingDirection != WritingDirection::natural)
        archiver.encodeInteger("NSWritingDirection", static_cast<std::int64_t>(style.baseWritingDirection) + 1);
    if (style.lineBreakMode != LineBreakMode::wordWrapping)
        archiver.encodeInteger("NSLineBreakMode", static_cast<std::int64_t>(style.lineBreakMode));
    if (style.lineBreakStrategy != 0) archiver.encodeInteger("NSLineBreakStrategy", style.lineBreakStrategy);
    if (style.hyphenationFactor != 0) archiver.encodeFloat("NSHyphenationFactor", style.hyphenationFactor);
    if (style.usesDefaultHyphenation) archiver.encodeBool("NSUsesDefaultHyphenation", true);
    if (style.tighteningFactorForTruncation != base.tighteningFactorForTruncation)
        archiver.encodeFloat("NSTighteningFactorForTruncation", style.tighteningFactorForTruncation);
    if (style.allowsDefaultTighteningForTruncation) archiver.encodeInteger("NSAllowsTighteningForTruncation", 1);
    if (style.headerLevel != 0) archiver.encodeDouble("NSHeaderLevel", style.headerLevel);
    if (!style.textBlocks.empty()) encodeShared(archiver, "NSTextBlocks", style.textBlocks);
    if (!style.textLists.empty()) encodeShared(archiver, "NSTextLists", style.textLists);
}

// More than any text has. One archived style may serve every run, and what is written of a run names all of these:
// without a bound, a small archive would grow into a page of gigabytes.
constexpr std::size_t kMostTabStops = 128, kMostLists = 64, kMostBlocks = 64;

std::vector<TextTab> decodeTabStops(const ArchivedFields& fields) {
    const auto objects = fields.decode<ObjectArray>("NSTabStops");
    if (!objects) return ParagraphStyle::defaultTabStops();
    std::vector<TextTab> tabs;
    for (const ArchivedObject& object : *objects) {
        if (tabs.size() == kMostTabStops) break;
        if (const auto tab = object.as<TextTab>()) tabs.push_back(*tab);
    }
    return tabs;
}

// The objects of an array that are of type T, the first ones where there are too many; others are passed over.
template<class T>
std::vector<std::shared_ptr<T>> decodeObjects(const ArchivedFields& fields, std::string_view key, std::size_t most) {
    std::vector<std::shared_ptr<T>> result;
    const auto objects = fields.decode<ObjectArray>(key);
    if (!objects) return result;
    for (const ArchivedObject& object : *objects) {
        if (result.size() == most) break;
        if (auto element = object.asMutable<T>()) result.push_back(std::move(element));
    }
    return result;
}

Result<ArchivedObject> decodeStyle(const ArchivedFields& fields) {
    const auto style = std::make_shared<ParagraphStyle>();
    // Older systems leave left alignment out.
    style->alignment = alignmentFrom(fields.decodeInteger("NSAlignment"));
    style->tabStops = decodeTabStops(fields);
    for (const LengthRow& row : kLengths) (*style).*row.member = fields.decodeLength(row.key);
    style->baseWritingDirection = static_cast<WritingDirection>(
        enumerationOr(fields.decodeInteger("NSWritingDirection"), 3, std::int64_t{0}) - 1);
    style->lineBreakMode = enumerationOr(fields.decodeInteger("NSLineBreakMode"), 6, LineBreakMode::wordWrapping);
    style->lineBreakStrategy = fields.decodeInteger("NSLineBreakStrategy");
    style->hyphenationFactor = static_cast<float>(fields.decodeLength("NSHyphenationFactor"));
    style->usesDefaultHyphenation = fields.decodeBool("NSUsesDefaultHyphenation");
    if (fields.containsValueForKey("NSTighteningFactorForTruncation"))
        style->tighteningFactorForTruncation =
            static_cast<float>(fields.decodeLength("NSTighteningFactorForTruncation"));
    style->allowsDefaultTighteningForTruncation = fields.decodeBool("NSAllowsTighteningForTruncation");
    style->headerLevel = enumerationOr(fields.decodeInteger("NSHeaderLevel"), 7, std::int32_t{0});
    style->textBlocks = decodeObjects<TextBlock>(fields, "NSTextBlocks", kMostBlocks);
    style->textLists = decodeObjects<TextList>(fields, "NSTextLists", kMostLists);
    return ArchivedObject(style);
}

Result<ArchivedObject> decodeTab(const ArchivedFields& fields) {
    const auto tab = std::make_shared<TextTab>();
    tab->location = fields.decodeLength("NSLocation");
    const std::int64_t type = fields.decodeInteger("NSType");
    tab->decimal = type == kDecimalTab;
    if (fields.containsValueForKey("NSTextAlignment")) {
        tab->alignment = alignmentFrom(fields.decodeInteger("NSTextAlignment"));
    } else {
        tab->alignment = type == kRightTab    ? TextAlignment::right
                         : type == kCenterTab ? TextAlignment::center
                                              : TextAlignment::left;
    }
    return ArchivedObject(tab);
}

void encodeList(KeyedArchiver& archiver, const TextList& list) {
    archiver.encodeStringObject("NSMarkerFormat", list.markerFormat());
    if (list.listOptions() != 0) archiver.encodeInteger("NSOptions", list.listOptions());
    if (list.startingItemNumber() != 1) archiver.encodeInteger("NSStart", list.startingItemNumber());
}

Result<ArchivedObject> decodeList(const ArchivedFields& fields) {
    const std::u16string format = fields.decodeString("NSMarkerFormat").value_or(std::u16string());
    // Items are counted on from here.
    constexpr std::int64_t kLargestStart = std::numeric_limits<std::int32_t>::max();
    const std::int64_t start = fields.containsValueForKey("NSStart") ? fields.decodeInteger("NSStart") : 1;
    return ArchivedObject(std::make_shared<TextList>(utf8FromUTF16(format), fields.decodeInteger("NSOptions"),
                                                     std::clamp(start, -kLargestStart, kLargestStart)));
}

} // namespace

std::vector<ArchivableClass> archivableParagraphStyleClasses() {
    return {
        {"NSParagraphStyle",
         {"NSParagraphStyle", "NSObject"},
         {"NSMutableParagraphStyle"},
         typeid(ParagraphStyle),
         true,
         encoderOf<ParagraphStyle>(encodeStyle),
         decodeStyle},
        {"NSTextTab", {"NSTextTab", "NSObject"}, {}, typeid(TextTab), true, encoderOf<TextTab>(encodeTab), decodeTab},
        {"NSTextList",
         {"NSTextList", "NSObject"},
         {},
         typeid(TextList),
         true,
         encoderOf<TextList>(encodeList),
         decodeList},
    };
}

} // namespace platform
