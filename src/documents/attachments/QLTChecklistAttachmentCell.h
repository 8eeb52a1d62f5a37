// The checkbox of a checklist item: the cell in the text, and the button inside it.
#pragma once

#include <functional>
#include <memory>

#include "platform/text/TextAttachmentCell.h"

namespace quillet {

// A switch that draws itself as a circle, ticked when on.
class QLTChecklistButtonCell {
  public:
    bool state() const { return state_; }
    void setState(bool state) { state_ = state; }
    void setAction(std::function<void()> action) { action_ = std::move(action); }

    static platform::Size cellSize();
    // The box at the left of the bounds, in the middle of their height.
    static platform::Rect imageRectForBounds(const platform::Rect& bounds);
    void drawWithFrame(platform::GraphicsContext& context, const platform::Rect& bounds) const;

    // Follows the mouse; released inside, it is a click: the state changes and the action runs.
    bool trackMouse(platform::TextView& view, const platform::Rect& bounds);

  private:
    bool state_ = false;
    std::function<void()> action_;
};

class QLTChecklistAttachmentCell : public platform::TextAttachmentCell {
  public:
    std::string_view className() const override { return "QLTChecklistAttachmentCell"; }

    bool isOn() const { return on_; }
    void setOn(bool on);
    // Made at first use, in the cell's state.
    QLTChecklistButtonCell& buttonCell();
    // The button's action.
    void buttonClicked(const QLTChecklistButtonCell& button) { on_ = button.state(); }

    platform::Size cellSize() override { return QLTChecklistButtonCell::cellSize(); }
    // The button at the right edge of the frame. @sel buttonFrameWithFrame:inView:
    static platform::Rect buttonFrameWithFrame(const platform::Rect& frame);
    // In the middle of the highest line of the fonts, which stands on their lowest descender.
    platform::Rect cellFrameInLine(std::span<const platform::Font> lineFonts) override;
    void drawWithFrame(platform::GraphicsContext& context, const platform::Rect& cellFrame,
                       const platform::TextView* view) override;

    bool wantsToTrackMouse() const override { return true; }
    bool trackMouse(platform::TextView& view, const platform::Rect& cellFrame, std::size_t characterIndex) override;

  private:
    bool on_ = false;
    std::unique_ptr<QLTChecklistButtonCell> buttonCell_;
};

} // namespace quillet
