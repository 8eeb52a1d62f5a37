// What an en-media tag of the note markup becomes.
#pragma once

#include <string>
#include <string_view>

#include "conversion/NoteMarkup.h"
#include "platform/base/Result.h"

namespace quillet {

class EvernoteXMLResource;

// The markup with each en-media tag replaced: by an image, by an attachment marker, or by the text that says that the
// attachment is missing.
platform::Result<std::string> replaceMediaTags(std::string markup, EvernoteXMLItem& item, NoteScratch& scratch,
                                               UseInlineImages useInlineImages, InlineImages& images);

// One line of the system log: the resource is in the export, but nothing in the note shows it.
void reportUnshown(const EvernoteXMLResource& resource);

// Says in the system log that the text inside a tag, if there is any, is replaced with the tag.
void reportTextInside(const platform::XMLElement& tag);

} // namespace quillet
