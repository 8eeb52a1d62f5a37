#include "platform/text/AttributeNumbers.h"

#include <gtest/gtest.h>

namespace platform {
namespace {

TEST(AttributeNumbers, EqualSetsHaveOneNumberWhateverTheirAddress) {
    const AttributeSet plain, kerned{{kKernAttributeName, 1.5}}, kernedToo{{kKernAttributeName, 1.5}};
    const AttributeSet linked{{kLinkAttributeName, *URL::fromString("https://example.com/")}};
    AttributeNumbers numbers;
    EXPECT_EQ(numbers.numberOf(kerned), 0U);
    EXPECT_EQ(numbers.numberOf(plain), 1U);
    EXPECT_EQ(numbers.numberOf(kernedToo), 0U);
    EXPECT_EQ(numbers.numberOf(linked), 2U);
    EXPECT_EQ(numbers.numberOf(kerned), 0U);
    EXPECT_EQ(numbers.setCount(), 3U);
    EXPECT_EQ(numbers.valueCount(), 2U);
}

// One attribute may hold either form of a number; texts that differ in nothing else are equal.
TEST(AttributeNumbers, AnIntegerAndARealOfItsValueAreOne) {
    const AttributeSet integer{{kKernAttributeName, std::int64_t{1}}}, real{{kKernAttributeName, 1.0}};
    const AttributeSet both{{kKernAttributeName, 1.0}, {kStrokeWidthAttributeName, std::int64_t{1}}};
    AttributeNumbers numbers;
    EXPECT_EQ(numbers.numberOf(integer), 0U);
    EXPECT_EQ(numbers.numberOf(real), 0U);
    EXPECT_EQ(numbers.numberOf(both), 1U);
    EXPECT_EQ(numbers.valueCount(), 1U);
    EXPECT_EQ(numbers.members(0).front().entry, &integer.entries().front());
}

TEST(AttributeNumbers, OneValueUnderTwoNamesMakesTwoSets) {
    const AttributeSet kern{{kKernAttributeName, 2.0}}, stroke{{kStrokeWidthAttributeName, 2.0}};
    AttributeNumbers numbers;
    EXPECT_NE(numbers.numberOf(kern), numbers.numberOf(stroke));
    EXPECT_EQ(numbers.members(0).front().value, numbers.members(1).front().value);
}

} // namespace
} // namespace platform
