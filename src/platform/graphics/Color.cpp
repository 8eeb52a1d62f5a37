#include "platform/graphics/Color.h"

#include <algorithm>
#include <cmath>
#include <mutex>
#include <vector>

#include "platform/foundation/Environment.h"

namespace platform {

namespace {

struct CatalogColor {
    std::string_view catalogName, colorName;
    Color::RGBA light, dark;
};

constexpr std::string_view kSystemCatalog = "System";
constexpr CatalogColor kSystemColors[] = {
    {kSystemCatalog, "textColor", {0, 0, 0, 1}, {1, 1, 1, 1}},
    {kSystemCatalog, "textBackgroundColor", {1, 1, 1, 1}, {0.118, 0.118, 0.118, 1}},
    {kSystemCatalog, "labelColor", {0, 0, 0, 0.847}, {1, 1, 1, 0.847}},
    {kSystemCatalog, "secondaryLabelColor", {0, 0, 0, 0.498}, {1, 1, 1, 0.549}},
    {kSystemCatalog, "tertiaryLabelColor", {0, 0, 0, 0.26}, {1, 1, 1, 0.247}},
    {kSystemCatalog, "controlAccentColor", {0, 0.478, 1, 1}, {0.039, 0.518, 1, 1}},
};

struct ColorAsset {
    std::string name;
    Color::RGBA light, dark;
};

struct AssetTable {
    std::mutex mutex;
    std::vector<ColorAsset> assets;

    static AssetTable& shared() {
        static auto& table = *new AssetTable;
        return table;
    }
    // The mutex is held by the caller.
    ColorAsset* find(std::string_view name) {
        const auto asset = std::ranges::find(assets, name, &ColorAsset::name);
        return asset == assets.end() ? nullptr : &*asset;
    }
};

// The components of a known catalog color for the appearance in force.
std::optional<Color::RGBA> resolved(std::string_view catalogName, std::string_view colorName) {
    const bool dark = Environment::current().darkAppearance;
    for (const CatalogColor& color : kSystemColors)
        if (color.catalogName == catalogName && color.colorName == colorName) return dark ? color.dark : color.light;
    if (catalogName != colorName) return std::nullopt;
    AssetTable& table = AssetTable::shared();
    const std::scoped_lock lock(table.mutex);
    const ColorAsset* asset = table.find(colorName);
    if (!asset) return std::nullopt;
    return dark ? asset->dark : asset->light;
}

Color systemColor(std::string_view name) {
    return *Color::catalog(kSystemCatalog, name);
}

using Matrix = std::array<std::array<double, 3>, 3>;

// Linear sRGB to linear generic RGB: fitted on pairs of both spaces in public archives, largest error 0.004.
constexpr Matrix kGenericFromSRGB{
    {{0.97485, 0.02731, -0.00215}, {-0.02006, 1.05432, -0.03432}, {0.00169, 0.00155, 0.99675}}};
constexpr double kGenericGamma = 1.8;

constexpr Matrix inverse(const Matrix& m) {
    const auto cofactor = [&m](std::size_t row, std::size_t column) {
        const std::size_t r1 = (row + 1) % 3, r2 = (row + 2) % 3, c1 = (column + 1) % 3, c2 = (column + 2) % 3;
        return m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1];
    };
    const double determinant = m[0][0] * cofactor(0, 0) + m[0][1] * cofactor(0, 1) + m[0][2] * cofactor(0, 2);
    Matrix result{};
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 3; ++column) result[column][row] = cofactor(row, column) / determinant;
    return result;
}
constexpr Matrix kSRGBFromGeneric = inverse(kGenericFromSRGB);

// The curve of IEC 61966-2-1.
double linearFromSRGB(double value) {
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}
double sRGBFromLinear(double value) {
    return value <= 0.0031308 ? value * 12.92 : 1.055 * std::pow(value, 1 / 2.4) - 0.055;
}
double linearFromGeneric(double value) {
    return std::pow(value, kGenericGamma);
}
double genericFromLinear(double value) {
    return std::pow(value, 1 / kGenericGamma);
}

Color::RGBA converted(const Color::RGBA& color, const Matrix& matrix, double (*toLinear)(double),
                      double (*fromLinear)(double)) {
    const std::array<double, 3> linear{toLinear(std::clamp(color.red, 0.0, 1.0)),
                                       toLinear(std::clamp(color.green, 0.0, 1.0)),
                                       toLinear(std::clamp(color.blue, 0.0, 1.0))};
    const auto component = [&](std::size_t row) {
        const double sum = matrix[row][0] * linear[0] + matrix[row][1] * linear[1] + matrix[row][2] * linear[2];
        return fromLinear(std::clamp(sum, 0.0, 1.0));
    };
    return {component(0), component(1), component(2), color.alpha};
}

bool isGray(ColorSpace space) {
    return space == ColorSpace::calibratedWhite || space == ColorSpace::deviceWhite;
}

// Where the alpha of a component color stands.
std::size_t alphaIndex(ColorSpace space) {
    return isGray(space) ? 1 : space == ColorSpace::deviceCMYK ? 4 : 3;
}

} // namespace

Color Color::sRGB(double red, double green, double blue, double alpha) {
    return Color({ColorSpace::sRGB, {red, green, blue, alpha}, {}, {}});
}
Color Color::deviceRGB(double red, double green, double blue, double alpha) {
    return Color({ColorSpace::deviceRGB, {red, green, blue, alpha}, {}, {}});
}
Color Color::calibratedRGB(double red, double green, double blue, double alpha) {
    return Color({ColorSpace::calibratedRGB, {red, green, blue, alpha}, {}, {}});
}
Color Color::calibratedWhite(double white, double alpha) {
    return Color({ColorSpace::calibratedWhite, {white, alpha}, {}, {}});
}
Color Color::deviceWhite(double white, double alpha) {
    return Color({ColorSpace::deviceWhite, {white, alpha}, {}, {}});
}
Color Color::deviceCMYK(double cyan, double magenta, double yellow, double black, double alpha) {
    return Color({ColorSpace::deviceCMYK, {cyan, magenta, yellow, black, alpha}, {}, {}});
}

std::optional<Color> Color::catalog(std::string_view catalogName, std::string_view colorName) {
    if (!resolved(catalogName, colorName)) return std::nullopt;
    return Color({ColorSpace::catalog, {}, std::string(catalogName), std::string(colorName)});
}

Color Color::catalog(std::string_view catalogName, std::string_view colorName, const RGBA& fallback) {
    if (auto known = catalog(catalogName, colorName)) return *std::move(known);
    return Color({ColorSpace::catalog,
                  {fallback.red, fallback.green, fallback.blue, fallback.alpha},
                  std::string(catalogName),
                  std::string(colorName)});
}

Color Color::pattern() {
    return Color({ColorSpace::pattern, {}, {}, {}});
}

Color Color::permanent(const Color& color) {
    Color kept = color;
    kept.parts_ = std::shared_ptr<const Parts>(std::shared_ptr<const Parts>(), new Parts(*color.parts_));
    return kept;
}

Color Color::black() {
    static const Color color = permanent(calibratedWhite(0));
    return color;
}
Color Color::white() {
    static const Color color = permanent(calibratedWhite(1));
    return color;
}
Color Color::textColor() {
    static const Color color = permanent(systemColor("textColor"));
    return color;
}
Color Color::textBackgroundColor() {
    static const Color color = permanent(systemColor("textBackgroundColor"));
    return color;
}
Color Color::labelColor() {
    static const Color color = permanent(systemColor("labelColor"));
    return color;
}
Color Color::secondaryLabelColor() {
    static const Color color = permanent(systemColor("secondaryLabelColor"));
    return color;
}
Color Color::tertiaryLabelColor() {
    static const Color color = permanent(systemColor("tertiaryLabelColor"));
    return color;
}
Color Color::controlAccentColor() {
    static const Color color = permanent(systemColor("controlAccentColor"));
    return color;
}

std::optional<Color> Color::colorNamed(std::string_view name) {
    return catalog(name, name);
}

double Color::alphaComponent() const {
    if (space() == ColorSpace::pattern) return 1;
    if (space() == ColorSpace::catalog) return rgba()->alpha;
    return components()[alphaIndex(space())];
}

std::optional<Color::RGBA> Color::rgba() const {
    const auto& c = components();
    switch (space()) {
    case ColorSpace::sRGB:
    case ColorSpace::deviceRGB:
        return RGBA{c[0], c[1], c[2], c[3]};
    case ColorSpace::calibratedRGB:
        return converted({c[0], c[1], c[2], c[3]}, kSRGBFromGeneric, linearFromGeneric, sRGBFromLinear);
    case ColorSpace::calibratedWhite:
    case ColorSpace::deviceWhite:
        return RGBA{c[0], c[0], c[0], c[1]};
    case ColorSpace::deviceCMYK:
        return RGBA{(1 - c[0]) * (1 - c[3]), (1 - c[1]) * (1 - c[3]), (1 - c[2]) * (1 - c[3]), c[4]};
    case ColorSpace::catalog:
        return resolved(catalogNameComponent(), colorNameComponent()).value_or(RGBA{c[0], c[1], c[2], c[3]});
    case ColorSpace::pattern:
        break;
    }
    return std::nullopt;
}

std::optional<Color::RGBA> Color::genericRGB() const {
    const auto& c = components();
    if (space() == ColorSpace::calibratedRGB) return RGBA{c[0], c[1], c[2], c[3]};
    const std::optional<RGBA> color = rgba();
    if (!color) return std::nullopt;
    return converted(*color, kGenericFromSRGB, linearFromSRGB, genericFromLinear);
}

std::optional<Color> Color::usingComponents() const {
    if (space() == ColorSpace::pattern) return std::nullopt;
    if (space() != ColorSpace::catalog) return *this;
    const RGBA color = *rgba();
    return sRGB(color.red, color.green, color.blue, color.alpha);
}

std::optional<Color> Color::usingDeviceRGB() const {
    const std::optional<RGBA> color = rgba();
    if (!color) return std::nullopt;
    return deviceRGB(color->red, color->green, color->blue, color->alpha);
}

Color Color::withAlphaComponent(double alpha) const {
    const std::optional<Color> color = usingComponents();
    if (!color) return *this;
    Parts changed = *color->parts_;
    changed.components[alphaIndex(changed.space)] = alpha;
    return Color(std::move(changed));
}

Color Color::shadowWithLevel(double level) const {
    const std::optional<Color> color = space() == ColorSpace::deviceCMYK ? usingDeviceRGB() : usingComponents();
    if (!color) return *this;
    const double kept = 1 - std::clamp(level, 0.0, 1.0);
    Parts changed = *color->parts_;
    for (std::size_t i = 0; i < alphaIndex(changed.space); ++i) changed.components[i] *= kept;
    return Color(std::move(changed));
}

void registerColorAsset(std::string_view name, const Color::RGBA& light, const Color::RGBA& dark) {
    AssetTable& table = AssetTable::shared();
    const std::scoped_lock lock(table.mutex);
    if (ColorAsset* known = table.find(name)) {
        known->light = light;
        known->dark = dark;
    } else {
        table.assets.push_back({std::string(name), light, dark});
    }
}

} // namespace platform
