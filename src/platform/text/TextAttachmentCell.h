// Counterpart of NSTextAttachmentCell: what a text view shows in an attachment's place, and the small part of a text
// view that cells need. Lengths in points; y grows downwards when the view is flipped, as text views are.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "platform/graphics/Font.h"
#include "platform/graphics/Geometry.h"

namespace platform {

class GraphicsContext;
class TextAttachment;
class TextAttachmentCell;

class TextViewDelegate {
  public:
    virtual ~TextViewDelegate() = default;
    // @sel textView:clickedOnCell:inRect:atIndex:
    virtual void textViewClickedOnCell(TextAttachmentCell& cell, const Rect& cellFrame, std::size_t characterIndex) = 0;
};

class TextView {
  public:
    virtual ~TextView() = default;
    virtual double textContainerWidth() const = 0;
    virtual bool isFlipped() const { return true; }
    virtual TextViewDelegate* delegate() const { return nullptr; }
    // Where the button went down, in the view's coordinates.
    virtual Point mouseLocation() const = 0;
    // Follows the mouse until the button goes up; whether that was inside the rectangle.
    virtual bool trackMouseUntilUp(const Rect& rect) = 0;
};

class TextAttachmentCell {
  public:
    TextAttachmentCell() = default;
    virtual ~TextAttachmentCell() = default;
    TextAttachmentCell(const TextAttachmentCell&) = delete;
    TextAttachmentCell& operator=(const TextAttachmentCell&) = delete;

    virtual std::string_view className() const { return "NSTextAttachmentCell"; }

    // Not owned: the attachment owns its cell, and takes itself out when it goes. Null when there is none.
    TextAttachment* attachment() const { return attachment_; }
    virtual void setAttachment(TextAttachment* attachment) { attachment_ = attachment; }

    virtual Size cellSize() { return {}; }
    virtual Point cellBaselineOffset() const { return {}; }
    // Where the cell lies in a line that is written in these fonts, relative to the pen on the baseline, y upwards.
    // @sel cellFrameForTextContainer:proposedLineFragment:glyphPosition:characterIndex:
    virtual Rect cellFrameInLine(std::span<const Font> lineFonts);
    virtual void drawWithFrame(GraphicsContext& context, const Rect& cellFrame, const TextView* view);

    virtual bool wantsToTrackMouse() const { return false; }
    // Whether the mouse was the cell's. @sel trackMouse:inRect:ofView:atCharacterIndex:untilMouseUp:
    virtual bool trackMouse(TextView& view, const Rect& cellFrame, std::size_t characterIndex);

  private:
    TextAttachment* attachment_ = nullptr;
};

} // namespace platform
