#include "platform/text/ParagraphStyle.h"

namespace platform {

const std::shared_ptr<const ParagraphStyle>& ParagraphStyle::defaultParagraphStyle() {
    static const auto& style = *new std::shared_ptr<const ParagraphStyle>(std::make_shared<const ParagraphStyle>());
    return style;
}

std::vector<TextTab> ParagraphStyle::defaultTabStops() {
    constexpr int kCount = 12;
    constexpr double kDistance = 28;
    std::vector<TextTab> tabs;
    tabs.reserve(kCount);
    for (int i = 1; i <= kCount; ++i) tabs.push_back({TextAlignment::left, kDistance * i});
    return tabs;
}

} // namespace platform
