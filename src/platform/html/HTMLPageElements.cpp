// What single elements do beyond their style: breaks, images, objects, lists, links, quotes, frames.
#include <algorithm>
#include <array>
#include <charconv>
#include <memory>
#include <utility>

#include "platform/base/SystemLog.h"
#include "platform/base/UTF16.h"
#include "platform/files/FileWrapper.h"
#include "platform/files/UTType.h"
#include "platform/foundation/Capitalization.h"
#include "platform/foundation/PathString.h"
#include "platform/html/HTMLPageWalk.h"

namespace platform {

namespace {

constexpr HTMLDocument::NodeIndex kNone = HTMLDocument::kNone;
// Lists and cells nested deeper take part in those around them: every paragraph names all that it lies in.
constexpr std::size_t kMostListsAround = 32;
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

} // namespace

bool HTMLPageWalk::processByTag(Frame& frame) {
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

void HTMLPageWalk::openList(Frame& frame) {
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
            if (auto link = linkOf(*outer)) listLinks_.emplace(list.get(), *std::move(link));
            break;
        }
    attributes_.enterList(std::move(list));
    frame.pushedList = true;
}

// An address within the page is no link.
std::optional<AttributeValue> HTMLPageWalk::linkOf(const Frame& frame) const {
    const auto attribute = page_.attribute(frame.node, HTMLAttribute::href);
    if (!attribute) return std::nullopt;
    constexpr std::string_view kBlanks = " \t\n\r\f";
    std::string_view address = *attribute;
    address.remove_prefix(std::min(address.find_first_not_of(kBlanks), address.size()));
    address = address.substr(0, address.find_last_not_of(kBlanks) + 1);
    if (address.empty() || address.front() == '#') return std::nullopt;
    if (auto url = images_.resolved(address)) return AttributeValue(*std::move(url));
    return AttributeValue(utf16FromUTF8(address));
}

void HTMLPageWalk::closeLink(const Frame& frame) {
    if (auto link = linkOf(frame)) text_.addAttribute(frame.start, kLinkAttributeName, *std::move(link));
}

// A separator in p, li and headings, else a newline.
void HTMLPageWalk::writeBreak(const Frame& frame) {
    if (page_.attribute(frame.node, HTMLAttribute::class_) == "Apple-interchange-newline") return;
    const HTMLTag block = open_.empty() ? HTMLTag::unknown : open_[top().block].tag;
    if (block == HTMLTag::p || block == HTMLTag::li || block == HTMLTag::hr || headingLevel(block) != 0) {
        text_.appendLineSeparator(ownAttributes(frame));
    } else {
        newline(frame, Newline::always, false);
    }
}

void HTMLPageWalk::writeObject(const Frame& frame, HTMLImage image) {
    const auto attributes = ownAttributes(frame);
    AttributeSet set = attributes->with(kAttachmentAttributeName, TextAttachmentReference(std::move(image.attachment)));
    if (image.link) set = set.with(kLinkAttributeName, *image.link);
    text_.appendObject(std::u16string_view(&kAttachmentCharacter, 1),
                       std::make_shared<const AttributeSet>(std::move(set)));
    if (frame.isBlock) text_.appendObject(u"\n", attributes);
}

// The page of a frame is read in place, on lines of its own, when it is at hand: nothing is fetched.
void HTMLPageWalk::writeFrame(const Frame& frame) {
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
    HTMLPageWalk framed(*std::move(page), std::move(images), attributes_.context());
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

} // namespace platform
