#include "platform/rtf/RTFBody.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/base/TextScan.h"
#include "platform/base/UTF16.h"
#include "platform/rtf/RTFAttachments.h"
#include "platform/rtf/RTFVocabulary.h"

namespace platform {

namespace {

constexpr std::size_t kLongestMarker = 64; // between its tabs, UTF-16 units

const RTFCellChain kNoCells;

using LineEnds = StopUnits<char16_t, u'\0', u'\uFFFF', u'\n', u'\r'>;
using NotPlainInField = StopUnits<char, '\0', '\xFF', '"', '\\', '\n', '\r'>;

// The address of a link; `converted` holds it when the attribute has it in UTF-16.
std::string_view linkText(const AttributeSet& attributes, std::string& converted) {
    const AttributeValue* value = attributes.find(kLinkAttributeName);
    if (!value) return {};
    if (const auto* url = std::get_if<URL>(value)) return url->absoluteString();
    if (const auto* string = std::get_if<std::u16string>(value)) return converted = utf8FromUTF16(*string);
    return {};
}

// An address as a field's quoted argument: quotes and backslashes would end or escape something there.
void writeFieldArgument(std::string_view link, RTFOutput& out) {
    if (lengthBefore<NotPlainInField>(link) == link.size()) return out.text(link);
    std::string quoted;
    quoted.reserve(link.size());
    for (const char c : link) {
        if (c == '"')
            quoted += "%22";
        else if (c == '\\')
            quoted += "%5C";
        else if (c != '\n' && c != '\r')
            quoted += c;
    }
    out.text(quoted);
}

} // namespace

RTFBody::RTFBody(const AttributedString& text, Range range, const std::vector<RTFDEntry>* entries)
    : string_(text.string()), runs_(text.runs()), range_(range), entries_(entries),
      state_(stateNumber(RTFCharacterState())) {}

void RTFBody::write() {
    out_.string().reserve(3 * range_.length + kUsualHeadSize); // words, and \u words, besides the text
    findParagraphs();
    if (hasTables_) planTables();
    RTFTableWalk walk(*this);
    for (std::size_t index = 0; index < paragraphs_.size(); ++index) {
        const Paragraph& paragraph = paragraphs_[index];
        if (!hasTables_) {
            writeParagraph(paragraph, false);
            continue;
        }
        walk.moveTo(cellChain(*paragraph.style));
        const RTFCellChain following =
            index + 1 < paragraphs_.size() ? cellChain(*paragraphs_[index + 1].style) : kNoCells;
        writeParagraph(paragraph, walk.sharedDepth(following) < walk.depth());
    }
    if (hasTables_) walk.moveTo(kNoCells);
}

void RTFBody::findParagraphs() {
    paragraphs_.reserve(runs_.size()); // most have a run or a few
    std::size_t position = range_.location;
    std::size_t run = 0;
    while (position < range_.end()) {
        std::size_t end = position;
        end += lengthBefore<LineEnds>(string_.substr(end, range_.end() - end));
        const std::size_t contentsEnd = end;
        if (end < range_.end()) ++end;
        if (end < range_.end() && string_[end - 1] == '\r' && string_[end] == '\n') ++end;
        while (runs_[run].end <= position) ++run;
        const auto* style = runs_[run].attributes->find<ParagraphStyleReference>(kParagraphStyleAttributeName);
        const ParagraphStyle* used = style && *style ? style->get() : ParagraphStyle::defaultParagraphStyle().get();
        hasTables_ = hasTables_ || !used->textBlocks.empty();
        paragraphs_.push_back({{position, end - position}, contentsEnd, used, run});
        position = end;
    }
}

void RTFBody::planTables() {
    RTFTableWalk walk(plan_);
    for (const Paragraph& paragraph : paragraphs_) walk.moveTo(cellChain(*paragraph.style));
    walk.moveTo(kNoCells);
}

void RTFBody::writeParagraph(const Paragraph& paragraph, bool endsCell) {
    beginParagraph(paragraph);
    std::size_t begin = paragraph.range.location;
    run_ = paragraph.run;
    if (!paragraph.style->textLists.empty()) begin += writeListMarker(paragraph);
    // A cell's end takes the place of its last line end.
    writeRuns({begin, (endsCell ? paragraph.contentsEnd : paragraph.range.end()) - begin}, false);
    closeLink();
    if (endsCell) writeRuns({paragraph.contentsEnd, paragraph.range.end() - paragraph.contentsEnd}, true);
}

void RTFBody::beginParagraph(const Paragraph& paragraph) {
    const std::uint32_t words = paragraphWords_.numberFor(*paragraph.style);
    const auto inForce = std::exchange(currentWords_, words);
    if (inForce && (*inForce == words || paragraphWords_[*inForce] == paragraphWords_[words])) return;
    out_.raw(paragraphWords_[words]);
    repeatsColor_ = true;
}

// The marker stands in the text, between two tabs; readers that make markers themselves skip its group.
std::size_t RTFBody::writeListMarker(const Paragraph& paragraph) {
    const std::u16string_view contents =
        string_.substr(paragraph.range.location, paragraph.contentsEnd - paragraph.range.location);
    if (contents.empty() || contents.front() != '\t') return 0;
    const std::size_t end = contents.substr(0, kLongestMarker + 2).find(u'\t', 1);
    if (end == std::u16string_view::npos || contents.substr(0, end).contains(kAttachmentCharacter)) return 0;
    changeTo(known(*runs_[paragraph.run].attributes));
    out_.raw("{\\listtext");
    const bool outer = out_.enterGroup();
    out_.text(contents.substr(0, end + 1));
    out_.leaveGroup(outer);
    out_.raw('}');
    return end + 1;
}

void RTFBody::writeRuns(Range range, bool formatOnly) {
    std::size_t position = range.location;
    while (position < range.end()) {
        while (runs_[run_].end <= position) ++run_;
        const KnownSet set = known(*runs_[run_].attributes);
        const std::size_t end = std::min(runs_[run_].end, range.end());
        if (formatOnly)
            changeTo(set);
        else
            writeRunText({position, end - position}, set);
        position = end;
    }
}

void RTFBody::writeRunText(Range range, const KnownSet& set) {
    changeLink(set);
    changeTo(set);
    std::u16string_view rest = string_.substr(range.location, range.length);
    if (!set.hasAttachment) return out_.text(rest);
    std::size_t position = range.location;
    while (!rest.empty()) {
        const std::size_t plain = std::min(rest.find(kAttachmentCharacter), rest.size());
        out_.text(rest.substr(0, plain));
        position += plain;
        rest.remove_prefix(plain);
        if (rest.empty()) break;
        if (entries_) {
            while (nextEntry_ < entries_->size() && (*entries_)[nextEntry_].position < position) ++nextEntry_;
            if (nextEntry_ < entries_->size() && (*entries_)[nextEntry_].position == position)
                writeAttachment((*entries_)[nextEntry_]);
        }
        rest.remove_prefix(1);
        ++position;
    }
}

auto RTFBody::known(const AttributeSet& attributes) -> const KnownSet& {
    const std::uint32_t number = sets_.numberOf(
        spreadHash(reinterpret_cast<std::uintptr_t>(&attributes)),
        [&](const KnownSet& set) { return set.attributes == &attributes; },
        [&] {
            return KnownSet{&attributes, stateNumber(characterStateOf(attributes, fonts_, colors_)),
                            attributes.find(kLinkAttributeName) != nullptr,
                            attributes.find(kAttachmentAttributeName) != nullptr};
        });
    return sets_[number];
}

std::uint32_t RTFBody::stateNumber(const RTFCharacterState& state) {
    return states_.numberOf(
        hashOf(state), [&](const RTFCharacterState& known) { return known == state; }, [&] { return state; });
}

void RTFBody::changeTo(const KnownSet& set) {
    if (set.state == state_ && !repeatsColor_) return;
    const std::uint64_t change = (std::uint64_t{state_} << 32 | set.state) * 2 + (repeatsColor_ ? 1 : 0);
    const std::size_t begin = out_.size();
    const std::uint32_t number = changes_.numberOf(
        spreadHash(change), [&](const Change& known) { return known.states == change; },
        [&] {
            writeCharacterChange(states_[state_], states_[set.state], repeatsColor_, fonts_, out_);
            return Change{change, out_.partSince(begin)};
        });
    if (out_.size() == begin) out_.repeat(changes_[number].words); // it was not new
    state_ = set.state;
    repeatsColor_ = false;
}

void RTFBody::changeLink(const KnownSet& set) {
    if (link_.empty() && !set.hasLink) return;
    std::string converted;
    const std::string_view link = linkText(*set.attributes, converted);
    if (link == link_) return;
    closeLink();
    if (link.empty()) return;
    // The words behind \pard go before the field, so that they outlast it.
    if (repeatsColor_) changeTo(set);
    link_ = link;
    stateOutsideLink_ = state_;
    outsideLinkGroup_ = out_.enterGroup();
    out_.raw("{\\field{\\*\\fldinst{HYPERLINK \"");
    writeFieldArgument(link_, out_);
    out_.leaveGroup(false);
    out_.raw("\"}}{\\fldrslt ");
}

void RTFBody::closeLink() {
    if (link_.empty()) return;
    out_.raw("}}");
    out_.leaveGroup(outsideLinkGroup_);
    link_.clear();
    state_ = stateOutsideLink_;
}

void RTFBody::writeAttachment(const RTFDEntry& entry) {
    const CellSize size = attachmentCellSize(entry);
    out_.raw("{{\\NeXTGraphic ");
    out_.bytes(entry.name);
    out_.word(" \\width", std::llround(size.width * kTwipsAPoint));
    out_.word(" \\height", std::llround(size.height * kTwipsAPoint));
    out_.raw(" \\appleattachmentpadding0 \\appleembedtype0 \\appleaqc\n}\xAC}");
}

void RTFBody::beginRow(std::size_t depth, const TextTable&, bool first) {
    rows_.resize(std::max(rows_.size(), depth));
    OpenRow& open = rows_[depth - 1];
    if (first) open.slotMaker = {};
    open.row = nextRow_++;
    open.next = 0;
    const RTFTableRow& row = plan_.row(open.row);
    open.slots = open.slotMaker.next(row);
    if (depth == 1) writeRowHead(row, open.slots, plan_.columnsOf(row), depth, colors_, out_);
    currentWords_.reset();
}

void RTFBody::beginCell(std::size_t depth, const TextTableBlock& block) {
    writeEmptyCells(depth, &block);
    ++rows_[depth - 1].next;
}

// Slots before the block's that have no text: holes, and cells that began in a row above.
void RTFBody::writeEmptyCells(std::size_t depth, const TextTableBlock* until) {
    OpenRow& open = rows_[depth - 1];
    while (open.next < open.slots.size()) {
        const RTFTableSlot& slot = open.slots[open.next];
        if (until && slot.block == until && !slot.continues) return;
        ++open.next;
        out_.word("\\pard\\intbl\\itap", static_cast<std::int64_t>(depth));
        out_.raw("\\partightenfactor0\n");
        out_.word("\\cf", static_cast<std::int64_t>(states_[state_].color));
        out_.raw(' ');
        endCell(depth);
    }
}

void RTFBody::endCell(std::size_t depth) {
    out_.raw(depth == 1 ? "\\cell " : "\\nestcell{\\nonesttables\\par}\n");
    const OpenRow& open = rows_[depth - 1];
    if (depth == 1 && open.next < open.slots.size()) out_.raw('\n');
    currentWords_.reset();
}

void RTFBody::endRow(std::size_t depth, bool last) {
    writeEmptyCells(depth, nullptr);
    if (depth == 1) {
        out_.raw(last ? "\\lastrow\\row\n" : "\\row\n");
    } else {
        const RTFTableRow& row = plan_.row(rows_[depth - 1].row);
        out_.raw("{\\*\\nesttableprops");
        writeRowHead(row, rows_[depth - 1].slots, plan_.columnsOf(row), depth, colors_, out_);
        out_.raw(last ? "\\lastrow\\nestrow}{\\nonesttables\\par}\n" : "\\nestrow}{\\nonesttables\\par}\n");
    }
    currentWords_.reset();
}

} // namespace platform
