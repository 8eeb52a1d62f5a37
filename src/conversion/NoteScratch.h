// A note's working directory in the destination: attachments wait there between the page, which names them, and the
// rich text, which takes them up. Removed with all in it when the note is done.
#pragma once

#include <map>
#include <memory>
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
    // Makes the directory `name` in the destination, which must outlive this. Fails when the name is taken.
    static platform::Result<NoteScratch> create(platform::OutputDirectory& destination, std::string_view name);
    NoteScratch(NoteScratch&& other) noexcept;
    NoteScratch& operator=(NoteScratch&&) = delete;
    ~NoteScratch(); // removes the directory if `remove` has not

    platform::URL url() const { return platform::URL::fileURLWithPath(directory_.path(), true); }

    // Writes a resource's bytes under the name, made one path component if it is none, or the next free variant of it.
    // Gives the name (UTF-8) under which they lie.
    platform::Result<std::string> writeResource(EvernoteXMLResource& resource, std::u16string_view name);
    // Writes a file of exactly this name.
    platform::Result<> writeFile(const std::string& name, std::string_view bytes);
    // A resource's file as a wrapper of that name. Only what writeResource has written is there to be had, whatever the
    // name.
    platform::Result<std::shared_ptr<platform::FileWrapper>> fileWrapper(std::string_view name) const;

    // Removes the directory now and says what went wrong.
    platform::Result<> remove();

  private:
    NoteScratch(platform::OutputDirectory& destination, std::string name, platform::OutputDirectory directory);

    platform::OutputDirectory* destination_; // null once removed
    std::string name_;
    platform::OutputDirectory directory_;
    std::map<std::string, platform::Data, std::less<>> resources_; // by file name; shares the resources' bytes
};

} // namespace quillet
