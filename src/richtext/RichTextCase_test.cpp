#include "richtext/RichTextCase.h"

#include <map>
#include <memory>
#include <optional>
#include <vector>

#include <gtest/gtest.h>

#include "documents/attachments/QLTChecklistTextAttachment.h"
#include "documents/attachments/QLTDividerTextAttachment.h"
#include "documents/attachments/QLTFileAttachment.h"
#include "platform/base/UTF16.h"
#include "platform/files/FileWrapper.h"
#include "platform/text/TextDump.h"
#include "platform/text/TextList.h"
#include "platform/text/TextTable.h"

namespace quillet {

using platform::AttributedString;
using platform::AttributeName;
using platform::AttributeSet;
using platform::AttributeValue;
using platform::Color;
using platform::FileWrapper;
using platform::ParagraphStyle;
using platform::TextAttachment;
using platform::TextList;
using platform::TextTable;
using platform::TextTableBlock;

namespace {

// A line cut into words from left to right.
class Words {
  public:
    explicit Words(std::string_view text) : text_(text) {}

    bool atEnd() const { return text_.empty(); }
    std::string_view rest() const { return text_; }
    bool accept(std::string_view word) {
        if (!text_.starts_with(word)) return false;
        text_.remove_prefix(word.size());
        return true;
    }
    void expect(std::string_view word) {
        if (!accept(word)) throw UnreadableDump("no \"" + std::string(word) + "\" before: " + std::string(text_));
    }
    // Up to the next of the delimiters, which stays.
    std::string upTo(std::string_view delimiters) {
        const std::string word(text_.substr(0, text_.find_first_of(delimiters)));
        text_.remove_prefix(word.size());
        return word;
    }
    double number() { return std::stod(upTo(" ,;]+)")); }
    std::int64_t integer() { return std::stoll(upTo(" ,;]+)")); }
    std::u16string quoted();

  private:
    std::string_view text_;
};

std::u16string Words::quoted() {
    expect("\"");
    std::u16string out;
    std::size_t plain = 0, at = 0;
    const auto flush = [&] { out += platform::utf16FromUTF8(text_.substr(plain, at - plain)); };
    for (; at < text_.size() && text_[at] != '"'; ++at) {
        if (text_[at] != '\\') continue;
        flush();
        const char escape = text_.at(++at);
        if (escape == 'u') {
            out += static_cast<char16_t>(std::stoul(std::string(text_.substr(at + 1, 4)), nullptr, 16));
            at += 4;
        } else {
            out += static_cast<char16_t>(escape == 'n' ? '\n' : escape == 't' ? '\t' : escape == 'r' ? '\r' : escape);
        }
        plain = at + 1;
    }
    flush();
    text_.remove_prefix(at);
    expect("\"");
    return out;
}

class DumpReader {
  public:
    AttributedString read(std::string_view dump);

  private:
    void readObject(Words words);
    std::shared_ptr<TextTableBlock> readBlock(Words& words);
    AttributeSet readAttributes(Words& words);
    AttributeSet::Entry readAttribute(Words& words);
    ParagraphStyle readParagraphStyle(Words& words);
    platform::TextAttachmentReference readAttachment(Words& words);
    template<class T>
    std::shared_ptr<T> object(const std::map<std::string, std::shared_ptr<T>>& objects, const std::string& name) {
        const auto entry = objects.find(name);
        if (entry == objects.end()) throw UnreadableDump("no object " + name);
        return entry->second;
    }

    std::map<std::string, std::shared_ptr<TextList>> lists_;
    std::map<std::string, std::shared_ptr<TextTable>> tables_;
    std::map<std::string, std::shared_ptr<TextTableBlock>> blocks_;
    std::map<std::string, platform::TextAttachmentReference> attachments_;
};

Color readColor(Words& words) {
    static const std::map<std::string, Color (*)()> kNamed{
        {"System/textColor", Color::textColor},
        {"System/textBackgroundColor", Color::textBackgroundColor},
        {"System/labelColor", Color::labelColor},
        {"white 0", Color::black},
        {"white 1", Color::white},
    };
    const std::string name = words.upTo(";");
    if (const auto entry = kNamed.find(name); entry != kNamed.end()) return entry->second();
    Words parts(name);
    parts.expect("#");
    const unsigned long rgb = std::stoul(parts.upTo(" "), nullptr, 16);
    const double alpha = parts.accept(" alpha ") ? parts.number() : 1;
    return Color::sRGB(static_cast<double>(rgb >> 16) / 255, static_cast<double>(rgb >> 8 & 255) / 255,
                       static_cast<double>(rgb & 255) / 255, alpha);
}

AttributedString DumpReader::read(std::string_view dump) {
    std::vector<std::string_view> runs, objects;
    for (auto* part = &runs; !dump.empty();) {
        const std::string_view line = dump.substr(0, dump.find('\n'));
        dump.remove_prefix(std::min(dump.size(), line.size() + 1));
        if (line.empty()) {
            part = &objects;
        } else {
            part->push_back(line);
        }
    }
    for (const std::string_view line : objects) readObject(Words(line));
    AttributedString text;
    for (const std::string_view line : runs) {
        Words words(line);
        const std::u16string characters = words.quoted();
        text.append(characters, std::make_shared<const AttributeSet>(readAttributes(words)));
    }
    return text;
}

void DumpReader::readObject(Words words) {
    const std::string name = words.upTo(" ");
    words.expect(" ");
    if (name.starts_with('L')) {
        auto list = std::make_shared<TextList>(words.upTo(";"));
        if (words.accept("; start ")) list->setStartingItemNumber(words.integer());
        lists_[name] = std::move(list);
    } else if (name.starts_with('T')) {
        auto table = std::make_shared<TextTable>();
        table->numberOfColumns = words.integer();
        words.expect(" columns");
        tables_[name] = std::move(table);
    } else {
        blocks_[name] = readBlock(words);
    }
    if (!words.atEnd()) throw UnreadableDump("unknown: " + std::string(words.rest()));
}

std::shared_ptr<TextTableBlock> DumpReader::readBlock(Words& words) {
    const auto table = object(tables_, words.upTo(" "));
    words.expect(" row ");
    const std::int64_t row = words.integer();
    words.expect(" column ");
    return std::make_shared<TextTableBlock>(table, row, 1, words.integer(), 1);
}

AttributeSet DumpReader::readAttributes(Words& words) {
    std::vector<AttributeSet::Entry> entries;
    for (bool isFirst = true; !words.atEnd(); isFirst = false) {
        words.expect(isFirst ? "  " : "; ");
        entries.push_back(readAttribute(words));
    }
    return AttributeSet(std::move(entries));
}

AttributeSet::Entry DumpReader::readAttribute(Words& words) {
    if (words.accept("font ")) {
        const std::string name = words.upTo(" ");
        words.expect(" ");
        return {platform::kFontAttributeName, platform::Font(name, words.number())};
    }
    if (words.accept("color ")) return {platform::kForegroundColorAttributeName, readColor(words)};
    if (words.accept("background ")) return {platform::kBackgroundColorAttributeName, readColor(words)};
    if (words.accept("link <")) {
        const auto url = platform::URL::fromString(words.upTo(">"));
        words.expect(">");
        return {platform::kLinkAttributeName, url.value()};
    }
    if (words.accept("underline ")) return {platform::kUnderlineStyleAttributeName, words.integer()};
    if (words.accept("attachment ")) return {platform::kAttachmentAttributeName, readAttachment(words)};
    if (words.accept("para ["))
        return {platform::kParagraphStyleAttributeName,
                std::make_shared<const ParagraphStyle>(readParagraphStyle(words))};
    const std::string name = words.upTo(" "); // an application's own: a number
    words.expect(" ");
    return {AttributeName(name), words.integer()};
}

ParagraphStyle DumpReader::readParagraphStyle(Words& words) {
    static const std::map<std::string, double ParagraphStyle::*> kNumbers{
        {"first", &ParagraphStyle::firstLineHeadIndent},     {"head", &ParagraphStyle::headIndent},
        {"before", &ParagraphStyle::paragraphSpacingBefore}, {"after", &ParagraphStyle::paragraphSpacing},
        {"multiple", &ParagraphStyle::lineHeightMultiple},   {"interval", &ParagraphStyle::defaultTabInterval},
    };
    ParagraphStyle style;
    while (!words.accept("]")) {
        const std::string property = words.upTo(" ;]");
        if (property == "center") {
            style.alignment = platform::TextAlignment::center;
        } else if (const auto number = kNumbers.find(property); number != kNumbers.end()) {
            words.expect(" ");
            style.*number->second = words.number();
        } else if (property == "tabs") {
            style.tabStops.clear();
            do {
                words.accept(" ");
                words.accept(",");
                style.tabStops.push_back({platform::TextAlignment::left, words.number()});
                if (words.accept(" natural")) style.tabStops.back().alignment = platform::TextAlignment::natural;
            } while (words.rest().starts_with(','));
        } else if (property == "lists") {
            do {
                words.accept(" ");
                words.accept(",");
                style.textLists.push_back(object(lists_, words.upTo("{")));
                words.upTo(",;]");
            } while (words.rest().starts_with(','));
        } else if (property == "blocks") {
            do {
                words.accept(" ");
                words.accept(",");
                style.textBlocks.push_back(object(blocks_, words.upTo(",;]")));
            } while (words.rest().starts_with(','));
        } else if (!property.empty()) {
            throw UnreadableDump("unknown property " + property);
        }
        words.accept("; ");
    }
    return style;
}

std::shared_ptr<TextAttachment> attachmentOfClass(std::string_view className) {
    if (className == "QLTChecklistTextAttachment") return std::make_shared<QLTChecklistTextAttachment>();
    if (className == "QLTDividerTextAttachment") return std::make_shared<QLTDividerTextAttachment>();
    if (className == "QLTFileAttachment") return std::make_shared<QLTFileAttachment>();
    if (className == "NSTextAttachment") return std::make_shared<TextAttachment>();
    throw UnreadableDump("unknown class " + std::string(className));
}

platform::Data letters(std::int64_t count, std::size_t letter) {
    return platform::Data(std::string(static_cast<std::size_t>(count), static_cast<char>('a' + letter % 26)));
}

// A number of bytes and the word behind it.
std::int64_t readSize(Words& words) {
    const std::int64_t size = words.integer();
    words.expect(" bytes");
    return size;
}

platform::TextAttachmentReference DumpReader::readAttachment(Words& words) {
    const std::string name = words.upTo(" ");
    words.expect(" ");
    const auto made = attachmentOfClass(words.upTo(" "));
    if (words.accept(" without file")) {
    } else if (words.accept(" contents of ")) {
        made->setContents(letters(readSize(words), attachments_.size()));
    } else {
        words.expect(" ");
        const std::string fileName = platform::utf8FromUTF16(words.quoted());
        words.expect(" ");
        auto wrapper = FileWrapper::regularFile(letters(readSize(words), attachments_.size()));
        wrapper->setPreferredFilename(fileName);
        wrapper->setFilename(fileName);
        made->setFileWrapper(std::move(wrapper));
    }
    if (words.rest().starts_with(" ") && !words.rest().starts_with(" (")) {
        words.expect(" ");
        made->setFileType(words.upTo(" ;"));
    }
    if (words.accept(" (")) {
        auto& box = dynamic_cast<QLTChecklistTextAttachment&>(*made);
        box.setOn(words.accept("on"));
        if (!box.isOn()) words.expect("off");
        words.expect(" indent ");
        box.setIndentationLevel(static_cast<std::uint64_t>(words.integer()));
        words.expect(")");
    }
    return attachments_.try_emplace(name, made).first->second;
}

} // namespace

AttributedString textFromDump(std::string_view dump) {
    return DumpReader().read(dump);
}

TEST(RichTextCase, ReadsWhatTheDumpWrites) {
    const std::string_view dump =
        "\"Ships: \\\"a\\\"\\\\ \\u2028ü\"  font Times-Roman 12; color #0000EE; background #FFFF00 alpha 0.5; "
        "link <https://example.org/ships>; underline 1; QLTHighlightTextAttribute 2; para [center; first 10; after 6]\n"
        "\"\\t•\\tbarque\\n\"  para [head 36; tabs 11,36 natural; lists L1{disc},L2{decimal}.]\n"
        "\"cell\\n\"  color System/textColor; para [blocks B1]\n"
        "\"\\ufffc\"  attachment A1 NSTextAttachment \"plan.pdf\" 5 bytes\n"
        "\"x\"\n"
        "\"\\ufffc\"  attachment A1 NSTextAttachment \"plan.pdf\" 5 bytes\n"
        "\"\\ufffc\"  attachment A2 NSTextAttachment contents of 3 bytes public.png\n"
        "\"\\ufffc\"  attachment A3 QLTChecklistTextAttachment without file com.tesseral.checklist (on indent 2)\n"
        "\"\\ufffc\"  attachment A4 QLTDividerTextAttachment without file com.tesseral.quillet.note.divider\n"
        "\"\\ufffc\"  attachment A5 QLTFileAttachment \"a.zip\" 1 bytes\n"
        "\n"
        "L1 {disc}\n"
        "L2 {decimal}.; start 7\n"
        "T1 1 columns\n"
        "B1 T1 row 0 column 0\n";
    EXPECT_EQ(platform::textDump(textFromDump(dump)), dump);
}

TEST(RichTextCase, RefusesWhatItDoesNotKnow) {
    for (const std::string_view dump : {"\"a\"  para [sideways]\n", "\"a\"  para [lists L1{disc}]\n", "a\n"})
        EXPECT_THROW(textFromDump(dump), UnreadableDump) << dump;
}

} // namespace quillet
