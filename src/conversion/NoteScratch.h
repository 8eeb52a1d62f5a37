// A note's working directory in the destination: attachments wait there between the page, which names them, and the
// rich text, which takes them up. Removed with all in it when the note is done. It is made for the first attachment:
// most notes have none, and making and removing a directory costs as much as writing a small note.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/base/Data.h"
#include "platform/base/Result.h"
#include "platform/files/OutputDirectory.h"
#include "platform/foundation/URL.h"

namespace platform {
class FileWrapper;
}

namespace quillet {

class EvernoteXMLResource;

class NoteScratch {
  public:
    // The directory will be `name` in the destination, which must outlive this.
    NoteScratch(platform::OutputDirectory& destination, std::string_view name);
    NoteScratch(const NoteScratch&) = delete;
    NoteScratch& operator=(const NoteScratch&) = delete;
    ~NoteScratch(); // removes the directory if `remove` has not

    // Where the directory is, or would be.
    const platform::URL& url() const { return url_; }

    // Writes a resource's bytes under the name, made one path component if it is none, or the next free variant of it.
    // Gives the name (UTF-8) under which they lie. Fails when the directory's own name is taken.
    platform::Result<std::string> writeResource(EvernoteXMLResource& resource, std::u16string_view name);
    // A resource's file as a wrapper of its name. Only what writeResource has written is there to be had, whatever the
    // name. One that differs in case alone will do: styles that show text in capitals change the names in markers.
    platform::Result<std::shared_ptr<platform::FileWrapper>> fileWrapper(std::string_view name);

    struct File {
        platform::Data bytes; // shared with the resource
        const EvernoteXMLResource* resource;
        bool isUsed; // fileWrapper has been asked for it
    };
    using Files = std::map<std::string, File, std::less<>>; // by name
    const Files& files() const { return files_; }

    // Removes the directory and all that lies in it, and says what went wrong. Writing makes it anew.
    platform::Result<> remove();

  private:
    platform::Result<platform::OutputDirectory*> directory();
    Files::iterator fileInAnotherCase(std::string_view name);
    std::string path() const { return platform::joinedPath(destination_.path(), name_); }

    platform::OutputDirectory& destination_;
    std::string name_;
    platform::URL url_;
    std::optional<platform::OutputDirectory> directory_; // once it is made, until it is removed
    Files files_;
    std::map<std::string, Files::iterator> byCapitals_; // of each name; made when one is sought in another case
};

} // namespace quillet
