#include "platform/html/HTMLListMarkers.h"

#include <algorithm>
#include <memory_resource>
#include <string>
#include <utility>
#include <vector>

#include "platform/base/TextScan.h"

namespace platform {

namespace {

using Attributes = AttributeSet::Reference;
using Newlines = StopUnits<char16_t, u'\0', u'\uFFFF', u'\n'>;

const ParagraphStyle* paragraphOf(const AttributeSet& set) {
    const auto* style = set.find<ParagraphStyleReference>(kParagraphStyleAttributeName);
    return style ? style->get() : nullptr;
}

struct Marker {
    std::size_t position = 0; // in the text without markers
    std::u16string text;
    Attributes attributes;
};

class MarkerCollector {
  public:
    explicit MarkerCollector(const HTMLListLinks& links) : links_(links) {}

    void collect(std::u16string_view text, const std::vector<AttributedString::Run>& runs) {
        constexpr std::size_t kUsualMarkers = 32;
        markers.reserve(kUsualMarkers);
        std::size_t at = 0;
        bool startsParagraph = true;
        for (const AttributedString::Run& run : runs) {
            const ParagraphStyle* style = paragraphOf(*run.attributes);
            const bool isListed = style && !style->textLists.empty();
            while (at < run.end) {
                if (startsParagraph && isListed) add(at, style->textLists, run.attributes);
                // Only in a list do paragraphs have to be told apart.
                if (isListed) at += lengthBefore<Newlines>(text.substr(at, run.end - at));
                at = isListed && at < run.end ? at + 1 : run.end;
                startsParagraph = text[at - 1] == u'\n';
            }
        }
    }

    std::vector<Marker> markers;

  private:
    struct Count {
        const TextList* list = nullptr;
        std::int64_t next = 0;
    };

    void add(std::size_t position, const std::vector<std::shared_ptr<TextList>>& lists, const Attributes& first) {
        const TextList& list = *lists.back();
        std::u16string text = list.markerForItemNumber(nextNumber(list, lists.size()));
        (text.insert(0, 1, u'\t')) += u'\t';
        markers.push_back({position, std::move(text), markerAttributes(first, list)});
    }

    // Lists of one depth follow each other: a list that another one has come after does not come again.
    std::int64_t nextNumber(const TextList& list, std::size_t depth) {
        if (counts_.size() < depth) counts_.resize(depth);
        Count& count = counts_[depth - 1];
        if (count.list != &list) count = {&list, list.startingItemNumber()};
        return count.next++;
    }

    // Font, colors and paragraph style of the paragraph's first character, and nothing else of it.
    Attributes markerAttributes(const Attributes& first, const TextList& list) {
        Attributes& made = sets_[first.get()];
        if (made) return made;
        std::vector<AttributeSet::Entry> entries; // in the order of their names
        entries.reserve(5);
        const auto add = [&entries](AttributeName name, const AttributeValue* value) {
            if (value) entries.emplace_back(name, *value);
        };
        const auto link = links_.find(&list);
        for (const AttributeName name :
             {kBackgroundColorAttributeName, kForegroundColorAttributeName, kFontAttributeName})
            add(name, first->find(name));
        add(kLinkAttributeName, link != links_.end() ? &link->second : nullptr);
        add(kParagraphStyleAttributeName, first->find(kParagraphStyleAttributeName));
        return made = std::make_shared<const AttributeSet>(std::move(entries));
    }

    const HTMLListLinks& links_;
    std::vector<Count> counts_; // of the list at each depth, the outermost first
    std::pmr::monotonic_buffer_resource memory_;
    std::pmr::unordered_map<const AttributeSet*, Attributes> sets_{&memory_};
};

// Moves each piece of the text once, the last one first.
void insertTexts(std::u16string& text, const std::vector<Marker>& markers) {
    std::size_t from = text.size(), to = from;
    for (const Marker& marker : markers) to += marker.text.size();
    text.resize(to);
    const auto at = [&text](std::size_t position) { return text.begin() + static_cast<std::ptrdiff_t>(position); };
    for (auto marker = markers.rbegin(); marker != markers.rend(); ++marker) {
        std::move_backward(at(marker->position), at(from), at(to));
        to -= from - marker->position + marker->text.size();
        std::ranges::copy(marker->text, at(to));
        from = marker->position;
    }
}

std::vector<AttributedString::Run> withRunsOf(std::vector<Marker> markers, std::vector<AttributedString::Run> runs) {
    std::vector<AttributedString::Run> all;
    all.reserve(runs.size() + 2 * markers.size());
    const auto add = [&all](std::size_t end, Attributes attributes) {
        if (end > (all.empty() ? 0 : all.back().end)) all.push_back({end, std::move(attributes)});
    };
    std::size_t inserted = 0;
    auto marker = markers.begin();
    for (AttributedString::Run& run : runs) {
        for (; marker != markers.end() && marker->position < run.end; ++marker) {
            add(marker->position + inserted, run.attributes);
            inserted += marker->text.size();
            add(marker->position + inserted, std::move(marker->attributes));
        }
        add(run.end + inserted, std::move(run.attributes));
    }
    return all;
}

} // namespace

AttributedString textWithListMarkers(HTMLTextBuilder&& written, const HTMLListLinks& links) {
    MarkerCollector found(links);
    found.collect(written.text(), written.runs());
    std::u16string text = written.takeText();
    insertTexts(text, found.markers);
    return {std::move(text), withRunsOf(std::move(found.markers), written.takeRuns())};
}

} // namespace platform
