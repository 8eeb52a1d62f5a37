// Notes written and read back at four sizes: the time a megabyte should stay level.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "documents/QLTNoteFile.h"
#include "platform/files/FileWrapper.h"
#include "platform/foundation/URL.h"
#include "platform/graphics/Font.h"
#include "platform/text/TextAttachment.h"
#include "programs/RegisterClasses.h"

namespace {

using platform::AttributedString;
using platform::AttributeSet;
using quillet::QLTNoteFile;

constexpr std::size_t kMegabyte = 1'000'000;
constexpr std::size_t kRunsInMegabyte = 2000, kAttachmentsInMegabyte = 200;

AttributeSet::Reference attributes(std::size_t run) {
    constexpr const char* kFaces[] = {"Helvetica", "Helvetica-Bold", "Helvetica-Oblique"};
    AttributeSet set{{platform::kFontAttributeName, platform::Font(kFaces[run % 3], 12 + static_cast<double>(run % 2))},
                     {platform::kForegroundColorAttributeName,
                      platform::Color::deviceRGB(static_cast<double>(run % 10) / 10, 0, 0)}};
    return std::make_shared<const AttributeSet>(std::move(set));
}

AttributedString attachment(std::size_t number) {
    auto file = platform::FileWrapper::regularFile(platform::Data(std::string(1000, 'x')));
    file->setPreferredFilename("file " + std::to_string(number) + ".dat");
    return AttributedString::withAttachment(std::make_shared<platform::TextAttachment>(std::move(file)));
}

QLTNoteFile noteOf(std::size_t megabytes) {
    constexpr std::size_t kRunLength = kMegabyte / kRunsInMegabyte;
    std::u16string words;
    while (words.size() < kRunLength) words += u"Words of a line, and then more of them.\n";
    words.resize(kRunLength);
    AttributedString text;
    for (std::size_t run = 0; run < megabytes * kRunsInMegabyte; ++run) {
        text.append(words, attributes(run));
        if (run % (kRunsInMegabyte / kAttachmentsInMegabyte) == 0) text.append(attachment(run));
    }
    QLTNoteFile note;
    note.setNoteText(std::move(text));
    return note;
}

platform::URL place() {
    return platform::URL::fileURLWithPath(
        (std::filesystem::temp_directory_path() / "quillet-note-bench.qltnote").string(), true);
}

void report(benchmark::State& state) {
    state.SetComplexityN(state.range(0));
    state.SetBytesProcessed(state.iterations() * state.range(0) * static_cast<std::int64_t>(kMegabyte));
}

void writeNote(benchmark::State& state) {
    const QLTNoteFile note = noteOf(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state)
        if (!note.saveToFileURL(place())) state.SkipWithError("not written");
    report(state);
}

void readNote(benchmark::State& state) {
    const QLTNoteFile note = noteOf(static_cast<std::size_t>(state.range(0)));
    if (!note.saveToFileURL(place())) state.SkipWithError("not written");
    for (auto _ : state) {
        const auto read = QLTNoteFile::initWithFileURL(place());
        if (!read || (*read)->noteText().length() != note.noteText().length()) state.SkipWithError("not read");
    }
    report(state);
}

BENCHMARK(writeNote)->RangeMultiplier(2)->Range(1, 8)->Unit(benchmark::kMillisecond)->Complexity();
BENCHMARK(readNote)->RangeMultiplier(2)->Range(1, 8)->Unit(benchmark::kMillisecond)->Complexity();

} // namespace

int main(int argc, char** argv) {
    quillet::registerClasses();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    std::error_code none;
    std::filesystem::remove_all(place().path(), none);
}
