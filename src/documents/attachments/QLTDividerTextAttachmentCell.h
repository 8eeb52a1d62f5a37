// A thin line across the text.
#pragma once

#include "platform/text/TextAttachmentCell.h"

namespace quillet {

class QLTDividerTextAttachmentCell : public platform::TextAttachmentCell {
  public:
    std::string_view className() const override { return "QLTDividerTextAttachmentCell"; }

    // The view whose text width the line spans; not owned. Without one the line has no width.
    const platform::TextView* textView() const { return textView_; }
    void setTextView(const platform::TextView* textView) { textView_ = textView; }

    platform::Size cellSize() override;
    static platform::Rect lineRectWithFrame(const platform::Rect& cellFrame);
    void drawWithFrame(platform::GraphicsContext& context, const platform::Rect& cellFrame,
                       const platform::TextView* view) override;

  private:
    const platform::TextView* textView_ = nullptr;
};

} // namespace quillet
