// The five highlight colors: one table from number to asset, display name and values.
#include "platform/base/UTF16.h"
#include "platform/foundation/StringTable.h"
#include "styles/base/Colors.h"

namespace quillet {

using platform::Color;

namespace {

struct HighlightColor {
    const char* assetName;
    std::string_view displayName; // key of the string table
    Color::RGBA components;       // in light and dark appearance alike
};

// By type, from 1. The first is named yellow and shown as orange: that is what its highlight looks like.
constexpr HighlightColor kHighlightColors[] = {
    {"YellowHighlightColor", platform::localizable("Orange"), {1, 0.624, 0.04, 1}},
    {"GreenHighlightColor", platform::localizable("Green"), {0, 0.78, 0.745, 1}},
    {"BlueHighlightColor", platform::localizable("Blue"), {0, 0.478, 1, 1}},
    {"PinkHighlightColor", platform::localizable("Pink"), {1, 0.176, 0.333, 1}},
    {"PurpleHighlightColor", platform::localizable("Purple"), {0.686, 0.322, 0.871, 1}},
};
static_assert(std::size(kHighlightColors) == allHighlightColorTypes.size());

constexpr double kHighlightBackgroundAlpha = 0.15;

const std::vector<Color>& highlightColors() {
    static const std::vector<Color> colors = [] {
        std::vector<Color> made;
        for (const HighlightColor& each : kHighlightColors) {
            platform::registerColorAsset(each.assetName, each.components, each.components);
            made.push_back(*Color::colorNamed(each.assetName));
        }
        return made;
    }();
    return colors;
}

} // namespace

void registerHighlightColorAssets() {
    highlightColors();
}

Color yellowHighlightColor() {
    return highlightColors()[0];
}
Color greenHighlightColor() {
    return highlightColors()[1];
}
Color blueHighlightColor() {
    return highlightColors()[2];
}
Color pinkHighlightColor() {
    return highlightColors()[3];
}
Color purpleHighlightColor() {
    return highlightColors()[4];
}

std::vector<Color> allHighlightColors() {
    return highlightColors();
}

std::vector<std::u16string> allHighlightColorNames() {
    std::vector<std::u16string> names;
    for (const HighlightColor& each : kHighlightColors)
        names.push_back(platform::utf16FromUTF8(platform::localizedString(each.displayName)));
    return names;
}

std::optional<Color> colorForHighlightColorType(HighlightColorType type) {
    if (type < 1 || type > highlightColors().size()) return std::nullopt;
    return highlightColors()[type - 1];
}

HighlightColorType highlightColorType(const Color& color) {
    for (const HighlightColorType type : allHighlightColorTypes)
        if (isEqualToColorQLTVersion(highlightColors()[type - 1], color)) return type;
    return kNoHighlightColorType;
}

Color highlightBackgroundColor(const Color& color) {
    return color.withAlphaComponent(kHighlightBackgroundAlpha);
}
Color highlightForegroundColor(const Color& color) {
    return color;
}

} // namespace quillet
