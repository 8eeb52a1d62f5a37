// The HTML reader on web clippings of three sizes, beside the bare parse of the same page, and on a short note. What to
// look at: "parses", the time in bare parses, wants to stay at or below 4; "memory", in sizes of the page, below 10;
// the time grows with the size.
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include "platform/html/HTMLReader.h"
#include "platform/xml/HTMLDocument.h"
#include "tests/support/PeakMemory.h"

namespace {

constexpr std::size_t kLargestPage = 5 << 20;

// One section of a clipped page: 43 nodes in 0.8 KB, twice as dense as pages are.
std::string section(int number) {
    return fmt::format(
        "<div style=\"margin: 0px 0px 1em; padding: 0px; font-family: Helvetica, Arial, sans-serif; font-size: 15px; "
        "color: rgb(51, 51, 51);\"><h2 style=\"font-size: 20px; font-weight: bold;\">Section {0}</h2>\n"
        "<p style=\"margin: 0px 0px 16px; line-height: 1.6;\">A text with <b>bold</b>, <i>italic</i> and "
        "<span style=\"background-color: rgb(255, 250, 165);\">marked</span> words, and a "
        "<a href=\"https://example.org/page?n={0}&amp;x=1\" style=\"color: rgb(0, 102, 204);\">link</a> in it.</p>\n"
        "<ul><li><div>First item of the list</div></li><li><div>Second item of it</div><ul><li>deeper</li></ul></li>"
        "</ul>\n<table style=\"border-collapse: collapse;\"><tbody><tr><td style=\"padding: 8px; border: 1px solid "
        "rgb(204, 204, 204);\">left {0}</td><td style=\"padding: 8px; border: 1px solid rgb(204, 204, 204);\">right"
        "</td></tr></tbody></table>\n<pre>code {0}\n\tindented</pre><div><br></div></div>\n",
        number);
}

std::string pageOfSize(std::size_t size) {
    std::string page = "<!DOCTYPE html><html><head><meta charset=\"utf-8\"><title>Clipping</title></head><body>";
    for (int number = 0; page.size() < size; ++number) page += section(number);
    return page + "</body></html>";
}

double seconds(auto work) {
    const std::clock_t start = std::clock();
    work();
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

void threeSizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->RangeMultiplier(4)->Range(kLargestPage / 16, kLargestPage);
    benchmark->Complexity(benchmark::oN)->Unit(benchmark::kMillisecond);
}

std::size_t readNote() {
    static const std::string page = pageOfSize(8 << 10);
    return platform::attributedStringFromHTMLData(page)->text.length();
}

void parsePage(benchmark::State& state) {
    const std::string page = pageOfSize(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(platform::HTMLDocument::parse(page));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(page.size()));
    state.SetComplexityN(state.range(0));
}
BENCHMARK(parsePage)->Apply(threeSizes);

void readPage(benchmark::State& state) {
    const std::string page = pageOfSize(static_cast<std::size_t>(state.range(0)));
    readNote(); // what is made once for all pages is not counted
    tests::restartPeakMemory();
    const std::size_t before = tests::peakMemory();
    const std::size_t length = platform::attributedStringFromHTMLData(page)->text.length();
    const double memory = static_cast<double>(tests::peakMemory() - before) / static_cast<double>(page.size());
    const double parse = seconds([&] { benchmark::DoNotOptimize(platform::HTMLDocument::parse(page)); });
    double read = 0;
    for (auto _ : state)
        read = seconds([&] {
            if (platform::attributedStringFromHTMLData(page)->text.length() != length)
                state.SkipWithError("another text");
        });
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(page.size()));
    state.SetComplexityN(state.range(0));
    state.counters["parses"] = read / parse;
    state.counters["memory"] = memory;
}
BENCHMARK(readPage)->Apply(threeSizes);

void readShortNote(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(readNote());
}
BENCHMARK(readShortNote)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
