#include "programs/RegisterClasses.h"

#include "documents/attachments/AttachmentCoding.h"
#include "platform/text/TextCoding.h"
#include "styles/NoteTextStyleCoding.h"
#include "styles/base/Colors.h"

namespace quillet {

void registerClasses() {
    platform::registerArchivableTextClasses();
    registerArchivableAttachmentClasses();
    registerArchivableStyleClasses();
    registerHighlightColorAssets();
}

} // namespace quillet
