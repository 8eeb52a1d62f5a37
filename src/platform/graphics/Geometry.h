// Counterparts of NSPoint, NSSize and NSRect. Lengths in points.
#pragma once

namespace platform {

struct Point {
    double x = 0, y = 0;
    friend bool operator==(const Point&, const Point&) = default;
};

struct Size {
    double width = 0, height = 0;
    friend bool operator==(const Size&, const Size&) = default;
};

struct Rect {
    Point origin;
    Size size;

    double minX() const { return origin.x; }
    double minY() const { return origin.y; }
    double midX() const { return origin.x + size.width * 0.5; }
    double midY() const { return origin.y + size.height * 0.5; }
    double maxX() const { return origin.x + size.width; }
    double maxY() const { return origin.y + size.height; }

    // Smaller by dx at the left and the right and by dy above and below.
    Rect inset(double dx, double dy) const {
        return {{origin.x + dx, origin.y + dy}, {size.width - 2 * dx, size.height - 2 * dy}};
    }
    // The edges with the smaller coordinates belong to the rectangle, the others do not.
    bool contains(Point point) const {
        return point.x >= minX() && point.x < maxX() && point.y >= minY() && point.y < maxY();
    }
    friend bool operator==(const Rect&, const Rect&) = default;
};

} // namespace platform
