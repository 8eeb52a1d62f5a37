#include "documents/NoteTextArchive.h"

#include <memory>
#include <utility>

#include "platform/archive/ArchivedFields.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/archive/KeyedUnarchiver.h"

namespace quillet {

using platform::AttributedString;
using platform::Data;
using platform::Result;

Result<Data> archivedNoteText(AttributedString text) {
    const auto root = std::make_shared<const AttributedString>(std::move(text));
    return platform::KeyedArchiver::archivedData(platform::ArchivedObject(root),
                                                 platform::KeyedArchiver::Coding::plain);
}

Result<AttributedString> noteTextFromArchive(std::string_view archive) {
    platform::UnarchiveOptions options;
    options.requiresSecureCoding = false;
    const platform::ArchivedObject root = TRY(platform::unarchivedObject(archive, options));
    if (const auto text = root.as<AttributedString>()) return *text;
    return platform::failure(platform::undecodable("The archive holds no attributed string."));
}

} // namespace quillet
