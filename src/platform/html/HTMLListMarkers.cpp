#include "platform/html/HTMLListMarkers.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace platform {

namespace {

using Attributes = AttributeSet::Reference;

const ParagraphStyle* paragraphOf(const AttributeSet& set) {
    const auto* style = set.find<ParagraphStyleReference>(kParagraphStyleAttributeName);
    return style ? style->get() : nullptr;
}

class MarkerWriter {
  public:
    explicit MarkerWriter(const HTMLListLinks& links) : links_(links) {}

    void appendMarker(AttributedString& text, const Attributes& first) {
        const ParagraphStyle* style = paragraphOf(*first);
        if (!style || style->textLists.empty()) return;
        const std::shared_ptr<TextList>& list = style->textLists.back();
        const auto number = numbers_.try_emplace(list.get(), list->startingItemNumber()).first->second++;
        text.append(u"\t" + list->markerForItemNumber(number) + u"\t", markerAttributes(first, *list));
    }

  private:
    // Font, colors and paragraph style of the paragraph's first character, and nothing else of it.
    Attributes markerAttributes(const Attributes& first, const TextList& list) {
        Attributes& made = markerSets_[first.get()];
        if (made) return made;
        std::vector<AttributeSet::Entry> entries;
        entries.reserve(5);
        for (const AttributeName name : {kFontAttributeName, kForegroundColorAttributeName,
                                         kBackgroundColorAttributeName, kParagraphStyleAttributeName})
            if (const AttributeValue* value = first->find(name)) entries.emplace_back(name, *value);
        if (const auto link = links_.find(&list); link != links_.end())
            entries.emplace_back(kLinkAttributeName, link->second);
        return made = std::make_shared<const AttributeSet>(std::move(entries));
    }

    const HTMLListLinks& links_;
    std::unordered_map<const TextList*, std::int64_t> numbers_;
    std::unordered_map<const AttributeSet*, Attributes> markerSets_;
};

} // namespace

AttributedString textWithListMarkers(const HTMLTextBuilder& written, const HTMLListLinks& links) {
    const std::u16string_view all = written.text();
    AttributedString text;
    MarkerWriter markers(links);
    std::size_t at = 0;
    bool startsParagraph = true;
    for (const AttributedString::Run& run : written.runs()) {
        const ParagraphStyle* style = paragraphOf(*run.attributes);
        const bool isListed = style && !style->textLists.empty();
        while (at < run.end) {
            if (startsParagraph) markers.appendMarker(text, run.attributes);
            // Only in a list do paragraphs have to be told apart.
            const std::size_t newline = isListed ? all.find(u'\n', at) : std::u16string_view::npos;
            const std::size_t end = newline < run.end ? newline + 1 : run.end;
            text.append(all.substr(at, end - at), run.attributes);
            startsParagraph = all[end - 1] == u'\n';
            at = end;
        }
    }
    return text;
}

} // namespace platform
