// The checkbox of a checklist item in a note's text.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/pasteboard/Pasteboard.h"
#include "platform/text/AttributedString.h"
#include "platform/text/ParagraphStyle.h"
#include "platform/text/TextAttachment.h"

namespace platform {
class ArchivedFields;
class KeyedArchiver;
} // namespace platform

namespace quillet {

class QLTChecklistAttachmentCell;

// Always held by a shared_ptr: a text shares it.
class QLTChecklistTextAttachment : public platform::TextAttachment,
                                   public platform::PasteboardWriting,
                                   public std::enable_shared_from_this<QLTChecklistTextAttachment> {
  public:
    QLTChecklistTextAttachment();
    ~QLTChecklistTextAttachment() override;
    // From an archive: nothing of the base class is read, so there is no file type.
    static std::shared_ptr<QLTChecklistTextAttachment> initWithCoder(const platform::ArchivedFields& fields);
    void encodeWithCoder(platform::KeyedArchiver& archiver) const;
    // A new attachment in the same state. @sel copyWithZone:
    std::shared_ptr<QLTChecklistTextAttachment> copy() const;

    // The state is the cell's.
    bool isOn() const;
    void setOn(bool on);
    // 0 for the outermost.
    std::uint64_t indentationLevel() const { return indentationLevel_; }
    void setIndentationLevel(std::uint64_t level) { indentationLevel_ = level; }

    std::u16string_view replacementString() const;
    // The Body style's paragraph style, indented by the level; the first line by as much to the left.
    platform::ParagraphStyleReference checklistParagraphStyle() const;
    // One character, in the checklist paragraph style.
    platform::AttributedString attributedString();

    std::string_view className() const override { return "QLTChecklistTextAttachment"; }
    std::string dumpDescription() const override;
    std::shared_ptr<TextAttachment>
    sameClassWithFileWrapper(std::shared_ptr<platform::FileWrapper> fileWrapper) const override;
    // Another kind of cell is replaced by a new one.
    std::shared_ptr<platform::TextAttachmentCell> attachmentCell() override;
    std::shared_ptr<QLTChecklistAttachmentCell> checklistCell();

    std::vector<std::string> writableTypes() const override;
    platform::Value pasteboardPropertyListForType(std::string_view type) const override;
    static std::vector<std::string> readableTypesForPasteboard();
    // Null for another type, or data that is no such archive. @sel initWithPasteboardPropertyList:ofType:
    static std::shared_ptr<QLTChecklistTextAttachment> initWithPasteboardPropertyList(const platform::Value& value,
                                                                                      std::string_view type);

  private:
    const QLTChecklistAttachmentCell* installedCell() const;

    std::uint64_t indentationLevel_ = 0;
};

} // namespace quillet
