// Sizes, rectangles, mouse tracking and drawing of the cells, against a text view of numbers.
#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "documents/attachments/QLTChecklistAttachmentCell.h"
#include "documents/attachments/QLTDividerTextAttachmentCell.h"
#include "documents/attachments/QLTFileAttachment.h"
#include "documents/attachments/QLTFileAttachmentCell.h"
#include "platform/files/FileWrapper.h"
#include "platform/graphics/GraphicsContext.h"
#include "platform/graphics/TextDrawing.h"
#include "platform/text/Attributes.h"
#include "styles/base/ParagraphStyles.h"

using namespace quillet;
using platform::Color;
using platform::Font;
using platform::GraphicsContext;
using platform::Image;
using platform::Point;
using platform::Rect;
using platform::Size;

namespace {

class RecordingDelegate : public platform::TextViewDelegate {
  public:
    void textViewClickedOnCell(platform::TextAttachmentCell& cell, const Rect& frame, std::size_t index) override {
        clicked = &cell;
        cellFrame = frame;
        characterIndex = index;
        ++clicks;
    }
    platform::TextAttachmentCell* clicked = nullptr;
    Rect cellFrame;
    std::size_t characterIndex = 0;
    int clicks = 0;
};

class NumbersView : public platform::TextView {
  public:
    double textContainerWidth() const override { return width; }
    bool isFlipped() const override { return flipped; }
    platform::TextViewDelegate* delegate() const override { return itsDelegate; }
    Point mouseLocation() const override { return mouse; }
    bool trackMouseUntilUp(const Rect& rect) override {
        tracked.push_back(rect);
        return releasedInside;
    }
    double width = 0;
    bool flipped = true, releasedInside = true;
    Point mouse;
    RecordingDelegate* itsDelegate = nullptr;
    std::vector<Rect> tracked;
};

std::shared_ptr<platform::FileWrapper> file(std::string name, bool extensionHidden = false) {
    auto wrapper = platform::FileWrapper::regularFile(platform::Data("x"));
    wrapper->setPreferredFilename(std::move(name));
    wrapper->setFileAttributes({.modificationDate = {}, .extensionHidden = extensionHidden});
    return wrapper;
}

} // namespace

TEST(ChecklistCell, IsAsLargeAsItsButton) {
    QLTChecklistAttachmentCell cell;
    EXPECT_EQ(cell.cellSize(), (Size{20, 18}));
    EXPECT_EQ(QLTChecklistButtonCell::cellSize(), (Size{20, 18}));
    EXPECT_EQ(QLTChecklistAttachmentCell::buttonFrameWithFrame({{100, 7}, {50, 30}}), (Rect{{130, 7}, {20, 18}}));
    EXPECT_EQ(QLTChecklistButtonCell::imageRectForBounds({{130, 7}, {20, 18}}), (Rect{{130, 7}, {18, 18}}));
    EXPECT_EQ(QLTChecklistButtonCell::imageRectForBounds({{3, 10}, {40, 31}}), (Rect{{3, 16.5}, {18, 18}}));
    EXPECT_EQ(cell.cellBaselineOffset(), (Point{0, 0}));
}

TEST(ChecklistCell, ButtonIsMadeInTheCellsState) {
    for (const bool on : {false, true}) {
        QLTChecklistAttachmentCell cell;
        cell.setOn(on);
        EXPECT_EQ(cell.buttonCell().state(), on);
        cell.setOn(!on);
        EXPECT_EQ(cell.buttonCell().state(), !on);
        cell.buttonCell().setState(on);
        EXPECT_EQ(cell.isOn(), !on) << "only a click tells the cell";
        cell.buttonClicked(cell.buttonCell());
        EXPECT_EQ(cell.isOn(), on);
    }
}

TEST(ChecklistCell, SitsInTheMiddleOfTheHighestLine) {
    QLTChecklistAttachmentCell cell;
    EXPECT_EQ(cell.cellFrameInLine({}), (Rect{{0, 0}, {20, 18}}));
    const Font fonts[] = {Font("Helvetica", 12), Font("Menlo-Regular", 30), Font("Helvetica", 9)};
    const Rect frame = cell.cellFrameInLine(fonts);
    EXPECT_EQ(frame.size, (Size{20, 18}));
    EXPECT_DOUBLE_EQ(frame.midY(), fonts[1].descender() + lineHeight(fonts[1]) / 2);
}

TEST(ChecklistCell, AClickChangesTheStateAndTellsTheDelegate) {
    RecordingDelegate delegate;
    NumbersView view;
    view.itsDelegate = &delegate;
    QLTChecklistAttachmentCell cell;
    const Rect frame{{10, 20}, {40, 18}}, button{{30, 20}, {20, 18}};
    EXPECT_TRUE(cell.wantsToTrackMouse());

    view.mouse = {29.9, 25};
    EXPECT_FALSE(cell.trackMouse(view, frame, 5)) << "beside the button";
    EXPECT_TRUE(view.tracked.empty());

    view.mouse = {30, 25};
    EXPECT_TRUE(cell.trackMouse(view, frame, 5));
    EXPECT_EQ(view.tracked, std::vector<Rect>{button});
    EXPECT_TRUE(cell.isOn());
    EXPECT_EQ(delegate.clicked, &cell);
    EXPECT_EQ(delegate.cellFrame, frame);
    EXPECT_EQ(delegate.characterIndex, 5u);

    view.releasedInside = false;
    EXPECT_FALSE(cell.trackMouse(view, frame, 5));
    EXPECT_TRUE(cell.isOn());
    EXPECT_EQ(delegate.clicks, 1);

    view.releasedInside = true;
    view.itsDelegate = nullptr;
    EXPECT_TRUE(cell.trackMouse(view, frame, 5)) << "nobody listens";
    EXPECT_FALSE(cell.isOn());
}

TEST(ChecklistCell, DrawsAnEmptyOrAFilledCircle) {
    QLTChecklistAttachmentCell cell;
    const auto drawn = [&] {
        return Image::drawn(
            {20, 18}, [&](GraphicsContext& context) { cell.drawWithFrame(context, {{0, 0}, {20, 18}}, nullptr); });
    };
    const Image off = drawn();
    cell.setOn(true);
    const Image on = drawn();
    const auto accent = *Color::controlAccentColor().rgba();
    EXPECT_EQ(off.pixelAt(9, 4), (Color::RGBA{1, 1, 1, 1}));
    EXPECT_NEAR(on.pixelAt(9, 4).blue, accent.blue, 0.01);
    EXPECT_NEAR(on.pixelAt(9, 4).green, accent.green, 0.01);
    double brightest = 0; // the accent color has no red, the tick is white
    for (std::size_t y = 4; y < 14; ++y)
        for (std::size_t x = 4; x < 14; ++x) brightest = std::max(brightest, on.pixelAt(x, y).red);
    EXPECT_GT(brightest, 0.8);
    EXPECT_EQ(on.pixelAt(19, 9).alpha, 0) << "the border";
    EXPECT_EQ(on.pixelAt(0, 0).alpha, 0) << "a corner";
}

TEST(DividerCell, SpansTheTextAndIsFifteenHigh) {
    QLTDividerTextAttachmentCell cell;
    EXPECT_EQ(cell.cellSize(), (Size{0, 15}));
    NumbersView view;
    view.width = 321.5;
    cell.setTextView(&view);
    EXPECT_EQ(cell.cellSize(), (Size{321.5, 15}));
    EXPECT_FALSE(cell.wantsToTrackMouse());
    EXPECT_FALSE(cell.trackMouse(view, {{0, 0}, {10, 10}}, 0));
}

TEST(DividerCell, LineLiesInTheMiddleOnWholePoints) {
    const struct {
        Rect frame, line;
    } kCases[] = {
        {{{0, 0}, {300, 15}}, {{0, 7}, {300, 1}}},
        {{{10, 20}, {301, 15}}, {{10.5, 27}, {301, 1}}},
        {{{0, 0.25}, {2, 16}}, {{0, 7}, {2, 1}}},
    };
    for (const auto& each : kCases) EXPECT_EQ(QLTDividerTextAttachmentCell::lineRectWithFrame(each.frame), each.line);
    QLTDividerTextAttachmentCell cell;
    const Image image = Image::drawn(
        {6, 15}, [&](GraphicsContext& context) { cell.drawWithFrame(context, {{0, 0}, {6, 15}}, nullptr); });
    for (std::size_t y = 0; y < 15; ++y) EXPECT_NEAR(image.pixelAt(3, y).alpha, y == 7 ? 0.26 : 0, 0.005) << y;
}

TEST(FileCell, NameIsThatOnDiskElseThePreferredOne) {
    const struct {
        const char *preferred, *filename;
        bool hidden;
        const char16_t* shown;
    } kCases[] = {
        {"Report.pdf", "", false, u"Report.pdf"},
        {"Report.pdf", "", true, u"Report"},
        {"Report.pdf", "disk.txt", false, u"disk.txt"},
        {"Report.pdf", "disk.txt", true, u"disk"},
        {"", "", false, u""},
        {"\u00DCbersicht.pdf", "", true, u"\u00DCbersicht"},
    };
    for (const auto& each : kCases) {
        const auto wrapper = file(each.preferred, each.hidden);
        wrapper->setFilename(each.filename);
        QLTFileAttachment attachment(wrapper);
        attachment.attachmentCell();
        const auto& cell = *attachment.fileAttachmentCell();
        EXPECT_EQ(cell.filenameString().string(), each.shown);
        EXPECT_FALSE(cell.iconImage().empty());
    }
}

TEST(FileCell, NameIsSmallLabelTextCutInTheMiddle) {
    QLTFileAttachment attachment(file("Report.pdf"));
    attachment.attachmentCell();
    const auto& set = attachment.fileAttachmentCell()->filenameString().attributesAt(0);
    EXPECT_EQ(*set.find<Font>(platform::kFontAttributeName), Font::systemFont(11));
    EXPECT_EQ(*set.find<Color>(platform::kForegroundColorAttributeName), Color::labelColor());
    platform::ParagraphStyle style;
    style.lineBreakMode = platform::LineBreakMode::truncatingMiddle;
    EXPECT_EQ(**set.find<platform::ParagraphStyleReference>(platform::kParagraphStyleAttributeName), style);
}

TEST(FileCell, IsAsWideAsTheNameAndAtLeastTheIcon) {
    const auto sizeFor = [](const char* name) {
        QLTFileAttachment attachment(file(name));
        return attachment.attachmentCell()->cellSize();
    };
    const Size text = platform::sizeOfText("A rather long name of a file.pdf", Font::systemFont(11));
    EXPECT_EQ(sizeFor("A rather long name of a file.pdf"), (Size{std::ceil(text.width), std::ceil(text.height + 37)}));
    EXPECT_EQ(sizeFor("a").width, 32);
    EXPECT_EQ(sizeFor("a").height, std::ceil(platform::sizeOfText("a", Font::systemFont(11)).height + 37));
}

TEST(FileCell, IconIsOnTopAndTheNameBelow) {
    const Rect frame{{10, 20}, {101, 60}};
    EXPECT_EQ(QLTFileAttachmentCell::iconRectWithFrame(frame, true), (Rect{{44, 20}, {32, 32}}));
    EXPECT_EQ(QLTFileAttachmentCell::filenameRectWithFrame(frame, true), (Rect{{10, 57}, {101, 28}}));
    EXPECT_EQ(QLTFileAttachmentCell::iconRectWithFrame(frame, false), (Rect{{44, 48}, {32, 32}}));
    EXPECT_EQ(QLTFileAttachmentCell::filenameRectWithFrame(frame, false), (Rect{{10, 20}, {101, 28}}));
}

TEST(FileCell, DrawsIconAndName) {
    QLTFileAttachment attachment(file("Report.pdf"));
    const auto cell = attachment.attachmentCell();
    const Image image = Image::drawn(
        {80, 60}, [&](GraphicsContext& context) { cell->drawWithFrame(context, {{0, 0}, {80, 60}}, nullptr); });
    EXPECT_EQ(image.pixelAt(40, 10).alpha, 1) << "the icon";
    double name = 0;
    for (std::size_t y = 37; y < 60; ++y)
        for (std::size_t x = 0; x < 80; ++x) name += image.pixelAt(x, y).alpha;
    EXPECT_GT(name, 20);
}
