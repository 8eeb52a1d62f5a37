// Tokens, colors, declarations, sheets and computed values, each by a table of texts.
#include <chrono>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "platform/html/CssColor.h"
#include "platform/html/CssDeclarations.h"
#include "platform/html/CssStyleResolver.h"
#include "platform/html/CssStyleSheet.h"
#include "platform/html/HTMLStyleAttributes.h"

namespace platform {
namespace {

std::vector<CssToken> tokensOf(CssTokenizer& tokenizer) {
    std::vector<CssToken> tokens;
    for (CssToken token = tokenizer.next(); token.kind != CssTokenKind::end; token = tokenizer.next())
        tokens.push_back(token);
    return tokens;
}

std::string hex(const CssRGBA& color) {
    const auto byte = [](double part) { return static_cast<int>(part * 255 + 0.5); };
    return fmt::format("{:02x}{:02x}{:02x}/{:.2f}", byte(color.red), byte(color.green), byte(color.blue), color.alpha);
}

std::string colorText(std::string_view text) {
    CssTokenizer tokenizer(text);
    const auto tokens = tokensOf(tokenizer);
    std::size_t at = 0;
    const auto color = cssColor(tokens, at);
    return color && at == tokens.size() ? hex(*color) : "none";
}

// Their texts are pieces of the text, or, when they are spelled in another way, kept by the tokenizer.
TEST(CssTokens, SayNamesInLowerCaseAndStringsWithoutEscapes) {
    CssTokenizer tokenizer("Font-Family: 'A\\'b' \"c'd\" \\41 B(#\\46 f 12PX 'open");
    std::vector<std::string> texts;
    for (const CssToken& token : tokensOf(tokenizer))
        if (token.kind != CssTokenKind::whitespace) texts.push_back(fmt::format("{}/{}", token.text, token.spelling()));
    EXPECT_EQ(texts, (std::vector<std::string>{"font-family/Font-Family", ":/:", "A'b/A'b", "c'd/c'd", "ab/AB", "Ff/Ff",
                                               "px/px", "open/open"}));
    CssTokenizer broken("'a\nb'");
    EXPECT_EQ(tokensOf(broken).front().kind, CssTokenKind::badString);
}

TEST(CssColors, ReadEveryForm) {
    const std::pair<std::string_view, std::string_view> cases[] = {
        {"red", "ff0000/1.00"},
        {"ReD", "ff0000/1.00"},
        {"rebeccapurple", "663399/1.00"},
        {"transparent", "000000/0.00"},
        {"#f00", "ff0000/1.00"},
        {"#f008", "ff0000/0.53"},
        {"#FfFaA5", "fffaa5/1.00"},
        {"#11223344", "112233/0.27"},
        {"#12345", "none"},
        {"#ggg", "none"},
        {"rgb(255, 0, 128)", "ff0080/1.00"},
        {"rgb(255 0 128)", "ff0080/1.00"},
        {"rgb(100%, 0%, 50%)", "ff0080/1.00"},
        {"rgb(300, -5, 0)", "ff0000/1.00"},
        {"rgba(0, 0, 0, 0.15)", "000000/0.15"},
        {"rgb(0 0 0 / 50%)", "000000/0.50"},
        {"rgb(1.6, 2.4, 0)", "020200/1.00"},
        {"rgb(1, 2)", "none"},
        {"rgb(1, 2, red)", "none"},
        {"hsl(120, 100%, 50%)", "00ff00/1.00"},
        {"hsl(120deg 100% 25%)", "008000/1.00"},
        {"hsl(0.5turn 100% 50%)", "00ffff/1.00"},
        {"hsl(-120, 100%, 50%)", "0000ff/1.00"},
        {"hsla(0, 0%, 50%, .5)", "808080/0.50"},
        {"hwb(0 0% 0%)", "ff0000/1.00"},
        {"hwb(120 20% 20%)", "33cc33/1.00"},
        {"hwb(0 100% 100%)", "808080/1.00"},
        {"lab(100% 0 0)", "ffffff/1.00"},
        {"lab(54.29 80.80 69.89)", "ff0000/1.00"},
        {"lch(54.29 106.84 40.86)", "ff0000/1.00"},
        {"oklab(0.62796 0.22486 0.12585)", "ff0000/1.00"},
        {"oklch(62.796% 0.25768 29.234)", "ff0000/1.00"},
        {"oklch(0.5 0 none)", "636363/1.00"},
        {"color(srgb 1 0.5 0)", "ff8000/1.00"},
        {"color(srgb 100% 50% 0% / 0.5)", "ff8000/0.50"},
        {"color(srgb-linear 1 0.2158605 0)", "ff8000/1.00"},
        {"color(display-p3 1 1 1)", "ffffff/1.00"},
        {"color(xyz 0.9505 1 1.089)", "ffffff/1.00"},
        {"color(nonsense 1 1 1)", "none"},
        {"bluish", "none"},
        {"url(x)", "none"},
        {"12", "none"},
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(colorText(text), expected) << text;
}

TEST(CssColors, ReadColorAttributesAsOldBrowsersDid) {
    const std::pair<std::string_view, std::string_view> cases[] = {
        {"#eeeeee", "eeeeee/1.00"}, {"eeeeee", "eeeeee/1.00"},      {" Red ", "ff0000/1.00"}, {"#fff", "ffffff/1.00"},
        {"fff", "0f0f0f/1.00"},     {"chucknorris", "c00000/1.00"}, {"#12", "010200/1.00"},
    };
    for (const auto& [text, expected] : cases) {
        const auto color = legacyColor(text);
        EXPECT_EQ(color ? hex(*color) : "none", expected) << text;
    }
    EXPECT_FALSE(legacyColor(""));
    EXPECT_FALSE(legacyColor("transparent"));
}

// A page of one div with that style attribute; parts of its computed style.
struct Computed {
    HTMLDocument page;
    CssStyle style;
};

Computed computed(std::string_view attribute, std::string_view outer = "", std::string_view sheet = "") {
    auto page = HTMLDocument::parse(fmt::format("<!DOCTYPE html><style>{}</style><body><section style=\"{}\">"
                                                "<div id=i class='c d' style=\"{}\">",
                                                sheet, outer, attribute));
    EXPECT_TRUE(page.has_value());
    CssStyleResolver resolver(*page);
    const CssStyle* style = nullptr;
    HTMLDocument::NodeIndex at = page->root();
    for (;;) {
        style = resolver.style(at, style);
        if ((*page)[at].tag == HTMLTag::div) break;
        at = at == page->root() ? page->body() : (*page)[at].first;
    }
    return {std::move(*page), *style};
}

TEST(CssDeclarations, AreDroppedWholeWhenTheyAreNotValid) {
    const std::pair<std::string_view, std::string_view> cases[] = {
        {"color: red", "ff0000"},
        {"color: red; color: bluish", "ff0000"},
        {"color: red; color: blue red", "ff0000"},
        {"color: red; color:", "ff0000"},
        {"color: red;;; color : green ; x", "008000"},
        {"COLOR: RED", "ff0000"},
        {"color: red !important; color: green", "ff0000"},
        {"color: red ! IMPORTANT; color: green", "ff0000"},
        {"color: green !imp; ", "000000"},
        {"color: 'red'", "000000"},
        {"/* color: red; */ color: green", "008000"},
        {"color/**/:/**/green", "008000"},
        {"x: {color: red; } ; color: green", "008000"},
        {"background: url(a;b); color: green", "008000"},
        {"font-family: 'a;b\"c'; color: green", "008000"},
        {"-evernote-highlight:true; --en-codeblock:true; color: green", "008000"},
        {"c\\6f lor: green", "008000"},
        {"color: r\\65 d", "ff0000"},
        {"color: inherit", "000000"},
        {"color: currentcolor", "000000"},
        {"color: red}", "000000"},
    };
    for (const auto& [text, expected] : cases) {
        std::string attribute;
        for (const char c : text) c == '"' ? attribute += "&quot;" : attribute += c;
        EXPECT_EQ(hex(computed(attribute).style.color).substr(0, 6), expected) << text;
    }
}

TEST(CssDeclarations, SetTheLonghandsOfShorthands) {
    const auto edges = [](const std::array<CssLength, 4>& lengths) {
        std::string text;
        for (const CssLength& length : lengths)
            text +=
                fmt::format("{}{}{} ", length.isAutomatic ? "auto" : "", length.value, length.isPercentage ? "%" : "");
        return text;
    };
    EXPECT_EQ(edges(computed("margin: 1px").style.margin), "1 1 1 1 ");
    EXPECT_EQ(edges(computed("margin: 1px 2px").style.margin), "1 2 1 2 ");
    EXPECT_EQ(edges(computed("margin: 1px 2px 3px").style.margin), "1 2 3 2 ");
    EXPECT_EQ(edges(computed("margin: 1px 2px 3px 4px").style.margin), "1 2 3 4 ");
    EXPECT_EQ(edges(computed("margin: 0 auto").style.margin), "0 auto0 0 auto0 ");
    EXPECT_EQ(edges(computed("margin: 5% -1px").style.margin), "5% -1 5% -1 ");
    EXPECT_EQ(edges(computed("margin: 1px 2px 3px 4px 5px").style.margin), "0 0 0 0 ");
    EXPECT_EQ(edges(computed("margin: 3").style.margin), "0 0 0 0 ");
    EXPECT_EQ(edges(computed("padding: 1em 2pt").style.padding), "12 2.6666666666666665 12 2.6666666666666665 ");
    EXPECT_EQ(edges(computed("padding: -1px").style.padding), "0 0 0 0 ");
    EXPECT_EQ(edges(computed("margin: 9px; margin-left: 1px").style.margin), "9 9 9 1 ");
    EXPECT_EQ(computed("border: 2px solid red").style.borderWidth[0], 2);
    EXPECT_EQ(computed("border: solid").style.borderWidth[2], 3);
    EXPECT_EQ(computed("border: 2px").style.borderWidth[0], 0);
    EXPECT_EQ(hex(computed("border: red 2px solid").style.borderColor[3]), "ff0000/1.00");
    EXPECT_EQ(hex(computed("color: blue; border: 2px solid").style.borderColor[3]), "0000ff/1.00");
    EXPECT_EQ(computed("border: 1px solid; border-left: 4px dashed").style.borderWidth[3], 4);
    EXPECT_EQ(computed("border: 1px solid; border-width: 5px 6px").style.borderWidth[1], 6);
    EXPECT_EQ(computed("border: 1px solid; border-style: none solid").style.borderWidth[0], 0);
    EXPECT_EQ(hex(computed("border: 1px solid; border-color: red blue").style.borderColor[1]), "0000ff/1.00");
    EXPECT_EQ(hex(computed("background: #abc url(x.png) no-repeat 0 0 / cover").style.background), "aabbcc/1.00");
    EXPECT_EQ(hex(computed("background: linear-gradient(red, blue)").style.background), "000000/0.00");
    EXPECT_EQ(hex(computed("background: red; background: none").style.background), "000000/0.00");
    EXPECT_EQ(computed("text-decoration: underline line-through").style.decoration, kCssUnderline | kCssLineThrough);
    EXPECT_EQ(computed("text-decoration: underline dotted red 2px").style.decoration, kCssUnderline);
    EXPECT_EQ(computed("text-decoration: underline; text-decoration: bogus").style.decoration, kCssUnderline);
    EXPECT_EQ(computed("text-decoration: underline; text-decoration: none").style.decoration, 0);
    EXPECT_EQ(computed("list-style: square inside url(x)").style.listStyle, CssListStyle::square);
    EXPECT_EQ(computed("list-style: none").style.listStyle, CssListStyle::none);
}

TEST(CssFonts, AreComputed) {
    const struct {
        std::string_view style, outer, font;
    } cases[] = {
        {"", "", "Times-Roman 12"},
        {"font: italic bold 14px/20px Georgia, serif", "", "Georgia-BoldItalic 14"},
        {"font: 10px/1.5 'Courier New'", "font-weight: bold", "CourierNewPSMT 10"},
        {"font: 10px", "", "Times-Roman 12"},
        {"font: bold Georgia", "", "Times-Roman 12"},
        {"font: small-caps 600 1.5em monospace", "", "Courier-Bold 19.5"},
        {"font-family: NoSuchFont, Verdana", "", "Verdana 12"},
        {"font-family: HelveticaNeue; font-weight: bold", "", "HelveticaNeue-Bold 12"},
        {"font-family: helvetica neue; font-style: oblique", "", "HelveticaNeue-Italic 12"},
        {"font-family: sans-serif", "", "Helvetica 12"},
        {"font-family: Monaco, monospace", "", "Monaco 12"},
        {"font-family: monospace", "", "Courier 13"},
        {"font-family: monospace", "font-size: 12px", "Courier 13"},
        {"font-family: monospace", "font-size: 24px", "Courier 26"},
        {"font-family: monospace", "font-size: 9pt", "Courier 13"},
        {"font-family: monospace; font-size: 12px", "", "Courier 12"},
        {"font-family: monospace; font-size: 12px", "font-size: 20px", "Courier 12"},
        {"font-family: monospace; font-size: 0.5em", "font-size: 24px", "Courier 13"},
        {"font-family: monospace", "font-family: monospace; font-size: 12px", "Courier 12"},
        {"font-family: serif", "font-family: monospace; font-size: 12px", "Times-Roman 12"},
        {"font-family: serif", "font-family: monospace; font-size: 2em", "Times-Roman 24"},
        {"font-family: Monaco, monospace", "font-size: 14px", "Monaco 14"},
        {"font-size: 2em", "font-family: monospace", "Courier 26"},
        {"font-family: serif; font-size: 2em", "font-family: monospace", "Times-Roman 24"},
        {"font-family: cursive", "", "Apple-Chancery 12"},
        {"font-family: fantasy", "", "Papyrus 12"},
        {"font-family: system-ui", "", ".SFNS-Regular 12"},
        {"font-family: -apple-system", "", ".SFNS-Regular 12"},
        {"font-family: HelveticaNeue-Bold", "", "HelveticaNeue-Bold 12"},
        {"font-family: Menlo; font-weight: bold; font-style: italic", "", "Menlo-BoldItalic 12"},
        {"font-family: Arial; font-style: italic", "", "Arial-ItalicMT 12"},
        {"font-family: 'Times New Roman'; font-weight: 900", "", "TimesNewRomanPS-BoldMT 12"},
        {"font-weight: 550", "", "Times-Roman 12"},
        {"font-weight: 100", "", "Times-Roman 12"},
        {"font-variant: small-caps", "", "Times-Roman 12"},
        {"font-size: 1e300px", "", "Times-Roman 1000000"},
        {"font-size: 1000000%", "font-size: 1000000px", "Times-Roman 1000000"},
        {"font-family: monospace", "font-size: 200%", "Courier 26"},
        {"font-family: monospace; font-size: small", "", "Courier 12"},
        {"font-family: serif", "font-family: monospace", "Times-Roman 12"},
        {"font-weight: 600", "", "Times-Bold 12"},
        {"font-weight: 500", "", "Times-Roman 12"},
        {"font-weight: bolder", "", "Times-Bold 12"},
        {"font-weight: lighter", "font-weight: bold", "Times-Roman 12"},
        {"font-weight: 0", "", "Times-Roman 12"},
        {"font-size: xx-small", "", "Times-Roman 9"},
        {"font-size: small", "", "Times-Roman 10"},
        {"font-size: large", "", "Times-Roman 14"},
        {"font-size: x-large", "", "Times-Roman 18"},
        {"font-size: xx-large", "", "Times-Roman 24"},
        {"font-size: xxx-large", "", "Times-Roman 36"},
        {"font-size: smaller", "", "Times-Roman 10"},
        {"font-size: larger", "font-size: 15pt", "Times-Roman 24"},
        {"font-size: smaller", "font-size: 10px", "Times-Roman 9"},
        {"font-size: 5pt", "", "Times-Roman 6.666666666666666"},
        {"font-size: 15pt", "", "Times-Roman 20"},
        {"font-size: 1in", "", "Times-Roman 96"},
        {"font-size: 1pc", "", "Times-Roman 16"},
        {"font-size: 2em", "font-size: 10px", "Times-Roman 20"},
        {"font-size: 150%", "", "Times-Roman 18"},
        {"font-size: 2rem", "font-size: 20px", "Times-Roman 24"},
        {"font-size: 14.04px", "", "Times-Roman 14"},
        {"font-size: 13.333px", "", "Times-Roman 13.333"},
        {"font-size: 14.94px", "", "Times-Roman 14.94"},
        {"font-size: 13.303px", "", "Times-Roman 13.3"},
        {"font-size: -3px", "", "Times-Roman 12"},
        {"font-size: initial", "font-size: 40px", "Times-Roman 12"},
        {"font-size: inherit", "font-size: 40px", "Times-Roman 40"},
    };
    for (const auto& [style, outer, expected] : cases) {
        const Font font = fontForStyle(computed(style, outer).style);
        EXPECT_EQ(fmt::format("{} {}", font.fontName(), font.pointSize()), expected) << style << " in " << outer;
    }
}

TEST(CssStyleSheets, SelectAndCascade) {
    const struct {
        std::string_view sheet, attribute, color;
    } cases[] = {
        {"div {color: red}", "", "ff0000"},
        {"DIV {color: red}", "", "ff0000"},
        {"* {color: red}", "", "ff0000"},
        {".c {color: red}", "", "ff0000"},
        {".c.d {color: red} .c {color: blue}", "", "ff0000"},
        {".e {color: red}", "", "000000"},
        {"#i {color: red} div.c {color: blue}", "", "ff0000"},
        {"div#i.c.d {color: red}", "", "ff0000"},
        {"p, div {color: red}", "", "ff0000"},
        {"section div {color: red}", "", "ff0000"},
        {"section > div {color: red}", "", "ff0000"},
        {"body > div {color: red}", "", "000000"},
        {"html body div {color: red}", "", "ff0000"},
        {"html > section div {color: red}", "", "000000"},
        {"body > section > div {color: red}", "", "ff0000"},
        {"html > body section > div {color: red}", "", "ff0000"},
        {"section {color: red}", "", "ff0000"},
        {"section {color: red !important}", "color: green", "008000"},
        {"div {color: red}", "color: green", "008000"},
        {"div {color: red !important}", "color: green", "ff0000"},
        {"div {color: red !important}", "color: green !important", "008000"},
        {"div {color: red} div {color: blue}", "", "0000ff"},
        {"div {color: red; color: bluish}", "", "ff0000"},
        {"div:hover {color: red}", "", "000000"},
        {"div + p, div {color: red}", "", "ff0000"},
        {"div[id] {color: red}", "", "000000"},
        {":root {color: red}", "", "ff0000"},
        {"@media print {div {color: red}}", "", "000000"},
        {"@media screen {div {color: red}}", "", "ff0000"},
        {"@media screen and (max-width: 600px) {div {color: red}} p {color: blue}", "", "000000"},
        {"@media (min-width: 600px) {div {color: red}}", "", "ff0000"},
        {"@media (prefers-color-scheme: dark) {div {color: red}}", "", "000000"},
        {"@import url(x.css); div {color: red}", "", "ff0000"},
        {"@font-face {font-family: x; src: url(y)} div {color: red}", "", "ff0000"},
        {"<!-- div {color: red} -->", "", "ff0000"},
        {"/* { */ div {color: red}", "", "ff0000"},
        {"div {color: red", "", "ff0000"},
        {"} div {color: red}", "", "000000"},
        {"", "", "000000"},
    };
    for (const auto& [sheet, attribute, expected] : cases)
        EXPECT_EQ(hex(computed(attribute, "", sheet).style.color).substr(0, 6), expected) << sheet << " " << attribute;
}

TEST(CssFonts, HaveAFixedWidthSizeForEachKeyword) {
    const std::pair<std::string_view, double> cases[] = {
        {"xx-small", 9}, {"x-small", 10}, {"small", 12},    {"medium", 13},
        {"large", 16},   {"x-large", 20}, {"xx-large", 26}, {"xxx-large", 39},
    };
    for (const auto& [keyword, size] : cases)
        EXPECT_EQ(computed(fmt::format("font-family: monospace; font-size: {}", keyword)).style.fontSize, size)
            << keyword;
}

TEST(CssStyles, StayFinite) {
    EXPECT_EQ(computed("margin: 1e300px").style.margin[0].value, 33'554'428);
    EXPECT_EQ(computed("font-size: 1e6px; margin: -1e300em").style.margin[0].value, -33'554'428);
}

TEST(CssStyles, MakeBlocksOfWhatFloatsOrLiesInAFlexibleBox) {
    EXPECT_EQ(computed("display: inline; float: left").style.display, CssDisplay::block);
    EXPECT_EQ(computed("display: inline; position: absolute").style.display, CssDisplay::block);
    EXPECT_EQ(computed("display: inline", "display: flex").style.display, CssDisplay::block);
    EXPECT_EQ(computed("display: inline").style.display, CssDisplay::inline_);
    EXPECT_EQ(computed("display: inline-table", "display: grid").style.display, CssDisplay::table);
    EXPECT_EQ(computed("display: none; float: left").style.display, CssDisplay::none);
}

// One sheet is kept: what follows it is read with its own.
TEST(CssStyleSheets, AreThoseOfThePageEvenWhenOneIsKept) {
    const auto first = cssStyleSheet({"p {color: red}"});
    EXPECT_EQ(cssStyleSheet({"p {color: red}"}), first);
    EXPECT_NE(cssStyleSheet({"p {color: blue}"}), first);
    EXPECT_NE(cssStyleSheet({"p {color:", " red}"}), first);
    EXPECT_TRUE(cssStyleSheet({})->empty());
    const std::string large(100'000, ' ');
    EXPECT_NE(cssStyleSheet({large}), cssStyleSheet({large})) << "a large one is not kept";
}

TEST(CssStyleSheets, StayLinearOnHostileText) {
    std::string nested, selector = "a";
    for (int i = 0; i < 100'000; ++i) nested += "@media screen{";
    for (int i = 0; i < 20'000; ++i) selector += " > a";
    std::string quotes(200'000, '"'), brackets(200'000, '(');
    const auto start = std::chrono::steady_clock::now();
    for (const std::string& text : {nested, selector + "{color:red}", quotes, brackets, "color:" + brackets}) {
        CssStyleSheet sheet;
        sheet.append(text);
        cssDeclarations(text);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

// Ten thousand elements against four thousand rules that almost match.
TEST(CssStyleSheets, GiveUpOnASheetThatMatchesForever) {
    std::string sheet, body;
    for (int i = 0; i < 4'000; ++i) sheet += fmt::format("u i b {{margin:{}px}}", i);
    for (int i = 0; i < 400; ++i) body += "<div><i>";
    for (int i = 0; i < 10'000; ++i) body += "<b>x</b>";
    const auto page = HTMLDocument::parse("<!DOCTYPE html><style>" + sheet + "</style>" + body);
    ASSERT_TRUE(page.has_value());
    CssStyleSheet rules;
    rules.append(sheet);
    const auto start = std::chrono::steady_clock::now();
    CssMatches matched;
    std::size_t comparisons = 0;
    for (HTMLDocument::NodeIndex i = 0; i < page->size(); ++i)
        if (page->isElement(i)) rules.match(*page, i, comparisons, matched);
    EXPECT_TRUE(matched.empty());
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

} // namespace
} // namespace platform
