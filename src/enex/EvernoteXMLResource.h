// One attachment of a note: base64 text until somebody asks for the bytes, then the bytes alone. The text is made anew
// from them when it is wanted again, so that a large attachment is in memory once.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/base/Data.h"
#include "platform/base/Date.h"
#include "platform/base/Result.h"
#include "platform/foundation/URL.h"
#include "platform/foundation/UUID.h"

namespace quillet {

inline constexpr std::string_view EvernoteXMLResourceErrorDomain = "EvernoteXMLResourceErrorDomain";

enum class EvernoteXMLResourceError { noContentData = 1001, invalidContentData = 1002 };

struct EvernoteXMLItemResourceAttributes {
    std::u16string filename; // exactly as it stands in the file, untrimmed
    std::optional<platform::Date> timestamp;
};

class EvernoteXMLResource {
  public:
    std::string identifier = platform::UUID::random().string();
    std::string mime; // as in "image/png"
    double width = 0; // pixels, as the file says; 0 when absent
    double height = 0;
    EvernoteXMLItemResourceAttributes attributes;

    // The bytes, decoded at the first call. Error 1001 without base64 text, 1002 for text that does not decode; the
    // text stays as it was then.
    platform::Result<platform::Data> getContentData();

    // 32 hexadecimal digits in lower case, computed once.
    platform::Result<std::string> md5Hash();

    // Writes the bytes, replacing a regular file of that name; not atomic. @sel writeToURL:error:
    platform::Result<> writeToURL(const platform::URL& url);

    // Text as it is read from the file. To be called before the bytes have been asked for.
    void appendBase64Data(std::string_view text) { base64Text_ += text; }

    // The base64 text: as read, or, once the bytes are there, their encoding without line breaks.
    std::string base64Data() const;
    // The same, written behind what `out` holds.
    void appendBase64DataTo(std::string& out) const;

  private:
    std::string base64Text_; // empty once contentData_ is set
    std::optional<platform::Data> contentData_;
    std::optional<std::string> cachedMD5Hash_;
};

} // namespace quillet
