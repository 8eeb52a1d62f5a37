#include "platform/graphics/ColorList.h"

namespace platform {

namespace {

struct ListedColor {
    std::string_view list, key;
    double white;
};

constexpr ListedColor kListedColors[] = {
    {"Apple", "White", 1},
    {"Apple", "Black", 0},
    {"Crayons", "Snow", 1},
    {"Crayons", "Mercury", 0xE6 / 255.0},
    {"Crayons", "Silver", 0xCC / 255.0},
    {"Crayons", "Magnesium", 0xB3 / 255.0},
    {"Crayons", "Aluminum", 0x99 / 255.0},
    {"Crayons", "Nickel", 0x80 / 255.0},
    {"Crayons", "Tin", 0x7F / 255.0},
    {"Crayons", "Steel", 0x66 / 255.0},
    {"Crayons", "Iron", 0x4C / 255.0},
    {"Crayons", "Tungsten", 0x33 / 255.0},
    {"Crayons", "Lead", 0x19 / 255.0},
    {"Crayons", "Licorice", 0},
};

} // namespace

std::optional<Color> colorWithKey(std::string_view listName, std::string_view key) {
    for (const ListedColor& each : kListedColors)
        if (each.list == listName && each.key == key) return Color::sRGB(each.white, each.white, each.white);
    return std::nullopt;
}

} // namespace platform
