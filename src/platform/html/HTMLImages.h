// The attachments that a page's images and objects become, and the pages that its frames show. Files are read below the
// read-access directory only; nothing is ever fetched.
#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "platform/foundation/URL.h"
#include "platform/html/HTMLReader.h"
#include "platform/text/TextAttachment.h"

namespace platform {

struct HTMLImage {
    std::shared_ptr<TextAttachment> attachment; // without wrapper when there is nothing to show
    std::optional<URL> link;                    // the address of an image that was not fetched
};

class HTMLImages {
  public:
    explicit HTMLImages(const HTMLReadOptions& options);

    // An address of the page, resolved; nothing when it cannot be. Blanks around it are ignored, characters that an
    // address may not hold are encoded.
    std::optional<URL> resolved(std::string_view address) const;
    // The address of a base element.
    void setBase(std::string_view address);

    HTMLImage image(std::string_view address) const;
    // Like image(), but nothing when the bytes cannot be had.
    std::optional<HTMLImage> object(std::string_view address) const;
    // The file of an address; null when it cannot be had.
    std::shared_ptr<FileWrapper> file(std::string_view address) const;

  private:
    std::shared_ptr<FileWrapper> fileAt(const URL& url) const;

    std::optional<URL> base_, readAccess_;
    std::function<std::optional<HTMLResource>(std::string_view)> resourceForURL_;
};

} // namespace platform
