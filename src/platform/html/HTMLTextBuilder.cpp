#include "platform/html/HTMLTextBuilder.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <unordered_map>

#include "platform/html/HTMLTextCollapsing.h"

namespace platform {

namespace {

constexpr char16_t kLineSeparator = 0x2028, kParagraphSeparator = 0x2029, kNextLine = 0x85;

bool endsLine(char16_t unit) {
    return unit == u'\n' || unit == u'\r' || unit == u'\t' || unit == u'\f' || unit == kLineSeparator ||
           unit == kParagraphSeparator || unit == kNextLine;
}

} // namespace

void HTMLTextBuilder::beginCollapsed(std::string_view utf8) {
    const bool dropsLeading = endsLine(lastUnit()) || (isSoft_ && lastUnit() == u' ');
    const std::size_t start = text_.size();
    text_.resize_and_overwrite(start + utf8.size() + kCollapsingRoom, [&](char16_t* units, std::size_t) {
        return start + writeCollapsed(utf8, dropsLeading, units + start);
    });
}

void HTMLTextBuilder::endCollapsed(const Attributes& attributes) {
    isSoft_ = text_.back() == u' ';
    extendRuns(attributes);
}

void HTMLTextBuilder::endCollapsed(const Attributes& attributes, std::u16string_view instead) {
    const bool endsSoft = text_.back() == u' ';
    text_.resize(attributedLength());
    if (instead.empty()) return;
    append(instead, attributes);
    isSoft_ = endsSoft;
}

void HTMLTextBuilder::extendRuns(const Attributes& attributes) {
    if (!runs_.empty() && runs_.back().attributes == attributes) {
        runs_.back().end = text_.size();
    } else {
        runs_.push_back({text_.size(), attributes});
    }
}

void HTMLTextBuilder::append(std::u16string_view text, const Attributes& attributes) {
    if (text.empty()) return;
    text_ += text;
    extendRuns(attributes);
}

void HTMLTextBuilder::removeLast() {
    text_.pop_back();
    const std::size_t before = runs_.size() > 1 ? runs_[runs_.size() - 2].end : 0;
    if (--runs_.back().end == before) runs_.pop_back();
}

void HTMLTextBuilder::appendPreserved(std::u16string_view text, const Attributes& attributes) {
    if (text.empty()) return;
    if (isSoft_ && !text_.empty() && (text.front() == u'\n' || text.front() == u'\r')) removeLast();
    append(text, attributes);
    isSoft_ = false;
}

void HTMLTextBuilder::appendObject(std::u16string_view text, const Attributes& attributes) {
    append(text, attributes);
    isSoft_ = false;
}

void HTMLTextBuilder::dropSoftEnd() {
    if (isSoft_ && !text_.empty() && (text_.back() == u' ' || text_.back() == kLineSeparator)) removeLast();
}

void HTMLTextBuilder::appendNewline(Newline when, bool replacesSoft, const Attributes& attributes) {
    if (when == Newline::ifMissing && endsInNewline()) return;
    if (replacesSoft) dropSoftEnd();
    append(u"\n", attributes);
    isSoft_ = true;
}

void HTMLTextBuilder::appendLineSeparator(const Attributes& attributes) {
    append(std::u16string_view(&kLineSeparator, 1), attributes);
    isSoft_ = true;
}

void HTMLTextBuilder::appendTab(const Attributes& attributes) {
    append(u"\t", attributes);
    isSoft_ = true;
}

void HTMLTextBuilder::appendAll(const HTMLTextBuilder& other) {
    std::size_t start = 0;
    for (const AttributedString::Run& run : other.runs_) {
        append(std::u16string_view(other.text_).substr(start, run.end - start), run.attributes);
        start = run.end;
    }
    isSoft_ = false;
}

void HTMLTextBuilder::addAttribute(std::size_t start, AttributeName name, AttributeValue value) {
    if (start >= text_.size()) return;
    auto first = std::ranges::upper_bound(runs_, start, {}, &AttributedString::Run::end);
    const std::size_t begin = first == runs_.begin() ? 0 : std::prev(first)->end;
    if (begin < start) first = std::next(runs_.insert(first, {start, first->attributes}));
    // Most stretches are one run; of more, runs of one set get one set again.
    const AttributeSet* from = nullptr;
    Attributes made;
    std::unordered_map<const AttributeSet*, Attributes> changed;
    for (; first != runs_.end(); ++first) {
        if (first->attributes.get() != from) {
            if (from) changed.try_emplace(from, made);
            from = first->attributes.get();
            const bool isLast = std::next(first) == runs_.end();
            const auto known = changed.find(from);
            made = known != changed.end() ? known->second
                                          : std::make_shared<const AttributeSet>(first->attributes->with(
                                                name, isLast ? std::move(value) : AttributeValue(value)));
        }
        first->attributes = made;
    }
}

} // namespace platform
