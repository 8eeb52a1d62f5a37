#include "documents/attachments/QLTDividerTextAttachmentCell.h"

#include <cmath>

#include "documents/attachments/AttachmentConstants.h"
#include "platform/graphics/GraphicsContext.h"

namespace quillet {

using platform::Rect;

platform::Size QLTDividerTextAttachmentCell::cellSize() {
    return {textView_ ? textView_->textContainerWidth() : 0,
            2 * QLTDividerTextAttachmentCellBorderSize + QLTDividerTextAttachmentCellSize};
}

Rect QLTDividerTextAttachmentCell::lineRectWithFrame(const Rect& cellFrame) {
    return {{cellFrame.midX() - std::floor(cellFrame.size.width * 0.5),
             std::floor(cellFrame.midY() - QLTDividerTextAttachmentCellSize * 0.5)},
            {cellFrame.size.width, QLTDividerTextAttachmentCellSize}};
}

void QLTDividerTextAttachmentCell::drawWithFrame(platform::GraphicsContext& context, const Rect& cellFrame,
                                                 const platform::TextView*) {
    context.fillRect(lineRectWithFrame(cellFrame), platform::Color::tertiaryLabelColor());
}

} // namespace quillet
