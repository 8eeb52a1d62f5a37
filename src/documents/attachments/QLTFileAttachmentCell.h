// Draws a file attachment: a 32-point icon over the file's name.
#pragma once

#include "platform/graphics/Image.h"
#include "platform/text/AttributedString.h"
#include "platform/text/TextAttachmentCell.h"

namespace quillet {

class QLTFileAttachmentCell : public platform::TextAttachmentCell {
  public:
    std::string_view className() const override { return "QLTFileAttachmentCell"; }
    void setAttachment(platform::TextAttachment* attachment) override;

    // Takes icon and name from the attachment's file; neither without a file.
    void updateForFileWrapper();
    const platform::Image& iconImage() const { return iconImage_; }
    const platform::AttributedString& filenameString() const { return filenameString_; }

    platform::Size cellSize() override;

    // The icon stands in the middle of the topmost 32 points of the frame, the name in the rest, which begins 5
    // points further down when the view is flipped.
    static platform::Rect iconRectWithFrame(const platform::Rect& cellFrame, bool flipped);
    static platform::Rect filenameRectWithFrame(const platform::Rect& cellFrame, bool flipped);
    void drawWithFrame(platform::GraphicsContext& context, const platform::Rect& cellFrame,
                       const platform::TextView* view) override;

  private:
    platform::Image iconImage_;
    platform::AttributedString filenameString_;
};

} // namespace quillet
