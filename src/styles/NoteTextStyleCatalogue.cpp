// The catalogue of styles: the saved ones in the user defaults, the caches over them, and looking styles up.
#include <algorithm>
#include <array>
#include <mutex>
#include <optional>

#include "platform/base/SystemLog.h"
#include "platform/base/UTF16.h"
#include "platform/defaults/NotificationCenter.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/foundation/LocalizedCompare.h"
#include "platform/foundation/StringFormat.h"
#include "styles/NoteTextStyleCoding.h"
#include "styles/QLTNoteTextStyle.h"
#include "styles/StandardStyles.h"
#include "styles/UserDefaultsArchiving.h"

namespace quillet {

namespace {

using platform::ArchivedObject;
using Reference = QLTNoteTextStyle::Reference;

// Two imports in one process look up styles at the same time.
struct Caches {
    std::mutex mutex;                        // guards everything below
    std::array<Reference, 5> standardStyles; // by type; the standard types are 0 to 4
    std::optional<std::vector<Reference>> customStyles;

    static Caches& shared() {
        static auto& caches = *new Caches;
        return caches;
    }
};

// Empty when nothing is saved or what is saved cannot be read.
std::vector<Reference> savedStyles() {
    const auto data = platform::UserDefaults::standard().dataForKey(QLTNoteTextStylesDefaultsKey);
    if (!data) return {};
    auto styles = unarchivedStyles(data->bytes());
    if (styles) return *std::move(styles);
    platform::systemLog(platform::formatted("Error unarchiving saved note styles: %@", {styles.error().description()}));
    return {};
}

Reference currentStyle(std::int64_t type) {
    const std::lock_guard lock(Caches::shared().mutex);
    Reference& cached = Caches::shared().standardStyles.at(static_cast<std::size_t>(type));
    if (!cached) cached = QLTNoteTextStyle::savedStyleForType(type);
    if (!cached) cached = QLTNoteTextStyle::defaultStyleForType(type);
    return cached;
}

// Styles without a name come first; of equal names the identifiers decide.
bool comesBefore(const Reference& a, const Reference& b) {
    const auto first = a->name(), second = b->name();
    if (!first || !second) return !first && second;
    const auto order = platform::localizedStandardCompare(*first, *second);
    return order == 0 ? a->identifier() < b->identifier() : order < 0;
}

void postDefaultsDidChange() {
    platform::NotificationCenter::defaultCenter().post(QLTNoteTextStyleDefaultsDidChangeNotification);
}

template<class Condition>
Reference firstStyle(Condition condition) {
    const std::vector<Reference> styles = QLTNoteTextStyle::allStyles();
    const auto found = std::ranges::find_if(styles, condition);
    return found == styles.end() ? nullptr : *found;
}

} // namespace

std::vector<Reference> QLTNoteTextStyle::standardStyles() {
    std::vector<Reference> styles;
    for (const StandardStyle& standard : standardStyleTable()) styles.push_back(currentStyle(standard.type));
    return styles;
}

std::vector<Reference> QLTNoteTextStyle::customStyles() {
    const std::lock_guard lock(Caches::shared().mutex);
    auto& cached = Caches::shared().customStyles;
    if (!cached) {
        cached = savedStyles();
        std::erase_if(*cached, [](const Reference& style) { return style->type() != kCustomType; });
        std::ranges::sort(*cached, comesBefore);
    }
    return *cached;
}

std::vector<Reference> QLTNoteTextStyle::allStyles() {
    std::vector<Reference> styles = standardStyles();
    const std::vector<Reference> custom = customStyles();
    styles.insert(styles.end(), custom.begin(), custom.end());
    return styles;
}

Reference QLTNoteTextStyle::titleNoteTextStyle() {
    return currentStyle(kTitleType);
}
Reference QLTNoteTextStyle::headingNoteTextStyle() {
    return currentStyle(kHeadingType);
}
Reference QLTNoteTextStyle::subheadingNoteTextStyle() {
    return currentStyle(kSubheadingType);
}
Reference QLTNoteTextStyle::bodyNoteTextStyle() {
    return currentStyle(kBodyType);
}
Reference QLTNoteTextStyle::monospacedNoteTextStyle() {
    return currentStyle(kMonospacedType);
}

Reference QLTNoteTextStyle::defaultStyle() {
    const auto identifier = platform::UserDefaults::standard().stringForKey(QLTNoteTextStyleDefaultIdentifierKey);
    const Reference named = identifier ? styleWithIdentifier(*identifier) : nullptr;
    return named ? named : bodyNoteTextStyle();
}

Reference QLTNoteTextStyle::styleWithIdentifier(std::u16string_view identifier) {
    return firstStyle([&](const Reference& style) { return style->identifier() == identifier; });
}

Reference QLTNoteTextStyle::styleThatMatchesAttributes(const platform::AttributeSet& attributes) {
    return firstStyle([&](const Reference& style) { return style->matchesAttributes(attributes); });
}

Reference QLTNoteTextStyle::styleForParagraphHeaderLevel(std::int64_t level) {
    for (const StandardStyle& standard : standardStyleTable())
        if (standard.headerLevel != 0 && standard.headerLevel == level) return currentStyle(standard.type);
    return nullptr;
}

Reference QLTNoteTextStyle::savedStyleForType(std::int64_t type) {
    if (type == kCustomType) return nullptr;
    const std::vector<Reference> styles = savedStyles();
    const auto found = std::ranges::find_if(styles, [&](const Reference& style) { return style->type() == type; });
    return found == styles.end() ? nullptr : *found;
}

void QLTNoteTextStyle::saveStylesToDefaults(const std::vector<Reference>& styles) {
    auto saved = std::make_shared<platform::ObjectArray>();
    for (const Reference& style : styles)
        if (style->shouldSaveToDefaults()) saved->push_back(style);
    auto& defaults = platform::UserDefaults::standard();
    const auto done = saved->empty() ? defaults.removeObject(QLTNoteTextStylesDefaultsKey)
                                     : archiveObject(defaults, ArchivedObject(saved), QLTNoteTextStylesDefaultsKey);
    if (!done) platform::systemLog(platform::formatted("Note styles were not saved: %@", {done.error().description()}));
    reloadStylesFromDefaults();
    postDefaultsDidChange();
}

void QLTNoteTextStyle::addCustomStyle(const Reference& style) {
    std::vector<Reference> styles = allStyles();
    styles.push_back(style);
    saveStylesToDefaults(styles);
}

void QLTNoteTextStyle::reloadStylesFromDefaults() {
    {
        Caches& caches = Caches::shared();
        const std::lock_guard lock(caches.mutex);
        caches.standardStyles = {};
        caches.customStyles.reset();
    }
    postDefaultsDidChange();
}

} // namespace quillet
