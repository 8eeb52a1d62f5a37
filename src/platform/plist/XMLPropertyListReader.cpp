// A reader of the few elements of property lists, not of XML at large: no entity can be declared, nothing outside the
// file is opened, and open containers stand on a stack of their own. The bytes are UTF-8, or UTF-16 with a byte order
// mark.
#include "platform/plist/XMLPropertyListReader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <optional>
#include <vector>

#include <fmt/format.h>

#include "platform/foundation/Base64.h"
#include "platform/plist/PropertyListLimits.h"

namespace platform {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";
constexpr std::string_view kUIDKey = "CF$UID";

std::string_view trimmed(std::string_view text) {
    const std::size_t start = std::min(text.find_first_not_of(kBlanks), text.size());
    text.remove_prefix(start);
    return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

// Decimal, or hexadecimal behind "0x"; a sign in front. What only an unsigned number holds becomes a real.
std::optional<Value> integerFromText(std::string_view text) {
    text = trimmed(text);
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+')) text.remove_prefix(1);
    const bool isHexadecimal = text.starts_with("0x") || text.starts_with("0X");
    if (isHexadecimal) text.remove_prefix(2);
    std::uint64_t magnitude = 0;
    const auto [end, error] =
        std::from_chars(text.data(), text.data() + text.size(), magnitude, isHexadecimal ? 16 : 10);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    constexpr std::uint64_t kMinimum = std::uint64_t{1} << 63;
    if (isNegative && magnitude > kMinimum) return std::nullopt;
    if (isNegative) return Value(static_cast<std::int64_t>(~magnitude + 1));
    return magnitude >= kMinimum ? Value(static_cast<double>(magnitude)) : Value(static_cast<std::int64_t>(magnitude));
}

std::optional<Value> realFromText(std::string_view text) {
    text = trimmed(text);
    if (text.starts_with('+')) text.remove_prefix(1);
    double real = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), real);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return Value(real);
}

// "2024-05-01T09:15:02Z"; years may have more digits and a sign.
std::optional<Value> dateFromText(std::string_view text) {
    text = trimmed(text);
    std::array<int, 6> parts{};
    constexpr std::string_view kSeparators = "--T::Z";
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), parts[i]);
        const auto length = static_cast<std::size_t>(end - text.data());
        if (error != std::errc() || length == text.size() || *end != kSeparators[i]) return std::nullopt;
        if (i > 0 && (length != 2 || parts[i] < 0)) return std::nullopt;
        text.remove_prefix(length + 1);
    }
    const auto [year, month, day, hours, minutes, seconds] = parts;
    using namespace std::chrono;
    const year_month_day date{std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                              std::chrono::day(static_cast<unsigned>(day))};
    if (!text.empty() || year < -32767 || year > 32767 || !date.ok() || hours > 23 || minutes > 59 || seconds > 60)
        return std::nullopt;
    const double days = static_cast<double>(sys_days(date).time_since_epoch().count());
    return Value(Date::fromUnixTime(days * 86400 + hours * 3600 + minutes * 60 + seconds));
}

std::optional<Value> dataFromText(std::string_view text) {
    std::optional<std::string> bytes = base64Decoded(text);
    if (!bytes) return std::nullopt;
    return Value(Data(std::move(*bytes)));
}

std::optional<Value> stringFromText(std::string_view text) {
    return Value(utf16FromUTF8(text));
}

std::optional<Value> trueFromText(std::string_view text) {
    return trimmed(text).empty() ? std::optional(Value(true)) : std::nullopt;
}

std::optional<Value> falseFromText(std::string_view text) {
    return trimmed(text).empty() ? std::optional(Value(false)) : std::nullopt;
}

struct Leaf {
    std::string_view element;
    std::optional<Value> (*fromText)(std::string_view text);
};
constexpr std::array kLeaves{
    Leaf{"string", stringFromText}, Leaf{"integer", integerFromText}, Leaf{"real", realFromText},
    Leaf{"true", trueFromText},     Leaf{"false", falseFromText},     Leaf{"date", dateFromText},
    Leaf{"data", dataFromText},
};

struct Entity {
    std::string_view name;
    char character;
};
constexpr std::array kEntities{Entity{"amp", '&'}, Entity{"lt", '<'}, Entity{"gt", '>'}, Entity{"quot", '"'},
                               Entity{"apos", '\''}};

// What may stand between elements and says nothing.
struct Misc {
    std::string_view opening, closing;
};
constexpr std::array kMisc{Misc{"<!--", "-->"}, Misc{"<?", "?>"}};

// The character of "&…;" in UTF-8, or nothing.
std::optional<std::string> characterOf(std::string_view reference) {
    for (const Entity& entity : kEntities)
        if (reference == entity.name) return std::string(1, entity.character);
    if (!reference.starts_with('#')) return std::nullopt;
    reference.remove_prefix(1);
    const bool isHexadecimal = reference.starts_with('x');
    if (isHexadecimal) reference.remove_prefix(1);
    std::uint32_t code = 0;
    const auto [end, error] =
        std::from_chars(reference.data(), reference.data() + reference.size(), code, isHexadecimal ? 16 : 10);
    if (error != std::errc() || end != reference.data() + reference.size()) return std::nullopt;
    if (code == 0 || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return std::nullopt;
    std::u16string units(1, static_cast<char16_t>(code));
    if (code >= 0x10000)
        units = {static_cast<char16_t>(0xD7C0 + (code >> 10)), static_cast<char16_t>(0xDC00 + (code & 0x3FF))};
    return utf8FromUTF16(units);
}

struct Tag {
    std::string_view name;
    bool isEnd = false;
    bool isEmpty = false; // "<name/>"
};

class Reader {
  public:
    explicit Reader(std::string_view text) : text_(text) {}

    Result<Value> read() {
        while (!done_) TRY(takeTag(TRY(nextTag())));
        if (isInsidePlist_) {
            const Tag end = TRY(nextTag());
            if (!end.isEnd || end.name != "plist") return corrupt("more than one value");
        }
        return std::move(*done_);
    }

  private:
    struct Frame {
        bool isDictionary = false;
        Array array;
        Dictionary dictionary;
        std::optional<std::string> key;
    };

    std::unexpected<Error> corrupt(std::string_view what) const {
        const auto lines = 1 + std::count(text_.begin(), text_.begin() + static_cast<std::ptrdiff_t>(position_), '\n');
        return corruptPropertyList(fmt::format("XML property list, line {}: {}.", lines, what));
    }

    bool skip(std::string_view opening) {
        if (!text_.substr(position_).starts_with(opening)) return false;
        position_ += opening.size();
        return true;
    }

    // Moves behind the next `closing`; what stood before it.
    Result<std::string_view> through(std::string_view closing) {
        const std::size_t end = text_.find(closing, position_);
        if (end == std::string_view::npos) return corrupt(fmt::format("“{}” is missing", closing));
        const std::string_view before = text_.substr(position_, end - position_);
        position_ = end + closing.size();
        return before;
    }

    // Skips a comment, a processing instruction or the document type; false when there is none here.
    Result<bool> skipMisc() {
        for (const Misc& misc : kMisc) {
            if (!skip(misc.opening)) continue;
            TRY(through(misc.closing));
            return true;
        }
        if (!skip("<!DOCTYPE")) return false;
        if (TRY(through(">")).find('[') != std::string_view::npos) return corrupt("declarations are not allowed");
        return true;
    }

    Result<Tag> nextTag() {
        while (true) {
            position_ = std::min(text_.find_first_not_of(kBlanks, position_), text_.size());
            if (!TRY(skipMisc())) break;
        }
        if (position_ == text_.size()) return corrupt("the file ends too early");
        if (!skip("<")) return corrupt("text stands where an element is expected");
        return tagBody();
    }

    // What follows "<": attributes are passed over, ">" inside their quotes too.
    Result<Tag> tagBody() {
        Tag tag;
        tag.isEnd = skip("/");
        const std::size_t nameEnd = std::min(text_.find_first_of(" \t\r\n/>", position_), text_.size());
        tag.name = text_.substr(position_, nameEnd - position_);
        position_ = nameEnd;
        while (true) {
            position_ = std::min(text_.find_first_of("\"'/>", position_), text_.size());
            if (position_ == text_.size()) return corrupt("a tag is not closed");
            const char found = text_[position_++];
            if (found == '>') return tag;
            if (found == '/')
                tag.isEmpty = text_.substr(position_).starts_with('>');
            else
                TRY(through(std::string_view(&found, 1)));
        }
    }

    Result<> takeTag(const Tag& tag) {
        if (tag.isEnd) return closeContainer(tag.name);
        if (tag.name == "plist" && stack_.empty() && !isInsidePlist_ && !tag.isEmpty) {
            isInsidePlist_ = true;
            return {};
        }
        if (tag.name == "key") return takeKey(tag);
        if (!stack_.empty() && stack_.back().isDictionary && !stack_.back().key)
            return corrupt(fmt::format("<{}> has no key", tag.name));
        if (tag.name == "dict" || tag.name == "array") return openContainer(tag);
        for (const Leaf& leaf : kLeaves) {
            if (tag.name != leaf.element) continue;
            std::optional<Value> value = leaf.fromText(TRY(content(tag)));
            if (!value) return corrupt(fmt::format("the <{}> is unreadable", tag.name));
            put(std::move(*value));
            return {};
        }
        return corrupt(fmt::format("<{}> is unknown", tag.name));
    }

    Result<> takeKey(const Tag& tag) {
        if (stack_.empty() || !stack_.back().isDictionary || stack_.back().key)
            return corrupt("a key stands where a value is expected");
        stack_.back().key = TRY(content(tag));
        return {};
    }

    Result<> openContainer(const Tag& tag) {
        if (stack_.size() == kMaximumPropertyListDepth)
            return corrupt(fmt::format("containers are nested deeper than {}", kMaximumPropertyListDepth));
        stack_.emplace_back().isDictionary = tag.name == "dict";
        return tag.isEmpty ? closeContainer(tag.name) : Result<>();
    }

    Result<> closeContainer(std::string_view name) {
        if (stack_.empty() || name != (stack_.back().isDictionary ? "dict" : "array"))
            return corrupt(fmt::format("</{}> closes nothing", name));
        Frame frame = std::move(stack_.back());
        if (frame.key) return corrupt(fmt::format("the key “{}” has no value", *frame.key));
        stack_.pop_back();
        if (!frame.isDictionary)
            put(std::move(frame.array));
        else if (const std::optional<UID> uid = uidOf(frame.dictionary))
            put(*uid);
        else
            put(std::move(frame.dictionary));
        return {};
    }

    static std::optional<UID> uidOf(const Dictionary& dictionary) {
        if (dictionary.size() != 1 || dictionary.begin()->first != kUIDKey) return std::nullopt;
        const Value& number = dictionary.begin()->second;
        const auto* integer = number.as<std::int64_t>();
        if (!integer || *integer < 0) return std::nullopt;
        return UID{static_cast<std::uint64_t>(*integer)};
    }

    // Of two entries with one key the first stays.
    void put(Value value) {
        if (stack_.empty()) {
            done_ = std::move(value);
        } else if (Frame& frame = stack_.back(); frame.isDictionary) {
            frame.dictionary.emplace(std::move(*frame.key), std::move(value));
            frame.key.reset();
        } else {
            frame.array.push_back(std::move(value));
        }
    }

    // The text up to the end tag, with references resolved and line ends made one line feed.
    Result<std::string> content(const Tag& tag) {
        std::string out;
        if (tag.isEmpty) return out;
        while (true) {
            const std::size_t end = std::min(text_.find_first_of("<&\r", position_), text_.size());
            out += text_.substr(position_, end - position_);
            position_ = end;
            if (end == text_.size()) return corrupt(fmt::format("the <{}> does not end", tag.name));
            if (skip("\r")) {
                if (!text_.substr(position_).starts_with('\n')) out += '\n';
            } else if (skip("&")) {
                const std::optional<std::string> character = characterOf(TRY(through(";")));
                if (!character) return corrupt("a character reference is unreadable");
                out += *character;
            } else if (skip("<![CDATA[")) {
                out += TRY(through("]]>"));
            } else if (skip("<!--")) {
                TRY(through("-->"));
            } else {
                position_ += 1;
                const Tag found = TRY(tagBody());
                if (!found.isEnd || found.name != tag.name)
                    return corrupt(fmt::format("<{}> stands inside <{}>", found.name, tag.name));
                return out;
            }
        }
    }

    std::string_view text_;
    std::size_t position_ = 0;
    bool isInsidePlist_ = false;
    std::vector<Frame> stack_;
    std::optional<Value> done_;
};

// The bytes as UTF-8; they are copied only when they are UTF-16.
std::optional<std::string> fromUTF16WithMark(std::string_view bytes) {
    const bool isLittle = bytes.starts_with("\xFF\xFE");
    if (!isLittle && !bytes.starts_with("\xFE\xFF")) return std::nullopt;
    std::u16string text;
    for (std::size_t i = 2; i + 1 < bytes.size(); i += 2) {
        const auto first = static_cast<unsigned char>(bytes[i]), second = static_cast<unsigned char>(bytes[i + 1]);
        text += static_cast<char16_t>(isLittle ? second << 8 | first : first << 8 | second);
    }
    return utf8FromUTF16(text);
}

} // namespace

Result<Value> valueFromXMLPropertyList(std::string_view bytes) {
    if (const std::optional<std::string> converted = fromUTF16WithMark(bytes)) return Reader(*converted).read();
    if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
    return Reader(bytes).read();
}

} // namespace platform
