// Counterpart of NSTextAttachment: an object in a text, standing on one U+FFFC. Has identity; classes derive from it.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/base/Data.h"

namespace platform {

class FileWrapper;
class TextAttachmentCell;

inline constexpr char16_t kAttachmentCharacter = 0xFFFC;

class TextAttachment {
  public:
    TextAttachment() = default;
    explicit TextAttachment(std::shared_ptr<FileWrapper> fileWrapper);
    // Contents without a wrapper, with a uniform type identifier.
    TextAttachment(std::optional<Data> contents, std::string_view fileType);
    virtual ~TextAttachment() = default;
    TextAttachment(const TextAttachment&) = delete;
    TextAttachment& operator=(const TextAttachment&) = delete;

    virtual std::string_view className() const { return "NSTextAttachment"; }
    // What a text dump shows of this class besides name and size, for example "on indent 2"; UTF-8.
    virtual std::string dumpDescription() const { return {}; }
    // A new attachment of the same class holding that wrapper.
    virtual std::shared_ptr<TextAttachment> sameClassWithFileWrapper(std::shared_ptr<FileWrapper> fileWrapper) const;

    const std::shared_ptr<FileWrapper>& fileWrapper() const { return fileWrapper_; }
    virtual void setFileWrapper(std::shared_ptr<FileWrapper> fileWrapper);

    const std::optional<Data>& contents() const { return contents_; }
    void setContents(std::optional<Data> contents) { contents_ = std::move(contents); }
    // A uniform type identifier: the one that was set, or else that of the extension of the wrapper's preferred name;
    // "" when there is none.
    std::string fileType() const;
    const std::optional<std::string>& ownFileType() const { return ownFileType_; } // only what was set
    void setFileType(std::optional<std::string> fileType) { ownFileType_ = std::move(fileType); }

    // The cell that draws the attachment; null when none is set. Derived classes make theirs at first use.
    virtual std::shared_ptr<TextAttachmentCell> attachmentCell() { return cell_; }
    void setAttachmentCell(std::shared_ptr<TextAttachmentCell> cell) { cell_ = std::move(cell); }
    // The cell as it stands, without making one.
    const std::shared_ptr<TextAttachmentCell>& cell() const { return cell_; }

  private:
    std::shared_ptr<FileWrapper> fileWrapper_;
    std::optional<Data> contents_;
    std::optional<std::string> ownFileType_;
    std::shared_ptr<TextAttachmentCell> cell_;
};

using TextAttachmentReference = std::shared_ptr<TextAttachment>;

} // namespace platform
