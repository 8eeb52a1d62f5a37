#include "platform/rtf/RTFReading.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

namespace platform {

namespace {

constexpr std::size_t kMaximumDepth = 1000;

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

} // namespace platform
