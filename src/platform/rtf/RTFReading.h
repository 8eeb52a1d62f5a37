// The reader's machine: a stack of groups, and for each token what it means where it stands.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/rtf/RTFReadState.h"
#include "platform/rtf/RTFReadWords.h"
#include "platform/rtf/RTFReader.h"
#include "platform/rtf/RTFTextBuilder.h"
#include "platform/rtf/RTFTokenizer.h"

namespace platform {

class FileWrapper;

// What the text of a group is for.
enum class RTFDestination : std::uint8_t {
    body,
    skip,
    fonts,
    colors,
    expandedColors,
    lists,
    listMarker,
    listLevelText,
    listOverrides,
    fieldInstruction,
    marker,  // \listtext, \pntext
    graphic, // \NeXTGraphic
    picture  // \pict
};

class RTFReading {
  public:
    RTFReading(std::string_view bytes, const FileWrapper* package, const RTFReadOptions& options)
        : tokenizer_(bytes), package_(package), options_(options) {}

    Result<AttributedString> read();
    Dictionary& documentAttributes() { return document_.attributes; }

  private:
    struct Group {
        RTFReadCharacters characters;
        RTFReadParagraph paragraph;
        RTFDestination destination = RTFDestination::body;
        bool ownsDestination = false;  // the destination's end is this group's
        std::int32_t replacements = 1; // \uc: characters behind a \u word
        std::size_t field = 0;         // 1-based, 0 outside of fields
        std::size_t rowDepth = 1;      // whose row \trowd begins
    };
    struct Field {
        std::string instruction;
    };

    Error errorHere(std::string_view what) const;
    Result<> token(const RTFToken& token);
    Result<> beginGroup();
    void endGroup();
    void endDestination(RTFDestination destination);

    void word(const RTFToken& token);
    bool beginDestination(std::string_view name);
    bool headWord(const RTFToken& token);
    bool bodyWord(const RTFToken& token);
    void symbol(unsigned char byte);
    void textByte(unsigned char byte);
    void text(std::string_view bytes);
    void unicode(std::int32_t number);

    // Decoded text to where the group's text goes.
    void output(std::u16string_view text);
    void outputPlain(std::string_view ascii);
    void flushBytes();
    std::int32_t codePage() const;

    void beginFieldResult();
    void endMarker();
    void endGraphic();
    void placeGraphic();
    void pictureText(std::string_view digits);
    void endPicture();

    RTFTokenizer tokenizer_;
    const FileWrapper* package_;
    const RTFReadOptions options_;
    RTFReadFonts fonts_;
    RTFReadColors colors_;
    RTFReadLists lists_;
    RTFTextBuilder builder_{fonts_, colors_, lists_};
    RTFReadDocument document_;

    Group group_;              // the innermost
    std::vector<Group> outer_; // those around it
    std::vector<Field> fields_;
    bool ignorable_ = false;       // \* came last
    std::int32_t replacement_ = 0; // characters left to pass over behind a \u word

    std::string bytes_; // not ASCII, of one code page, not decoded yet
    std::int32_t bytesCodePage_ = 0;

    std::u16string marker_;
    std::string graphicName_;   // UTF-8 or bytes of the document's code page
    bool graphicWaits_ = false; // its placeholder comes next
    bool graphicNameEnded_ = false;
    std::string picture_;
    std::string_view pictureExtension_;
    int pictureDigit_ = -1; // the first of two
    std::size_t pictures_ = 0;
};

} // namespace platform
