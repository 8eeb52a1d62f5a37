// Text operations at three sizes: the time a unit should stay level, also for the texts made to be slow.
#include <benchmark/benchmark.h>

#include <string>

#include "util/FileNames.h"
#include "util/Hashtags.h"
#include "util/Markdown.h"
#include "util/Searching.h"

namespace {

// `pattern` over and over, `units` long.
std::u16string filled(std::u16string_view pattern, std::size_t units) {
    std::u16string text;
    while (text.size() < units) text += pattern;
    text.resize(units);
    return text;
}

void report(benchmark::State& state) {
    state.SetComplexityN(state.range(0));
    state.SetBytesProcessed(state.iterations() * state.range(0) * static_cast<std::int64_t>(sizeof(char16_t)));
}

void stop(benchmark::State& state, bool right) {
    if (!right) state.SkipWithError("wrong result");
}

void hashtagsInProse(benchmark::State& state) {
    const auto units = static_cast<std::size_t>(state.range(0));
    const std::u16string text = filled(u"Some words and a #hashtag in them, #to_do. ", units);
    for (auto _ : state)
        stop(state, !quillet::tagNamesAndRangesFromHashtags(text, quillet::NumericHashtags::ignored).names.empty());
    report(state);
}

// One candidate whose long second piece the running length reaches only after as many short ones.
void hashtagsInPieces(benchmark::State& state) {
    const auto units = static_cast<std::size_t>(state.range(0));
    const std::u16string text = u"#a#" + std::u16string(units / 3, u'b') + filled(u"#c", units - units / 3);
    for (auto _ : state)
        stop(state, !quillet::tagNamesAndRangesFromHashtags(text, quillet::NumericHashtags::ignored).names.empty());
    report(state);
}

void searchInProse(benchmark::State& state) {
    const std::u16string text = filled(u"Das Café an der Straße. ", static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) stop(state, !quillet::localizedStandardRangesOfString(text, u"cafe").empty());
    report(state);
}

void searchForAlmostTheText(benchmark::State& state) {
    const auto units = static_cast<std::size_t>(state.range(0));
    const std::u16string text(units, u'a');
    const std::u16string searched = std::u16string(units / 2, u'a') + u'b';
    for (auto _ : state) stop(state, quillet::localizedStandardRangesOfString(text, searched).empty());
    report(state);
}

void collapseSpaces(benchmark::State& state) {
    const std::u16string text = u'a' + std::u16string(static_cast<std::size_t>(state.range(0)), u' ') + u'b';
    for (auto _ : state) stop(state, quillet::stringByRemovingNewlinesAndTabs(text) == u"a b");
    report(state);
}

void removeImages(benchmark::State& state) {
    const std::u16string text = filled(u"![](", static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) stop(state, quillet::markdownByRemovingImages(text) == text);
    report(state);
}

void sanitizeTitle(benchmark::State& state) {
    const std::u16string title = filled(u"Minutes: budget 2024/25 ", static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(quillet::stringSanitizedForFileName(title));
    report(state);
}

void threeSizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->RangeMultiplier(10)->Range(10'000, 1'000'000)->Complexity();
}

} // namespace

BENCHMARK(hashtagsInProse)->Apply(threeSizes);
BENCHMARK(hashtagsInPieces)->Apply(threeSizes);
BENCHMARK(searchInProse)->Apply(threeSizes);
BENCHMARK(searchForAlmostTheText)->Apply(threeSizes);
BENCHMARK(collapseSpaces)->Apply(threeSizes);
BENCHMARK(removeImages)->Apply(threeSizes);
BENCHMARK(sanitizeTitle)->RangeMultiplier(4)->Range(16, 256);

BENCHMARK_MAIN();
