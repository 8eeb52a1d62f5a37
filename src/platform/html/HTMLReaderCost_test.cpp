// What reading a large clipping costs. Memory is the process's own, so that the parser underneath counts.
#include "platform/html/HTMLReader.h"

#include <algorithm>
#include <cstddef>
#include <ctime>
#include <string>
#include <string_view>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "platform/xml/HTMLDocument.h"
#include "tests/support/PeakMemory.h"

namespace platform {
namespace {

// 43 nodes: a text with formatting and a link, a nested list, a table with borders, code.
std::string section(int number, std::string_view filler) {
    return fmt::format(
        "<div style=\"margin: 0px 0px 1em; padding: 0px; font-family: Helvetica, Arial, sans-serif; font-size: 15px; "
        "color: rgb(51, 51, 51);\"><h2 style=\"font-size: 20px; font-weight: bold;\">Section {0}</h2>\n"
        "<p class=\"text\">A text with <b>bold</b>, <i>italic</i> and <span style=\"background-color: rgb(255, 250, "
        "165);\">marked</span> words, and a <a href=\"https://example.org/page?n={0}&amp;x=1\" style=\"color: rgb(0, "
        "102, 204);\">link</a> in it.{1}</p>\n"
        "<ul><li><div>First item of the list</div></li><li><div>Second item of it</div><ul><li>deeper</li></ul></li>"
        "</ul>\n<table style=\"border-collapse: collapse;\"><tbody><tr><td style=\"padding: 8px; border: 1px solid "
        "rgb(204, 204, 204);\">left {0}</td><td style=\"padding: 8px; border: 1px solid rgb(204, 204, 204);\">right"
        "</td></tr></tbody></table>\n<pre>code {0}\n\tindented</pre><div><br></div></div>\n",
        number, filler);
}

std::string pageOfSize(std::size_t size, std::string_view filler, std::string_view head = "") {
    std::string page = fmt::format("<!DOCTYPE html><html><head><meta charset=\"utf-8\">{}</head><body>", head);
    for (int number = 0; page.size() < size; ++number) page += section(number, filler);
    return page + "</body></html>";
}

double secondsToRead(const std::string& page) {
    double least = 1e9; // whatever else the machine does only makes a run longer
    for (int run = 0; run < 3; ++run) {
        const std::clock_t start = std::clock();
        EXPECT_TRUE(attributedStringFromHTMLData(page).has_value());
        least = std::min(least, static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
    }
    return least;
}

TEST(HTMLReaderCost, TakesLessMemoryThanTenPages) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the address sanitizer holds on to what has been freed";
#endif
    struct Row {
        const char* what;
        std::size_t size;
        std::string filler, head;
        std::size_t leastNodes;
        double sizes; // of the page; more is too much
    };
    const Row kRows[] = {
        {"an ordinary clipping", 5'000'000, std::string(470, 'x'), "", 130'000, 9},
        {"hardly any text", 1'250'000, "", "", 60'000, 10},
        {"looks from rules", 1'250'000, "", "<style>p, div > b {color: navy} .text {margin: 0}</style>", 60'000, 10},
    };
    ASSERT_TRUE(attributedStringFromHTMLData(section(0, "")).has_value()); // what is made once for all pages
    for (const Row& row : kRows) {
        const std::string page = pageOfSize(row.size, row.filler, row.head);
        EXPECT_GE(HTMLDocument::parse(page)->size(), row.leastNodes) << row.what;
        tests::restartPeakMemory();
        const std::size_t before = tests::peakMemory();
        ASSERT_GT(before, 0);
        const auto read = attributedStringFromHTMLData(page);
        ASSERT_TRUE(read.has_value());
        const double sizes = static_cast<double>(tests::peakMemory() - before) / static_cast<double>(page.size());
        EXPECT_GT(sizes, 1) << row.what; // the text and its runs at the least
        EXPECT_LT(sizes, row.sizes) << row.what;
    }
}

TEST(HTMLReaderCost, GrowsWithTheSizeOfThePage) {
    struct Row {
        const char* what;
        std::string (*page)(int count);
        int count;
    };
    const Row kRows[] = {
        {"a clipping", [](int count) { return pageOfSize(static_cast<std::size_t>(count), ""); }, 200'000},
        {"links in one item of a list",
         [](int count) {
             std::string page = "<ul><li>";
             for (int i = 0; i < count; ++i) page += fmt::format("<a href=https://e.org/{0}>l<b>{0}</b></a> ", i);
             return page;
         },
         4'000},
    };
    for (const Row& row : kRows) {
        const double one = secondsToRead(row.page(row.count)), four = secondsToRead(row.page(4 * row.count));
        EXPECT_LT(four, 9 * one) << row.what << ": a fourfold page takes " << four << " s, this one " << one;
    }
}

} // namespace
} // namespace platform
