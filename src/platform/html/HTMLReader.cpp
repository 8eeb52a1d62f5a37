// The walk over a page's tree that writes rich text. It keeps its own stack of open elements; on entering an element it
// ends the paragraph before it, on leaving it ends the element's own, and in between text is written with the
// attributes of all open elements laid over each other. Newlines, separators and objects carry those of their own
// element alone.
#include "platform/html/HTMLReader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "platform/base/SystemLog.h"
#include "platform/base/UTF16.h"
#include "platform/files/FileWrapper.h"
#include "platform/files/UTType.h"
#include "platform/foundation/Capitalization.h"
#include "platform/foundation/PathString.h"
#include "platform/html/CssStyle.h"
#include "platform/html/HTMLAttributes.h"
#include "platform/html/HTMLDocumentAttributes.h"
#include "platform/html/HTMLImages.h"
#include "platform/html/HTMLListMarkers.h"
#include "platform/html/HTMLTables.h"
#include "platform/html/HTMLTextBuilder.h"
#include "platform/xml/HTMLDocument.h"

namespace platform {

namespace {

using NodeIndex = HTMLDocument::NodeIndex;
using Newline = HTMLTextBuilder::Newline;
constexpr NodeIndex kNone = HTMLDocument::kNone;
constexpr char16_t kNoBreakSpace = 0xA0;
// Lists and cells nested deeper take part in those around them: every paragraph names all that it lies in.
constexpr std::size_t kMostListsAround = 32, kMostCellsAround = 32;
// Pages within pages: how deep, and how many bytes of them in all, since a file may frame itself many times.
constexpr std::size_t kMostFramesAround = 4, kMostFramedBytes = std::size_t{16} << 20;

// The formats of list objects, in the order of CssListStyle; the last two have none of their own.
constexpr auto kMarkerFormats = std::to_array<std::string_view>({
    "{disc}",
    "{circle}",
    "{square}",
    "{decimal}",
    "{octal}",
    "{lower-roman}",
    "{upper-roman}",
    "{lower-alpha}",
    "{upper-alpha}",
    "{lower-latin}",
    "{upper-latin}",
    "{lower-hexadecimal}",
    "{upper-hexadecimal}",
});

class PageWalk {
  public:
    PageWalk(HTMLDocument page, HTMLImages images, HTMLParagraphContext around = {})
        : page_(std::move(page)), resolver_(page_), blocksAround_(around.blocks.size()), attributes_(std::move(around)),
          tables_(page_), images_(std::move(images)) {
        text_.reserve(page_.textSize() + page_.size()); // most elements write one character or none
    }

    void run();
    const HTMLDocument& page() const { return page_; }
    // The tree is as large as the text that is made next, and not needed for it.
    void releasePage() { page_ = HTMLDocument(); }
    HTMLTextBuilder& written() { return text_; }
    const HTMLListLinks& listLinks() const { return listLinks_; }
    const std::optional<CssRGBA>& background() const { return background_; }

  private:
    // An open element.
    struct Frame {
        NodeIndex node = kNone;
        NodeIndex next = kNone; // the child to visit next
        const CssStyle* style = nullptr;
        HTMLTag tag = HTMLTag::unknown;
        bool isBlock = false;
        bool pushedDirection = false;
        bool pushedList = false, pushedTable = false, pushedCell = false;
        bool ownsLooseTable = false;    // its children are rows or cells without a table
        std::size_t block = 0;          // index of the nearest open block, itself included
        std::size_t start = 0;          // length of the text when the element was entered
        std::vector<NodeIndex> footers; // of a table: visited when its rows are through
        std::size_t footersVisited = 0;
        AttributeSet::Reference own, united;
    };

    Frame& top() { return open_.back(); }
    bool enter(NodeIndex node);
    bool process(Frame& frame);
    void leave();
    void writeText(NodeIndex node);
    void writeBreak(const Frame& frame);
    void writeObject(const Frame& frame, HTMLImage image);
    void writeFrame(const Frame& frame);
    bool processByTag(Frame& frame);
    void openList(Frame& frame);
    void openCell(Frame& frame);
    void prepareLooseTable(const CssStyle& child);
    void endLooseTable();
    void addColumns(const Frame& group);
    void closeLink(const Frame& frame);
    void transform(std::u16string& text, const Frame& frame) const;
    void newline(const Frame& frame, Newline when, bool replacesSoft);
    AttributeSet::Reference ownAttributes(const Frame& frame);
    AttributeSet::Reference textAttributes(const Frame& frame);
    AttributeSet::Reference complete(const Frame& frame, const AttributeSet::Reference& characters);
    bool inList() const { return !attributes_.context().lists.empty(); }
    // A block inside a list that is no list and no item ends lines, not paragraphs.
    bool endsLineOnly(const Frame& frame) const {
        return inList() && frame.style->display == CssDisplay::block && frame.tag != HTMLTag::li &&
               frame.tag != HTMLTag::ul && frame.tag != HTMLTag::ol;
    }
    std::optional<AttributeValue> linkOf(const Frame& frame) const;

    HTMLDocument page_;
    CssStyleResolver resolver_;
    std::size_t blocksAround_; // cells that a page within a page stands in
    HTMLAttributes attributes_;
    HTMLTables tables_;
    HTMLImages images_;
    HTMLTextBuilder text_;
    std::vector<Frame> open_;
    std::vector<std::int64_t> directions_;
    HTMLListLinks listLinks_;
    std::optional<CssRGBA> background_;
    std::size_t quoteDepth_ = 0;
    std::size_t framesAround_ = 0, framedBytes_ = 0;
};

AttributeSet::Reference PageWalk::complete(const Frame& frame, const AttributeSet::Reference& characters) {
    const Frame& block = frame.block < open_.size() ? open_[frame.block] : frame;
    static const std::vector<std::int64_t> kNoDirections;
    return attributes_.complete(characters, *block.style, block.tag, frame.isBlock ? kNoDirections : directions_);
}

AttributeSet::Reference PageWalk::ownAttributes(const Frame& frame) {
    return complete(frame, frame.own);
}

AttributeSet::Reference PageWalk::textAttributes(const Frame& frame) {
    return complete(frame, frame.united);
}

void PageWalk::newline(const Frame& frame, Newline when, bool replacesSoft) {
    if (when == Newline::ifMissing && text_.endsInNewline()) return;
    directions_.clear();
    text_.appendNewline(when, replacesSoft, ownAttributes(frame));
}

void PageWalk::run() {
    for (NodeIndex at = page_.head(); at != kNone; at = page_.following(at, page_.head())) {
        const auto base = page_[at].tag == HTMLTag::base ? page_.attribute(at, HTMLAttribute::href) : std::nullopt;
        if (!base) continue;
        images_.setBase(*base);
        break;
    }
    if (enter(page_.root())) {
        while (!open_.empty()) {
            Frame& frame = top();
            const NodeIndex child = frame.next;
            if (child == kNone && frame.footersVisited < frame.footers.size()) {
                enter(frame.footers[frame.footersVisited++]);
            } else if (child == kNone) {
                leave();
            } else {
                frame.next = page_[child].next;
                page_.isElement(child) ? static_cast<void>(enter(child)) : writeText(child);
            }
        }
    }
}

// Opens an element, or deals with it at once when it has no content to walk. False when it leaves nothing open.
bool PageWalk::enter(NodeIndex node) {
    const CssStyle* outer = open_.empty() ? nullptr : top().style;
    const CssStyle* style = resolver_.style(node, outer);
    if (style->display == CssDisplay::none) return false;
    Frame frame;
    frame.node = node;
    frame.next = page_[node].first;
    frame.style = style;
    frame.tag = page_[node].tag;
    frame.isBlock = isBlockDisplay(*style);
    frame.block = frame.isBlock || open_.empty() ? open_.size() : top().block;
    frame.own = attributes_.characters(*style, frame.tag);
    frame.united = open_.empty() ? frame.own : attributes_.united(top().united, frame.own);
    if (style->display == CssDisplay::tableFooterGroup && !open_.empty() && top().pushedTable && top().next != kNone) {
        top().footers.push_back(node); // behind the rows that are still to come
        return false;
    }
    const bool isLooseCell = style->display == CssDisplay::tableCell && tables_.empty();
    if (!open_.empty()) prepareLooseTable(*style);
    if (frame.isBlock && frame.tag != HTMLTag::br && !isLooseCell && !endsLineOnly(frame)) {
        if (frame.tag == HTMLTag::html || frame.tag == HTMLTag::body) {
            if (!text_.endsInNewline()) text_.dropSoftEnd();
        } else {
            newline(frame, Newline::ifMissing, true);
        }
    }
    if (!frame.isBlock &&
        (style->unicodeBidi == CssUnicodeBidi::embed || style->unicodeBidi == CssUnicodeBidi::override_)) {
        constexpr std::int64_t kOverride = 2;
        directions_.push_back((style->unicodeBidi == CssUnicodeBidi::override_ ? kOverride : 0) +
                              (style->direction == CssDirection::rtl ? 1 : 0));
        frame.pushedDirection = true;
    }
    frame.start = text_.length();
    if (!process(frame)) {
        if (frame.pushedDirection && !directions_.empty()) directions_.pop_back();
        return false;
    }
    open_.push_back(std::move(frame));
    return true;
}

// What an element is beyond its style. False when its content is not walked.
bool PageWalk::process(Frame& frame) {
    switch (frame.style->display) {
    case CssDisplay::table:
    case CssDisplay::inlineTable:
        tables_.enterTable(frame.node, *frame.style);
        frame.pushedTable = true;
        break;
    case CssDisplay::tableRow:
        tables_.enterRow(*frame.style);
        break;
    case CssDisplay::tableCell:
        openCell(frame);
        break;
    case CssDisplay::tableColumn:
        tables_.addColumns(frame.node, *frame.style);
        return false;
    case CssDisplay::tableColumnGroup:
        addColumns(frame);
        return false;
    default:
        break;
    }
    return processByTag(frame);
}

bool PageWalk::processByTag(Frame& frame) {
    switch (frame.tag) {
    case HTMLTag::body:
        if (frame.style->background.alpha > 0) background_ = frame.style->background;
        return true;
    case HTMLTag::br:
        writeBreak(frame);
        return false;
    case HTMLTag::img: {
        const auto source = page_.attribute(frame.node, HTMLAttribute::src);
        if (source && !source->empty()) writeObject(frame, images_.image(*source));
        return false;
    }
    case HTMLTag::object:
    case HTMLTag::embed: {
        const auto source =
            page_.attribute(frame.node, frame.tag == HTMLTag::object ? HTMLAttribute::data : HTMLAttribute::src);
        auto object = source && !source->empty() ? images_.object(*source) : std::nullopt;
        if (!object) return true;
        writeObject(frame, std::move(*object));
        return false;
    }
    case HTMLTag::ul:
    case HTMLTag::ol:
        openList(frame);
        return true;
    case HTMLTag::q:
        text_.appendObject(quoteDepth_++ % 2 == 0 ? u"\u201C" : u"\u2018", ownAttributes(frame));
        return true;
    case HTMLTag::input: {
        const auto type = page_.attribute(frame.node, HTMLAttribute::type);
        const auto value = page_.attribute(frame.node, HTMLAttribute::value);
        if (value && (!type || type->empty() || asciiLowerCase(*type) == "text"))
            text_.appendObject(utf16FromUTF8(*value), textAttributes(frame));
        return false;
    }
    case HTMLTag::iframe:
    case HTMLTag::frame:
        writeFrame(frame);
        return false;
    default:
        return true;
    }
}

void PageWalk::openList(Frame& frame) {
    if (attributes_.context().lists.size() >= kMostListsAround) return;
    const auto style = static_cast<std::size_t>(frame.style->listStyle);
    const bool isOrdered = frame.tag == HTMLTag::ol;
    const std::string_view format = style < kMarkerFormats.size() ? kMarkerFormats[style]
                                    : isOrdered                   ? kTextListMarkerDecimal
                                                                  : kTextListMarkerDisc;
    std::int64_t start = 1;
    if (page_.attribute(frame.node, HTMLAttribute::reversed)) {
        start = 0;
        for (NodeIndex child = page_[frame.node].first; child != kNone; child = page_[child].next)
            if (page_.isElement(child) && page_[child].tag == HTMLTag::li) ++start;
    }
    if (const auto text = page_.attribute(frame.node, HTMLAttribute::start); text && isOrdered) {
        const std::size_t at = std::min(text->find_first_not_of(" \t\n\r\f+"), text->size());
        std::int32_t number = 0; // browsers too leave out what does not fit
        if (std::from_chars(text->data() + at, text->data() + text->size(), number).ec == std::errc()) start = number;
    }
    auto list = std::make_shared<TextList>(format, 0, start);
    for (auto outer = open_.rbegin(); outer != open_.rend(); ++outer)
        if (outer->tag == HTMLTag::a) {
            if (const auto link = linkOf(*outer)) listLinks_.emplace(list.get(), *link);
            break;
        }
    attributes_.enterList(std::move(list));
    frame.pushedList = true;
}

// A group stands for its columns, or for as many as its span says when it has none.
void PageWalk::addColumns(const Frame& group) {
    bool hasColumns = false;
    for (NodeIndex child = page_[group.node].first; child != kNone; child = page_[child].next) {
        if (!page_.isElement(child) || page_[child].tag != HTMLTag::col) continue;
        hasColumns = true;
        tables_.addColumns(child, *resolver_.style(child, group.style));
    }
    if (!hasColumns) tables_.addColumns(group.node, *group.style);
}

// Rows and cells that follow each other without a table around them share one that the page does not have.
void PageWalk::prepareLooseTable(const CssStyle& child) {
    const bool isPart = child.display == CssDisplay::tableRow || child.display == CssDisplay::tableCell;
    if (!isPart) return endLooseTable();
    if (tables_.depth() > attributes_.context().blocks.size() - blocksAround_)
        return; // a table is open whose cell this can be
    tables_.enterAnonymousTable();
    top().ownsLooseTable = true;
}

void PageWalk::endLooseTable() {
    if (!std::exchange(top().ownsLooseTable, false)) return;
    tables_.leaveTable();
}

void PageWalk::openCell(Frame& frame) {
    auto cell = tables_.addCell(frame.node, *frame.style);
    if (attributes_.context().blocks.size() >= kMostCellsAround) return;
    attributes_.enterCell(std::move(cell));
    frame.pushedCell = true;
}

void PageWalk::leave() {
    endLooseTable();
    const Frame& frame = top();
    if (frame.tag == HTMLTag::q)
        text_.appendObject(--quoteDepth_ % 2 == 0 ? u"\u201D" : u"\u2019", ownAttributes(frame));
    if (frame.tag == HTMLTag::a) closeLink(frame);
    if (frame.isBlock) {
        const bool isEmpty = text_.length() == frame.start;
        if (frame.tag == HTMLTag::html || frame.tag == HTMLTag::body) {
            text_.dropSoftEnd();
        } else if (endsLineOnly(frame)) {
            directions_.clear();
            text_.appendLineSeparator(ownAttributes(frame));
        } else {
            newline(frame, isEmpty ? Newline::always : Newline::ifMissing, true);
        }
    } else if (frame.pushedDirection && !directions_.empty()) {
        directions_.pop_back();
    }
    if (frame.pushedList) attributes_.leaveList();
    if (frame.pushedCell) attributes_.leaveCell();
    if (frame.pushedTable) tables_.leaveTable();
    open_.pop_back();
}

// An address within the page is no link.
std::optional<AttributeValue> PageWalk::linkOf(const Frame& frame) const {
    const auto attribute = page_.attribute(frame.node, HTMLAttribute::href);
    if (!attribute) return std::nullopt;
    constexpr std::string_view kBlanks = " \t\n\r\f";
    std::string_view address = *attribute;
    address.remove_prefix(std::min(address.find_first_not_of(kBlanks), address.size()));
    address = address.substr(0, address.find_last_not_of(kBlanks) + 1);
    if (address.empty() || address.front() == '#') return std::nullopt;
    if (const auto url = images_.resolved(address)) return AttributeValue(*url);
    return AttributeValue(utf16FromUTF8(address));
}

void PageWalk::closeLink(const Frame& frame) {
    if (const auto link = linkOf(frame)) text_.addAttribute(frame.start, kLinkAttributeName, *link);
}

// A separator in p, li and headings, else a newline.
void PageWalk::writeBreak(const Frame& frame) {
    if (page_.attribute(frame.node, HTMLAttribute::class_) == "Apple-interchange-newline") return;
    const HTMLTag block = open_.empty() ? HTMLTag::unknown : open_[top().block].tag;
    if (block == HTMLTag::p || block == HTMLTag::li || block == HTMLTag::hr || headingLevel(block) != 0) {
        text_.appendLineSeparator(ownAttributes(frame));
    } else {
        newline(frame, Newline::always, false);
    }
}

void PageWalk::writeObject(const Frame& frame, HTMLImage image) {
    const auto attributes = ownAttributes(frame);
    AttributeSet set = attributes->with(kAttachmentAttributeName, TextAttachmentReference(std::move(image.attachment)));
    if (image.link) set = set.with(kLinkAttributeName, *image.link);
    text_.appendObject(std::u16string_view(&kAttachmentCharacter, 1),
                       std::make_shared<const AttributeSet>(std::move(set)));
    if (frame.isBlock) text_.appendObject(u"\n", attributes);
}

// The page of a frame is read in place, on lines of its own, when it is at hand: nothing is fetched.
void PageWalk::writeFrame(const Frame& frame) {
    if (framesAround_ >= kMostFramesAround) return;
    const auto markup = page_.attribute(frame.node, HTMLAttribute::srcdoc);
    const auto address = page_.attribute(frame.node, HTMLAttribute::src);
    const auto file = !markup && address ? images_.file(*address) : nullptr;
    const auto type =
        file ? UTType::typeWithFilenameExtension(pathExtension(std::string_view(file->preferredFilename())))
             : std::nullopt;
    if (!markup && !(type && type->conformsTo(kUTTypeHTML))) return;
    const std::string_view bytes = markup ? *markup : file->regularFileContents().bytes();
    if (bytes.size() > kMostFramedBytes - framedBytes_) return systemLog("Not read: frames of more than 16 MB");
    framedBytes_ += bytes.size();

    Result<HTMLDocument> page = HTMLDocument::parse(bytes);
    if (!page) return systemLog("Couldn't read frame: " + page.error().description());
    HTMLImages images = images_;
    if (const auto url = file ? images_.resolved(*address) : std::nullopt; url && url->isFileURL())
        images.setBase(*address);
    PageWalk framed(*std::move(page), std::move(images), attributes_.context());
    framed.framesAround_ = framesAround_ + 1;
    framed.framedBytes_ = framedBytes_;
    framed.run();
    framedBytes_ = framed.framedBytes_;
    if (framed.text_.length() == 0) return;
    // A paragraph of a list would get a marker of its own.
    const auto endLine = [&] {
        if (text_.endsInNewline()) return;
        inList() ? text_.appendLineSeparator(ownAttributes(frame)) : newline(frame, Newline::ifMissing, true);
    };
    endLine();
    text_.appendAll(framed.text_);
    endLine();
    listLinks_.merge(framed.listLinks_);
}

// Blanks that pages write so that they do not collapse, and letters in another case.
void PageWalk::transform(std::u16string& text, const Frame& frame) const {
    if (frame.style->breaksNbsp) std::ranges::replace(text, kNoBreakSpace, u' ');
    if (frame.tag == HTMLTag::span) {
        const auto name = page_.attribute(frame.node, HTMLAttribute::class_);
        const bool isTab = name == "Apple-tab-span";
        if (isTab || name == "Apple-converted-space") std::ranges::replace(text, kNoBreakSpace, u' ');
        if (isTab) {
            constexpr std::size_t kBlanksPerTab = 4;
            std::u16string tabbed;
            for (std::size_t at = 0; at < text.size();) {
                std::size_t end = at;
                while (end < text.size() && end - at < kBlanksPerTab && text[end] == u' ') ++end;
                tabbed += end > at ? u'\t' : text[at++];
                at = std::max(at, end);
            }
            text = std::move(tabbed);
        }
    }
    switch (frame.style->textTransform) {
    case CssTextTransform::none:
        return;
    case CssTextTransform::uppercase:
        text = localizedUppercased(text);
        return;
    case CssTextTransform::lowercase:
        text = localizedLowercased(text);
        return;
    case CssTextTransform::capitalize:
        text = localizedWordStartsCapitalized(text);
        return;
    }
}

void PageWalk::writeText(NodeIndex node) {
    const Frame& frame = top();
    const CssWhiteSpace whiteSpace = frame.style->whiteSpace;
    const bool preserves = whiteSpace != CssWhiteSpace::normal && whiteSpace != CssWhiteSpace::nowrap &&
                           whiteSpace != CssWhiteSpace::breakSpaces;
    std::u16string text = preserves ? utf16FromUTF8(page_.text(node)) : text_.collapsed(page_.text(node));
    if (text.empty()) return;
    if (text != u" ") endLooseTable();
    const bool endsSoft = text.back() == u' ';
    transform(text, frame);
    if (preserves) {
        text_.appendPreserved(text, textAttributes(frame));
    } else {
        text_.appendCollapsed(text, endsSoft, textAttributes(frame));
    }
}

} // namespace

HTMLDocumentText attributedStringFromHTMLDocument(HTMLDocument page, const HTMLReadOptions& options) {
    HTMLDocumentText read;
    PageWalk walk(std::move(page), HTMLImages(options));
    walk.run();
    read.documentAttributes = htmlDocumentAttributes(walk.page(), walk.background());
    walk.releasePage();
    read.text = textWithListMarkers(std::move(walk.written()), walk.listLinks());
    return read;
}

Result<HTMLDocumentText> attributedStringFromHTMLData(std::string_view bytes, const HTMLReadOptions& options) {
    return attributedStringFromHTMLDocument(TRY(HTMLDocument::parse(bytes)), options);
}

Result<HTMLDocumentText> attributedStringFromHTMLFile(const URL& file, const HTMLReadOptions& options) {
    const auto wrapper = TRY(FileWrapper::readingURL(file));
    if (wrapper->isDirectory()) return failure(errorFromErrno(EISDIR, FileAccess::reading, file.path()));
    HTMLReadOptions resolved = options;
    if (!resolved.baseURL) resolved.baseURL = file;
    return attributedStringFromHTMLData(wrapper->regularFileContents().bytes(), resolved);
}

} // namespace platform
