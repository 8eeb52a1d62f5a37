// What the cells look like: tests/golden/cells/<case>/expected.png, to within what fonts and the drawing library's
// versions make of it. QUILLET_ACCEPT=1 draws them anew; look at them before they are committed.
#include <algorithm>
#include <cmath>
#include <functional>
#include <map>

#include <gtest/gtest.h>

#include "documents/attachments/QLTChecklistAttachmentCell.h"
#include "documents/attachments/QLTDividerTextAttachment.h"
#include "documents/attachments/QLTDividerTextAttachmentCell.h"
#include "documents/attachments/QLTFileAttachment.h"
#include "documents/attachments/QLTFileAttachmentCell.h"
#include "platform/files/FileWrapper.h"
#include "platform/foundation/Environment.h"
#include "platform/graphics/GraphicsContext.h"
#include "tests/support/Golden.h"
#include "tests/support/ScratchDirectory.h"

namespace quillet {
namespace {

using platform::Color;
using platform::GraphicsContext;
using platform::Image;
using platform::Rect;
using platform::Size;

constexpr double kDifferingPixel = 0.1;  // of the full range, in any component
constexpr double kDifferingShare = 0.04; // of the pixels; half of what a name's letters cover

class WideView : public platform::TextView {
  public:
    double textContainerWidth() const override { return 120; }
    platform::Point mouseLocation() const override { return {}; }
    bool trackMouseUntilUp(const Rect&) override { return false; }
};

Image onPaper(Size size, const std::function<void(GraphicsContext&, const Rect&)>& draw) {
    return Image::drawn(size, [&](GraphicsContext& context) {
        const Rect all{{0, 0}, size};
        context.fillRect(all, Color::textBackgroundColor());
        draw(context, all);
    });
}

Image fileCell(std::string name, bool hidden = false, bool isDirectory = false) {
    const auto wrapper =
        isDirectory ? platform::FileWrapper::directory() : platform::FileWrapper::regularFile(platform::Data("x"));
    wrapper->setPreferredFilename(std::move(name));
    wrapper->setFileAttributes({.modificationDate = {}, .extensionHidden = hidden});
    QLTFileAttachment attachment(wrapper);
    const WideView view;
    return onPaper({100, 56}, [&](GraphicsContext& context, const Rect& frame) {
        attachment.attachmentCell()->drawWithFrame(context, frame, &view);
    });
}

Image checkbox(bool on) {
    QLTChecklistAttachmentCell cell;
    cell.setOn(on);
    return onPaper({30, 18},
                   [&](GraphicsContext& context, const Rect& frame) { cell.drawWithFrame(context, frame, nullptr); });
}

Image divider() {
    const WideView view;
    QLTDividerTextAttachment attachment(view);
    const auto cell = attachment.attachmentCell();
    return onPaper(cell->cellSize(),
                   [&](GraphicsContext& context, const Rect& frame) { cell->drawWithFrame(context, frame, &view); });
}

const std::map<std::string, std::function<Image()>>& pictures() {
    static const std::map<std::string, std::function<Image()>> all{
        {"checkbox-off", [] { return checkbox(false); }},
        {"checkbox-on", [] { return checkbox(true); }},
        {"divider", divider},
        {"file-archive", [] { return fileCell("notes.zip"); }},
        {"file-directory", [] { return fileCell("Folder", false, true); }},
        {"file-hidden-extension", [] { return fileCell("Report.pdf", true); }},
        {"file-long-name", [] { return fileCell("A name that is much too long for its cell.pdf"); }},
        {"file-movie", [] { return fileCell("clip.mov"); }},
        {"file-picture", [] { return fileCell("photo.png"); }},
        {"file-presentation", [] { return fileCell("talk.pptx"); }},
        {"file-sound", [] { return fileCell("voice.mp3"); }},
        {"file-table", [] { return fileCell("costs.xlsx"); }},
        {"file-text", [] { return fileCell("read me.txt"); }},
        {"file-unknown", [] { return fileCell("thing.zzz"); }},
    };
    return all;
}

double shareOfDifferingPixels(const Image& a, const Image& b) {
    const auto width = static_cast<std::size_t>(a.size().width), height = static_cast<std::size_t>(a.size().height);
    std::size_t differing = 0;
    for (std::size_t y = 0; y < height; ++y)
        for (std::size_t x = 0; x < width; ++x) {
            const Color::RGBA p = a.pixelAt(x, y), q = b.pixelAt(x, y);
            const double most = std::max({std::abs(p.red - q.red), std::abs(p.green - q.green),
                                          std::abs(p.blue - q.blue), std::abs(p.alpha - q.alpha)});
            if (most > kDifferingPixel) ++differing;
        }
    return static_cast<double>(differing) / static_cast<double>(width * height);
}

class CellPictures : public testing::TestWithParam<bool> {};

TEST_P(CellPictures, LookAsTheyDid) {
    platform::ScopedEnvironment environment;
    environment->darkAppearance = GetParam();
    const std::string suffix = GetParam() ? "-dark" : "";
    for (const auto& [name, draw] : pictures()) {
        const auto path = tests::sourceDirectory() / "tests/golden/cells" / name / ("expected" + suffix + ".png");
        const Image drawn = draw();
        if (std::getenv("QUILLET_ACCEPT") != nullptr) {
            std::filesystem::create_directories(path.parent_path());
            tests::writeFile(path, drawn.pngData());
        }
        const auto expected = Image::fromPNGData(tests::readFile(path));
        ASSERT_TRUE(expected) << path;
        ASSERT_EQ(expected->size(), drawn.size()) << path;
        EXPECT_LT(shareOfDifferingPixels(*expected, drawn), kDifferingShare) << path;
    }
}

INSTANTIATE_TEST_SUITE_P(LightAndDark, CellPictures, testing::Bool());

// The comparison would notice a wrong picture.
TEST(CellPictureComparison, DifferWhereTheyShould) {
    EXPECT_GT(shareOfDifferingPixels(checkbox(true), checkbox(false)), kDifferingShare);
    EXPECT_GT(shareOfDifferingPixels(fileCell("notes.zip"), fileCell("voice.mp3")), kDifferingShare);
    EXPECT_GT(shareOfDifferingPixels(fileCell("Report.pdf"), fileCell("Report.pdf", true)), 0);
}

} // namespace
} // namespace quillet
