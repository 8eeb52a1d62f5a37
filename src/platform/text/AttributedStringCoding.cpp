// An attributed string in an archive is its text, its distinct attribute dictionaries, and a table of runs: for each
// run its length in UTF-16 units and the number of its dictionary, both as base-128 numbers, low bits first. Text of
// one run has its one dictionary and no table.
//
// A table that does not fit its text is mended rather than refused, since the text is what a reader wants: runs beyond
// the end are cut, text behind the last run goes on with that run's attributes, and a run whose dictionary does not
// exist has none.

#include <array>
#include <limits>
#include <ranges>
#include <variant>

#include "platform/archive/ArchivedFields.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/base/UTF16.h"
#include "platform/files/FileWrapperCoding.h"
#include "platform/graphics/GraphicsCoding.h"
#include "platform/text/ArchivableTextClasses.h"
#include "platform/text/AttributeNumbers.h"
#include "platform/text/AttributedString.h"
#include "platform/text/TextAttachment.h"
#include "platform/text/TextCoding.h"

namespace platform {

namespace {

// Older documents have another name for the attribute of vertical text.
constexpr std::string_view kOldVerticalGlyphFormName = "NSVerticalGlyphForm";

// Writes the dictionaries of attribute sets. Equal values are one object in the archive, save that an integer and a
// real of one value are two.
class DictionaryEncoder {
  public:
    using Place = KeyedArchiver::Place;

    DictionaryEncoder(KeyedArchiver& archiver, const AttributeNumbers& numbers)
        : archiver_(archiver), numbers_(numbers), values_(numbers.valueCount()) {
        names_.reserve(kUsualNames);
    }

    Place dictionaryFor(std::uint32_t set) {
        return archiver_.addObject<ObjectDictionary>([&] {
            const auto members = numbers_.members(set);
            archiver_.encodePlaces("NS.keys",
                                   members | std::views::transform([&](const AttributeNumbers::Member& member) {
                                       return placeOf(member.entry->first);
                                   }));
            archiver_.encodePlaces("NS.objects",
                                   members | std::views::transform([&](const AttributeNumbers::Member& member) {
                                       return placeOf(member);
                                   }));
        });
    }

  private:
    Place placeOf(AttributeName name) {
        for (const auto& [known, place] : names_)
            if (known == name) return place;
        return names_.emplace_back(name, archiver_.placeOfString(name.string())).second;
    }

    Place placeOf(const AttributeNumbers::Member& member) {
        const AttributeValue& value = member.entry->second;
        Place& place = values_[member.value][std::holds_alternative<double>(value) ? 1 : 0];
        if (place == 0) place = std::visit([&](const auto& held) { return placeOf(held); }, value);
        return place;
    }

    Place placeOf(std::int64_t integer) { return archiver_.placeOf(Value(integer)); }
    Place placeOf(double real) { return archiver_.placeOf(Value(real)); }
    Place placeOf(const std::u16string& text) { return archiver_.placeOfString(text); }
    Place placeOf(const ParagraphStyleReference& style) { return archiver_.placeOf(style); }
    Place placeOf(const TextAttachmentReference& attachment) { return archiver_.placeOf(attachment); }
    Place placeOf(const std::vector<std::int64_t>& numbers) {
        return archiver_.addObject<ObjectArray>([&] {
            archiver_.encodePlaces(
                "NS.objects", numbers | std::views::transform([&](std::int64_t number) { return placeOf(number); }));
        });
    }
    template<class T>
    Place placeOf(const T& object) {
        return archiver_.placeOfNew(object);
    }

    static constexpr std::size_t kUsualNames = 16;

    KeyedArchiver& archiver_;
    const AttributeNumbers& numbers_;
    std::vector<std::pair<AttributeName, Place>> names_;
    std::vector<std::array<Place, 2>> values_; // by number, a real's place apart; 0 for one that is not there yet
};

void appendBase128(std::string& bytes, std::uint64_t number) {
    for (; number >= 0x80; number >>= 7) bytes += static_cast<char>((number & 0x7F) | 0x80);
    bytes += static_cast<char>(number);
}

void encodeAttributedString(KeyedArchiver& archiver, const AttributedString& text) {
    archiver.encodeStringObject("NSString", text.string());
    if (text.empty()) return;
    AttributeNumbers numbers;
    std::string table;
    table.reserve(4 * text.runs().size()); // most lengths and numbers take one byte, some two
    std::size_t start = 0;
    for (const auto& run : text.runs()) {
        appendBase128(table, run.end - start);
        appendBase128(table, numbers.numberOf(*run.attributes));
        start = run.end;
    }
    DictionaryEncoder dictionaries(archiver, numbers);
    if (text.runs().size() == 1) {
        archiver.encodePlace("NSAttributes", dictionaries.dictionaryFor(0));
        return;
    }
    archiver.encodeArrayOfPlaces("NSAttributes",
                                 std::views::iota(std::size_t{0}, numbers.setCount()) |
                                     std::views::transform([&](std::size_t set) {
                                         return dictionaries.dictionaryFor(static_cast<std::uint32_t>(set));
                                     }));
    archiver.encodePlace("NSAttributeInfo", archiver.placeOf(Value(Data(std::move(table)))));
}

std::vector<std::int64_t> numbersFrom(const ObjectArray& objects) {
    std::vector<std::int64_t> numbers;
    for (const ArchivedObject& object : objects)
        if (const auto value = object.as<Value>()) numbers.push_back(value->integerValue());
    return numbers;
}

std::optional<AttributeValue> attributeFrom(const Value& value) {
    if (const auto* text = value.as<std::u16string>()) return *text;
    if (const auto* real = value.as<double>()) return *real;
    if (const auto* integer = value.as<std::int64_t>()) return *integer;
    if (const auto* boolean = value.as<bool>()) return std::int64_t{*boolean};
    return std::nullopt;
}

// Nothing for an object of a class that is no attribute value here.
std::optional<AttributeValue> attributeFrom(const ArchivedObject& object) {
    if (const auto value = object.as<Value>()) return attributeFrom(*value);
    if (const auto font = object.as<Font>()) return *font;
    if (const auto color = object.as<Color>()) return *color;
    if (auto style = object.as<ParagraphStyle>()) return style;
    if (const auto url = object.as<URL>()) return *url;
    if (auto attachment = object.asMutable<TextAttachment>()) return attachment;
    if (const auto shadow = object.as<Shadow>()) return *shadow;
    if (const auto array = object.as<ObjectArray>()) return numbersFrom(*array);
    return std::nullopt;
}

AttributeSet::Reference setFrom(const ObjectDictionary& dictionary) {
    std::vector<AttributeSet::Entry> entries;
    entries.reserve(dictionary.size());
    for (const auto& [key, object] : dictionary) {
        const auto name = key.as<Value>();
        if (!name || !name->as<std::u16string>()) continue;
        const std::string spelling = name->utf8();
        const auto known =
            spelling == kOldVerticalGlyphFormName ? kVerticalGlyphFormAttributeName : AttributeName::known(spelling);
        auto value = known ? attributeFrom(object) : std::nullopt;
        if (value) entries.emplace_back(*known, *std::move(value));
    }
    return std::make_shared<const AttributeSet>(std::move(entries));
}

// The numbers of a run table, one after the other; nothing behind the last whole one.
class RunTableReader {
  public:
    explicit RunTableReader(std::string_view bytes) : bytes_(bytes) {}

    std::optional<std::uint64_t> next() {
        std::uint64_t number = 0;
        for (unsigned shift = 0; position_ < bytes_.size() && shift < 64; shift += 7) {
            const auto byte = static_cast<std::uint8_t>(bytes_[position_++]);
            number |= std::uint64_t{byte & 0x7Fu} << shift;
            if (byte < 0x80) return number;
        }
        return std::nullopt;
    }

  private:
    std::string_view bytes_;
    std::size_t position_ = 0;
};

AttributedString textFrom(std::u16string_view text, const std::vector<AttributeSet::Reference>& sets,
                          std::string_view table) {
    AttributedString result;
    RunTableReader reader(table);
    AttributeSet::Reference set = AttributeSet::empty();
    while (!text.empty()) {
        const auto length = reader.next();
        const auto index = reader.next();
        if (!length || !index) break;
        set = *index < sets.size() ? sets[*index] : AttributeSet::empty();
        const std::size_t taken = *length < text.size() ? static_cast<std::size_t>(*length) : text.size();
        result.append(text.substr(0, taken), set);
        text.remove_prefix(taken);
    }
    result.append(text, set);
    return result;
}

Result<ArchivedObject> decodeAttributedString(const ArchivedFields& fields) {
    std::u16string text = fields.decodeString("NSString").value_or(std::u16string());
    const ArchivedObject attributes = fields.decodeObject("NSAttributes");
    if (const auto dictionary = attributes.as<ObjectDictionary>())
        return ArchivedObject(std::make_shared<const AttributedString>(std::move(text), setFrom(*dictionary)));
    const auto dictionaries = attributes.as<ObjectArray>();
    if (!dictionaries) return ArchivedObject(std::make_shared<const AttributedString>(std::move(text)));
    std::vector<AttributeSet::Reference> sets;
    sets.reserve(dictionaries->size());
    for (const ArchivedObject& object : *dictionaries) {
        const auto dictionary = object.as<ObjectDictionary>();
        sets.push_back(dictionary ? setFrom(*dictionary) : AttributeSet::empty());
    }
    const std::string_view table = fields.decodeBytes("NSAttributeInfo").value_or(std::string_view());
    return ArchivedObject(std::make_shared<const AttributedString>(textFrom(text, sets, table)));
}

} // namespace

std::vector<ArchivableClass> archivableAttributedStringClasses() {
    // Written as the mutable class: whoever asks for either gets what was asked for.
    return {{"NSMutableAttributedString",
             {"NSMutableAttributedString", "NSAttributedString", "NSObject"},
             {"NSAttributedString", "NSTextStorage"},
             typeid(AttributedString),
             true,
             encoderOf<AttributedString>(encodeAttributedString),
             decodeAttributedString}};
}

void registerArchivableTextClasses() {
    registerFoundationClasses();
    registerArchivableFileWrapper();
    registerArchivableGraphicsClasses();
    for (const auto& classes : {archivableAttributedStringClasses(), archivableParagraphStyleClasses(),
                                archivableTextBlockClasses(), archivableTextAttachmentClasses()})
        for (const ArchivableClass& archivable : classes) ClassRegistry::shared().add(archivable);
}

} // namespace platform
