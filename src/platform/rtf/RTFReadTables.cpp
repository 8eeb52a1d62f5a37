#include "platform/rtf/RTFReadTables.h"

#include <algorithm>

#include "platform/base/UTF16.h"
#include "platform/rtf/RTFVocabulary.h"

namespace platform {

namespace {

struct CodePage {
    std::int32_t number;
    std::string_view name;
};
constexpr CodePage kCodePages[] = {
    {1252, "windows-1252"}, {437, "ibm-437"},       {708, "ISO-8859-6"},    {850, "ibm-850"},
    {852, "ibm-852"},       {866, "ibm-866"},       {874, "windows-874"},   {932, "windows-932"},
    {936, "windows-936"},   {949, "windows-949"},   {950, "windows-950"},   {1250, "windows-1250"},
    {1251, "windows-1251"}, {1253, "windows-1253"}, {1254, "windows-1254"}, {1255, "windows-1255"},
    {1256, "windows-1256"}, {1257, "windows-1257"}, {1258, "windows-1258"}, {10000, "macintosh"},
    {54936, "gb18030"},     {65001, "UTF-8"},
};

// Charsets of fonts that name a code page.
struct Charset {
    std::int32_t charset, codePage;
};
constexpr Charset kCharsets[] = {
    {0, 1252},   {2, 1252},   {77, 10000}, {128, 932},  {129, 949},  {134, 936}, {136, 950},  {161, 1253}, {162, 1254},
    {163, 1258}, {177, 1255}, {178, 1256}, {186, 1257}, {204, 1251}, {222, 874}, {238, 1250}, {254, 437},  {255, 850},
};

constexpr std::size_t kMaximumLevels = 9;

std::u16string_view trimmed(std::u16string_view text) {
    const std::size_t begin = text.find_first_not_of(u" \t");
    if (begin == std::u16string_view::npos) return {};
    return text.substr(begin, text.find_last_not_of(u" \t") - begin + 1);
}

} // namespace

std::string_view codePageName(std::int32_t codePage) {
    const auto* const found = std::ranges::find(kCodePages, codePage, &CodePage::number);
    return found == std::end(kCodePages) ? kCodePages[0].name : found->name;
}

// Fonts

void RTFReadFonts::word(std::string_view name, std::optional<std::int32_t> number) {
    if (name == "f" && number) {
        current_ = &entries_[*number];
        *current_ = {};
        name_.clear();
    } else if (current_ && name == "fcharset" && number) {
        const auto* const found = std::ranges::find(kCharsets, *number, &Charset::charset);
        if (found != std::end(kCharsets)) current_->codePage = found->codePage;
    } else if (current_ && name == "cpg" && number) {
        current_->codePage = *number;
    }
}

void RTFReadFonts::text(std::u16string_view text) {
    if (!current_ || current_->complete) return;
    const std::size_t end = text.find(u';');
    name_ += text.substr(0, end);
    if (end == std::u16string_view::npos) return;
    current_->name = utf8FromUTF16(trimmed(name_));
    current_->complete = true;
}

std::int32_t RTFReadFonts::codePageOf(std::int32_t font, std::int32_t documentCodePage) const {
    const auto found = entries_.find(font);
    return found == entries_.end() ? documentCodePage : found->second.codePage.value_or(documentCodePage);
}

// A PostScript name is taken as it is, a family's name with the face that the words ask for. A face that is bold by
// its name stays bold.
Font RTFReadFonts::face(const std::string& name, bool bold, bool italic) {
    constexpr int kRegular = 5;
    if (!knownFontFamily(name)) return Font(name, 1);
    Font font = fontWithFamily(name, 0, kRegular, 1).value_or(Font(name, 1));
    if (bold && (font.traits() & kBoldFontTrait) == 0) font = convertFontToHaveTrait(font, kBoldFontTrait);
    if (italic && (font.traits() & kItalicFontTrait) == 0) font = convertFontToHaveTrait(font, kItalicFontTrait);
    return font;
}

Font RTFReadFonts::font(std::int32_t font, bool bold, bool italic, double pointSize) {
    const auto found = entries_.find(font);
    static const std::string kDefaultName = Font::userFont(1).fontName();
    if (found == entries_.end() || found->second.name.empty())
        return face(kDefaultName, bold, italic).withSize(pointSize);
    auto& made = found->second.faces[(bold ? 1U : 0U) + (italic ? 2U : 0U)];
    if (!made) made = face(found->second.name, bold, italic);
    return made->withSize(pointSize);
}

// Colors

void RTFReadColors::word(std::string_view name, std::optional<std::int32_t> number) {
    constexpr std::string_view kComponents[] = {"red", "green", "blue"};
    const auto* const found = std::ranges::find(kComponents, name);
    if (found == std::end(kComponents)) return;
    current_.given = true;
    current_.rgb[static_cast<std::size_t>(found - kComponents)] = std::clamp(number.value_or(0), 0, 255);
}

void RTFReadColors::text(std::u16string_view text) {
    for (const char16_t unit : text) {
        if (unit != u';') continue;
        entries_.push_back(std::move(current_));
        current_ = {};
    }
}

void RTFReadColors::expandedWord(std::string_view name, std::optional<std::int32_t> number) {
    constexpr std::size_t kMostComponents = 5;
    inName_ = name == "cname";
    if (inName_)
        name_.clear();
    else if (name.starts_with("cs"))
        space_ = name;
    else if (name == "c" && number && components_.size() < kMostComponents)
        components_.push_back(*number);
}

void RTFReadColors::expandedText(std::u16string_view text) {
    for (const char16_t unit : text) {
        if (unit != u';') {
            if (inName_) name_ += static_cast<char>(unit < 0x80 ? unit : u'?');
            continue;
        }
        if (expandedIndex_ < entries_.size()) entries_[expandedIndex_].expanded = expandedColor();
        ++expandedIndex_;
        space_.clear();
        components_.clear();
        name_.clear();
        inName_ = false;
    }
}

std::optional<Color> RTFReadColors::expandedColor() const {
    const auto component = [this](std::size_t index, double absent) {
        constexpr double kScale = 100000;
        return index < components_.size() ? std::clamp(components_[index] / kScale, 0.0, 1.0) : absent;
    };
    if (!name_.empty())
        if (auto named = Color::catalog("System", name_)) return named;
    if (components_.empty()) return std::nullopt;
    if (space_ == "csgray") return Color::calibratedWhite(component(0, 0), component(1, 1));
    const double red = component(0, 0), green = component(1, 0), blue = component(2, 0), alpha = component(3, 1);
    return space_ == "csgenericrgb" ? Color::calibratedRGB(red, green, blue, alpha)
                                    : Color::sRGB(red, green, blue, alpha);
}

std::optional<Color> RTFReadColors::color(std::int32_t index) const {
    if (index < 0 || static_cast<std::size_t>(index) >= entries_.size()) return std::nullopt;
    const Entry& entry = entries_[static_cast<std::size_t>(index)];
    if (entry.expanded) return entry.expanded;
    if (!entry.given) return std::nullopt;
    const double red = entry.rgb[0] / 255.0, green = entry.rgb[1] / 255.0, blue = entry.rgb[2] / 255.0;
    return generic_ ? Color::calibratedRGB(red, green, blue) : Color::sRGB(red, green, blue);
}

// Lists

RTFReadLists::Level* RTFReadLists::level() {
    return current_.levels.empty() ? nullptr : &current_.levels.back();
}

void RTFReadLists::word(std::string_view name, std::optional<std::int32_t> number) {
    const std::int32_t value = number.value_or(0);
    if (name == "list") {
        current_ = {};
    } else if (name == "listlevel") {
        if (current_.levels.size() < kMaximumLevels) current_.levels.emplace_back();
    } else if (name == "listid") {
        lists_[value] = std::move(current_);
        current_ = {};
    } else if (Level* const last = level(); last && (name == "levelnfc" || name == "levelnfcn")) {
        last->number = value;
    } else if (last && name == "levelstartat") {
        last->start = value;
    }
}

void RTFReadLists::overrideWord(std::string_view name, std::optional<std::int32_t> number) {
    if (name == "listid") overrideListId_ = number.value_or(0);
    if (name == "ls") overrides_[number.value_or(0)] = overrideListId_;
}

void RTFReadLists::text(Part part, std::u16string_view text) {
    Level* const last = level();
    if (!last) return;
    constexpr std::size_t kLongest = 256;
    if (part == Part::marker && last->marker.size() < kLongest) last->marker += text;
    if (part != Part::levelText) return;
    for (const char16_t unit : text)
        if (unit != u';' && last->text.size() < kLongest) last->text += unit;
}

void RTFReadLists::levelTextByte(unsigned char byte) {
    Level* const last = level();
    if (!last) return;
    if (!last->hasLength) {
        last->hasLength = true;
    } else if (byte + 1U == current_.levels.size()) {
        if (last->prependsOuter) last->text.clear();
        last->placeholder = last->text.size();
    } else if (byte < kMaximumLevels) { // the number of an enclosing level; what parts it from ours goes with it
        last->prependsOuter = true;
    } else {
        last->text += static_cast<char16_t>(byte);
    }
}

namespace {

struct NumberToken {
    std::int32_t number;
    std::u16string_view token;
};
constexpr NumberToken kNumberTokens[] = {
    {0, u"{decimal}"},     {1, u"{upper-roman}"}, {2, u"{lower-roman}"},
    {3, u"{upper-alpha}"}, {4, u"{lower-alpha}"}, {22, u"{decimal}"},
};
constexpr std::int32_t kBulletNumber = 23, kNoNumber = 255;

// Bullets of word processors: characters of symbol fonts, and the markers that look like them.
struct Bullet {
    char16_t unit;
    std::u16string_view format;
};
constexpr Bullet kBullets[] = {
    {0x2022, u"{disc}"},   {0x00B7, u"{disc}"},    {0xF0B7, u"{disc}"},   {u'o', u"{circle}"},   {0x25E6, u"{circle}"},
    {0x25AA, u"{square}"}, {0xF0A7, u"{square}"},  {0x00A7, u"{square}"}, {0x2043, u"{hyphen}"}, {0x2713, u"{check}"},
    {0xF0FC, u"{check}"},  {0x25C6, u"{diamond}"}, {0x25AB, u"{box}"},
};

} // namespace

std::shared_ptr<TextList> RTFReadLists::makeList(const Level& level) {
    std::u16string format = level.marker;
    if (format.empty() && level.number == kBulletNumber) {
        const char16_t unit = level.text.empty() ? char16_t{0x2022} : level.text.front();
        const auto* const found = std::ranges::find(kBullets, unit, &Bullet::unit);
        format = found == std::end(kBullets) ? level.text : std::u16string(found->format);
    } else if (format.empty() && level.number != kNoNumber) {
        const auto* const found = std::ranges::find(kNumberTokens, level.number, &NumberToken::number);
        const std::u16string_view token = found == std::end(kNumberTokens) ? kNumberTokens[0].token : found->token;
        format = level.text;
        format.insert(std::min(level.placeholder, format.size()), token);
    }
    return std::make_shared<TextList>(utf8FromUTF16(format), level.prependsOuter ? kTextListPrependEnclosingMarker : 0,
                                      level.start);
}

std::vector<std::shared_ptr<TextList>> RTFReadLists::chain(std::int32_t list, std::int32_t level) {
    const auto id = overrides_.find(list);
    const auto found = id == overrides_.end() ? lists_.end() : lists_.find(id->second);
    if (list <= 0 || level < 0 || found == lists_.end() || found->second.levels.empty()) return {};
    auto& objects = made_[list];
    const std::size_t depth = std::min(static_cast<std::size_t>(level) + 1, found->second.levels.size());
    while (objects.size() < depth) objects.push_back(makeList(found->second.levels[objects.size()]));
    return {objects.begin(), objects.begin() + static_cast<std::ptrdiff_t>(depth)};
}

} // namespace platform
