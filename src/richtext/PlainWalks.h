// For tests: walks over a text that may be changed on the way, as rules for rich text are told. With them an operation
// can be written down plainly, one edit after the other in the text as it then stands, slow and easy to check by eye,
// and the real one, which looks at the text once and changes it once, held against it.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/text/AttributedString.h"
#include "richtext/TextEditing.h"

namespace quillet {

inline platform::Range whole(const platform::AttributedString& text) {
    return {0, text.length()};
}

inline std::u16string slice(const platform::AttributedString& text, platform::Range range) {
    return text.string().substr(range.location, range.length);
}

// The lines of a range. The body may change the text inside the line that it is given.
template<class Body>
void walkLines(platform::AttributedString& text, platform::Range range, Body body) {
    const std::size_t behind = text.length() - range.end();
    for (std::size_t start = range.location; start + behind < text.length();) {
        const platform::Range left{start, text.length() - behind - start};
        const platform::Line line = platform::linesInRange(text.string(), left).front();
        const std::size_t rest = text.length() - line.enclosing.end();
        body(line);
        start = text.length() - rest;
    }
}

// The longest runs of one attribute's value. The body may change the text inside the run.
template<class Body>
void walkRuns(platform::AttributedString& text, platform::AttributeName name, platform::Range range, Body body) {
    const std::size_t behind = text.length() - range.end();
    for (std::size_t start = range.location; start + behind < text.length();) {
        const platform::AttributedString before = text; // keeps the value
        const platform::AttributeValue* value = nullptr;
        platform::Range run{start, text.length() - behind - start};
        before.enumerateAttribute(name, run, [&](const platform::AttributeValue* found, platform::Range at) {
            value = found;
            run = at;
            return false;
        });
        const std::size_t rest = text.length() - run.end();
        body(value, run);
        start = text.length() - rest;
    }
}

// Attachments with their ranges.
template<class Body>
void walkAttachments(platform::AttributedString& text, platform::Range range, Body body) {
    walkRuns(text, platform::kAttachmentAttributeName, range,
             [&](const platform::AttributeValue* value, platform::Range run) {
                 if (value) body(std::get<platform::TextAttachmentReference>(*value), run);
             });
}

// Paragraph styles with their ranges; the default one where there is none.
template<class Body>
void walkStyles(platform::AttributedString& text, Body body) {
    walkRuns(text, platform::kParagraphStyleAttributeName, whole(text),
             [&](const platform::AttributeValue* value, platform::Range run) {
                 body(value ? *std::get<platform::ParagraphStyleReference>(*value) : platform::ParagraphStyle(), run);
             });
}

inline void setStyle(platform::AttributedString& text, const platform::ParagraphStyle& style, platform::Range range) {
    text.addAttribute(platform::kParagraphStyleAttributeName, std::make_shared<const platform::ParagraphStyle>(style),
                      range);
}

inline void typeAt(platform::AttributedString& text, std::size_t position, std::u16string_view typed) {
    text.replaceCharacters({position, 0},
                           platform::AttributedString(std::u16string(typed), typingAttributes(text, position)));
}

// Text in the place of an attachment.
inline void replaceAttachment(platform::AttributedString& text, platform::Range range, std::u16string_view by) {
    text.removeAttribute(platform::kAttachmentAttributeName, range);
    text.replaceCharacters(range, by);
}

} // namespace quillet
