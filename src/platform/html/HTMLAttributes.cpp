#include "platform/html/HTMLAttributes.h"

#include <functional>
#include <utility>

namespace platform {

namespace {

constexpr double kLevelIndent = 36; // points a list's level
constexpr double kMarkerTab = 25;   // how far the marker's tab stop lies before the text's

// A list's level replaces the indents of its paragraphs.
void setListIndents(ParagraphStyle& paragraph, std::size_t level) {
    const double indent = kLevelIndent * static_cast<double>(level);
    paragraph.firstLineHeadIndent = 0;
    paragraph.headIndent = indent;
    paragraph.tabStops = {{TextAlignment::left, indent - kMarkerTab}, {TextAlignment::natural, indent}};
}

} // namespace

std::size_t HTMLAttributes::KeyHash::operator()(const Key& key) const {
    constexpr std::size_t kPrime = 1099511628211U;
    std::size_t hash = std::hash<const void*>()(key.characters);
    hash = hash * kPrime ^ std::hash<const void*>()(key.look);
    hash = hash * kPrime ^ (std::size_t{key.place.list} << 32 | key.place.cell);
    return hash * kPrime ^ key.directions;
}

const ParagraphStyleReference& HTMLAttributes::paragraph(const Look& look) {
    if (isOutside()) return styles_.paragraph(look);
    ParagraphStyleReference& made = paragraphs_[{.look = &look, .place = place()}];
    if (made) return made;
    auto style = std::make_shared<ParagraphStyle>(*styles_.paragraph(look));
    style->textLists = context_.lists;
    style->textBlocks = context_.blocks;
    if (!context_.lists.empty()) setListIndents(*style, context_.lists.size());
    return made = std::move(style);
}

const HTMLAttributes::Reference& HTMLAttributes::otherComplete(const AttributeSet* characters, const CssStyle& block,
                                                               HTMLTag blockTag,
                                                               const std::vector<std::int64_t>& directions) {
    Key key{.look = styles_.look(block, blockTag, !context_.lists.empty()), .place = place(), .characters = characters};
    if (isOutside() && directions.empty()) {
        const Reference& made = styles_.complete(characters, *key.look);
        last_ = {characters, &block, &made};
        return made;
    }
    if (!directions.empty())
        key.directions =
            directions_.try_emplace(directions, static_cast<std::uint32_t>(directions_.size() + 1)).first->second;
    Reference& made = complete_[key];
    if (!made) {
        AttributeSet set = characters->with(kParagraphStyleAttributeName, paragraph(*key.look));
        if (!directions.empty()) set = set.with(kWritingDirectionAttributeName, directions);
        made = std::make_shared<const AttributeSet>(std::move(set));
    }
    if (directions.empty()) last_ = {characters, &block, &made};
    return made;
}

void HTMLAttributes::enterList(std::shared_ptr<TextList> list) {
    context_.lists.push_back(std::move(list));
    lists_.push_back(++listCount_);
    last_ = {};
}

void HTMLAttributes::leaveList() {
    context_.lists.pop_back();
    lists_.pop_back();
    last_ = {};
}

void HTMLAttributes::enterCell(std::shared_ptr<TextBlock> cell) {
    context_.blocks.push_back(std::move(cell));
    cells_.push_back(++cellCount_);
    last_ = {};
}

void HTMLAttributes::leaveCell() {
    context_.blocks.pop_back();
    cells_.pop_back();
    last_ = {};
}

} // namespace platform
