#include "styles/base/NoteBackgroundColor.h"

#include "platform/archive/KeyedUnarchiver.h"
#include "platform/defaults/UserDefaults.h"
#include "styles/base/Colors.h"

namespace quillet {

using platform::Color;

std::optional<Color> QLTSecureUnarchiveColorFromDataTransformer::transformedValue(const platform::Data& data) const {
    platform::UnarchiveOptions options;
    options.allowedClasses = {"NSColorSpace"}; // inside a color
    for (const std::string_view name : allowedTopLevelClasses()) options.allowedClasses.emplace_back(name);
    const auto object = platform::unarchivedObject(data.bytes(), options);
    const auto color = object ? object->as<Color>() : nullptr;
    return color ? std::optional(*color) : std::nullopt;
}

Color defaultNoteBackgroundColor() {
    const auto data = platform::UserDefaults::standard().dataForKey(kNoteDefaultBackgroundColorDefaultsKey);
    const auto color = data ? QLTSecureUnarchiveColorFromDataTransformer().transformedValue(*data) : std::nullopt;
    if (!color || isWhiteColor(*color) || isBlackColor(*color)) return Color::textBackgroundColor();
    return *color;
}

} // namespace quillet
