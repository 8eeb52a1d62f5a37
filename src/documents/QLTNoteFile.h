// The note document: a package "Name.qltnote" that holds the note's text twice, as RTFD for every rich-text reader and
// as an exact archive, with a property list of note attributes and the attachments' files.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/Result.h"
#include "platform/foundation/URL.h"
#include "platform/graphics/Color.h"
#include "platform/text/AttributedString.h"

namespace platform {
class FileWrapper;
}

namespace quillet {

inline constexpr std::string_view QLTNoteFileExtension = "qltnote";
inline constexpr std::string_view QLTNoteFileType = "com.tesseral.quillet.note";

inline constexpr std::string_view QLTNoteFileErrorDomain = "QLTNoteFileErrorDomain";
enum QLTNoteFileErrorCode : std::int64_t {
    QLTNoteFileInvalidFormatErrorCode = 10001,
    QLTNoteFileRecoverFromRTFDErrorCode = 10002, // the RTFD part may still be read
};

// Entries of the package.
inline constexpr std::string_view kNoteTextEntry = "NoteText";
inline constexpr std::string_view kNoteAttributesEntry = "NoteAttributes";
inline constexpr std::string_view kRTFDTextEntry = "TXT.rtf";
// The files of every package.
inline constexpr std::array kPackageEntries{kRTFDTextEntry, kNoteTextEntry, kNoteAttributesEntry};

class QLTNoteFile {
  public:
    // An empty note with the default background color.
    QLTNoteFile();

    // Reads a package, recovering from its RTFD part when the archive cannot be read.
    // @sel initWithFileURL:error:
    static platform::Result<std::unique_ptr<QLTNoteFile>> initWithFileURL(const platform::URL& fileURL);
    // @sel initWithFileWrapper:error:
    static platform::Result<std::unique_ptr<QLTNoteFile>> initWithFileWrapper(const platform::FileWrapper& wrapper);

    const platform::AttributedString& noteText() const { return noteText_; }
    void setNoteText(platform::AttributedString text) { noteText_ = std::move(text); }
    bool showSmallImages() const { return showSmallImages_; }
    void setShowSmallImages(bool small) { showSmallImages_ = small; }
    const std::u16string& sharingItemName() const { return sharingItemName_; } // not stored in the package
    void setSharingItemName(std::u16string name) { sharingItemName_ = std::move(name); }
    const std::optional<platform::Dictionary>& drawingDataByAttachmentKey() const { return drawingData_; }
    void setDrawingDataByAttachmentKey(std::optional<platform::Dictionary> data) { drawingData_ = std::move(data); }
    const platform::Dictionary& documentAttributes() const { return documentAttributes_; }
    void setDocumentAttributes(platform::Dictionary attributes) { documentAttributes_ = std::move(attributes); }

    // The stored color, but the system text background color in place of white or black; nothing when none is stored.
    std::optional<platform::Color> backgroundColor() const;
    void setBackgroundColor(std::optional<platform::Color> color) { backgroundColor_ = std::move(color); }

    static std::u16string newNoteName();
    static std::u16string newNoteFileName();
    static std::string_view fileType() { return QLTNoteFileType; }
    // The preferences that are on unless the user turned them off.
    static const platform::Dictionary& defaultPreferences();
    // The text attributes that a package stores; every other one is dropped on writing.
    static const std::vector<platform::AttributeName>& allowedAttributeNames();

    // The file wrappers of all attachments but checkboxes and dividers, in text order.
    std::vector<std::shared_ptr<platform::FileWrapper>> fileAttachments() const;
    // The text as other programs should see it: checkboxes as list items, dividers as text, highlights and colors in
    // the platform's own form.
    platform::AttributedString noteTextSuitableForExport() const;

    // The package as a directory wrapper. @sel fileWrapper:
    platform::Result<std::shared_ptr<platform::FileWrapper>> fileWrapper() const;
    // Writes the package, replacing one that exists in one step; its hidden-extension flag and creation date survive.
    // @sel saveToFileURL:error:
    platform::Result<> saveToFileURL(const platform::URL& fileURL) const;

    // Takes everything from a package. On failure the attributes are taken all the same; the text is left as it was
    // when the RTFD part may still give it, and is empty otherwise.
    // @sel readFileWrapper:error:
    platform::Result<> readFileWrapper(const platform::FileWrapper& wrapper);
    // @sel readFileAtURL:error:
    platform::Result<> readFileAtURL(const platform::URL& fileURL);

  private:
    struct Blank {};
    explicit QLTNoteFile(Blank) {} // without the settings of a new note

    void takeAttributes(const platform::Dictionary& attributes);
    platform::Result<> attemptRecoveryFromRTFD(const platform::URL& fileURL, const platform::FileWrapper& package);

    platform::AttributedString noteText_;
    bool showSmallImages_ = false;
    std::optional<platform::Color> backgroundColor_;
    std::u16string sharingItemName_;
    std::optional<platform::Dictionary> drawingData_;
    platform::Dictionary documentAttributes_;
};

} // namespace quillet
