// What tests of whole operations share: lists that write no markers of their own, so that a random or golden text is
// what it says, and the comparison of an operation with the plain form of its rule.
#pragma once

#include <rapidcheck.h>

#include "platform/text/TextDump.h"
#include "platform/text/TextList.h"
#include "richtext/RandomRichText.h"
#include "tests/support/StylesFixture.h"

namespace quillet {

class RichTextFixture : public StylesFixture {
  protected:
    void SetUp() override {
        StylesFixture::SetUp();
        platform::TextList::setIncludesTextListMarkers(false);
    }
    void TearDown() override {
        platform::TextList::setIncludesTextListMarkers(true);
        StylesFixture::TearDown();
    }
};

// Whether the two make the same of any text.
inline bool alike(void (*real)(platform::AttributedString&), void (*plain)(platform::AttributedString&)) {
    return rc::check([&] {
        platform::AttributedString text = someText(), expected = text;
        real(text);
        plain(expected);
        RC_ASSERT(platform::textDump(text) == platform::textDump(expected));
    });
}

} // namespace quillet
