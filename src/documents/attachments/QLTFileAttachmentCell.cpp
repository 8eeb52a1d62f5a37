#include "documents/attachments/QLTFileAttachmentCell.h"

#include <algorithm>
#include <cmath>

#include "platform/base/UTF16.h"
#include "platform/files/FileWrapper.h"
#include "platform/files/UTType.h"
#include "platform/foundation/PathString.h"
#include "platform/graphics/FileIcon.h"
#include "platform/graphics/GraphicsContext.h"
#include "platform/graphics/TextDrawing.h"
#include "platform/text/TextAttachment.h"

namespace quillet {

using platform::AttributedString;
using platform::Font;
using platform::Rect;
using platform::Size;

namespace {

constexpr double kIconSide = 32;
constexpr double kNameGap = 5; // between icon and name

Font nameFont() {
    return Font::systemFont(Font::kSmallSystemFontSize);
}

AttributedString namedInCell(std::string_view name) {
    auto style = std::make_shared<platform::ParagraphStyle>();
    style->lineBreakMode = platform::LineBreakMode::truncatingMiddle;
    return AttributedString(
        platform::utf16FromUTF8(name),
        std::make_shared<const platform::AttributeSet>(platform::AttributeSet{
            {platform::kParagraphStyleAttributeName, platform::ParagraphStyleReference(std::move(style))},
            {platform::kFontAttributeName, nameFont()},
            {platform::kForegroundColorAttributeName, platform::Color::labelColor()}}));
}

} // namespace

void QLTFileAttachmentCell::setAttachment(platform::TextAttachment* attachment) {
    TextAttachmentCell::setAttachment(attachment);
    updateForFileWrapper();
}

void QLTFileAttachmentCell::updateForFileWrapper() {
    const auto wrapper = attachment() ? attachment()->fileWrapper() : nullptr;
    if (!wrapper) {
        iconImage_ = {};
        filenameString_ = {};
        return;
    }
    const std::string& name = wrapper->filename().empty() ? wrapper->preferredFilename() : wrapper->filename();
    iconImage_ = platform::iconForFileWrapper(*wrapper);
    filenameString_ =
        namedInCell(wrapper->fileAttributes().extensionHidden ? platform::deletingPathExtension(name) : name);
}

Size QLTFileAttachmentCell::cellSize() {
    if (iconImage_.empty()) updateForFileWrapper();
    const Size name = platform::sizeOfText(platform::utf8FromUTF16(filenameString_.string()), nameFont());
    return {std::ceil(std::max(name.width, kIconSide)), std::ceil(name.height + kIconSide + kNameGap)};
}

Rect QLTFileAttachmentCell::iconRectWithFrame(const Rect& cellFrame, bool flipped) {
    return {{std::floor(cellFrame.midX() - kIconSide / 2), flipped ? cellFrame.minY() : cellFrame.maxY() - kIconSide},
            {kIconSide, kIconSide}};
}

Rect QLTFileAttachmentCell::filenameRectWithFrame(const Rect& cellFrame, bool flipped) {
    Rect rest = cellFrame;
    rest.size.height -= kIconSide;
    if (flipped) rest.origin.y += kIconSide + kNameGap;
    return rest;
}

void QLTFileAttachmentCell::drawWithFrame(platform::GraphicsContext& context, const Rect& cellFrame,
                                          const platform::TextView* view) {
    if (iconImage_.empty()) updateForFileWrapper();
    const bool flipped = !view || view->isFlipped();
    context.drawImage(iconImage_, iconRectWithFrame(cellFrame, flipped));
    platform::drawText(context, platform::utf8FromUTF16(filenameString_.string()), nameFont(),
                       platform::Color::labelColor(), filenameRectWithFrame(cellFrame, flipped));
}

} // namespace quillet
