// The progress line: what it says, and that it fits whatever the terminal's width.
#include "programs/ProgressBar.h"

#include <gtest/gtest.h>

#include "platform/base/UTF16.h"

namespace quillet {
namespace {

constexpr std::size_t kWide = 200;

TEST(ProgressBar, SaysWhatIsDoneAndHowLongTheRestTakes) {
    const struct {
        ImportProgress progress;
        double seconds;
        std::string_view expected;
    } rows[] = {
        {{0, 0, 0, 0}, 0, "a [....................] 0.0/0.0 MB, 0 notes"},
        {{0, 10'000'000, 0, 0}, 5, "a [....................] 0.0/10.0 MB, 0 notes"},
        {{2'500'000, 10'000'000, 7, 0}, 5, "a [#####...............] 2.5/10.0 MB, 7 notes, 0:15 left"},
        {{2'500'000, 10'000'000, 7, 2}, 5, "a [#####...............] 2.5/10.0 MB, 7 notes, 2 failed, 0:15 left"},
        {{100'000, 10'000'000, 0, 0}, 5, "a [....................] 0.1/10.0 MB, 0 notes"}, // too early to tell
        {{5'000'000, 10'000'000, 1, 0}, 7200, "a [##########..........] 5.0/10.0 MB, 1 notes, 2:00:00 left"},
        {{10'000'000, 10'000'000, 1, 0}, 9, "a [####################] 10.0/10.0 MB, 1 notes"},
        {{11'000'000, 10'000'000, 1, 0}, 9, "a [####################] 11.0/10.0 MB, 1 notes"}, // the file has grown
    };
    for (const auto& row : rows) EXPECT_EQ(ProgressBar::line("a", row.progress, row.seconds, kWide), row.expected);
}

TEST(ProgressBar, ShortensTheNameFromItsFront) {
    const ImportProgress progress{2'500'000, 10'000'000, 7, 0};
    const std::size_t others = ProgressBar::line("", progress, 5, kWide).size() + 1; // one column stays free
    const struct {
        std::string_view label;
        std::size_t room; // for the name
        std::string_view expected;
    } rows[] = {
        {"My notes 2024.enex", 18, "My notes 2024.enex"},
        {"My notes 2024.enex", 17, "… notes 2024.enex"},
        {"My notes 2024.enex", 10, "…2024.enex"},
        {"日本語.enex", 11, "日本語.enex"},
        {"日本語.enex", 10, "…本語.enex"},
        {"日本語.enex", 9, "…語.enex"},
        {"🍵🍵🍵.enex", 11, "🍵🍵🍵.enex"},
        {"🍵🍵🍵.enex", 10, "…🍵🍵.enex"},
        {"🍵🍵🍵.enex", 9, "…🍵.enex"},
    };
    for (const auto& row : rows) {
        const std::string line = ProgressBar::line(std::string(row.label), progress, 5, others + row.room);
        EXPECT_EQ(line.substr(0, line.find(" [")), row.expected) << line;
        EXPECT_TRUE(line.ends_with("7 notes, 0:15 left")) << line;
    }
}

TEST(ProgressBar, FitsIntoAnyWidth) {
    const ImportProgress progress{2'500'000, 10'000'000, 7, 0};
    for (std::size_t columns = 0; columns < 120; ++columns) {
        const std::string line = ProgressBar::line("日本語 🍵 long name.enex", progress, 5, columns);
        const std::u16string units = platform::utf16FromUTF8(line);
        EXPECT_LT(units.size(), std::max<std::size_t>(columns, 1)) << line;
        EXPECT_EQ(platform::utf8FromUTF16(units), line);
    }
}

} // namespace
} // namespace quillet
