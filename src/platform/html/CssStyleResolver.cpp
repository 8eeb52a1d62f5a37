// All declarations of an element are laid over each other from the weakest to the strongest; what wins is computed.
#include "platform/html/CssStyleResolver.h"

#include <utility>

#include "platform/html/HTMLPresentation.h"

namespace platform {

namespace {

bool isList(HTMLTag tag) {
    return tag == HTMLTag::ul || tag == HTMLTag::ol || tag == HTMLTag::menu || tag == HTMLTag::dir;
}

std::shared_ptr<const CssStyleSheet> sheetOf(const HTMLDocument& page) {
    std::vector<std::string> texts;
    for (HTMLDocument::NodeIndex at = page.root(); at != HTMLDocument::kNone && texts.size() < page.styleElementCount();
         at = page.following(at, page.root()))
        if (page.isElement(at) && page[at].tag == HTMLTag::style) texts.push_back(page.textContent(at));
    return cssStyleSheet(std::move(texts));
}

} // namespace

CssStyleResolver::CssStyleResolver(const HTMLDocument& page) : page_(page), sheet_(sheetOf(page)) {
    constexpr std::size_t kUsualStyles = 32;
    firstPlainChild_.reserve(kUsualStyles);
    plainChildren_.reserve(kUsualStyles);
    shared_.reserve(kUsualStyles);
}

std::size_t CssStyleResolver::KeyHash::operator()(const Key& key) const {
    std::size_t hash = std::hash<const void*>()(key.parent);
    for (const std::size_t part : {std::hash<const void*>()(key.hints), std::hash<const void*>()(key.inlineStyle),
                                   std::hash<const void*>()(key.rules), static_cast<std::size_t>(key.tag)})
        hash = hash * 1099511628211U ^ part;
    return hash;
}

const CssDeclarations* CssStyleResolver::parsed(std::string_view text) {
    const auto known = declarations_.find(text);
    return known != declarations_.end() ? &known->second
                                        : &declarations_.emplace(text, cssDeclarations(text)).first->second;
}

// Whether the element's style follows from its name and the parent style: it has no attributes, and no rule, not even
// its table's, asks where it stands.
bool CssStyleResolver::isPlain(HTMLDocument::NodeIndex element) const {
    const HTMLTag tag = page_[element].tag;
    return page_[element].count == 0 && tag != HTMLTag::unknown && tag != HTMLTag::td && tag != HTMLTag::th &&
           sheet_->matchesByNameAlone(tag);
}

const CssStyle* CssStyleResolver::style(HTMLDocument::NodeIndex element, const CssStyle* parent) {
    if (!parent || !isPlain(element)) return styleByAllOf(element, parent);
    const HTMLTag tag = page_[element].tag;
    for (std::uint32_t child = firstPlainChild_[parent->number]; child != kNoChild; child = plainChildren_[child].next)
        if (plainChildren_[child].tag == tag) return plainChildren_[child].style;
    const CssStyle* made = styleByAllOf(element, parent);
    plainChildren_.push_back({made, tag, firstPlainChild_[parent->number]});
    firstPlainChild_[parent->number] = static_cast<std::uint32_t>(plainChildren_.size() - 1);
    return made;
}

const CssStyle* CssStyleResolver::styleByAllOf(HTMLDocument::NodeIndex element, const CssStyle* parent) {
    hintText_.clear();
    appendPresentation(hintText_, page_, element);
    const CssDeclarations* hints = hintText_.empty() ? nullptr : parsed(hintText_);
    const auto styleText = page_.attribute(element, HTMLAttribute::style);
    const CssDeclarations* inlineStyle = styleText && !styleText->empty() ? parsed(*styleText) : nullptr;
    sheet_->match(page_, element, comparisons_, matched_);
    const HTMLTag tag = page_[element].tag;
    const bool isLink = tag == HTMLTag::a && page_.attribute(element, HTMLAttribute::href).has_value();
    const CssMatches* rules = matched_.empty() ? nullptr : &*matches_.insert(matched_).first;
    const Key key{parent, hints, inlineStyle, rules, static_cast<std::uint32_t>(tag) * 2 + (isLink ? 1 : 0)};
    const auto [entry, isNew] = shared_.try_emplace(key, nullptr);
    if (isNew) {
        CssStyle& made = styles_.emplace_back();
        compute(made, element, parent, hints, inlineStyle);
        made.number = static_cast<std::uint32_t>(firstPlainChild_.size());
        firstPlainChild_.push_back(kNoChild);
        entry->second = &made;
    }
    if (element == page_.root()) rootFontSize_ = entry->second->fontSize;
    return entry->second;
}

void CssStyleResolver::compute(CssStyle& style, HTMLDocument::NodeIndex element, const CssStyle* parent,
                               const CssDeclarations* hints, const CssDeclarations* inlineStyle) {
    static const CssStyle kInitial;
    const CssStyle& outer = parent ? *parent : kInitial;
    const HTMLTag tag = page_[element].tag;
    CssWinners winners{};
    const auto lay = [&winners](const CssDeclarations& declarations, bool important) {
        for (const CssDeclaration& declaration : declarations)
            if (declaration.important == important)
                winners[static_cast<std::size_t>(declaration.property)] = &declaration.value;
    };
    lay(builtInDeclarations(tag), false);
    if (tag == HTMLTag::a && page_.attribute(element, HTMLAttribute::href)) lay(builtInLinkDeclarations(), false);
    if (tag == HTMLTag::table && page_.quirksMode()) lay(builtInQuirksTableDeclarations(), false);
    if (hints) lay(*hints, false);
    for (const CssDeclarations* rule : matched_) lay(*rule, false);
    if (inlineStyle) lay(*inlineStyle, false);
    for (const CssDeclarations* rule : matched_) lay(*rule, true);
    if (inlineStyle) lay(*inlineStyle, true);

    inheritCssStyle(style, outer);
    if (isList(tag)) {
        if (style.listDepth < 255) ++style.listDepth;
        style.listStyle = style.listDepth == 1   ? CssListStyle::disc
                          : style.listDepth == 2 ? CssListStyle::circle
                                                 : CssListStyle::square;
    }
    computeCssStyle(style, outer, winners, rootFontSize_, page_.quirksMode());
}

} // namespace platform
