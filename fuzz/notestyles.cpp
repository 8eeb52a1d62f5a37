// Saved note styles and checkboxes of a pasteboard from anywhere: what can be read is written, and from the second
// writing on the bytes stay the same.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "documents/attachments/AttachmentCoding.h"
#include "documents/attachments/AttachmentConstants.h"
#include "documents/attachments/QLTChecklistTextAttachment.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/base/Data.h"
#include "styles/NoteTextStyleCoding.h"

using namespace quillet;
using platform::Data;
using platform::KeyedArchiver;

namespace {

Data written(const std::vector<QLTNoteTextStyle::Reference>& styles) {
    const auto array = std::make_shared<platform::ObjectArray>(styles.begin(), styles.end());
    const auto data = KeyedArchiver::archivedData(array, KeyedArchiver::Coding::secure);
    if (!data) std::abort();
    return *data;
}

std::vector<QLTNoteTextStyle::Reference> read(const Data& archive) {
    auto styles = unarchivedStyles(archive.bytes());
    if (!styles) std::abort();
    return *std::move(styles);
}

void tryStyles(const Data& input) {
    const auto styles = unarchivedStyles(input.bytes());
    if (!styles) return;
    for (const auto& style : *styles) {
        (void)style->matchesAttributes(style->attributes());
        (void)style->attributesWithOtherAttributes(style->attributes());
        (void)style->shouldSaveToDefaults();
    }
    const Data second = written(read(written(*styles)));
    if (written(read(second)) != second) std::abort();
}

void tryCheckbox(const Data& input) {
    const auto box =
        QLTChecklistTextAttachment::initWithPasteboardPropertyList(platform::Value(input), QLTChecklistType);
    if (!box) return;
    const auto again = QLTChecklistTextAttachment::initWithPasteboardPropertyList(
        box->pasteboardPropertyListForType(QLTChecklistType), QLTChecklistType);
    if (!again || again->isOn() != box->isOn() || again->indentationLevel() != box->indentationLevel()) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool registered = [] {
        registerArchivableStyleClasses();
        registerArchivableAttachmentClasses();
        return true;
    }();
    if (!registered || size > 1'000'000) return 0;
    const Data input(std::string(reinterpret_cast<const char*>(data), size));
    tryStyles(input);
    tryCheckbox(input);
    return 0;
}
