// The destination of one import: every output is built under a hidden name, given its attributes, and moved into place
// under a name that nothing had before.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/Result.h"
#include "platform/files/OutputDirectory.h"
#include "platform/files/ResourceValues.h"
#include "platform/foundation/URL.h"

namespace platform {
class FileWrapper;
}

namespace quillet {

// A package that has its attributes and empty files but no contents, still under its hidden name. Removed unless it is
// finished.
struct BegunPackage {
    platform::PendingOutput output;
    std::u16string name;
    std::string freeName; // under which it will appear if nothing takes it before
    std::optional<platform::Date> modificationDate;
    std::vector<platform::RefusedAttribute> refused;
};

class NoteOutput {
  public:
    // Opens the destination and clears away what dead imports left. A destination that cannot be opened makes every
    // output fail with the reason.
    explicit NoteOutput(const platform::URL& url);

    // The open destination, or why there is none.
    platform::Result<platform::OutputDirectory*> directory();

    // Writes an output under the name or the next free variant of it, cut to what the file system takes. A name that is
    // not one path component is refused. Returns the URL of what was written. Attributes that the file system refuses
    // are one line of the system log.
    platform::Result<platform::URL> writeFile(std::u16string_view name, std::string_view bytes,
                                              const platform::ResourceValues& values);
    // The same for a package, in two steps: what the file system has to do besides taking the contents can be done
    // while these are still being made. `files` are names of some of them, whose files are made at once.
    platform::Result<BegunPackage> beginPackage(std::u16string name, const platform::ResourceValues& values,
                                                std::span<const std::string_view> files);
    platform::Result<platform::URL> finishPackage(BegunPackage package, const platform::FileWrapper& contents);

    // Makes the text the whole content of the log file of that name; failing to is no error.
    void overwriteLog(std::string_view name, std::string_view text);

    // Everything written so far onto the disk, once, before the reply is sent.
    platform::Result<> flush();

  private:
    platform::Result<platform::URL> publish(platform::PendingOutput pending, std::u16string_view name, std::string free,
                                            const std::vector<platform::RefusedAttribute>& refused);
    platform::URL urlOf(std::string_view name) const;

    platform::URL url_;
    platform::Result<platform::OutputDirectory> directory_;
};

} // namespace quillet
