// The table of runs is canonical at all times: ends ascend strictly, the last end is the text's length, and no two
// neighbours have equal sets. Every change goes through pushRun, which keeps that, and replaceRuns, which swaps one
// stretch of the table for another.

#include "platform/text/AttributedString.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstdint>
#include <iterator>
#include <unordered_map>
#include <utility>

#include "platform/base/NumberTable.h"
#include "platform/text/TextAttachment.h"

namespace platform {

struct AttributedString::Storage {
    std::u16string text;
    std::vector<Run> runs;
};

namespace {

using Run = AttributedString::Run;

bool sameAttributes(const AttributeSet::Reference& a, const AttributeSet::Reference& b) {
    return a == b || *a == *b;
}

// Adds a run that ends at `end`, or lengthens the last one when the sets are equal. Does nothing for an empty run.
void pushRun(std::vector<Run>& runs, std::size_t end, const AttributeSet::Reference& attributes) {
    if (end == (runs.empty() ? 0 : runs.back().end)) return;
    if (!runs.empty() && sameAttributes(runs.back().attributes, attributes)) {
        runs.back().end = end;
    } else {
        runs.push_back({end, attributes});
    }
}

std::size_t runIndexAt(const std::vector<Run>& runs, std::size_t position) {
    const auto run = std::upper_bound(runs.begin(), runs.end(), position,
                                      [](std::size_t place, const Run& candidate) { return place < candidate.end; });
    return static_cast<std::size_t>(run - runs.begin());
}

std::size_t runStart(const std::vector<Run>& runs, std::size_t index) {
    return index == 0 ? 0 : runs[index - 1].end;
}

// The runs of `range` of a table, moved so that the range starts at `newStart`, pushed on another table. `index` is the
// run in which the range begins; returns the one in which it ends.
std::size_t pushRunsInRange(std::vector<Run>& target, std::size_t newStart, const std::vector<Run>& source, Range range,
                            std::size_t index) {
    if (range.length == 0) return index;
    const auto endInTarget = [&] { return newStart + (std::min(source[index].end, range.end()) - range.location); };
    pushRun(target, endInTarget(), source[index].attributes);
    while (source[index].end < range.end()) { // neighbours of one table differ
        ++index;
        target.push_back({endInTarget(), source[index].attributes});
    }
    return index;
}

bool equalReferences(const AttributeValue* a, const AttributeValue* b) {
    return a == b || (a && b && equalAttributeValues(*a, *b));
}

} // namespace

AttributedString::AttributedString(std::u16string text, AttributeSet::Reference attributes) {
    assert(attributes);
    if (text.empty()) return;
    storage_ = std::make_shared<Storage>();
    storage_->runs.push_back({text.size(), std::move(attributes)});
    storage_->text = std::move(text);
}

AttributedString::AttributedString(std::u16string text, std::vector<Run> runs) {
    assert(text.size() == (runs.empty() ? 0 : runs.back().end));
    if (text.empty()) return;
    auto kept = runs.begin();
    for (auto run = std::next(kept); run != runs.end(); ++run) {
        assert(run->end > std::prev(run)->end);
        if (sameAttributes(kept->attributes, run->attributes)) {
            kept->end = run->end;
        } else if (++kept != run) {
            *kept = std::move(*run);
        }
    }
    runs.erase(std::next(kept), runs.end());
    storage_ = std::make_shared<Storage>(std::move(text), std::move(runs));
}

AttributedString AttributedString::withAttachment(TextAttachmentReference attachment) {
    return AttributedString(
        std::u16string(1, kAttachmentCharacter),
        std::make_shared<const AttributeSet>(AttributeSet{{kAttachmentAttributeName, std::move(attachment)}}));
}

const std::u16string& AttributedString::string() const {
    static const auto& none = *new std::u16string;
    return storage_ ? storage_->text : none;
}

const std::vector<AttributedString::Run>& AttributedString::runs() const {
    static const auto& none = *new std::vector<Run>;
    return storage_ ? storage_->runs : none;
}

AttributedString::Storage& AttributedString::mutableStorage() {
    if (!storage_) {
        storage_ = std::make_shared<Storage>();
    } else if (storage_.use_count() > 1) {
        storage_ = std::make_shared<Storage>(*storage_);
    }
    return *storage_;
}

const AttributeSet& AttributedString::attributesAt(std::size_t position, Range* effectiveRange) const {
    assert(position < length());
    const std::size_t index = runIndexAt(runs(), position);
    if (effectiveRange) {
        const std::size_t start = runStart(runs(), index);
        *effectiveRange = {start, runs()[index].end - start};
    }
    return *runs()[index].attributes;
}

const AttributeValue* AttributedString::attributeAt(AttributeName name, std::size_t position) const {
    return attributesAt(position).find(name);
}

void AttributedString::walkAttribute(AttributeName name, Range range,
                                     const std::function<bool(const AttributeValue*, Range)>& body) const {
    assert(range.end() <= length());
    if (range.length == 0) return;
    const std::shared_ptr<Storage> keptAlive = storage_;
    const std::vector<Run>& table = keptAlive->runs;
    std::size_t index = runIndexAt(table, range.location);
    std::size_t start = range.location;
    while (start < range.end()) {
        const AttributeValue* value = table[index].attributes->find(name);
        std::size_t end = table[index++].end;
        while (end < range.end() && equalReferences(value, table[index].attributes->find(name)))
            end = table[index++].end;
        end = std::min(end, range.end());
        if (!body(value, {start, end - start})) return;
        start = end;
    }
}

void AttributedString::walkAttributes(Range range, const std::function<bool(const AttributeSet&, Range)>& body) const {
    assert(range.end() <= length());
    if (range.length == 0) return;
    const std::shared_ptr<Storage> keptAlive = storage_;
    const std::vector<Run>& table = keptAlive->runs;
    std::size_t start = range.location;
    for (std::size_t index = runIndexAt(table, start); start < range.end(); ++index) {
        const std::size_t end = std::min(table[index].end, range.end());
        if (!body(*table[index].attributes, {start, end - start})) return;
        start = end;
    }
}

AttributedString AttributedString::substring(Range range) const {
    assert(range.end() <= length());
    if (range.length == 0) return {};
    if (range.length == length()) return *this;
    AttributedString part;
    part.storage_ = std::make_shared<Storage>();
    part.storage_->text = storage_->text.substr(range.location, range.length);
    pushRunsInRange(part.storage_->runs, 0, storage_->runs, range, runIndexAt(storage_->runs, range.location));
    return part;
}

// Puts `middle`, whose ends count from the start of the range, in place of the runs of a range of the old text, which
// becomes `newLength` long. The text itself is changed by the caller.
void AttributedString::replaceRuns(Range range, std::size_t newLength, std::vector<Run> middle) {
    std::vector<Run>& table = storage_->runs;
    const std::size_t first = runIndexAt(table, range.location);
    std::size_t last = first; // the first run that is wholly behind the range
    while (last < table.size() && table[last].end <= range.end()) ++last;

    // One run more on each side takes part, so that equal neighbours meet in pushRun.
    const std::size_t from = first == 0 ? 0 : first - 1;
    const std::size_t to = std::min(table.size(), last + 1);
    std::vector<Run> changed;
    changed.reserve(middle.size() + 4);
    if (from < first) changed.push_back(table[from]);
    if (first < table.size()) pushRun(changed, range.location, table[first].attributes);
    for (const Run& run : middle) pushRun(changed, range.location + run.end, run.attributes);
    const auto moved = [&](std::size_t end) { return end - range.length + newLength; };
    for (std::size_t i = last; i < to; ++i) pushRun(changed, moved(table[i].end), table[i].attributes);

    if (newLength != range.length)
        for (std::size_t i = to; i < table.size(); ++i) table[i].end = moved(table[i].end);
    const auto begin = table.begin() + static_cast<std::ptrdiff_t>(from);
    const std::size_t overlap = std::min(to - from, changed.size());
    const auto middleEnd = std::move(changed.begin(), changed.begin() + static_cast<std::ptrdiff_t>(overlap), begin);
    if (changed.size() > overlap) {
        table.insert(middleEnd, changed.begin() + static_cast<std::ptrdiff_t>(overlap), changed.end());
    } else {
        table.erase(middleEnd, table.begin() + static_cast<std::ptrdiff_t>(to));
    }
}

void AttributedString::replaceCharacters(Range range, const AttributedString& replacement) {
    assert(range.end() <= length());
    if (range.location == length()) return append(replacement);
    const AttributedString held = replacement; // it may be this very text
    mutableStorage().text.replace(range.location, range.length, held.string());
    replaceRuns(range, held.length(), held.runs());
}

void AttributedString::replaceCharacters(Range range, std::u16string_view replacement) {
    assert(range.end() <= length());
    AttributeSet::Reference attributes = AttributeSet::empty();
    if (!empty()) {
        const bool takesFromBefore = range.length == 0 && range.location > 0;
        attributes = runs()[runIndexAt(runs(), range.location - (takesFromBefore ? 1 : 0))].attributes;
    }
    replaceCharacters(range, AttributedString(std::u16string(replacement), attributes));
}

void AttributedString::append(const AttributedString& other) {
    if (other.empty()) return;
    if (empty()) {
        *this = other;
        return;
    }
    const AttributedString held = other; // it may be this very text
    Storage& storage = mutableStorage();
    const std::size_t start = storage.text.size();
    storage.text += held.string();
    for (const Run& run : held.runs()) pushRun(storage.runs, start + run.end, run.attributes);
}

void AttributedString::append(std::u16string_view text, const AttributeSet::Reference& attributes) {
    assert(attributes);
    if (text.empty()) return;
    Storage& storage = mutableStorage();
    storage.text += text;
    pushRun(storage.runs, storage.text.size(), attributes);
}

void AttributedString::transformAttributes(
    Range range, const std::function<AttributeSet::Reference(const AttributeSet::Reference&, Range)>& body) {
    assert(range.end() <= length());
    if (range.length == 0) return;
    std::vector<Run> middle;
    std::size_t start = range.location;
    for (std::size_t index = runIndexAt(runs(), start); start < range.end(); ++index) {
        const std::size_t end = std::min(runs()[index].end, range.end());
        pushRun(middle, end - range.location, body(runs()[index].attributes, {start, end - start}));
        start = end;
    }
    mutableStorage();
    replaceRuns(range, range.length, std::move(middle));
}

void AttributedString::transformAttributesInRanges(
    const std::vector<Range>& ranges,
    const std::function<AttributeSet::Reference(const AttributeSet::Reference&, std::size_t number)>& body) {
    if (ranges.empty()) return;
    assert(ranges.back().end() <= length());
    Storage& storage = mutableStorage();
    std::vector<Run> changed;
    changed.reserve(storage.runs.size() + ranges.size());
    std::size_t start = 0, number = 0;
    bool wasInside = false;
    for (Run& run : storage.runs) {
        const std::size_t runBegin = start;
        while (start < run.end) {
            while (number < ranges.size() && ranges[number].end() <= start) ++number;
            // Up to where the range begins the run stays; inside the range it is the body's.
            const std::size_t begin = number < ranges.size() ? std::min(ranges[number].location, run.end) : run.end;
            const bool isInside = begin <= start;
            const std::size_t end = isInside ? std::min(ranges[number].end(), run.end) : begin;
            if (isInside || wasInside || start != runBegin)
                pushRun(changed, end, isInside ? body(run.attributes, number) : run.attributes);
            else if (end == run.end)
                changed.push_back(std::move(run)); // whole, behind another run as it was
            else
                changed.push_back({end, run.attributes});
            wasInside = isInside;
            start = end;
        }
    }
    storage.runs = std::move(changed);
}

void AttributedString::mapAttributes(
    const std::function<AttributeSet::Reference(const AttributeSet::Reference&)>& body) {
    std::array<const AttributeSet*, 64> asked{}; // lately: a few sets serve many runs
    std::unordered_map<const AttributeSet*, AttributeSet::Reference> changed;
    for (const Run& run : runs()) {
        const AttributeSet* const set = run.attributes.get();
        const AttributeSet*& recent = asked[spreadHash(reinterpret_cast<std::uintptr_t>(set)) % asked.size()];
        if (std::exchange(recent, set) == set) continue;
        AttributeSet::Reference made = body(run.attributes);
        if (made != run.attributes) changed.try_emplace(set, std::move(made));
    }
    if (changed.empty()) return;
    std::vector<Run> table;
    table.reserve(runs().size());
    bool wasChanged = false;
    for (const Run& run : runs()) {
        const auto found = changed.find(run.attributes.get());
        const bool isChanged = found != changed.end();
        if (isChanged || wasChanged)
            pushRun(table, run.end, isChanged ? found->second : run.attributes);
        else
            table.push_back(run);
        wasChanged = isChanged;
    }
    setRuns(std::move(table));
}

// Puts a whole new table of runs on the text.
void AttributedString::setRuns(std::vector<Run> runs) {
    if (storage_.use_count() > 1)
        storage_ = std::make_shared<Storage>(storage_->text, std::move(runs));
    else
        storage_->runs = std::move(runs);
}

void AttributedString::setAttributes(AttributeSet::Reference attributes, Range range) {
    transformAttributes(range, [&](const AttributeSet::Reference&, Range) { return attributes; });
}

void AttributedString::addAttribute(AttributeName name, const AttributeValue& value, Range range) {
    transformAttributes(range, [&](const AttributeSet::Reference& set, Range) {
        const AttributeValue* present = set->find(name);
        if (present && equalAttributeValues(*present, value)) return set;
        return std::make_shared<const AttributeSet>(set->with(name, value));
    });
}

void AttributedString::addAttributes(const AttributeSet& attributes, Range range) {
    transformAttributes(range, [&](const AttributeSet::Reference& set, Range) {
        return std::make_shared<const AttributeSet>(set->merging(attributes));
    });
}

void AttributedString::removeAttribute(AttributeName name, Range range) {
    transformAttributes(range, [&](const AttributeSet::Reference& set, Range) {
        return set->find(name) ? std::make_shared<const AttributeSet>(set->without(name)) : set;
    });
}

void AttributedString::applyEdits(const std::vector<TextEdit>& edits) {
    if (edits.empty()) return;
    std::size_t newLength = length(), mostRuns = runs().size();
    for (const TextEdit& edit : edits) {
        newLength = newLength - edit.range.length + edit.replacement.length();
        mostRuns += edit.replacement.runs().size() + 1; // an edit inside a run parts it
    }
    auto result = std::make_shared<Storage>();
    result->text.reserve(newLength);
    result->runs.reserve(mostRuns);
    std::size_t copied = 0, index = 0;
    const auto copyUpTo = [&](std::size_t end) {
        assert(copied <= end && end <= length());
        const Range kept{copied, end - copied};
        const std::size_t newStart = result->text.size();
        result->text.append(string(), kept.location, kept.length);
        while (index < runs().size() && runs()[index].end <= copied) ++index;
        index = pushRunsInRange(result->runs, newStart, runs(), kept, index);
    };
    for (const TextEdit& edit : edits) {
        copyUpTo(edit.range.location);
        const std::size_t newStart = result->text.size();
        result->text += edit.replacement.string();
        for (const Run& run : edit.replacement.runs()) pushRun(result->runs, newStart + run.end, run.attributes);
        copied = edit.range.end();
    }
    copyUpTo(length());
    storage_ = std::move(result);
}

bool operator==(const AttributedString& a, const AttributedString& b) {
    if (a.storage_ == b.storage_) return true;
    return a.string() == b.string() &&
           std::equal(
               a.runs().begin(), a.runs().end(), b.runs().begin(), b.runs().end(),
               [](const Run& x, const Run& y) { return x.end == y.end && sameAttributes(x.attributes, y.attributes); });
}

} // namespace platform
