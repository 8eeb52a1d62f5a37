// Icons are drawn in points of a square of kFileIconSide: a sheet with a turned-down corner, and in its lower part a
// sign for the kind of file. Straight edges lie on whole points and lines of one point on half ones, so that they are
// crisp.
#include "platform/graphics/FileIcon.h"

#include <array>

#include "platform/files/FileWrapper.h"
#include "platform/files/UTType.h"
#include "platform/foundation/PathString.h"
#include "platform/graphics/GraphicsContext.h"

namespace platform {

namespace {

Color gray(double white) {
    return Color::sRGB(white, white, white);
}

void fillRounded(GraphicsContext& context, const Rect& rect, double radius, const Color& color) {
    const Rect inner = rect.inset(radius, radius);
    const std::array<Point, 5> corners{{inner.origin,
                                        {inner.maxX(), inner.minY()},
                                        {inner.maxX(), inner.maxY()},
                                        {inner.minX(), inner.maxY()},
                                        inner.origin}};
    context.fillPolygon(corners, color);
    context.strokeLines(corners, 2 * radius, color);
}

// ---- the signs

void drawLines(GraphicsContext& context, const Color& color) {
    constexpr std::array<double, 5> kWidths{7, 12, 12, 12, 8};
    constexpr double kLeft = 10, kTop = 12, kPitch = 3;
    for (std::size_t line = 0; line < kWidths.size(); ++line)
        context.fillRect({{kLeft, kTop + kPitch * static_cast<double>(line)}, {kWidths[line], 1}}, color);
}

// The three letters on a band across the sheet.
void drawPDF(GraphicsContext& context, const Color& color) {
    constexpr double kPen = 1.2;
    context.fillRect({{7, 16}, {18, 10}}, color);
    const Color paper = Color::white();
    context.strokeLines(
        std::array<Point, 6>{{{9.5, 24}, {9.5, 18.5}, {11.5, 18.5}, {12.5, 19.8}, {11.5, 21.3}, {9.5, 21.3}}}, kPen,
        paper);
    context.strokeLines(
        std::array<Point, 7>{{{14.5, 18.5}, {16, 18.5}, {17.5, 20}, {17.5, 22.5}, {16, 24}, {14.5, 24}, {14.5, 18.5}}},
        kPen, paper);
    context.strokeLines(std::array<Point, 3>{{{19.5, 24}, {19.5, 18.5}, {22.5, 18.5}}}, kPen, paper);
    context.strokeLines(std::array<Point, 2>{{{19.5, 21.3}, {22, 21.3}}}, kPen, paper);
}

// Two mountains under a sun.
void drawPicture(GraphicsContext& context, const Color& color) {
    context.fillOval({{10, 13}, {4, 4}}, color);
    context.fillPolygon(std::array<Point, 5>{{{9, 27}, {13, 20.5}, {15, 23}, {18.5, 16.5}, {23, 27}}}, color);
}

// A screen with the sign for playing.
void drawMovie(GraphicsContext& context, const Color& color) {
    fillRounded(context, {{9, 14}, {14, 12}}, 2, color);
    context.fillPolygon(std::array<Point, 3>{{{14, 17}, {14, 23}, {19, 20}}}, Color::white());
}

// Two quavers under one beam.
void drawSound(GraphicsContext& context, const Color& color) {
    context.fillOval({{9.5, 23}, {5, 4}}, color);
    context.fillOval({{17.5, 21}, {5, 4}}, color);
    context.fillPolygon(std::array<Point, 4>{{{13, 14}, {22.5, 11.5}, {22.5, 14.5}, {13, 17}}}, color);
    context.strokeLines(std::array<Point, 2>{{{13.75, 15}, {13.75, 25}}}, 1.5, color);
    context.strokeLines(std::array<Point, 2>{{{21.75, 13}, {21.75, 23}}}, 1.5, color);
}

// A zip fastener from the top edge to its slider.
void drawArchive(GraphicsContext& context, const Color& color) {
    constexpr int kTeeth = 7;
    for (int tooth = 0; tooth < kTeeth; ++tooth)
        context.fillRect({{tooth % 2 == 0 ? 13.0 : 16.0, 3.0 + 2 * tooth}, {3, 2}}, color);
    fillRounded(context, {{13, 18}, {6, 8}}, 1.5, color);
    context.fillRect({{15, 21}, {2, 3}}, Color::white());
}

void drawTable(GraphicsContext& context, const Color& color) {
    context.fillRect({{9, 13}, {14, 13}}, color);
    constexpr Size kCell{6, 2};
    for (const double x : {10.0, 17.0})
        for (const double y : {17.0, 20.0, 23.0})
            context.fillRect({{x, y}, {x > 10 ? 5 : kCell.width, kCell.height}}, Color::white());
}

void drawChart(GraphicsContext& context, const Color& color) {
    context.fillRect({{9, 26}, {14, 1}}, color);
    context.fillRect({{10, 20}, {3, 5}}, color);
    context.fillRect({{14, 16}, {3, 9}}, color);
    context.fillRect({{18, 13}, {3, 12}}, color);
}

struct Kind {
    std::string_view type;
    Color::RGBA color;
    void (*draw)(GraphicsContext& context, const Color& color);
};

// The first type that a file conforms to. A file of no kind has an empty sheet.
constexpr Kind kKinds[] = {
    {kUTTypePDF, {0.80, 0.18, 0.16, 1}, drawPDF},
    {kUTTypeImage, {0.20, 0.60, 0.36, 1}, drawPicture},
    {kUTTypeMovie, {0.45, 0.30, 0.70, 1}, drawMovie},
    {kUTTypeAudio, {0.87, 0.42, 0.10, 1}, drawSound},
    {"public.archive", {0.56, 0.50, 0.42, 1}, drawArchive},
    {"public.spreadsheet", {0.16, 0.52, 0.30, 1}, drawTable},
    {"public.presentation", {0.80, 0.36, 0.14, 1}, drawChart},
    {kUTTypeText, {0.25, 0.45, 0.75, 1}, drawLines},
    {"public.composite-content", {0.25, 0.45, 0.75, 1}, drawLines},
};

Image sheet(const std::optional<UTType>& type) {
    return Image::drawn({kFileIconSide, kFileIconSide}, [&](GraphicsContext& context) {
        constexpr double kLeft = 6.5, kTop = 1.5, kRight = 25.5, kBottom = 30.5, kFold = 6;
        const std::array<Point, 6> outline{{{kLeft, kTop},
                                            {kRight - kFold, kTop},
                                            {kRight, kTop + kFold},
                                            {kRight, kBottom},
                                            {kLeft, kBottom},
                                            {kLeft, kTop}}};
        context.fillPolygon(outline, Color::white());
        if (type)
            for (const Kind& kind : kKinds) {
                if (!type->conformsTo(kind.type)) continue;
                kind.draw(context, Color::sRGB(kind.color.red, kind.color.green, kind.color.blue));
                break;
            }
        const std::array<Point, 3> corner{
            {{kRight - kFold, kTop}, {kRight - kFold, kTop + kFold}, {kRight, kTop + kFold}}};
        context.fillPolygon(corner, gray(0.88));
        context.strokeLines(corner, 1, gray(0.62));
        context.strokeLines(outline, 1, gray(0.62));
    });
}

// The back with its tab, and the front before it.
Image folder() {
    return Image::drawn({kFileIconSide, kFileIconSide}, [](GraphicsContext& context) {
        const Color color = Color::sRGB(0.42, 0.71, 0.93);
        const Color back = color.shadowWithLevel(0.22);
        fillRounded(context, {{2, 5}, {13, 8}}, 1.5, back);
        fillRounded(context, {{2, 8}, {28, 16}}, 1.5, back);
        fillRounded(context, {{2, 11}, {28, 17}}, 2, color);
    });
}

} // namespace

Image iconForFileWrapper(const FileWrapper& wrapper) {
    if (wrapper.isDirectory()) return folder();
    const std::string& name = wrapper.filename().empty() ? wrapper.preferredFilename() : wrapper.filename();
    return sheet(UTType::typeWithFilenameExtension(pathExtension(name)));
}

Image iconForContentType(std::string_view typeIdentifier) {
    return sheet(UTType::typeWithIdentifier(typeIdentifier));
}

} // namespace platform
