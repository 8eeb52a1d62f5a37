// One import from call to reply: the log to the letter, both forms of the reply, calls that overlap, cancelling.
#include "service/Quillet_ENEX_Import.h"

#include <atomic>
#include <chrono>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <fmt/core.h>
#include <fmt/ranges.h>

#include "platform/base/Error.h"
#include "platform/foundation/StringFormat.h"
#include "platform/operations/OperationQueue.h"
#include "tests/support/NoteFixture.h"

namespace quillet {
namespace {

using platform::Array;
using platform::Dictionary;
using platform::URL;
using platform::Value;

constexpr std::string_view kDate = "2024-05-01 09:15:02 +0000 "; // the fixture's clock

std::string enex(std::string_view notes, std::string_view attributes = " version=\"10.88.4\"") {
    return fmt::format("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<en-export{}>{}</en-export>", attributes, notes);
}

std::string note(std::string_view title, std::string_view content, std::string_view more = {}) {
    return fmt::format("<note><title>{}</title><content><![CDATA[{}]]></content>{}</note>", title, content, more);
}

std::string textNote(std::string_view title) {
    return note(title, "<en-note>text</en-note>");
}

// A reply that comes from another thread, while the main queue runs on this one.
class Reply {
  public:
    QLTImportENEXProtocol::Reply block() {
        return [this](Dictionary reply) {
            ++calls_;
            reply_ = std::move(reply);
            arrived_ = true;
            platform::wakeMainQueue();
        };
    }
    const Dictionary& wait() {
        platform::runMainQueueUntil([this] { return arrived_.load(); });
        return *reply_;
    }
    int calls() const { return calls_; }

  private:
    std::optional<Dictionary> reply_;
    std::atomic<bool> arrived_ = false;
    std::atomic<int> calls_ = 0;
};

class ImportJob : public NoteFixture {
  protected:
    const Dictionary& import(std::string_view text, Dictionary options = {}) {
        tests::writeFile(scratch_ / fileName_, text);
        reply_ = std::make_unique<Reply>();
        importer_->importENEXFile(exportURL(), options, destinationURL(), reply_->block());
        return reply_->wait();
    }
    URL exportURL() const { return URL::fileURLWithPath((scratch_ / fileName_).string()); }
    // The log with "OUT" for the scratch directory and nothing for the clock's time.
    std::string importLog(std::string_view name) const {
        std::string text = tests::readFile(destination_ / name);
        for (const auto& [what, with] : {std::pair{scratch_.path().string(), std::string("OUT")},
                                         std::pair{std::string(kDate), std::string("@ ")}})
            for (std::size_t at = text.find(what); at != text.npos; at = text.find(what))
                text.replace(at, what.size(), with);
        return text;
    }
    static std::vector<std::string> keysOf(const Dictionary& dictionary) {
        std::vector<std::string> keys;
        for (const auto& [key, value] : dictionary) keys.push_back(key);
        return keys;
    }
    static const Array& list(const Dictionary& reply, std::string_view key) {
        static const Array none{Value("no list")};
        const Value* value = platform::find(reply, key);
        return value && value->as<Array>() ? *value->as<Array>() : none;
    }
    static std::string text(const Dictionary& dictionary, std::string_view key) {
        const Value* value = platform::find(dictionary, key);
        return value ? value->utf8() : "(absent)";
    }
    const Dictionary& item(std::size_t index) const {
        return *list(*lastReply(), kItemsReplyKey).at(index).as<Dictionary>();
    }
    const Dictionary* lastReply() const { return &reply_->wait(); }

    std::string fileName_ = "Export 2024.enex";
    std::shared_ptr<Quillet_ENEX_Import> importer_ = Quillet_ENEX_Import::create();
    std::unique_ptr<Reply> reply_;
};

// ---- the reply

TEST_F(ImportJob, RepliesWithEmptyListsForAnEmptyExport) {
    const Dictionary& reply = import(enex(""));
    EXPECT_EQ(keysOf(reply), (std::vector<std::string>{"Error Notes", "Items", "Log File"}));
    EXPECT_TRUE(list(reply, "Items").empty());
    EXPECT_TRUE(list(reply, "Error Notes").empty());
    EXPECT_EQ(text(reply, "Log File"), destinationURL().absoluteString() + "Export%202024.log");
    EXPECT_EQ(reply_->calls(), 1);
}

TEST_F(ImportJob, RepliesWithAnEntryForEachNoteAndANameForEachFailure) {
    const Dictionary& reply =
        import(enex(note("First &amp; best", "<en-note>a</en-note>",
                         "<tag>b</tag><tag> a "
                         "</tag><note-attributes><source-url>https://example.org/</source-url></note-attributes>") +
                    note("Broken", "") + textNote("Last")));
    ASSERT_EQ(list(reply, "Items").size(), 2U);
    EXPECT_EQ(list(reply, "Error Notes"), Array{Value("Broken")});
    EXPECT_EQ(keysOf(item(0)), (std::vector<std::string>{"fileURL", "identifier", "name", "source", "tags"}));
    EXPECT_EQ(text(item(0), "name"), "First & best");
    EXPECT_EQ(text(item(0), "source"), "https://example.org/");
    EXPECT_EQ(list(item(0), "tags"), (Array{Value("b"), Value("a")}));
    EXPECT_EQ(text(item(0), "fileURL"), destinationURL().absoluteString() + "First%20&%20best.qltnote");
    EXPECT_EQ(text(item(0), "identifier").size(), 36U);
    EXPECT_EQ(keysOf(item(1)), (std::vector<std::string>{"fileURL", "identifier", "name"}));
    EXPECT_EQ(outputs(), (std::vector<std::string>{"Export 2024.log", "First & best.qltnote", "Last.qltnote"}));
    EXPECT_EQ(importer_->items(), list(reply, "Items"));
    EXPECT_EQ(importer_->failedItemNames(), list(reply, "Error Notes"));
}

TEST_F(ImportJob, RepliesWithTheErrorAloneWhenTheFileCannotBeRead) {
    const struct {
        std::string text, domain;
        std::int64_t code;
    } rows[] = {
        {"", "NSXMLParserErrorDomain", 5},
        {"no XML", "NSXMLParserErrorDomain", 4},
        {enex(textNote("Kept")) + "<x>", "NSXMLParserErrorDomain", 5},
        {"<en-export>" + textNote("Kept") + "<note><title>Cut off</title><content>",
         "EvernoteXMLParseOperationErrorDomain", 1006},
        {enex("<note><title>a</title><resource><data encoding=\"Base64\">AA==</data></resource></note>"),
         "EvernoteXMLParseOperationErrorDomain", 1003},
    };
    for (const auto& row : rows) {
        const Dictionary& reply = import(row.text);
        EXPECT_EQ(keysOf(reply), (std::vector<std::string>{"Error", "Log File"}));
        const platform::Error* error =
            platform::find(reply, "Error") ? platform::find(reply, "Error")->asError() : nullptr;
        ASSERT_NE(error, nullptr);
        EXPECT_EQ(error->domain, row.domain) << row.text;
        EXPECT_EQ(error->code, row.code) << row.text;
    }
    EXPECT_TRUE(std::filesystem::exists(destination_ / "Kept.qltnote")); // what is written stays
}

// The import's blocks hold the importer until the thread that has replied is through with them.
TEST_F(ImportJob, IsReleasedBehindItsReply) {
    import(enex(textNote("One")));
    const std::weak_ptr<Quillet_ENEX_Import> importer = std::exchange(importer_, nullptr);
    for (int tries = 0; tries < 1'000 && !importer.expired(); ++tries)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    EXPECT_TRUE(importer.expired());
}

TEST_F(ImportJob, RepliesWithAnErrorForAFileThatIsNotThere) {
    importer_->importENEXFile(URL::fileURLWithPath((scratch_ / "absent.enex").string()), {}, destinationURL(),
                              (reply_ = std::make_unique<Reply>())->block());
    const platform::Error* error = reply_->wait().at("Error").asError();
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->domain, "EvernoteXMLParseOperationErrorDomain");
    EXPECT_EQ(error->code, 1001);
    EXPECT_EQ(error->localizedDescription(), "Cannot create input stream.");
    EXPECT_TRUE(hasLogged("absent.enex"));
    EXPECT_EQ(importLog("absent.log"),
              "Importing OUT/absent.enex@ Finish parsing ENEX file with error: " + error->description() + "\n");
}

// ---- the log

TEST_F(ImportJob, ClosesTheLogBeforeItReplies) {
    const auto isOpen = [this] {
        for (const auto& descriptor : std::filesystem::directory_iterator("/proc/self/fd")) {
            std::error_code gone; // the iterator's own
            if (std::filesystem::read_symlink(descriptor, gone) == destination_ / "Export 2024.log") return true;
        }
        return false;
    };
    std::atomic<bool> wasOpen = false, openAtTheReply = true;
    tests::writeFile(scratch_ / fileName_, enex(textNote("One")));
    importer_->setProgressBlock([&](const ImportProgress&) { wasOpen = wasOpen || isOpen(); });
    Reply reply;
    importer_->importENEXFile(exportURL(), {}, destinationURL(), [&, block = reply.block()](Dictionary result) mutable {
        openAtTheReply = isOpen();
        block(std::move(result));
    });
    reply.wait();
    importer_->setProgressBlock({});
    EXPECT_TRUE(wasOpen);
    EXPECT_FALSE(openAtTheReply);
}

TEST_F(ImportJob, WritesItsLogToTheLetter) {
    import(enex(textNote("One") + note("Two", "") + textNote("Three")));
    EXPECT_EQ(importLog("Export 2024.log"),
              "Importing OUT/Export 2024.enex@ ENEX file created by: 10.88.4\n"
              "@ Converting \"One\"\n"
              "@ Converting \"Two\"\n"
              "@ Skipping \"Two\"\n"
              "@ Skipping note (Two) with error: line 1, column 1: the document is empty (NSXMLParserErrorDomain 5)\n"
              "@ Converting \"Three\"\n"
              "@ Finish parsing ENEX file.\n");
}

TEST_F(ImportJob, LogsIdentifiersInDebugMode) {
    import(enex(textNote("One"), ""), {{"Debug", Value(true)}});
    const std::string identifier = text(item(0), "identifier");
    const std::string log = importLog("Export 2024.log");
    EXPECT_TRUE(log.starts_with("Importing OUT/Export 2024.enex@ parser:didStartElement: en-export\n"
                                "@ ENEX file created by: (null)\n"
                                "@ parser:didStartElement: note\n"))
        << log;
    EXPECT_NE(log.find("@ parser:didEndElement: note\n@ Converting \"One\"\n@ Parsed note with temporary identifier: " +
                       identifier + "\n@ parser:didEndElement: en-export\n@ Finish parsing ENEX file.\n"),
              std::string::npos)
        << log;
}

TEST_F(ImportJob, NamesTheLogAfterTheFile) {
    const struct {
        std::string file, log;
    } rows[] = {
        {"a.b.enex", "a.b.log"},
        {"plain", "plain.log"},
        {"50% & ü.enex", "50% & ü.log"},
        {"x.log.enex", "x.log.log"},
    };
    for (const auto& row : rows) {
        fileName_ = row.file;
        import(enex(""));
        EXPECT_TRUE(importLog(row.log).starts_with("Importing OUT/" + row.file + "@ ")) << row.file;
    }
}

TEST_F(ImportJob, OverwritesAnOlderLog) {
    tests::writeFile(destination_ / "Export 2024.log", std::string(10'000, 'x'));
    import(enex("", ""));
    EXPECT_EQ(importLog("Export 2024.log"),
              "Importing OUT/Export 2024.enex@ ENEX file created by: (null)\n@ Finish parsing ENEX file.\n");
}

TEST_F(ImportJob, GoesOnWithoutALog) {
    std::filesystem::create_directory(destination_ / "Export 2024.log");
    EXPECT_EQ(list(import(enex(textNote("One"))), "Items").size(), 1U);
    EXPECT_TRUE(std::filesystem::is_empty(destination_ / "Export 2024.log"));
}

// ---- destinations

TEST_F(ImportJob, FailsEachNoteWithoutADestination) {
    std::filesystem::remove(destination_);
    const Dictionary& reply = import(enex(textNote("One") + textNote("Two")));
    EXPECT_TRUE(list(reply, "Items").empty());
    EXPECT_EQ(list(reply, "Error Notes").size(), 2U);
    EXPECT_TRUE(hasLogged(destination_.string()));
}

TEST_F(ImportJob, ClearsAwayWhatADeadImportLeft) {
    std::filesystem::create_directory(destination_ / ".quillet-new-1-1");
    tests::writeFile(destination_ / ".quillet-new-1-1" / "TXT.rtf", "x");
    tests::writeFile(destination_ / ".quillet-new-1-2", "x");
    import(enex(textNote("One")));
    EXPECT_EQ(outputs(), (std::vector<std::string>{"Export 2024.log", "One.qltnote"}));
}

// ---- options

TEST_F(ImportJob, MakesPagesOfClippingsUnlessToldNotTo) {
    const std::string clipping = enex(
        note("Clip", "<en-note><p>a</p></en-note>", "<note-attributes><source>web.clip7</source></note-attributes>"));
    import(clipping);
    EXPECT_TRUE(std::filesystem::is_regular_file(destination_ / "Clip.html"));
    import(clipping, {{std::string(QLTImportENEXOptionWebClippingsAsNotes), Value(true)}});
    EXPECT_TRUE(std::filesystem::is_directory(destination_ / "Clip.qltnote"));
}

// The application keeps its styles in the group's preferences; each import reads them anew.
TEST_F(ImportJob, ReadsTheBodyStyleOfTheApplicationAtEachImport) {
    const std::string clipping =
        enex(note("Clip", "<en-note>a</en-note>", "<note-attributes><source>web.clip</source></note-attributes>"));
    const auto preferences = [&](std::string_view domain) { return scratch_ / fmt::format("{}.plist", domain); };
    import(clipping);
    const QLTNoteTextStyle::Reference body = QLTNoteTextStyle::bodyNoteTextStyle();
    body->setFontName("Menlo-Bold");
    body->setFontSize(31);
    QLTNoteTextStyle::saveStylesToDefaults(QLTNoteTextStyle::allStyles());
    std::filesystem::rename(preferences("org.example.import"), preferences("Q7X2M9K4T1.com.tesseral.Quillet"));
    body->setFontName("Courier"); // not saved: what is in memory does not count
    body->setFontSize(7);
    import(clipping);
    const std::string before = tests::readFile(destination_ / "Clip.html");
    const std::string after = tests::readFile(destination_ / "Clip 1.html");
    EXPECT_EQ(before.find("Menlo-Bold"), std::string::npos);
    EXPECT_NE(after.find("Menlo-Bold"), std::string::npos) << after;
    EXPECT_NE(after.find("font-size: 31px"), std::string::npos) << after;
}

TEST_F(ImportJob, WritesNoLogOverTheExport) {
    fileName_ = "out/export.log";
    const std::string text = enex(textNote("One"));
    EXPECT_EQ(list(import(text), "Items").size(), 1U);
    EXPECT_EQ(tests::readFile(destination_ / "export.log"), text);
}

// ---- calls that overlap

TEST_F(ImportJob, RepliesOnceToEachOfTwoCalls) {
    tests::writeFile(scratch_ / "a.enex", enex(textNote("A")));
    tests::writeFile(scratch_ / "b.enex", enex(textNote("B")));
    Reply first, second;
    importer_->importENEXFile(URL::fileURLWithPath((scratch_ / "a.enex").string()), {}, destinationURL(),
                              first.block());
    importer_->importENEXFile(URL::fileURLWithPath((scratch_ / "b.enex").string()), {}, destinationURL(),
                              second.block());
    first.wait();
    second.wait();
    EXPECT_EQ(first.calls(), 1);
    EXPECT_EQ(second.calls(), 1);
    EXPECT_EQ(text(first.wait(), "Log File"), destinationURL().absoluteString() + "a.log");
    EXPECT_EQ(text(second.wait(), "Log File"), destinationURL().absoluteString() + "b.log");
    EXPECT_EQ(outputs(), (std::vector<std::string>{"A.qltnote", "B.qltnote", "a.log", "b.log"}));
}

// The second call is made while the first import stands behind its first note: what the first writes from then on is
// in the second's lists and log, and each call replies with the lists as they stand.
TEST_F(ImportJob, GivesTheFirstImportsNotesToTheSecondCall) {
    tests::writeFile(scratch_ / "a.enex",
                     enex(textNote("A1") +
                          note("A2", "<en-note/>", "<resource><data encoding=\"base64\">A</data></resource>") +
                          textNote("A3") + textNote("A4")));
    tests::writeFile(scratch_ / "b.enex", enex(""));
    Reply first, second;
    std::atomic<bool> called = false;
    importer_->setProgressBlock([&](const ImportProgress& progress) {
        if (progress.notesWritten != 1 || called.exchange(true)) return;
        importer_->setProgressBlock({});
        importer_->importENEXFile(URL::fileURLWithPath((scratch_ / "b.enex").string()), {}, destinationURL(),
                                  second.block());
    });
    importer_->importENEXFile(URL::fileURLWithPath((scratch_ / "a.enex").string()), {{"Debug", Value(true)}},
                              destinationURL(), first.block());
    const Array& items = list(first.wait(), kItemsReplyKey);
    second.wait();
    std::vector<std::string> names;
    for (const Value& entry : items) names.push_back(text(*entry.as<Dictionary>(), "name"));
    EXPECT_EQ(names, (std::vector<std::string>{"A2", "A3", "A4"}));
    EXPECT_EQ(text(first.wait(), "Log File"), destinationURL().absoluteString() + "a.log");
    EXPECT_EQ(importLog("a.log").find("Parsed note"), importLog("a.log").rfind("Parsed note")); // the first note's
}

TEST_F(ImportJob, CancelsAlsoAnImportThatASecondCallHasTakenOver) {
    std::string notes;
    for (int index = 0; index < 2'000; ++index) notes += textNote("N");
    tests::writeFile(scratch_ / "a.enex", enex(notes));
    tests::writeFile(scratch_ / "b.enex", enex(""));
    Reply first, second;
    importer_->importENEXFile(URL::fileURLWithPath((scratch_ / "a.enex").string()), {}, destinationURL(),
                              first.block());
    importer_->importENEXFile(URL::fileURLWithPath((scratch_ / "b.enex").string()), {}, destinationURL(),
                              second.block());
    second.wait();
    importer_->cancel();
    const platform::Error* error = first.wait().at("Error").asError();
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->code, 512);
}

TEST_F(ImportJob, KeepsTwoImportersApart) {
    std::string notes;
    for (int index = 0; index < 20; ++index) notes += textNote("Same");
    tests::writeFile(scratch_ / "a.enex", enex(notes));
    tests::writeFile(scratch_ / "b.enex", enex(notes));
    const auto other = Quillet_ENEX_Import::create();
    Reply first, second;
    importer_->importENEXFile(URL::fileURLWithPath((scratch_ / "a.enex").string()), {}, destinationURL(),
                              first.block());
    other->importENEXFile(URL::fileURLWithPath((scratch_ / "b.enex").string()), {}, destinationURL(), second.block());
    std::vector<std::string> written;
    for (Reply* reply : {&first, &second}) {
        EXPECT_EQ(list(reply->wait(), "Items").size(), 20U);
        for (const Value& entry : list(reply->wait(), "Items"))
            written.push_back(text(*entry.as<Dictionary>(), "fileURL"));
    }
    std::ranges::sort(written);
    EXPECT_EQ(std::ranges::unique(written).begin(), written.end()); // nobody got the other's name
    EXPECT_EQ(outputs().size(), 42U);
}

// ---- cancelling and progress

TEST_F(ImportJob, EndsAfterTheNoteUnderWayWhenCancelled) {
    std::string notes;
    for (int index = 0; index < 2'000; ++index) notes += textNote("N");
    tests::writeFile(scratch_ / fileName_, enex(notes));
    importer_->setProgressBlock([this](const ImportProgress& progress) {
        if (progress.notesWritten == 3) importer_->cancel();
    });
    importer_->importENEXFile(exportURL(), {}, destinationURL(), (reply_ = std::make_unique<Reply>())->block());
    const platform::Error* error = reply_->wait().at("Error").asError();
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->domain, "NSXMLParserErrorDomain");
    EXPECT_EQ(error->code, 512);
    EXPECT_EQ(outputs(), (std::vector<std::string>{"Export 2024.log", "N 1.qltnote", "N 2.qltnote", "N.qltnote"}));
    EXPECT_TRUE(importLog("Export 2024.log").ends_with("(NSXMLParserErrorDomain 512)\n"));
    importer_->setProgressBlock({});
    importer_->cancel(); // nothing runs: nothing happens
}

TEST_F(ImportJob, TellsHowFarItIs) {
    std::vector<ImportProgress> seen;
    importer_->setProgressBlock([&](const ImportProgress& progress) { seen.push_back(progress); });
    const std::string export_ = enex(textNote("One") + note("Two", "") + textNote("Three"));
    import(export_);
    importer_->setProgressBlock({});
    ASSERT_FALSE(seen.empty());
    EXPECT_EQ(seen.back().notesWritten, 2U);
    EXPECT_EQ(seen.back().notesFailed, 1U);
    EXPECT_EQ(seen.back().bytesTotal, export_.size());
}

TEST_F(ImportJob, TellsNothingBehindItsReply) {
    std::atomic<bool> replied = false, late = false;
    tests::writeFile(scratch_ / fileName_,
                     enex("<note><title>a</title><resource><data encoding=\"x\">AA==</data></resource></note>"));
    importer_->setProgressBlock([&](const ImportProgress&) { late = late || replied; });
    Reply reply;
    importer_->importENEXFile(exportURL(), {}, destinationURL(), [&, block = reply.block()](Dictionary result) mutable {
        replied = true;
        block(std::move(result));
    });
    reply.wait();
    importer_->setProgressBlock({});
    EXPECT_FALSE(late);
}

} // namespace
} // namespace quillet
