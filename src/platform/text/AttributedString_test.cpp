#include "platform/text/AttributedString.h"

#include <chrono>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "platform/text/TextAttachment.h"

namespace platform {
namespace {

using Reference = AttributeSet::Reference;

Reference kernSet(std::int64_t kern) {
    if (kern == 0) return AttributeSet::empty();
    return std::make_shared<const AttributeSet>(AttributeSet{{kKernAttributeName, kern}});
}

// The naive model: one attribute number a unit; 0 is none.
struct Unit {
    char16_t character;
    std::int64_t kern;
    friend bool operator==(const Unit&, const Unit&) = default;
};
using Model = std::vector<Unit>;

Model modelOf(const AttributedString& text) {
    Model model;
    for (std::size_t i = 0; i < text.length(); ++i) {
        const AttributeValue* kern = text.attributeAt(kKernAttributeName, i);
        model.push_back({text.string()[i], kern ? integerValue(*kern) : 0});
    }
    return model;
}

AttributedString textOf(const Model& model) {
    AttributedString text;
    for (const Unit& unit : model) text.append(std::u16string(1, unit.character), kernSet(unit.kern));
    return text;
}

void requireCanonical(const AttributedString& text) {
    std::size_t start = 0;
    const Reference* before = nullptr;
    for (const auto& run : text.runs()) {
        RC_ASSERT(run.end > start);
        const bool differs = !before || !(**before == *run.attributes);
        RC_ASSERT(differs);
        start = run.end;
        before = &run.attributes;
    }
    RC_ASSERT(start == text.length());
}

Model anyModel() {
    const auto units = *rc::gen::container<std::vector<std::pair<char, std::uint8_t>>>(
        rc::gen::pair(rc::gen::inRange('a', 'd'), rc::gen::inRange<std::uint8_t>(0, 3)));
    Model model;
    for (const auto& [character, kern] : units) model.push_back({static_cast<char16_t>(character), kern});
    return model;
}

Range anyRange(std::size_t length) {
    const auto start = *rc::gen::inRange<std::size_t>(0, length + 1);
    const auto end = *rc::gen::inRange<std::size_t>(start, length + 1);
    return {start, end - start};
}

Model::iterator at(Model& model, std::size_t position) {
    return model.begin() + static_cast<std::ptrdiff_t>(position);
}

TEST(AttributedString, IsEmptyWithoutStorage) {
    const AttributedString text;
    EXPECT_TRUE(text.empty());
    EXPECT_TRUE(text.runs().empty());
    EXPECT_EQ(text, AttributedString(u""));
}

TEST(AttributedString, MergesEqualNeighbours) {
    AttributedString text;
    text.append(u"ab", kernSet(1));
    text.append(u"cd", kernSet(1));
    text.append(u"ef", kernSet(2));
    ASSERT_EQ(text.runs().size(), 2u);
    text.setAttributes(kernSet(1), {4, 2});
    EXPECT_EQ(text, AttributedString(u"abcdef", kernSet(1)));
}

TEST(AttributedString, MergesEqualNeighboursOfRunsGivenAtOnce) {
    const AttributedString text(u"abcdef",
                                {{1, kernSet(1)}, {2, kernSet(1)}, {3, kernSet(0)}, {5, kernSet(2)}, {6, kernSet(2)}});
    ASSERT_EQ(text.runs().size(), 3U);
    EXPECT_EQ(modelOf(text), (Model{{u'a', 1}, {u'b', 1}, {u'c', 0}, {u'd', 2}, {u'e', 2}, {u'f', 2}}));
    EXPECT_EQ(AttributedString(u"ab", {{1, kernSet(1)}, {2, kernSet(2)}}).runs().size(), 2U);
    EXPECT_TRUE(AttributedString(u"", std::vector<AttributedString::Run>()).empty());
}

TEST(AttributedString, CopiesShareUntilOneChanges) {
    AttributedString text(u"abc", kernSet(1));
    const AttributedString copy = text;
    EXPECT_EQ(&copy.string(), &text.string());
    text.deleteCharacters({0, 1});
    EXPECT_EQ(copy.string(), u"abc");
    EXPECT_EQ(text.string(), u"bc");
}

TEST(AttributedString, AppendsItself) {
    AttributedString text(u"ab", kernSet(1));
    text.append(text);
    EXPECT_EQ(text, AttributedString(u"abab", kernSet(1)));
}

TEST(AttributedString, PlainReplacementTakesAttributesOfTheFirstReplacedCharacter) {
    AttributedString text(u"ab", kernSet(1));
    text.append(u"cd", kernSet(2));
    AttributedString replaced = text;
    replaced.replaceCharacters({1, 2}, u"XY");
    EXPECT_EQ(modelOf(replaced), (Model{{u'a', 1}, {u'X', 1}, {u'Y', 1}, {u'd', 2}}));
    AttributedString inserted = text;
    inserted.replaceCharacters({2, 0}, u"X");
    EXPECT_EQ(modelOf(inserted)[2], (Unit{u'X', 1}));
    inserted.replaceCharacters({0, 0}, u"Y");
    EXPECT_EQ(modelOf(inserted)[0], (Unit{u'Y', 1}));
}

TEST(AttributedString, AttachmentStandsOnOneCharacter) {
    const auto attachment = std::make_shared<TextAttachment>();
    const AttributedString text = AttributedString::withAttachment(attachment);
    EXPECT_EQ(text.string(), std::u16string(1, kAttachmentCharacter));
    EXPECT_EQ(*text.attributesAt(0).find<TextAttachmentReference>(kAttachmentAttributeName), attachment);
}

TEST(AttributedString, EnumeratesLongestRunsOfOneAttributeWithNoValueAsARun) {
    AttributedString text(u"ab", kernSet(1));
    text.append(u"cd", std::make_shared<const AttributeSet>(
                           AttributeSet{{kKernAttributeName, 1.0}, {kSuperscriptAttributeName, std::int64_t{1}}}));
    text.append(u"ef", kernSet(0));
    std::vector<std::pair<bool, Range>> seen;
    text.enumerateAttribute(kKernAttributeName, {1, 5}, [&](const AttributeValue* value, Range range) {
        seen.emplace_back(value != nullptr, range);
    });
    EXPECT_EQ(seen, (std::vector<std::pair<bool, Range>>{{true, {1, 3}}, {false, {4, 2}}}));
}

TEST(AttributedString, EnumerationStopsWhenTheBodySaysSo) {
    AttributedString text(u"a", kernSet(1));
    text.append(u"b", kernSet(2));
    int calls = 0;
    text.enumerateAttributes({0, 2}, [&](const AttributeSet&, Range) { return ++calls < 1; });
    EXPECT_EQ(calls, 1);
}

TEST(AttributedString, TwentyThousandRunsAreBuiltAndEditedInMilliseconds) {
    constexpr std::size_t kRuns = 20'000;
    const auto start = std::chrono::steady_clock::now();
    AttributedString text;
    std::vector<TextEdit> edits;
    for (std::size_t i = 0; i < kRuns; ++i) {
        edits.push_back({{text.length(), 1}, AttributedString(u"xy", kernSet(3))});
        text.append(u"word ", kernSet(static_cast<std::int64_t>(1 + i % 2)));
    }
    ASSERT_EQ(text.runs().size(), kRuns);
    text.applyEdits(edits);
    EXPECT_EQ(text.length(), kRuns * 6);
    EXPECT_EQ(text.runs().size(), kRuns * 2);
    text.addAttribute(kSuperscriptAttributeName, std::int64_t{1}, {0, text.length()});
    // Generous for a sanitizer on a busy machine; quadratic work would take minutes.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
}

RC_GTEST_PROP(AttributedStringProperties, RoundTripsItsUnits, ()) {
    const Model model = anyModel();
    const AttributedString text = textOf(model);
    requireCanonical(text);
    RC_ASSERT(modelOf(text) == model);
}

RC_GTEST_PROP(AttributedStringProperties, ReplacesAsAVectorDoes, ()) {
    Model model = anyModel();
    const Model replacement = anyModel();
    AttributedString text = textOf(model);
    const Range range = anyRange(model.size());
    text.replaceCharacters(range, textOf(replacement));
    model.erase(at(model, range.location), at(model, range.end()));
    model.insert(at(model, range.location), replacement.begin(), replacement.end());
    requireCanonical(text);
    RC_ASSERT(modelOf(text) == model);
    RC_ASSERT(text == textOf(model));
}

RC_GTEST_PROP(AttributedStringProperties, SetsAttributesOfExactlyTheRange, ()) {
    Model model = anyModel();
    AttributedString text = textOf(model);
    const Range range = anyRange(model.size());
    const auto kern = *rc::gen::inRange<std::int64_t>(0, 3);
    if (kern == 0) {
        text.removeAttribute(kKernAttributeName, range);
    } else {
        text.addAttribute(kKernAttributeName, kern, range);
    }
    for (std::size_t i = range.location; i < range.end(); ++i) model[i].kern = kern;
    requireCanonical(text);
    RC_ASSERT(modelOf(text) == model);
}

RC_GTEST_PROP(AttributedStringProperties, TransformsManyRangesAsOneAfterTheOther, ()) {
    AttributedString atOnce = textOf(anyModel()), oneByOne = atOnce;
    const AttributedString before = atOnce;
    std::vector<Range> ranges;
    for (std::size_t from = 0; from < before.length();) {
        const auto start = *rc::gen::inRange<std::size_t>(from, before.length() + 1);
        const auto end = *rc::gen::inRange<std::size_t>(start, std::min(start + 4, before.length()) + 1);
        ranges.push_back({start, end - start});
        from = std::max(end, start + 1);
    }
    const auto changed = [](const AttributeSet::Reference& set, std::size_t number) {
        return std::make_shared<const AttributeSet>(
            set->with(kKernAttributeName, static_cast<std::int64_t>(number % 3)));
    };
    atOnce.transformAttributesInRanges(ranges, changed);
    for (std::size_t i = 0; i < ranges.size(); ++i)
        oneByOne.transformAttributes(ranges[i],
                                     [&](const AttributeSet::Reference& set, Range) { return changed(set, i); });
    requireCanonical(atOnce);
    RC_ASSERT(atOnce == oneByOne);
}

RC_GTEST_PROP(AttributedStringProperties, EditsAtOnceEqualEditsFromTheBack, ()) {
    const AttributedString before = textOf(anyModel());
    std::vector<TextEdit> edits;
    for (std::size_t from = 0; from < before.length();) {
        const auto start = *rc::gen::inRange<std::size_t>(from, before.length() + 1);
        const auto end = *rc::gen::inRange<std::size_t>(start, std::min(start + 3, before.length()) + 1);
        edits.push_back({{start, end - start}, textOf(anyModel())});
        from = end + 1;
    }
    AttributedString atOnce = before;
    atOnce.applyEdits(edits);
    AttributedString oneByOne = before;
    for (auto edit = edits.rbegin(); edit != edits.rend(); ++edit)
        oneByOne.replaceCharacters(edit->range, edit->replacement);
    requireCanonical(atOnce);
    RC_ASSERT(atOnce == oneByOne);
}

RC_GTEST_PROP(AttributedStringProperties, SubstringHasTheUnitsOfItsRange, ()) {
    Model model = anyModel();
    const AttributedString text = textOf(model);
    const Range range = anyRange(model.size());
    const AttributedString part = text.substring(range);
    requireCanonical(part);
    RC_ASSERT(modelOf(part) == Model(at(model, range.location), at(model, range.end())));
    if (range.length == 0) return;
    Range effective;
    text.attributesAt(range.location, &effective);
    RC_ASSERT(effective.contains(range.location));
}

TEST(AttributedString, MapsSetsAndKeepsWhatRunsShare) {
    const Reference one = kernSet(1), two = kernSet(2);
    AttributedString text(u"ab", one);
    text.append(u"c", two);
    text.append(u"d", one);
    const AttributedString before = text;
    int asked = 0;
    text.mapAttributes([&](const Reference& set) {
        ++asked;
        return set;
    });
    EXPECT_GE(asked, 2);
    EXPECT_LE(asked, 3);
    EXPECT_EQ(&text.runs(), &before.runs()); // still shared
    text.mapAttributes([&](const Reference& set) { return set == one ? kernSet(3) : set; });
    ASSERT_EQ(text.runs().size(), 3U);
    EXPECT_EQ(*text.runs()[0].attributes, *kernSet(3));
    EXPECT_EQ(text.runs()[0].attributes, text.runs()[2].attributes);
    EXPECT_EQ(text.runs()[1].attributes, two);
    EXPECT_EQ(before.runs()[0].attributes, one);
    text.mapAttributes([&](const Reference&) { return kernSet(4); });
    EXPECT_EQ(text.runs().size(), 1U);
}

} // namespace
} // namespace platform
