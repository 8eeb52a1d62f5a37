// The destination of one import: every output is built under a hidden name, given its attributes, and moved into place
// under a name that nothing had before.
#pragma once

#include <string>
#include <string_view>

#include "platform/base/Result.h"
#include "platform/files/OutputDirectory.h"
#include "platform/foundation/URL.h"

namespace platform {
class FileWrapper;
struct ResourceValues;
} // namespace platform

namespace quillet {

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
    platform::Result<platform::URL> writePackage(std::u16string_view name, const platform::FileWrapper& package,
                                                 const platform::ResourceValues& values);

    // Makes the text the whole content of the log file of that name; failing to is no error.
    void overwriteLog(std::string_view name, std::string_view text);

    // Everything written so far onto the disk, once, before the reply is sent.
    platform::Result<> flush();

  private:
    platform::Result<platform::URL> publish(platform::PendingOutput pending, std::u16string_view name,
                                            const platform::ResourceValues& values);
    platform::URL urlOf(std::string_view name) const;

    platform::URL url_;
    platform::Result<platform::OutputDirectory> directory_;
};

} // namespace quillet
