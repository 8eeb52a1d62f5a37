#include "documents/attachments/QLTChecklistAttachmentCell.h"

#include <algorithm>
#include <array>

#include "documents/attachments/AttachmentConstants.h"
#include "platform/graphics/GraphicsContext.h"
#include "styles/base/ParagraphStyles.h"

namespace quillet {

using platform::Color;
using platform::Point;
using platform::Rect;
using platform::Size;

Size QLTChecklistButtonCell::cellSize() {
    return {QLTChecklistImageDimension + QLTChecklistRightBorder, QLTChecklistImageDimension};
}

Rect QLTChecklistButtonCell::imageRectForBounds(const Rect& bounds) {
    return {{bounds.minX(), bounds.midY() - QLTChecklistImageDimension / 2},
            {QLTChecklistImageDimension, QLTChecklistImageDimension}};
}

void QLTChecklistButtonCell::drawWithFrame(platform::GraphicsContext& context, const Rect& bounds) const {
    constexpr double kLineWidth = 1.5;
    const Rect image = imageRectForBounds(bounds);
    const Rect circle = image.inset(kLineWidth, kLineWidth);
    context.fillOval(circle, state_ ? Color::controlAccentColor() : Color::textBackgroundColor());
    context.strokeOval(circle, kLineWidth, state_ ? Color::controlAccentColor() : Color::secondaryLabelColor());
    if (!state_) return;
    // The tick's corners, as shares of the image's side.
    constexpr std::array<Point, 3> kTick{{{0.3, 0.52}, {0.44, 0.67}, {0.7, 0.34}}};
    std::array<Point, 3> tick;
    std::ranges::transform(kTick, tick.begin(), [&](Point share) {
        return Point{image.minX() + share.x * image.size.width, image.minY() + share.y * image.size.height};
    });
    context.strokeLines(tick, kLineWidth, Color::textBackgroundColor());
}

bool QLTChecklistButtonCell::trackMouse(platform::TextView& view, const Rect& bounds) {
    if (!view.trackMouseUntilUp(bounds)) return false;
    state_ = !state_;
    if (action_) action_();
    return true;
}

void QLTChecklistAttachmentCell::setOn(bool on) {
    on_ = on;
    if (buttonCell_) buttonCell_->setState(on);
}

QLTChecklistButtonCell& QLTChecklistAttachmentCell::buttonCell() {
    if (!buttonCell_) {
        buttonCell_ = std::make_unique<QLTChecklistButtonCell>();
        buttonCell_->setState(on_);
        buttonCell_->setAction([this] { buttonClicked(*buttonCell_); });
    }
    return *buttonCell_;
}

Rect QLTChecklistAttachmentCell::buttonFrameWithFrame(const Rect& frame) {
    const Size button = QLTChecklistButtonCell::cellSize();
    return {{frame.maxX() - button.width, frame.minY()}, button};
}

Rect QLTChecklistAttachmentCell::cellFrameInLine(std::span<const platform::Font> lineFonts) {
    const Size size = cellSize();
    if (lineFonts.empty()) return {{0, 0}, size};
    double highest = 0, lowestDescender = 0;
    for (const platform::Font& font : lineFonts) {
        highest = std::max(highest, lineHeight(font));
        lowestDescender = std::min(lowestDescender, font.descender());
    }
    // The middle of the box is the middle of the line, from the lowest descender upwards.
    return {{0, lowestDescender + (highest - size.height) / 2}, size};
}

void QLTChecklistAttachmentCell::drawWithFrame(platform::GraphicsContext& context, const Rect& cellFrame,
                                               const platform::TextView*) {
    buttonCell().drawWithFrame(context, buttonFrameWithFrame(cellFrame));
}

bool QLTChecklistAttachmentCell::trackMouse(platform::TextView& view, const Rect& cellFrame,
                                            std::size_t characterIndex) {
    const Rect button = buttonFrameWithFrame(cellFrame);
    if (!button.contains(view.mouseLocation()) || !buttonCell().trackMouse(view, button)) return false;
    if (auto* delegate = view.delegate()) delegate->textViewClickedOnCell(*this, cellFrame, characterIndex);
    return true;
}

} // namespace quillet
