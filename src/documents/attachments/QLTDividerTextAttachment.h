// A horizontal line in a note's text.
#pragma once

#include <memory>
#include <string_view>

#include "platform/text/AttributedString.h"
#include "platform/text/TextAttachment.h"

namespace platform {
class TextView;
}

namespace quillet {

// Always held by a shared_ptr: a text shares it.
class QLTDividerTextAttachment : public platform::TextAttachment,
                                 public std::enable_shared_from_this<QLTDividerTextAttachment> {
  public:
    QLTDividerTextAttachment();
    // The line spans the view's text. @sel initWithTextView:
    explicit QLTDividerTextAttachment(const platform::TextView& textView);
    ~QLTDividerTextAttachment() override;

    // Line break, attachment, line break.
    platform::AttributedString attributedString();
    // "***", centred, in the Body style.
    static platform::AttributedString replacementString();

    std::string_view className() const override { return "QLTDividerTextAttachment"; }
    std::shared_ptr<TextAttachment>
    sameClassWithFileWrapper(std::shared_ptr<platform::FileWrapper> fileWrapper) const override;
    std::shared_ptr<platform::TextAttachmentCell> attachmentCell() override;
};

} // namespace quillet
