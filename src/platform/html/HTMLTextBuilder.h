// The text that the HTML reader writes, with its white space rules: what collapses, what a block's edge replaces.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/base/Range.h"
#include "platform/text/AttributedString.h"

namespace platform {

class HTMLTextBuilder {
  public:
    using Attributes = AttributeSet::Reference;

    void reserve(std::size_t units) { text_.reserve(units); }
    std::size_t length() const { return text_.size(); }
    bool endsInNewline() const { return lastUnit() == u'\n'; }

    // Text with collapsing white space, in UTF-8: returns what is to be written, with blanks reduced and leading ones
    // dropped where the text so far allows none.
    std::u16string collapsed(std::string_view utf8) const;
    // Writes the result of collapsed(), perhaps transformed; whether it ended in a blank before that, which is soft
    // then: a block's edge replaces it.
    void appendCollapsed(std::u16string_view text, bool endsSoft, const Attributes& attributes);
    // Writes text with its white space as it stands.
    void appendPreserved(std::u16string_view text, const Attributes& attributes);
    // An object and what follows it; nothing of that is soft.
    void appendObject(std::u16string_view text, const Attributes& attributes);

    // Ends a paragraph unless the text ends in a newline already (or `always`). With `replacesSoft` a soft blank or
    // line separator at the end gives way to it.
    enum class Newline : std::uint8_t { ifMissing, always };
    void appendNewline(Newline when, bool replacesSoft, const Attributes& attributes);
    // The end of the page's body: drops a soft blank, writes nothing.
    void dropSoftEnd();
    void appendLineSeparator(const Attributes& attributes);
    void appendTab(const Attributes& attributes);
    // Everything that another one has written, as it stands.
    void appendAll(const HTMLTextBuilder& other);

    // Gives the text from `start` to the end one more attribute. Costs the runs of that stretch.
    void addAttribute(std::size_t start, AttributeName name, const AttributeValue& value);

    const std::u16string& text() const { return text_; }
    const std::vector<AttributedString::Run>& runs() const { return runs_; }
    std::u16string takeText() { return std::exchange(text_, {}); }
    std::vector<AttributedString::Run> takeRuns() { return std::exchange(runs_, {}); }

  private:
    char16_t lastUnit() const { return text_.empty() ? u'\n' : text_.back(); }
    void append(std::u16string_view text, const Attributes& attributes);
    void removeLast();

    std::u16string text_;
    std::vector<AttributedString::Run> runs_; // equal pointers merged; equal values are merged in the end
    bool isSoft_ = false;
};

} // namespace platform
