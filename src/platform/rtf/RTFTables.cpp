#include "platform/rtf/RTFTables.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <tuple>
#include <utility>

#include "platform/base/UTF16.h"
#include "platform/text/TextList.h"

namespace platform {

namespace {

// Families of old that have a class of their own; a PostScript name's family is what stands before its hyphen.
struct FontClass {
    std::string_view family, word;
};
constexpr FontClass kFontClasses[] = {
    {"Helvetica", "\\fswiss"}, {"Arial", "\\fswiss"},           {"ArialMT", "\\fswiss"},
    {"Times", "\\froman"},     {"TimesNewRomanPS", "\\froman"}, {"TimesNewRomanPSMT", "\\froman"},
    {"Courier", "\\fmodern"},  {"CourierNewPS", "\\fmodern"},   {"CourierNewPSMT", "\\fmodern"},
};
constexpr std::size_t kFontsALine = 3;

std::string_view fontClassWord(std::string_view name) {
    const std::string_view family = name.substr(0, name.find('-'));
    const auto* const found = std::ranges::find(kFontClasses, family, &FontClass::family);
    return found == std::end(kFontClasses) ? "\\fnil" : found->word;
}

// Of a font outside the built-in table by its name's words: what is installed here must not change what is written.
std::uint32_t traitsOf(const Font& font) {
    const std::string& name = font.fontName();
    if (knownFontFamily(name)) return font.traits();
    const bool italic = name.find("Italic") != std::string::npos || name.find("Oblique") != std::string::npos;
    return (name.find("Bold") != std::string::npos ? kBoldFontTrait : 0U) | (italic ? kItalicFontTrait : 0U);
}

std::int64_t scaled(double component, double scale) {
    return std::llround(std::clamp(component, 0.0, 1.0) * scale);
}

// Numbering of Word's list levels for our tokens; everything else is a bullet.
struct LevelFormat {
    std::string_view token;
    std::int64_t number;
};
constexpr LevelFormat kLevelFormats[] = {
    {"{decimal}", 0},           {"{upper-roman}", 1},       {"{lower-roman}", 2}, {"{upper-alpha}", 3},
    {"{upper-latin}", 3},       {"{lower-alpha}", 4},       {"{lower-latin}", 4}, {"{octal}", 0},
    {"{lower-hexadecimal}", 0}, {"{upper-hexadecimal}", 0},
};
constexpr std::int64_t kBulletLevel = 23;
constexpr std::int64_t kLevelIndent = 720;     // twips
constexpr std::size_t kTemplatesAList = 100;   // level template ids: 1, 2 … in the first list, 101 … in the second
constexpr std::size_t kMaximumLevelText = 255; // its length is one byte

// A marker format around its number token; a bullet's format has no number.
struct SplitFormat {
    std::int64_t number = kBulletLevel;
    std::u16string before, after;
};

SplitFormat splitFormat(const TextList& list) {
    const std::string_view format = list.markerFormat();
    for (const LevelFormat& level : kLevelFormats) {
        const std::size_t found = format.find(level.token);
        if (found == std::string_view::npos) continue;
        return {level.number, utf16FromUTF8(format.substr(0, found)),
                utf16FromUTF8(format.substr(found + level.token.size()))};
    }
    return {kBulletLevel, list.markerForItemNumber(list.startingItemNumber()), {}};
}

void writeHexByte(std::size_t value, RTFOutput& out) {
    constexpr std::string_view digits = "0123456789abcdef";
    out.raw("\\'");
    out.raw(digits[value >> 4 & 15]);
    out.raw(digits[value & 15]);
}

// What the level shows: its length, then the text, in which a byte with the level's index stands for the number. The
// second group lists where such bytes are.
void writeLevelText(const SplitFormat& format, std::size_t index, RTFOutput& out) {
    const bool numbered = format.number != kBulletLevel;
    const std::size_t length = format.before.size() + format.after.size() + (numbered ? 1 : 0);
    if (length > kMaximumLevelText) {
        out.raw("\\'00;}{\\levelnumbers;}");
        return;
    }
    writeHexByte(length, out);
    out.text(format.before);
    if (numbered) writeHexByte(index, out);
    out.text(format.after);
    out.raw(";}{\\levelnumbers");
    if (numbered) writeHexByte(format.before.size() + 1, out);
    out.raw(";}");
}

// A level's words, around its template id.
struct LevelWords {
    RTFOutput::Part before, after;
};

LevelWords writeLevel(const TextList& list, std::size_t index, std::int64_t templateID, RTFOutput& out) {
    LevelWords words;
    const SplitFormat format = splitFormat(list);
    std::size_t begin = out.size();
    out.word("{\\listlevel\\levelnfc", format.number);
    out.word("\\levelnfcn", format.number);
    out.word("\\leveljc0\\leveljcn0\\levelfollow0\\levelstartat", list.startingItemNumber());
    out.raw("\\levelspace360\\levelindent0{\\*\\levelmarker ");
    const bool outer = out.enterGroup();
    out.text(list.markerFormat());
    out.raw("}{\\leveltext\\leveltemplateid");
    words.before = out.partSince(begin);
    out.word("", templateID);
    begin = out.size();
    out.leaveGroup(false);
    writeLevelText(format, index, out);
    out.leaveGroup(outer);
    const std::int64_t indent = kLevelIndent * static_cast<std::int64_t>(index + 1);
    out.word("\\fi-360\\li", indent);
    out.word("\\lin", indent);
    out.raw(" }");
    words.after = out.partSince(begin);
    return words;
}

} // namespace

std::size_t RTFFontTable::indexOf(const Font& font) {
    const std::string* const name = &font.fontName();
    return entries_.numberOf(
        spreadHash(reinterpret_cast<std::uintptr_t>(name)),
        [&](const Entry& entry) { return &entry.font.fontName() == name; },
        [&] {
            const std::uint32_t traits = traitsOf(font);
            return Entry{font, (traits & kBoldFontTrait) != 0, (traits & kItalicFontTrait) != 0};
        });
}

void RTFFontTable::write(RTFOutput& out) const {
    out.raw("{\\fonttbl");
    for (std::size_t index = 0; index < entries_.size(); ++index) {
        const std::string& name = entries_[index].font.fontName();
        out.word("\\f", static_cast<std::int64_t>(index));
        out.raw(fontClassWord(name));
        out.raw("\\fcharset0 ");
        const bool outer = out.enterGroup();
        out.text(name);
        out.leaveGroup(outer);
        out.raw(';');
        if ((index + 1) % kFontsALine == 0) out.raw('\n');
    }
    out.raw("}\n");
}

std::optional<RTFColorTable::Entry> RTFColorTable::entryFor(const Color& color) {
    const auto generic = color.genericRGB();
    const auto sRGB = color.rgba();
    if (!generic || !sRGB) return std::nullopt;
    constexpr double kScale = 100000;
    const std::int64_t alpha = scaled(color.alphaComponent(), kScale);
    const auto rgb = [alpha](const Color::RGBA& c) {
        return std::array{scaled(c.red, kScale), scaled(c.green, kScale), scaled(c.blue, kScale), alpha};
    };
    Entry entry;
    entry.generic = {scaled(generic->red, 255), scaled(generic->green, 255), scaled(generic->blue, 255)};
    switch (color.space()) {
    case ColorSpace::calibratedWhite:
    case ColorSpace::deviceWhite:
        entry.spaceWord = "\\csgray";
        entry.components = {scaled(color.components()[0], kScale), 0, 0, alpha};
        entry.count = 1;
        return entry;
    case ColorSpace::calibratedRGB:
        entry.spaceWord = "\\csgenericrgb";
        entry.components = rgb(*generic);
        break;
    case ColorSpace::catalog:
        if (color.catalogNameComponent() == "System") entry.name = color.colorNameComponent();
        [[fallthrough]];
    default:
        entry.spaceWord = "\\cssrgb";
        entry.components = rgb(*sRGB);
        break;
    }
    entry.count = 3;
    return entry;
}

std::size_t RTFColorTable::indexOf(const Color& color) {
    const void* const parts = &color.components();
    const std::uint32_t number = known_.numberOf(
        spreadHash(reinterpret_cast<std::uintptr_t>(parts)),
        [&](const KnownColor& known) { return &known.color.components() == parts; },
        [&] { return KnownColor{color, newIndexOf(color)}; });
    return known_[number].index;
}

std::size_t RTFColorTable::newIndexOf(const Color& color) {
    std::optional<Entry> entry = entryFor(color);
    if (!entry) return 0;
    return 2 +
           entries_.numberOf(
               hashOf(*entry), [&](const Entry& known) { return known == *entry; }, [&] { return *std::move(entry); });
}

std::uint32_t RTFColorTable::hashOf(const Entry& entry) {
    std::uint64_t hash = std::hash<std::string>()(entry.name);
    for (const std::int64_t component : entry.components)
        hash = spreadHash(hash << 32 | static_cast<std::uint64_t>(component));
    return static_cast<std::uint32_t>(hash);
}

void RTFColorTable::writeExpanded(const Entry& entry, RTFOutput& out) {
    constexpr std::int64_t kOpaque = 100000;
    out.raw(entry.spaceWord);
    for (std::size_t i = 0; i < entry.count; ++i) out.word("\\c", entry.components[i]);
    if (entry.components[3] != kOpaque) out.word("\\c", entry.components[3]);
    if (!entry.name.empty()) {
        out.raw("\\cname ");
        out.bytes(entry.name);
    }
}

void RTFColorTable::write(RTFOutput& out) const {
    out.raw("{\\colortbl;\\red255\\green255\\blue255;");
    for (const Entry& entry : entries_) {
        out.word("\\red", entry.generic[0]);
        out.word("\\green", entry.generic[1]);
        out.word("\\blue", entry.generic[2]);
        out.raw(';');
    }
    out.raw("}\n{\\*\\expandedcolortbl;;");
    for (const Entry& entry : entries_) {
        writeExpanded(entry, out);
        out.raw(';');
    }
    out.raw("}\n");
}

// The list that ends above takes the further level; else a new list repeats the chain from the top.
RTFListPlace RTFListTable::newPlace(std::uint32_t above, std::size_t level) {
    const auto node = static_cast<std::uint32_t>(nodes_.size());
    const std::size_t listAbove = above == kNone ? 0 : nodes_[above].place.list;
    if (above != kNone && lists_[listAbove - 1] == above) {
        lists_[listAbove - 1] = node;
        return {listAbove, level};
    }
    lists_.push_back(node);
    return {lists_.size(), level};
}

RTFListPlace RTFListTable::placeOf(const Chain& chain) {
    std::uint32_t node = kNone;
    const std::size_t levels = std::min(chain.size(), kMaximumLevels);
    for (std::size_t level = 0; level < levels; ++level) {
        const TextList* const list = chain[level].get();
        const std::uint32_t above = node;
        node = nodes_.numberOf(
            spreadHash(reinterpret_cast<std::uintptr_t>(list) * 31 + above),
            [&](const Node& known) { return known.list == list && known.above == above; },
            [&] { return Node{above, list, newPlace(above, level)}; });
    }
    return nodes_[node].place;
}

void RTFListTable::write(RTFOutput& out) const {
    if (lists_.empty()) return;
    // Lists that look the same differ in their levels' template ids alone.
    std::map<std::tuple<std::string_view, std::int64_t, std::size_t>, LevelWords> looks;
    out.raw("{\\*\\listtable");
    for (std::size_t index = 0; index < lists_.size(); ++index) {
        const auto id = static_cast<std::int64_t>(index + 1);
        if (index > 0) out.raw('\n');
        out.word("{\\list\\listtemplateid", id);
        out.raw("\\listhybrid");
        std::array<const TextList*, kMaximumLevels> levels;
        for (std::uint32_t node = lists_[index]; node != kNone; node = nodes_[node].above)
            levels[nodes_[node].place.level] = nodes_[node].list;
        for (std::size_t level = 0; level <= nodes_[lists_[index]].place.level; ++level) {
            const TextList& list = *levels[level];
            const auto templateID = static_cast<std::int64_t>(index * kTemplatesAList + level + 1);
            const auto [look, isNew] = looks.try_emplace({list.markerFormat(), list.startingItemNumber(), level});
            if (isNew) {
                look->second = writeLevel(list, level, templateID, out);
            } else {
                out.repeat(look->second.before);
                out.word("", templateID);
                out.repeat(look->second.after);
            }
        }
        out.word("{\\listname ;}\\listid", id);
        out.raw('}');
    }
    out.raw("}\n{\\*\\listoverridetable");
    for (std::size_t index = 0; index < lists_.size(); ++index) {
        const auto id = static_cast<std::int64_t>(index + 1);
        out.word("{\\listoverride\\listid", id);
        out.word("\\listoverridecount0\\ls", id);
        out.raw('}');
    }
    out.raw("}\n");
}

} // namespace platform
