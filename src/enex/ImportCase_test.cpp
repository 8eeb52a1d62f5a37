#include "enex/ImportCase.h"

#include <algorithm>
#include <filesystem>

#include <fmt/core.h>
#include <gtest/gtest.h>

#include "platform/base/UTF16.h"
#include "tests/support/ScratchDirectory.h"

namespace quillet {

using platform::Date;
using platform::Error;
using platform::Result;
using platform::URL;

namespace {

std::string iso(const std::optional<Date>& date) {
    return date ? date->iso8601() : "-";
}

// One note as a line a field, resources with their bytes.
std::string dump(EvernoteXMLItem& item) {
    std::string text = fmt::format("title '{}'\ncontent '{}'\ncreated {} updated {}\nsource '{}' url '{}'\n",
                                   platform::utf8FromUTF16(item.title), item.contentData, iso(item.created),
                                   iso(item.updated), item.noteAttributes.source, item.noteAttributes.sourceURL);
    for (const auto& tag : item.tags) text += fmt::format("tag '{}'\n", platform::utf8FromUTF16(tag));
    for (auto& resource : item.resources) {
        const auto data = resource.getContentData();
        text += fmt::format("resource '{}' {}x{} '{}' {} data {}\n", resource.mime, resource.width, resource.height,
                            platform::utf8FromUTF16(resource.attributes.filename), iso(resource.attributes.timestamp),
                            data ? std::string(data->bytes()) : data.error().localizedDescription());
    }
    return text;
}

std::string lineForError(std::string_view kind, const Error& error) {
    const auto* name = platform::find(error.userInfo, kNoteNameKey);
    return fmt::format("{} {} {}{}", kind, error.domain, error.code, name ? " '" + name->utf8() + "'" : "");
}

} // namespace

Import::Import() : scratch_(std::make_unique<tests::ScratchDirectory>()) {
    environment_->timeZoneName = "UTC";
    environment_->localeIdentifier = "en_US";
    environment_->now = [] { return Date::fromUnixTime(0); };
    saved_ = platform::setSystemLogSink([this](std::string_view entry) { systemLog.emplace_back(entry); });
}

Import::~Import() {
    platform::setSystemLogSink(saved_);
}

Import& Import::run(std::string_view enex) {
    tests::writeFile(*scratch_ / "Export.enex", enex);
    return runFile((*scratch_ / "Export.enex").string());
}

Import& Import::runFile(const std::string& path) {
    const auto logPath = *scratch_ / "Export.log";
    std::filesystem::remove(logPath);
    auto stream = std::make_shared<OutputStream>(logPath.string());
    stream->open();
    const auto operation = EvernoteXMLParseOperation::evernoteParseOperationForFileAtURL(
        URL::fileURLWithPath(path), URL::fileURLWithPath(scratch_->path().string(), true));
    operation->setLogStream(stream);
    operation->setDebugMode(debug);
    operation->setSaveWebClippingsAsNotes(asNotes);
    operation->setPieceSize(pieceSize);
    operation->getItemDict = [this](EvernoteXMLItem& item) -> Result<std::optional<ItemEntry>> {
        notes += dump(item);
        if (convert) return convert(item);
        return ItemEntry{{"name", platform::Value(item.title)}};
    };
    operation->parseOperationDidExportItemBlock = [this](const Result<ItemEntry>& entry) {
        blocks.push_back(entry ? "entry" : lineForError("error", entry.error()));
    };
    operation->parseOperationCompletionBlock = [this](const std::optional<Error>& error) {
        blocks.push_back(error ? lineForError("end", *error) : "end");
        if (error) endError = *error;
    };
    if (prepare) prepare(*operation);
    operation->start();
    EXPECT_TRUE(operation->isFinished());
    EXPECT_FALSE(operation->operationExecuting());
    log = tests::readFile(logPath);
    return *this;
}

std::string Import::logTexts() const {
    std::string texts;
    constexpr std::string_view kDate = "1970-01-01 00:00:00 +0000 ";
    for (std::size_t at = 0; at < log.size();) {
        const auto end = log.find('\n', at);
        const auto line = std::string_view(log).substr(at, end - at);
        texts.append(line.starts_with(kDate) ? line.substr(kDate.size()) : line).append("\n");
        at = end + 1;
    }
    return texts;
}

std::size_t Import::ends() const {
    return static_cast<std::size_t>(
        std::ranges::count_if(blocks, [](const auto& block) { return block.starts_with("end"); }));
}

std::string exported(std::string_view notes) {
    return fmt::format("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                       "<!DOCTYPE en-export SYSTEM \"http://xml.evernote.com/pub/evernote-export4.dtd\">\n"
                       "<en-export export-date=\"20240501T091502Z\" application=\"Evernote\" version=\"10.88.4\">"
                       "{}</en-export>\n",
                       notes);
}

std::string noteWith(std::string_view markup) {
    return exported(fmt::format("<note><title>T</title>{}</note>", markup));
}

} // namespace quillet
