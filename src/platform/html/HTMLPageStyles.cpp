#include "platform/html/HTMLPageStyles.h"

#include <utility>

namespace platform {

namespace {

thread_local std::unique_ptr<HTMLPageStyles> keptStyles;

} // namespace

std::unique_ptr<HTMLPageStyles> HTMLPageStyles::forPage(const HTMLDocument& page) {
    auto kept = std::exchange(keptStyles, nullptr);
    return kept && kept->resolver.turnTo(page) ? std::move(kept) : std::make_unique<HTMLPageStyles>(page);
}

void HTMLPageStyles::keep(std::unique_ptr<HTMLPageStyles> styles) {
    if (styles->resolver.isWorthKeeping()) keptStyles = std::move(styles);
}

} // namespace platform
