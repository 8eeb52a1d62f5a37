// What tests of the note markup and its tags share: a note, its scratch directory, and the steps of rewriting.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/core.h>

#include "conversion/NoteMarkup.h"
#include "conversion/NoteScratch.h"
#include "platform/base/Error.h"
#include "tests/support/NoteFixture.h"

namespace quillet {

inline std::string between(std::string_view text, std::string_view before, std::string_view after) {
    const std::size_t start = text.find(before);
    const std::size_t end = text.rfind(after);
    if (start == text.npos || end == text.npos) return "no body in: " + std::string(text);
    return std::string(text.substr(start + before.size(), end - start - before.size()));
}

class NoteMarkupFixture : public NoteFixture {
  protected:
    void SetUp() override {
        NoteFixture::SetUp();
        directory_.emplace(platform::OutputDirectory::openURL(destinationURL()).value());
        scratchDirectory_.emplace(*directory_, item_.identifier);
    }

    platform::Result<std::string> inner(std::string_view markup, UseInlineImages inlineImages = UseInlineImages::yes) {
        return XMLStringFromNoteElement(item_, *scratchDirectory_, *noteDocument(markup).rootElement(), inlineImages);
    }
    std::string innerText(std::string_view markup, UseInlineImages inlineImages = UseInlineImages::yes) {
        const auto made = inner(markup, inlineImages);
        return made ? *made : made.error().description();
    }
    platform::Result<std::string> page(std::string_view markup, ConvertDividers dividers = ConvertDividers::yes) {
        return noteXHTMLStringFromNoteElement(item_, *scratchDirectory_, *noteDocument(markup).rootElement(),
                                              UseInlineImages::yes, dividers);
    }
    // What stands in the page's body, without white space at its ends.
    std::string body(std::string_view markup, ConvertDividers dividers = ConvertDividers::yes) {
        const auto made = page(markup, dividers);
        if (!made) return made.error().description();
        std::string text = between(*made, "<body>", "</body>");
        text.erase(0, text.find_first_not_of(" \n"));
        text.erase(text.find_last_not_of(" \n") + 1);
        return text;
    }
    std::vector<std::string> scratchFiles() const {
        const std::filesystem::path directory = destination_ / item_.identifier;
        return std::filesystem::exists(directory) ? namesIn(directory) : std::vector<std::string>();
    }

    static std::string marker(std::string_view name) {
        return fmt::format("***QLTATTACHMENT  {}  QLTATTACHMENT***", name);
    }

    std::optional<platform::OutputDirectory> directory_;
    std::optional<NoteScratch> scratchDirectory_;
};

} // namespace quillet
