#include "richtext/TextEditing.h"

#include <algorithm>

namespace quillet {

using platform::AttributedString;
using platform::AttributeSet;
using platform::AttributeValue;
using platform::ParagraphStyle;
using platform::ParagraphStyleReference;
using platform::Range;
using platform::TextAttachmentReference;
using platform::TextEdit;

const ParagraphStyle& paragraphStyleAt(const AttributedString& text, std::size_t position) {
    if (position < text.length()) {
        const AttributeSet& attributes = text.attributesAt(position);
        const auto* style = attributes.find<ParagraphStyleReference>(platform::kParagraphStyleAttributeName);
        if (style && *style) return **style;
    }
    return *ParagraphStyle::defaultParagraphStyle();
}

bool beginsWith(std::u16string_view text, Range range, std::u16string_view prefix) {
    return text.substr(range.location, range.length).starts_with(prefix);
}

AttributeSet::Reference attributesWithoutAttachment(const AttributedString& text, std::size_t position) {
    const auto run = std::ranges::upper_bound(text.runs(), position, {}, &AttributedString::Run::end);
    if (!run->attributes->find(platform::kAttachmentAttributeName)) return run->attributes;
    return std::make_shared<const AttributeSet>(run->attributes->without(platform::kAttachmentAttributeName));
}

AttributeSet::Reference typingAttributes(const AttributedString& text, std::size_t position) {
    if (text.empty()) return AttributeSet::empty();
    return attributesWithoutAttachment(text, position == 0 ? 0 : position - 1);
}

TextEdit insertion(const AttributedString& text, std::size_t position, std::u16string_view inserted) {
    return {{position, 0}, AttributedString(std::u16string(inserted), typingAttributes(text, position))};
}

TextEdit attachmentEdit(const AttributedString& text, Range range, TextAttachmentReference attachment) {
    auto attributes = std::make_shared<const AttributeSet>(
        text.attributesAt(range.location).with(platform::kAttachmentAttributeName, std::move(attachment)));
    return {range,
            AttributedString(std::u16string(range.length, platform::kAttachmentCharacter), std::move(attributes))};
}

void indentToNextTabStop(ParagraphStyle& style) {
    const auto stop =
        std::ranges::find_if(style.tabStops, [&](const auto& tab) { return tab.location > style.headIndent; });
    double target = 0;
    if (stop != style.tabStops.end() && stop->location != 0) {
        target = stop->location;
    } else if (style.headIndent + style.defaultTabInterval > 0) {
        target = style.headIndent + style.defaultTabInterval;
    } else {
        target = ParagraphStyle::defaultParagraphStyle()->tabStops.front().location;
    }
    const double distance = target - style.headIndent;
    style.headIndent += distance;
    style.firstLineHeadIndent += distance;
}

void setParagraphStyles(AttributedString& text, const std::vector<StyledRange>& styles) {
    std::vector<Range> ranges;
    ranges.reserve(styles.size());
    for (const StyledRange& styled : styles) ranges.push_back(styled.first);
    // Lines of one look follow each other: what was made last is likely to be what the next one needs.
    AttributeSet::Reference before, after;
    const ParagraphStyle* style = nullptr;
    text.transformAttributesInRanges(ranges, [&](const AttributeSet::Reference& set, std::size_t number) {
        const ParagraphStyleReference& wanted = styles[number].second;
        if (set == before && wanted.get() == style) return after;
        before = set;
        style = wanted.get();
        const auto* present = set->find<ParagraphStyleReference>(platform::kParagraphStyleAttributeName);
        const bool isThere = present && *present && (*present == wanted || **present == *wanted);
        after = isThere
                    ? set
                    : std::make_shared<const AttributeSet>(set->with(platform::kParagraphStyleAttributeName, wanted));
        return after;
    });
}

std::vector<AttachmentRun> attachmentsInRange(const AttributedString& text, Range range) {
    constexpr std::size_t kFew = 16;
    std::vector<AttachmentRun> attachments;
    text.enumerateAttribute(platform::kAttachmentAttributeName, range, [&](const AttributeValue* value, Range run) {
        const auto* attachment = value ? std::get_if<TextAttachmentReference>(value) : nullptr;
        if (!attachment || !*attachment) return;
        if (attachments.empty()) attachments.reserve(kFew);
        attachments.push_back({run, *attachment});
    });
    return attachments;
}

std::vector<AttachmentRun> attachmentsOf(const AttributedString& text) {
    return attachmentsInRange(text, {0, text.length()});
}

std::vector<ParagraphStyleRun> paragraphStyleRuns(const AttributedString& text, Range range) {
    std::vector<ParagraphStyleRun> runs;
    text.enumerateAttribute(platform::kParagraphStyleAttributeName, range, [&](const AttributeValue* value, Range run) {
        const auto* style = value ? std::get_if<ParagraphStyleReference>(value) : nullptr;
        runs.push_back({run, style ? *style : nullptr});
        return true;
    });
    return runs;
}

} // namespace quillet
