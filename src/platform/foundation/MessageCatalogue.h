// A compiled gettext catalogue (.mo): English texts and their translations.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace platform {

class MessageCatalogue {
  public:
    // Nothing when the bytes are no catalogue. Both byte orders are read; the texts must be UTF-8. Of a plural the
    // first form is taken.
    static std::optional<MessageCatalogue> fromData(std::string_view bytes);

    // Nothing when the catalogue has no translation for the text.
    std::optional<std::string_view> translation(std::string_view english) const;

  private:
    struct Hash : std::hash<std::string_view> {
        using is_transparent = void;
    };
    std::unordered_map<std::string, std::string, Hash, std::equal_to<>> translations_;
};

} // namespace platform
