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

    void reserve(std::size_t units) {
        text_.reserve(units);
        runs_.reserve(kUsualRuns);
    }
    std::size_t length() const { return text_.size(); }
    bool endsInNewline() const { return lastUnit() == u'\n'; }

    // Text with collapsing white space, in UTF-8: writes it with blanks reduced, and leading ones dropped where the
    // text so far allows none. What it wrote is the text from the former length on, and it has no attributes until
    // endCollapsed(), which has to come next when it is not empty.
    void beginCollapsed(std::string_view utf8);
    // Gives attributes to what was written, or to what `instead` puts in its place. A blank at the end of what was
    // written is soft: a block's edge replaces it.
    void endCollapsed(const Attributes& attributes);
    void endCollapsed(const Attributes& attributes, std::u16string_view instead);
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
    void addAttribute(std::size_t start, AttributeName name, AttributeValue value);

    const std::u16string& text() const { return text_; }
    const std::vector<AttributedString::Run>& runs() const { return runs_; }
    std::u16string takeText() { return std::exchange(text_, {}); }
    std::vector<AttributedString::Run> takeRuns() { return std::exchange(runs_, {}); }

  private:
    static constexpr std::size_t kUsualRuns = 128;

    char16_t lastUnit() const { return text_.empty() ? u'\n' : text_.back(); }
    void append(std::u16string_view text, const Attributes& attributes);
    void extendRuns(const Attributes& attributes); // to the end of the text
    std::size_t attributedLength() const { return runs_.empty() ? 0 : runs_.back().end; }
    void removeLast();

    std::u16string text_;
    std::vector<AttributedString::Run> runs_; // equal pointers merged; equal values are merged in the end
    bool isSoft_ = false;
};

} // namespace platform
