#include "platform/text/TextAttachmentCell.h"

namespace platform {

Rect TextAttachmentCell::cellFrameInLine(std::span<const Font>) {
    return {cellBaselineOffset(), cellSize()};
}

void TextAttachmentCell::drawWithFrame(GraphicsContext&, const Rect&, const TextView*) {}

bool TextAttachmentCell::trackMouse(TextView&, const Rect&, std::size_t) {
    return false;
}

} // namespace platform
