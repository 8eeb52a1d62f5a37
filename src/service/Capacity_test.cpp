#include "service/Capacity.h"

#include <optional>

#include <gtest/gtest.h>

namespace quillet {
namespace {

TEST(Capacity, GivesAsManyPlacesAsThereAre) {
    const Capacity two(2);
    auto first = two.take(), second = two.take();
    EXPECT_TRUE(first);
    EXPECT_TRUE(second);
    EXPECT_FALSE(two.take());
    EXPECT_FALSE(two.take());
    first.reset();
    const auto third = two.take();
    EXPECT_TRUE(third);
    EXPECT_FALSE(two.take());
}

TEST(Capacity, MayBeGoneBeforeItsPlaces) {
    std::optional<Capacity> one(1);
    auto place = one->take();
    one.reset();
    place.reset();
    EXPECT_FALSE(place);
}

} // namespace
} // namespace quillet
