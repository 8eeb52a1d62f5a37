#include "platform/rtf/RTFReading.h"

#include <algorithm>
#include <array>
#include <utility>

#include <fmt/format.h>

#include "platform/base/UTF16.h"
#include "platform/files/FileWrapper.h"
#include "platform/foundation/CodePage.h"
#include "platform/rtf/RTFOutput.h"
#include "platform/rtf/RTFWriter.h"

namespace platform {

namespace {

constexpr std::size_t kMaximumDepth = 1000;
constexpr unsigned char kGraphicPlaceholder = 0xAC;

struct DestinationWord {
    std::string_view word;
    RTFDestination destination;
};
// Destinations that the reader knows. Those that only say how something looks elsewhere are passed over.
constexpr DestinationWord kDestinations[] = {
    {"fonttbl", RTFDestination::fonts},
    {"colortbl", RTFDestination::colors},
    {"expandedcolortbl", RTFDestination::expandedColors},
    {"listtable", RTFDestination::lists},
    {"levelmarker", RTFDestination::listMarker},
    {"leveltext", RTFDestination::listLevelText},
    {"levelnumbers", RTFDestination::skip},
    {"listname", RTFDestination::skip},
    {"listoverridetable", RTFDestination::listOverrides},
    {"fldinst", RTFDestination::fieldInstruction},
    {"listtext", RTFDestination::marker},
    {"pntext", RTFDestination::marker},
    {"NeXTGraphic", RTFDestination::graphic},
    {"pict", RTFDestination::picture},
    {"fldrslt", RTFDestination::body},
    {"shppict", RTFDestination::body},
    {"nesttableprops", RTFDestination::body},
    {"ud", RTFDestination::body},
    {"upr", RTFDestination::skip},
    {"falt", RTFDestination::skip},
    {"panose", RTFDestination::skip},
    {"stylesheet", RTFDestination::skip},
    {"info", RTFDestination::skip},
    {"header", RTFDestination::skip},
    {"headerl", RTFDestination::skip},
    {"headerr", RTFDestination::skip},
    {"headerf", RTFDestination::skip},
    {"footer", RTFDestination::skip},
    {"footerl", RTFDestination::skip},
    {"footerr", RTFDestination::skip},
    {"footerf", RTFDestination::skip},
    {"footnote", RTFDestination::skip},
    {"nonshppict", RTFDestination::skip},
    {"nonesttables", RTFDestination::skip},
    {"objdata", RTFDestination::skip},
    {"revtbl", RTFDestination::skip},
    {"filetbl", RTFDestination::skip},
    {"xe", RTFDestination::skip},
    {"tc", RTFDestination::skip},
    {"bkmkstart", RTFDestination::skip},
    {"bkmkend", RTFDestination::skip},
    {"template", RTFDestination::skip},
};

// Words and symbols that stand for a character.
struct CharacterWord {
    std::string_view word;
    char16_t unit;
};
constexpr CharacterWord kCharacterWords[] = {
    {"tab", u'\t'},      {"line", 0x2028},   {"lbr", 0x2028},     {"page", u'\f'},       {"column", u'\f'},
    {"emdash", 0x2014},  {"endash", 0x2013}, {"emspace", 0x2003}, {"enspace", 0x2002},   {"qmspace", 0x2005},
    {"bullet", 0x2022},  {"lquote", 0x2018}, {"rquote", 0x2019},  {"ldblquote", 0x201C}, {"rdblquote", 0x201D},
    {"zwj", 0x200D},     {"zwnj", 0x200C},   {"zwbo", 0x200B},    {"zwnbo", 0x2060},     {"ltrmark", 0x200E},
    {"rtlmark", 0x200F},
};
struct CharacterSymbol {
    char symbol;
    char16_t unit;
};
constexpr CharacterSymbol kCharacterSymbols[] = {{'\\', u'\\'}, {'{', u'{'}, {'}', u'}'},
                                                 {'~', 0xA0},   {'-', 0xAD}, {'_', 0x2011}};

struct PictureWord {
    std::string_view word, extension;
};
constexpr PictureWord kPictureWords[] = {{"pngblip", "png"}, {"jpegblip", "jpeg"}};

// Upper half of Windows-1252 as characters; holes are the controls of the same number.
std::array<char16_t, 128> makeWindows1252() {
    std::array<char16_t, 128> units{};
    for (char16_t unit = 0; unit < 128; ++unit) units[unit] = static_cast<char16_t>(0x80 + unit);
    for (char16_t unit = 0x100; unit < 0x2200; ++unit)
        if (const char byte = windows1252Byte(unit)) units[static_cast<unsigned char>(byte) - 0x80U] = unit;
    return units;
}

char16_t windows1252Character(unsigned char byte) {
    static const std::array<char16_t, 128> kUnits = makeWindows1252();
    return byte < 0x80 ? byte : kUnits[byte - 0x80U];
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// The address in a field's instruction: HYPERLINK "address", or HYPERLINK \l "place in this document".
std::string hyperlinkAddress(std::string_view instruction) {
    constexpr std::string_view kWord = "HYPERLINK";
    const std::size_t begin = instruction.find_first_not_of(' ');
    if (begin == std::string_view::npos || !instruction.substr(begin).starts_with(kWord)) return {};
    std::string_view rest = instruction.substr(begin + kWord.size());
    std::string address, place;
    bool wantsPlace = false, passesNext = false;
    while (!rest.empty()) {
        if (rest.front() == ' ') {
            rest.remove_prefix(1);
            continue;
        }
        const bool quoted = rest.front() == '"';
        if (quoted) rest.remove_prefix(1);
        const std::size_t end = std::min(rest.find(quoted ? '"' : ' '), rest.size());
        const std::string_view argument = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        if (!quoted && argument.starts_with('\\')) {
            wantsPlace = argument == "\\l";
            passesNext = argument == "\\o" || argument == "\\t";
        } else if (std::exchange(passesNext, false)) {
            continue;
        } else if (std::exchange(wantsPlace, false)) {
            place = argument;
        } else if (address.empty()) {
            address = argument;
        }
    }
    return place.empty() ? address : address + "#" + place;
}

} // namespace

Error RTFReading::errorHere(std::string_view what) const {
    return Error::withDescription(kCocoaErrorDomain, static_cast<std::int64_t>(CocoaError::fileReadCorruptFile),
                                  fmt::format("The rich text cannot be read: line {}, offset {}: {}.",
                                              tokenizer_.line(), tokenizer_.offset(), what));
}

Result<AttributedString> RTFReading::read() {
    constexpr std::string_view kNoRTF = "it does not begin with {\\rtf";
    if (tokenizer_.next().kind != RTFToken::Kind::beginGroup) return failure(errorHere(kNoRTF));
    if (const RTFToken word = tokenizer_.next(); word.kind != RTFToken::Kind::word || word.bytes != "rtf")
        return failure(errorHere(kNoRTF));
    while (true) {
        const RTFToken next = tokenizer_.next();
        if (next.kind == RTFToken::Kind::end) break;
        if (next.kind == RTFToken::Kind::endGroup && outer_.empty()) break;
        TRY(token(next));
    }
    flushBytes();
    while (!outer_.empty()) endGroup();
    placeGraphic();
    document_.finishAttributes();
    return builder_.finish(group_.paragraph);
}

Result<> RTFReading::token(const RTFToken& token) {
    // A group, or a word of formatting, ends what a \u word left to pass over; so says the standard.
    switch (token.kind) {
    case RTFToken::Kind::beginGroup:
        replacement_ = 0;
        return beginGroup();
    case RTFToken::Kind::endGroup:
        replacement_ = 0;
        endGroup();
        break;
    case RTFToken::Kind::word:
        word(token);
        break;
    case RTFToken::Kind::symbol:
        symbol(token.byte);
        break;
    case RTFToken::Kind::hex:
        if (replacement_ > 0)
            --replacement_;
        else
            textByte(token.byte);
        break;
    case RTFToken::Kind::text:
        text(token.bytes);
        break;
    case RTFToken::Kind::binary:
        if (tokenizer_.truncated()) return failure(errorHere("the text ends inside binary data"));
        if (group_.destination == RTFDestination::picture) picture_ += token.bytes;
        break;
    case RTFToken::Kind::end:
        break;
    }
    return {};
}

Result<> RTFReading::beginGroup() {
    if (outer_.size() >= kMaximumDepth)
        return failure(errorHere(fmt::format("groups are nested deeper than {}", kMaximumDepth)));
    flushBytes();
    outer_.push_back(group_);
    group_.ownsDestination = false;
    ignorable_ = false;
    return {};
}

void RTFReading::endGroup() {
    flushBytes();
    const bool ends = group_.ownsDestination;
    const RTFDestination destination = group_.destination;
    group_ = std::move(outer_.back());
    outer_.pop_back();
    document_.rowDepth = group_.rowDepth;
    ignorable_ = false;
    if (ends) endDestination(destination);
}

void RTFReading::endDestination(RTFDestination destination) {
    if (destination == RTFDestination::marker) endMarker();
    if (destination == RTFDestination::graphic) endGraphic();
    if (destination == RTFDestination::picture) endPicture();
}

// Words

void RTFReading::word(const RTFToken& token) {
    const bool ignorable = std::exchange(ignorable_, false);
    if (group_.destination == RTFDestination::skip && token.bytes != "ud") return;
    if (token.bytes == "u" && token.number) return unicode(*token.number);
    if (replacement_ > 0) {
        --replacement_;
        return;
    }
    flushBytes();
    if (beginDestination(token.bytes)) return;
    if (ignorable) {
        group_.destination = RTFDestination::skip;
        return;
    }
    if (token.bytes == "uc")
        group_.replacements = std::clamp(token.number.value_or(1), 0, 16);
    else if (!headWord(token))
        bodyWord(token);
}

bool RTFReading::beginDestination(std::string_view name) {
    const auto* const found = std::ranges::find(kDestinations, name, &DestinationWord::word);
    if (found == std::end(kDestinations)) {
        if (name == "field") {
            fields_.emplace_back();
            group_.field = fields_.size();
            return true;
        }
        return false;
    }
    group_.destination = found->destination;
    group_.ownsDestination = true;
    if (name == "fldrslt") beginFieldResult();
    if (name == "nesttableprops")
        group_.rowDepth = document_.rowDepth = std::max<std::size_t>(builder_.tableDepth(), 2);
    if (found->destination == RTFDestination::marker) marker_.clear();
    if (found->destination == RTFDestination::graphic) {
        placeGraphic();
        graphicName_.clear();
        graphicNameEnded_ = false;
    }
    if (found->destination == RTFDestination::picture) {
        picture_.clear();
        pictureDigit_ = -1;
        pictureExtension_ = {};
    }
    return true;
}

// Words that belong to the table or object whose group this is.
bool RTFReading::headWord(const RTFToken& token) {
    switch (group_.destination) {
    case RTFDestination::fonts:
        fonts_.word(token.bytes, token.number);
        return true;
    case RTFDestination::colors:
        colors_.word(token.bytes, token.number);
        return true;
    case RTFDestination::expandedColors:
        colors_.expandedWord(token.bytes, token.number);
        return true;
    case RTFDestination::lists:
    case RTFDestination::listMarker:
    case RTFDestination::listLevelText:
        lists_.word(token.bytes, token.number);
        return true;
    case RTFDestination::listOverrides:
        lists_.overrideWord(token.bytes, token.number);
        return true;
    case RTFDestination::graphic:
        graphicNameEnded_ = true; // behind the name come only words
        return true;
    case RTFDestination::picture:
        for (const PictureWord& row : kPictureWords)
            if (row.word == token.bytes) pictureExtension_ = row.extension;
        return true;
    default:
        return false;
    }
}

bool RTFReading::bodyWord(const RTFToken& token) {
    const auto* const character = std::ranges::find(kCharacterWords, token.bytes, &CharacterWord::word);
    if (character != std::end(kCharacterWords)) {
        output({&character->unit, 1});
        return true;
    }
    if (group_.destination == RTFDestination::body) {
        const bool nestedCell = token.bytes == "nestcell", nestedRow = token.bytes == "nestrow";
        const bool paragraph = token.bytes == "par" || token.bytes == "sect";
        if (paragraph || nestedCell || token.bytes == "cell") placeGraphic();
        if (paragraph) {
            builder_.endParagraph(group_.paragraph, group_.characters);
            return true;
        }
        if (nestedCell || token.bytes == "cell") {
            builder_.endCell(group_.paragraph, group_.characters, nestedCell);
            return true;
        }
        if (nestedRow || token.bytes == "row") {
            builder_.endRow(nestedRow, document_.row());
            return true;
        }
    }
    const bool applied =
        applyFormattingWord(token.bytes, token.number, {group_.characters, group_.paragraph, document_, colors_});
    if (token.bytes == "cocoartf") colors_.setGeneric();
    return applied;
}

void RTFReading::symbol(unsigned char byte) {
    if (byte == '*') {
        ignorable_ = true;
        return;
    }
    if (replacement_ > 0) {
        --replacement_;
        return;
    }
    if (byte == '\n' || byte == '\r') {
        flushBytes();
        if (group_.destination != RTFDestination::body) return;
        placeGraphic();
        builder_.endParagraph(group_.paragraph, group_.characters);
        return;
    }
    const auto* const found = std::ranges::find(kCharacterSymbols, static_cast<char>(byte), &CharacterSymbol::symbol);
    if (found == std::end(kCharacterSymbols)) return;
    flushBytes();
    output({&found->unit, 1});
}

// Text

void RTFReading::text(std::string_view bytes) {
    if (group_.destination == RTFDestination::skip) return;
    while (replacement_ > 0 && !bytes.empty()) {
        --replacement_;
        bytes.remove_prefix(1);
    }
    if (group_.destination == RTFDestination::picture) return pictureText(bytes);
    if (group_.destination == RTFDestination::graphic && !graphicNameEnded_) {
        graphicName_ += bytes;
        return;
    }
    while (!bytes.empty()) {
        std::size_t plain = 0;
        if (bytes_.empty())
            while (plain < bytes.size() && static_cast<unsigned char>(bytes[plain]) < 0x80) ++plain;
        if (plain > 0) {
            outputPlain(bytes.substr(0, plain));
            bytes.remove_prefix(plain);
            continue;
        }
        textByte(static_cast<unsigned char>(bytes.front()));
        bytes.remove_prefix(1);
    }
}

void RTFReading::outputPlain(std::string_view ascii) {
    std::array<char16_t, 512> units;
    while (!ascii.empty()) {
        const std::size_t count = std::min(ascii.size(), units.size());
        for (std::size_t i = 0; i < count; ++i) units[i] = static_cast<unsigned char>(ascii[i]);
        output({units.data(), count});
        ascii.remove_prefix(count);
    }
}

std::int32_t RTFReading::codePage() const {
    return group_.destination == RTFDestination::fonts ? document_.codePage
                                                       : fonts_.codePageOf(group_.characters.font, document_.codePage);
}

// A byte as text. Bytes of other code pages than Windows-1252 are held until the run of them ends, since one
// character may take two.
void RTFReading::textByte(unsigned char byte) {
    if (group_.destination == RTFDestination::graphic) {
        if (!graphicNameEnded_) graphicName_ += static_cast<char>(byte);
        return;
    }
    if (group_.destination == RTFDestination::listLevelText) return lists_.levelTextByte(byte);
    if (graphicWaits_ && byte == kGraphicPlaceholder && group_.destination == RTFDestination::body)
        return placeGraphic();
    const std::int32_t page = codePage();
    if (page == 1252) {
        const char16_t unit = windows1252Character(byte);
        output({&unit, 1});
        return;
    }
    bytesCodePage_ = page;
    bytes_ += static_cast<char>(byte);
}

void RTFReading::flushBytes() {
    if (bytes_.empty()) return;
    const std::string bytes = std::exchange(bytes_, {});
    const auto text = decodeBytes(bytes, codePageName(bytesCodePage_));
    output(text ? *text : utf16FromUTF8(bytes));
}

void RTFReading::unicode(std::int32_t number) {
    flushBytes();
    replacement_ = group_.replacements;
    const auto unit = static_cast<char16_t>(number & 0xFFFF); // negative numbers are 16-bit ones
    if (group_.destination == RTFDestination::graphic) {
        if (!graphicNameEnded_) graphicName_ += utf8FromUTF16({&unit, 1});
        return;
    }
    output({&unit, 1});
}

void RTFReading::output(std::u16string_view text) {
    switch (group_.destination) {
    case RTFDestination::body:
        placeGraphic();
        builder_.append(text, group_.characters);
        break;
    case RTFDestination::fonts:
        fonts_.text(text);
        break;
    case RTFDestination::colors:
        colors_.text(text);
        break;
    case RTFDestination::expandedColors:
        colors_.expandedText(text);
        break;
    case RTFDestination::listMarker:
        lists_.text(RTFReadLists::Part::marker, text);
        break;
    case RTFDestination::listLevelText:
        lists_.text(RTFReadLists::Part::levelText, text);
        break;
    case RTFDestination::fieldInstruction:
        if (group_.field != 0) fields_[group_.field - 1].instruction += utf8FromUTF16(text);
        break;
    case RTFDestination::marker:
        marker_ += text;
        break;
    case RTFDestination::graphic:
        if (!graphicNameEnded_) graphicName_ += utf8FromUTF16(text);
        break;
    default:
        break;
    }
}

// Ends of destinations

void RTFReading::beginFieldResult() {
    if (group_.field == 0) return;
    const std::string address = hyperlinkAddress(fields_[group_.field - 1].instruction);
    if (!address.empty()) group_.characters.link = builder_.addLink(address);
}

void RTFReading::endMarker() {
    if (!options_.textListMarkers) return;
    const bool ours = marker_.size() > 1 && marker_.front() == u'\t' && marker_.back() == u'\t';
    if (ours) return builder_.append(marker_, group_.characters);
    while (!marker_.empty() && (marker_.back() == u'\t' || marker_.back() == u' ')) marker_.pop_back();
    builder_.setForeignMarker(marker_);
}

void RTFReading::endGraphic() {
    graphicWaits_ = true;
    if (graphicName_.ends_with(' ')) graphicName_.pop_back();
}

// The picture stands where its placeholder is; without one, before what follows.
void RTFReading::placeGraphic() {
    if (!std::exchange(graphicWaits_, false) || !package_) return;
    std::string name = graphicName_;
    if (!isValidUTF8(name))
        if (const auto decoded = decodeBytes(name, codePageName(document_.codePage))) name = utf8FromUTF16(*decoded);
    if (const auto file = package_->childNamed(name); file && name != kRTFDTextName)
        builder_.appendAttachment(std::make_shared<TextAttachment>(file), group_.characters);
}

void RTFReading::pictureText(std::string_view digits) {
    for (const char c : digits) {
        const int digit = hexDigit(c);
        if (digit < 0) continue;
        if (pictureDigit_ < 0) {
            pictureDigit_ = digit;
        } else {
            picture_ += static_cast<char>(pictureDigit_ * 16 + digit);
            pictureDigit_ = -1;
        }
    }
}

// Pictures of formats that need no drawing program become files of their own.
void RTFReading::endPicture() {
    if (picture_.empty() || pictureExtension_.empty() || group_.destination != RTFDestination::body) return;
    placeGraphic();
    auto file = FileWrapper::regularFile(Data(std::move(picture_)));
    picture_.clear();
    file->setPreferredFilename(++pictures_ == 1 ? fmt::format("Image.{}", pictureExtension_)
                                                : fmt::format("Image {}.{}", pictures_, pictureExtension_));
    builder_.appendAttachment(std::make_shared<TextAttachment>(std::move(file)), group_.characters);
}

Result<AttributedString> attributedStringFromRTF(std::string_view bytes, const RTFReadOptions& options,
                                                 Dictionary* documentAttributes) {
    RTFReading reading(bytes, nullptr, options);
    AttributedString text = TRY(reading.read());
    if (documentAttributes) *documentAttributes = std::move(reading.documentAttributes());
    return text;
}

Result<AttributedString> attributedStringFromRTFD(const FileWrapper& package, const RTFReadOptions& options,
                                                  Dictionary* documentAttributes) {
    const auto text = package.isDirectory() ? package.childNamed(kRTFDTextName) : nullptr;
    if (!text || text->isDirectory())
        return failure(Error::withDescription(kCocoaErrorDomain,
                                              static_cast<std::int64_t>(CocoaError::fileReadCorruptFile),
                                              fmt::format("The package has no {}.", kRTFDTextName)));
    RTFReading reading(text->regularFileContents().bytes(), &package, options);
    AttributedString read = TRY(reading.read());
    if (documentAttributes) *documentAttributes = std::move(reading.documentAttributes());
    return read;
}

} // namespace platform
