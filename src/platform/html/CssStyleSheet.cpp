#include "platform/html/CssStyleSheet.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace platform {

namespace {

constexpr std::string_view kBlanks = " \t\n\r\f";
constexpr double kScreenWidth = 800;
constexpr std::size_t kLongestKeptSheet = 64 * 1024; // bytes

std::string_view trimmed(std::string_view text) {
    const std::size_t start = text.find_first_not_of(kBlanks);
    if (start == std::string_view::npos) return {};
    return text.substr(start, text.find_last_not_of(kBlanks) - start + 1);
}

bool hasWord(std::string_view words, std::string_view word) {
    while (!words.empty()) {
        const std::size_t start = std::min(words.find_first_not_of(kBlanks), words.size());
        const std::size_t end = std::min(words.find_first_of(kBlanks, start), words.size());
        if (words.substr(start, end - start) == word) return true;
        words.remove_prefix(end);
    }
    return false;
}

// Behind the next of the characters outside strings, comments and brackets; the text's end when there is none.
std::size_t findOutside(std::string_view text, std::size_t at, std::string_view wanted) {
    for (int depth = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (c == '"' || c == '\'') {
            at = text.find(c, at + 1);
            if (at == std::string_view::npos) break;
        } else if (c == '/' && text.substr(at).starts_with("/*")) {
            at = text.find("*/", at + 2);
            if (at == std::string_view::npos) break;
            ++at;
        } else if (depth == 0 && wanted.find(c) != std::string_view::npos) {
            return at;
        } else if (c == '(' || c == '[' || c == '{') {
            ++depth;
        } else if ((c == ')' || c == ']' || c == '}') && depth > 0) {
            --depth;
        }
    }
    return text.size();
}

// "(min-width: 600px)" and its opposite; other conditions do not hold.
bool featureHolds(std::string_view feature) {
    const std::size_t colon = feature.find(':');
    if (colon == std::string_view::npos) return false;
    const std::string_view name = trimmed(feature.substr(0, colon)), value = trimmed(feature.substr(colon + 1));
    if (name == "prefers-color-scheme") return value == "light";
    double number = 0;
    const auto end = std::from_chars(value.data(), value.data() + value.size(), number).ptr;
    const std::string_view unit(end, static_cast<std::size_t>(value.data() + value.size() - end));
    constexpr double kEm = 16;
    if (unit == "em" || unit == "rem") number *= kEm;
    if (name == "min-width") return kScreenWidth >= number;
    if (name == "max-width") return kScreenWidth <= number;
    return false;
}

bool mediaHolds(std::string_view query) {
    const std::string lower = asciiLowerCase(query);
    std::string_view rest = lower;
    while (!rest.empty()) {
        const std::size_t comma = std::min(rest.find(','), rest.size());
        std::string_view one = trimmed(rest.substr(0, comma));
        rest.remove_prefix(std::min(comma + 1, rest.size()));
        bool holds = !one.empty();
        while (!one.empty() && holds) {
            if (one.front() == '(') {
                const std::size_t end = std::min(one.find(')'), one.size());
                holds = featureHolds(one.substr(1, end - 1));
                one = trimmed(one.substr(std::min(end + 1, one.size())));
                continue;
            }
            const std::size_t end = std::min(one.find_first_of(" \t\n\r\f("), one.size());
            const std::string_view word = one.substr(0, end);
            holds = word == "all" || word == "screen" || word == "only" || word == "and";
            one = trimmed(one.substr(end));
        }
        if (holds) return true;
    }
    return false;
}

} // namespace

void CssStyleSheet::append(std::string_view text) {
    // Media rules hold whole sheets: their blocks are read after the rest of what encloses them, innermost last.
    appendRules(text);
}

void CssStyleSheet::appendRules(std::string_view text) {
    std::vector<std::string_view> open{text};
    while (!open.empty()) {
        std::string_view& rest = open.back();
        rest = trimmed(rest);
        if (rest.empty()) {
            open.pop_back();
            continue;
        }
        if (rest.starts_with("<!--") || rest.starts_with("-->")) {
            rest.remove_prefix(rest.front() == '<' ? 4 : 3);
            continue;
        }
        if (rest.starts_with("/*")) {
            const std::size_t end = rest.find("*/", 2);
            rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 2);
            continue;
        }
        const bool isAt = rest.front() == '@';
        const std::size_t brace = findOutside(rest, 0, isAt ? "{;" : "{");
        const std::string_view prelude = rest.substr(0, brace);
        if (brace == rest.size() || rest[brace] == ';') {
            rest.remove_prefix(std::min(brace + 1, rest.size()));
            continue;
        }
        const std::size_t end = findOutside(rest, brace + 1, "}");
        const std::string_view block = rest.substr(brace + 1, end - brace - 1);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        if (!isAt) {
            appendRule(prelude, block);
        } else if (prelude.starts_with("@media") && mediaHolds(prelude.substr(6)) && open.size() < 8) {
            open.push_back(block);
        }
    }
}

void CssStyleSheet::appendRule(std::string_view prelude, std::string_view block) {
    CssDeclarations declarations = cssDeclarations(block);
    if (declarations.empty()) return;
    const auto rule = static_cast<std::uint32_t>(rules_.size());
    rules_.push_back(std::move(declarations));
    CssTokenizer tokenizer(prelude);
    std::vector<CssToken> tokens;
    for (CssToken token = tokenizer.next();; token = tokenizer.next()) {
        const bool isEnd = token.kind == CssTokenKind::end;
        if (!isEnd && !token.is(',')) {
            tokens.push_back(std::move(token));
            continue;
        }
        appendSelector(std::exchange(tokens, {}), rule);
        if (isEnd) return;
    }
}

// A selector with anything else in it is left out: it would need the page's state, or never matches in a page at rest.
void CssStyleSheet::appendSelector(std::vector<CssToken> tokens, std::uint32_t rule) {
    while (!tokens.empty() && tokens.back().kind == CssTokenKind::whitespace) tokens.pop_back();
    Selector selector;
    selector.rule = rule;
    std::vector<Compound> outermostFirst;
    Compound compound;
    bool isOpen = false; // the compound has something
    bool childNext = false;
    const auto close = [&] {
        if (isOpen) outermostFirst.push_back(std::exchange(compound, {}));
        isOpen = false;
    };
    const auto begin = [&] {
        if (!isOpen) compound.behindChild = std::exchange(childNext, false);
        isOpen = true;
    };
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        const CssToken& token = tokens[i];
        if (token.kind == CssTokenKind::whitespace) {
            close();
        } else if (token.is('>')) {
            close();
            if (outermostFirst.empty()) return;
            childNext = true;
        } else if (token.is('*')) {
            begin();
        } else if (token.kind == CssTokenKind::identifier) {
            begin();
            compound.name = token.text;
            compound.tag = htmlTagNamed(token.text);
            selector.specificity += 1;
        } else if (token.kind == CssTokenKind::hash) {
            begin();
            compound.identifier = token.text;
            selector.specificity += 1U << 20;
        } else if (token.is('.') && i + 1 < tokens.size() && tokens[i + 1].kind == CssTokenKind::identifier) {
            begin();
            compound.classes.emplace_back(tokens[++i].spelling());
            selector.specificity += 1U << 10;
        } else if (token.is(':') && i + 1 < tokens.size() &&
                   (tokens[i + 1].isName("link") || tokens[i + 1].isName("any-link") || tokens[i + 1].isName("root"))) {
            begin();
            (tokens[++i].isName("root") ? compound.isRoot : compound.isLink) = true;
            selector.specificity += 1U << 10;
        } else {
            return;
        }
    }
    close();
    if (outermostFirst.empty() || childNext || selectors_.size() >= kMaximumSelectors) return;
    selector.compounds.assign(std::move_iterator(outermostFirst.rbegin()), std::move_iterator(outermostFirst.rend()));
    const auto number = static_cast<std::uint32_t>(selectors_.size());
    const Compound& subject = selector.compounds.front();
    if (!subject.identifier.empty()) {
        byIdentifier_[subject.identifier].push_back(number);
    } else if (!subject.classes.empty()) {
        byClass_[subject.classes.front()].push_back(number);
    } else if (!subject.name.empty() && subject.tag == HTMLTag::unknown) {
        byOtherName_[subject.name].push_back(number);
    } else if (!subject.name.empty()) {
        byTag_[static_cast<std::size_t>(subject.tag)].push_back(number);
        if (selector.compounds.size() > 1) contextual_.set(static_cast<std::size_t>(subject.tag));
    } else {
        others_.push_back(number);
        if (selector.compounds.size() > 1) contextual_.set();
    }
    selectors_.push_back(std::move(selector));
}

bool CssStyleSheet::matches(const Compound& compound, const HTMLDocument& page, HTMLDocument::NodeIndex element) {
    if (!compound.name.empty() && page[element].tag != compound.tag) return false;
    if (!compound.name.empty() && compound.tag == HTMLTag::unknown && page.name(element) != compound.name) return false;
    if (compound.isRoot && element != page.root()) return false;
    if (compound.isLink && (page[element].tag != HTMLTag::a || !page.attribute(element, HTMLAttribute::href)))
        return false;
    if (!compound.identifier.empty() && page.attribute(element, HTMLAttribute::id) != compound.identifier) return false;
    if (compound.classes.empty()) return true;
    const auto classes = page.attribute(element, HTMLAttribute::class_);
    return classes && std::ranges::all_of(compound.classes, [&](const auto& name) { return hasWord(*classes, name); });
}

// Outwards from the element. When a parent does not match, the nearest descendant step before it looks further out, so
// that the cost is at most compounds times depth.
bool CssStyleSheet::matches(const Selector& selector, const HTMLDocument& page, HTMLDocument::NodeIndex element,
                            std::size_t& comparisons) {
    ++comparisons;
    if (!matches(selector.compounds.front(), page, element)) return false;
    std::size_t retry = 0;                                   // the compound that a failure goes back to; 0: none
    HTMLDocument::NodeIndex retryFrom = HTMLDocument::kNone; // where that compound matched last
    HTMLDocument::NodeIndex at = element;
    for (std::size_t i = 1; i < selector.compounds.size();) {
        const bool wantsParent = selector.compounds[i - 1].behindChild;
        if (++comparisons > kMaximumComparisons) return false;
        at = page[at].parent;
        if (!wantsParent)
            while (at != HTMLDocument::kNone && !matches(selector.compounds[i], page, at)) {
                ++comparisons;
                at = page[at].parent;
            }
        if (at != HTMLDocument::kNone && (!wantsParent || matches(selector.compounds[i], page, at))) {
            if (!wantsParent) {
                retry = i;
                retryFrom = at;
            }
            ++i;
            continue;
        }
        if (at == HTMLDocument::kNone || retry == 0) return false;
        i = retry;
        at = retryFrom;
    }
    return true;
}

void CssStyleSheet::match(const HTMLDocument& page, HTMLDocument::NodeIndex element, std::size_t& comparisons,
                          CssMatches& matched) const {
    matched.clear();
    if (selectors_.empty() || comparisons > kMaximumComparisons) return;
    Numbers found;
    const auto tryAll = [&](const Numbers& numbers) {
        for (const std::uint32_t number : numbers)
            if (matches(selectors_[number], page, element, comparisons)) found.push_back(number);
    };
    const auto tryNamed = [&](const auto& index, std::string_view name) {
        if (const auto entry = index.find(std::string(name)); entry != index.end()) tryAll(entry->second);
    };
    tryAll(others_);
    const HTMLTag tag = page[element].tag;
    if (tag != HTMLTag::unknown) tryAll(byTag_[static_cast<std::size_t>(tag)]);
    if (tag == HTMLTag::unknown && !byOtherName_.empty()) tryNamed(byOtherName_, page.name(element));
    if (!byIdentifier_.empty())
        if (const auto identifier = page.attribute(element, HTMLAttribute::id)) tryNamed(byIdentifier_, *identifier);
    if (!byClass_.empty())
        if (const auto classes = page.attribute(element, HTMLAttribute::class_))
            for (std::string_view rest = trimmed(*classes); !rest.empty();) {
                const std::size_t end = std::min(rest.find_first_of(kBlanks), rest.size());
                tryNamed(byClass_, rest.substr(0, end));
                rest = trimmed(rest.substr(end));
            }
    if (found.empty()) return;
    // Selectors are numbered in the order of their rules.
    std::ranges::sort(found, [this](std::uint32_t a, std::uint32_t b) {
        const Selector &x = selectors_[a], &y = selectors_[b];
        return x.specificity != y.specificity ? x.specificity < y.specificity : a < b;
    });
    found.erase(std::unique(found.begin(), found.end()), found.end());
    for (const std::uint32_t number : found) matched.push_back(&rules_[selectors_[number].rule]);
}

std::shared_ptr<const CssStyleSheet> cssStyleSheet(std::vector<std::string> texts) {
    static const auto& none = *new auto(std::make_shared<const CssStyleSheet>());
    if (texts.empty()) return none;
    struct Kept {
        std::vector<std::string> texts;
        std::shared_ptr<const CssStyleSheet> sheet;
    };
    static thread_local Kept kept;
    if (kept.sheet && kept.texts == texts) return kept.sheet;
    const auto made = std::make_shared<CssStyleSheet>();
    std::size_t size = 0;
    for (const std::string& text : texts) {
        made->append(text);
        size += text.size();
    }
    if (size <= kLongestKeptSheet) kept = {std::move(texts), made};
    return made;
}

} // namespace platform
