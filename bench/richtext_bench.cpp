// Every operation and view of rich text at half size and full size, 20,000 lines or 5,000 attachments. Texts that put
// everything into one line are there too, since a line is what the operations look for around each attachment. After
// the times comes each ratio of full to half: 2 is linear, up to 3 where only the smaller text fits a cache, 4 would be
// quadratic. Exits 1 when an operation gives a wrong result.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "documents/attachments/QLTChecklistTextAttachment.h"
#include "documents/attachments/QLTDividerTextAttachment.h"
#include "platform/files/FileWrapper.h"
#include "platform/foundation/Environment.h"
#include "platform/graphics/Font.h"
#include "platform/text/AttributedString.h"
#include "platform/text/TextList.h"
#include "platform/text/TextTable.h"
#include "richtext/AttachmentViews.h"
#include "richtext/Checklists.h"
#include "richtext/ImportCleanup.h"
#include "richtext/WebCleanup.h"
#include "richtext/highlights/Highlights.h"
#include "styles/base/ParagraphStyles.h"

namespace {

using platform::AttributedString;
using platform::AttributeSet;
using platform::ParagraphStyle;
using platform::Range;
using platform::TextAttachmentReference;

constexpr std::int64_t kLines = 20'000, kAttachments = 5'000;

AttributeSet::Reference shared(AttributeSet set) {
    return std::make_shared<const AttributeSet>(std::move(set));
}

// Lines in turns of two fonts, so that each is a run of its own, all in one paragraph style.
AttributedString lines(std::int64_t count, std::u16string_view line, ParagraphStyle style = {}) {
    const auto paragraph = std::make_shared<const ParagraphStyle>(std::move(style));
    const AttributeSet::Reference sets[] = {
        shared({{platform::kFontAttributeName, platform::Font("Times-Roman", 16)},
                {platform::kForegroundColorAttributeName, platform::Color::sRGB(1, 0, 0)},
                {platform::kBackgroundColorAttributeName, platform::Color::sRGB(1, 1, 0)},
                {platform::kParagraphStyleAttributeName, paragraph}}),
        shared({{platform::kFontAttributeName, platform::Font("Times-Bold", 16)},
                {quillet::QLTHighlightTextAttributeName, std::int64_t{1}},
                {platform::kParagraphStyleAttributeName, paragraph}}),
    };
    AttributedString text;
    for (std::int64_t i = 0; i < count; ++i) text.append(line, sets[i % 2]);
    return text;
}

AttributedString plainLines(std::int64_t count) {
    return lines(count, u"Some words in a line.\n");
}

AttributedString spacedLines(std::int64_t count) {
    ParagraphStyle style;
    style.paragraphSpacing = 12;
    return lines(count, u"Some words in a line.\n", std::move(style));
}

AttributedString listLines(std::int64_t count, std::string_view format, std::u16string_view line) {
    ParagraphStyle style;
    style.textLists = {std::make_shared<platform::TextList>(format)};
    return lines(count, line, std::move(style));
}

AttributedString tableLines(std::int64_t count) {
    ParagraphStyle style;
    style.textBlocks = {
        std::make_shared<platform::TextTableBlock>(std::make_shared<platform::TextTable>(), 0, 1, 0, 1)};
    return lines(count, u"Some words in a cell.\n", std::move(style));
}

using MakeAttachment = std::function<TextAttachmentReference(std::int64_t index)>;

AttributedString attachments(std::int64_t count, const MakeAttachment& make, std::u16string_view after) {
    AttributedString text;
    for (std::int64_t i = 0; i < count; ++i) {
        text.append(AttributedString::withAttachment(make(i)));
        text.append(after, AttributeSet::empty());
    }
    return text;
}

TextAttachmentReference checkbox(std::int64_t index) {
    auto box = std::make_shared<quillet::QLTChecklistTextAttachment>();
    box->setOn(index % 2 == 0);
    box->setIndentationLevel(static_cast<std::uint64_t>(index % 6));
    return box;
}

TextAttachmentReference divider(std::int64_t) {
    return std::make_shared<quillet::QLTDividerTextAttachment>();
}

TextAttachmentReference file(std::int64_t index) {
    const std::string name = "file " + std::to_string(index) + (index % 2 == 0 ? ".png" : ".zip");
    auto wrapper = platform::FileWrapper::regularFile(platform::Data("bytes"));
    wrapper->setFilename(name);
    wrapper->setPreferredFilename(index % 5 == 0 ? std::string(300, 'a') + name : name);
    return std::make_shared<platform::TextAttachment>(std::move(wrapper));
}

Range whole(const AttributedString& text) {
    return {0, text.length()};
}

struct Case {
    const char* name;
    std::int64_t count;
    std::function<AttributedString(std::int64_t count)> text;
    // Works on a copy of the text; whether it did something.
    std::function<bool(AttributedString& text)> operation;
};

// Whether an operation in place changed the length, which those here do.
std::function<bool(AttributedString&)> growing(void (*operation)(AttributedString&)) {
    return [operation](AttributedString& text) {
        const std::size_t length = text.length();
        operation(text);
        return text.length() != length;
    };
}

std::function<bool(AttributedString&)> reporting(std::vector<std::u16string_view> (*view)(const AttributedString&)) {
    return [view](AttributedString& text) { return !view(text).empty(); };
}

const auto boxesInLines = [](std::int64_t count) { return attachments(count, checkbox, u"Milk\n"); };
const auto boxesInOneLine = [](std::int64_t count) { return attachments(count, checkbox, u"Milk "); };
const auto filesInLines = [](std::int64_t count) { return attachments(count, file, u"\n"); };
const auto filesInOneLine = [](std::int64_t count) { return attachments(count, file, u" "); };
const auto bulletedLines = [](std::int64_t count) {
    return listLines(count, platform::kTextListMarkerDisc, u"Milk\n");
};
const auto checkedLines = [](std::int64_t count) {
    return listLines(count, platform::kTextListMarkerCheck, u"\t✓\tMilk\n");
};
const auto typedLines = [](std::int64_t count) {
    return lines(count, u"\t12.\tMilk\n", quillet::listParagraphStyle());
};

const Case kCases[] = {
    {"cleanupHTMLNewlines/lines", kLines, plainLines,
     [](AttributedString& text) {
         return quillet::cleanupHTMLNewlinesInRange(text, whole(text)).end() == text.length();
     }},
    {"cleanupHTMLNewlines/spacedLines", kLines, spacedLines,
     [](AttributedString& text) {
         return quillet::cleanupHTMLNewlinesInRange(text, whole(text)).end() == text.length();
     }},
    {"fixTrailingTables/cells", kLines, tableLines, growing(quillet::fixTrailingTables)},
    {"addTextMarkers/items", kLines, bulletedLines, growing(quillet::addTextMarkersIfNecessary)},
    {"checkForTextLists/items", kLines, typedLines,
     [](AttributedString& text) {
         quillet::checkForTextListsAndConvertIfNecessary(text);
         return !text.runs()
                     .front()
                     .attributes->find<platform::ParagraphStyleReference>(platform::kParagraphStyleAttributeName)
                     ->get()
                     ->textLists.empty();
     }},
    {"convertTextListsToChecklist/items", kLines, checkedLines,
     growing(quillet::convertTextListsToChecklistAttachments)},
    {"convertChecklistToTextLists/lines", kAttachments, boxesInLines,
     growing(quillet::convertChecklistAttachmentsToTextLists)},
    {"convertChecklistToTextLists/oneLine", kAttachments, boxesInOneLine,
     growing(quillet::convertChecklistAttachmentsToTextLists)},
    {"convertChecklistToMarkdown/lines", kAttachments, boxesInLines,
     growing(quillet::convertChecklistAttachmentsToMarkdownSyntax)},
    {"convertChecklistToMarkdown/oneLine", kAttachments, boxesInOneLine,
     growing(quillet::convertChecklistAttachmentsToMarkdownSyntax)},
    {"convertDividersToText", kAttachments, [](std::int64_t count) { return attachments(count, divider, u"\n"); },
     growing(quillet::convertDividersToText)},
    {"convertTextToDividers/lines", kLines, [](std::int64_t count) { return lines(count, u"***\n"); },
     [](AttributedString& text) {
         quillet::convertTextToDividers(text);
         return text.string()[1] == platform::kAttachmentCharacter;
     }},
    {"replaceFileAttachments", kAttachments, filesInOneLine,
     [](AttributedString& text) {
         const AttributedString before = text;
         quillet::replaceFileAttachmentsInRange(text, whole(text));
         return text != before;
     }},
    {"fixLengthOfAttachmentFilenames", kAttachments, filesInLines,
     [](AttributedString& text) {
         quillet::fixLengthOfAttachmentFilenames(text);
         return quillet::fileAttachments(text).front()->preferredFilename().size() == 255;
     }},
    {"cleanupTextFromWebPage/lines", kLines, spacedLines,
     [](AttributedString& text) {
         quillet::cleanupTextFromWebPageInRange(text, whole(text), platform::Font("Helvetica", 12),
                                                {.newlines = true, .sizes = true, .colors = true});
         return *text.runs().front().attributes->find<platform::Font>(platform::kFontAttributeName) ==
                platform::Font("Helvetica", 12);
     }},
    {"containsFileAttachments", kAttachments, boxesInLines,
     [](AttributedString& text) { return !quillet::containsFileAttachments(text); }},
    {"fileAttachments", kAttachments, filesInLines,
     [](AttributedString& text) { return !quillet::fileAttachments(text).empty(); }},
    {"htmlStringForSharingToMail/files", kAttachments, filesInLines,
     [](AttributedString& text) {
         return quillet::htmlStringForSharingToMail(text)->find("data:image/png") != std::string::npos;
     }},
    {"htmlStringForSharingToMail/lines", kLines, plainLines,
     [](AttributedString& text) { return quillet::htmlStringForSharingToMail(text).has_value(); }},
    {"attributedStringWithoutAttachments", kAttachments, filesInOneLine,
     [](AttributedString& text) {
         return quillet::attributedStringWithoutAttachments(text).length() * 2 == text.length();
     }},
    {"attributedStringByReplacingAttachmentsWithNames", kAttachments, filesInOneLine,
     [](AttributedString& text) {
         return quillet::attributedStringByReplacingAttachmentsWithNames(text).length() > text.length();
     }},
    {"stringWithTextListMarkers", kLines, bulletedLines,
     [](AttributedString& text) { return quillet::stringWithTextListMarkers(text).length() > text.length(); }},
    {"highlightedStrings", kLines, plainLines, reporting(quillet::highlightedStrings)},
    {"stringsWithBackgroundColor", kLines, plainLines, reporting(quillet::stringsWithBackgroundColor)},
    {"outstandingChecklistItems/lines", kAttachments, boxesInLines, reporting(quillet::outstandingChecklistItems)},
    {"outstandingChecklistItems/oneLine", kAttachments, boxesInOneLine, reporting(quillet::outstandingChecklistItems)},
    {"generateName", kAttachments, filesInOneLine,
     [](AttributedString& text) { return !quillet::generateName(text).empty(); }},
    {"attributedStringConvertedToDynamicColors", kLines, plainLines,
     [](AttributedString& text) { return quillet::attributedStringConvertedToDynamicColors(text) != text; }},
};

void run(benchmark::State& state, const Case& tested) {
    const AttributedString text = tested.text(state.range(0));
    for (auto _ : state) {
        AttributedString changed = text;
        if (!tested.operation(changed)) return state.SkipWithError("wrong result");
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// Prints the times and compares those of each case.
class Ratios : public benchmark::ConsoleReporter {
  public:
    Ratios() : ConsoleReporter(OO_None) {}

    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            allRight_ = allRight_ && !run.error_occurred;
            const auto [half, isHalf] = half_.try_emplace(run.run_name.function_name, run.GetAdjustedCPUTime());
            if (!isHalf) ratios_.emplace_back(half->first, run.GetAdjustedCPUTime() / half->second);
        }
    }
    // Whether every result was right.
    bool report() const {
        std::puts("\nfull size to half size:");
        for (const auto& [name, ratio] : ratios_) std::printf("%4.1f  %s\n", ratio, name.c_str());
        return allRight_;
    }

  private:
    std::map<std::string, double> half_;
    std::vector<std::pair<std::string, double>> ratios_;
    bool allRight_ = true;
};

} // namespace

int main(int argc, char** argv) {
    platform::ScopedEnvironment environment;
    environment->preferencesDirectory = "/nonexistent"; // everybody's styles
    platform::TextList::setIncludesTextListMarkers(false);
    for (const Case& tested : kCases)
        benchmark::RegisterBenchmark(tested.name, [&tested](benchmark::State& state) { run(state, tested); })
            ->Arg(tested.count / 2)
            ->Arg(tested.count)
            ->Unit(benchmark::kMillisecond);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    Ratios ratios;
    benchmark::RunSpecifiedBenchmarks(&ratios);
    return ratios.report() ? 0 : 1;
}
