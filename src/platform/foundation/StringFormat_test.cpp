#include "platform/foundation/StringFormat.h"

#include <gtest/gtest.h>

namespace platform {
namespace {

TEST(StringFormat, ReplacesPlaceholdersInOrder) {
    EXPECT_EQ(formatted("%@ %ld", {"Note", 2}), "Note 2");
    EXPECT_EQ(formatted("data:%@;base64,%@", {std::string("image/png"), std::string_view("AA==")}),
              "data:image/png;base64,AA==");
    EXPECT_EQ(formatted("%@%@", {"%@", "%"}), "%@%");
    EXPECT_EQ(formatted("%ld", {-9223372036854775807 - 1}), "-9223372036854775808");
    EXPECT_EQ(formatted("%2$@ of %1$ld", {3, "x"}), "x of 3");
    EXPECT_EQ(formatted("", {}), "");
}

TEST(StringFormat, PercentSignsThatArePlaceholdersForNothingStay) {
    EXPECT_EQ(formatted("100%% %x %", {}), "100% %x %");
    EXPECT_EQ(formatted("%%@", {"a"}), "%@");
    EXPECT_EQ(formatted("%1$ %l", {"a"}), "%1$ %l");
}

TEST(StringFormat, AbsentArgumentsPrintNull) {
    EXPECT_EQ(formatted("%@ %@ %@", {std::optional<std::string>(), std::optional<std::string>("a")}),
              "(null) a (null)");
    EXPECT_EQ(formatted("%9$@", {"a"}), "(null)");
}

TEST(StringFormat, UTF16KeepsLoneSurrogates) {
    EXPECT_EQ(formatted(u"%@ %ld", {std::u16string{0xDBFF}, 1}), (std::u16string{0xDBFF, ' ', '1'}));
    EXPECT_EQ(formatted(u"%@", {"ü"}), u"ü");
    EXPECT_EQ(formatted("%@", {u"ü"}), "ü");
}

} // namespace
} // namespace platform
