// Counterpart of NSColor, as a value: a component color in one of a few spaces, a catalog color by name, or a pattern.
// Copies share what they are made of: rich text holds the few colors of a page many thousand times.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace platform {

enum class ColorSpace : std::uint8_t {
    calibratedRGB,
    deviceRGB,
    calibratedWhite,
    deviceWhite,
    deviceCMYK,
    sRGB,
    catalog,
    pattern
};

class Color {
  public:
    // Component colors; components 0 to 1, kept in double precision.
    static Color sRGB(double red, double green, double blue, double alpha = 1);
    static Color deviceRGB(double red, double green, double blue, double alpha = 1);
    static Color calibratedRGB(double red, double green, double blue, double alpha = 1);
    static Color calibratedWhite(double white, double alpha = 1);
    static Color deviceWhite(double white, double alpha = 1);
    static Color deviceCMYK(double cyan, double magenta, double yellow, double black, double alpha = 1);
    // A color of the catalog "System", or an asset color: its components follow the environment's appearance. An asset
    // is a catalog of its own: catalog name and color name are both the asset's name.
    static std::optional<Color> catalog(std::string_view catalogName, std::string_view colorName);
    static Color pattern(); // cannot be converted to any space

    // Platform colors.
    static Color black();     // calibrated white 0
    static Color white();     // calibrated white 1
    static Color textColor(); // catalog colors from here on
    static Color textBackgroundColor();
    static Color labelColor();
    static Color secondaryLabelColor();
    static Color tertiaryLabelColor();
    static Color controlAccentColor();
    // Counterpart of colorNamed: an asset color registered with registerColorAsset; nothing when unknown.
    static std::optional<Color> colorNamed(std::string_view name);

    ColorSpace space() const { return parts_->space; }
    bool isCatalogColor() const { return space() == ColorSpace::catalog; }
    const std::string& catalogNameComponent() const { return parts_->catalogName; }
    const std::string& colorNameComponent() const { return parts_->colorName; }

    // The components in this color's own space, alpha last; 2 for gray, 4 for RGB, 5 for CMYK.
    const std::array<double, 5>& components() const { return parts_->components; }
    double alphaComponent() const;

    struct RGBA {
        double red = 0, green = 0, blue = 0, alpha = 1;
        friend bool operator==(const RGBA&, const RGBA&) = default;
    };
    // A catalog color that came from elsewhere (an archive): the known color of these names, or else the names with
    // the components that they had there.
    static Color catalog(std::string_view catalogName, std::string_view colorName, const RGBA& fallback);

    // In sRGB. Device RGB and sRGB count as one here, as on a machine without a calibrated display, and so do the gray
    // spaces, whose curve is sRGB's but for rounding. Nothing for a pattern.
    std::optional<RGBA> rgba() const;
    // In generic RGB (the older calibrated space, gamma 1.8): what RTF color tables and old readers of archives take.
    std::optional<RGBA> genericRGB() const;

    // The same color as a component color (a catalog color is resolved for the appearance); nothing for a pattern.
    std::optional<Color> usingComponents() const;
    std::optional<Color> usingDeviceRGB() const;

    Color withAlphaComponent(double alpha) const;
    // Counterpart of shadowWithLevel: blended with black, 0 unchanged to 1 black.
    Color shadowWithLevel(double level) const;

    // Object equality: same space, same components or names.
    friend bool operator==(const Color& a, const Color& b) { return a.parts_ == b.parts_ || *a.parts_ == *b.parts_; }

  private:
    struct Parts {
        ColorSpace space = ColorSpace::sRGB;
        std::array<double, 5> components{}; // of a catalog color unknown here: its fallback in sRGB
        std::string catalogName, colorName;
        friend bool operator==(const Parts&, const Parts&) = default;
    };
    explicit Color(Parts parts) : parts_(std::make_shared<const Parts>(std::move(parts))) {}
    // The same color for as long as the process lives, hence without a count that threads would share.
    static Color permanent(const Color& color);

    std::shared_ptr<const Parts> parts_;
};

// Makes an asset color known under a name, with its light and its dark components in sRGB.
void registerColorAsset(std::string_view name, const Color::RGBA& light, const Color::RGBA& dark);

} // namespace platform
