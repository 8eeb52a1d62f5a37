// What a worker sends, read from the other end of its channel.
#include "service/WorkerMessages.h"

#include <array>
#include <cerrno>
#include <future>
#include <string>

#include <gtest/gtest.h>
#include <sys/socket.h>

#include "enex/EvernoteXMLParseOperation.h"
#include "service/NoteDispatch.h"
#include "service/operations/OutputStream.h"

namespace quillet {
namespace {

using platform::Array;
using platform::Data;
using platform::Dictionary;
using platform::Error;
using platform::MessageChannel;
using platform::URL;
using platform::Value;

constexpr std::size_t kLongest = std::size_t{3} << 20; // of a message, in bytes

struct Ends {
    Ends() : Ends(made()) {}
    MessageChannel service, worker;

  private:
    explicit Ends(std::array<int, 2> ends)
        : service(platform::Descriptor(ends[0]), kLongest), worker(platform::Descriptor(ends[1]), kLongest) {}
    static std::array<int, 2> made() {
        std::array<int, 2> ends{};
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
        return ends;
    }
};

// The messages that the worker sends while the block runs.
std::vector<Dictionary> sentBy(const std::function<void(const WorkerReport&)>& block) {
    Ends ends;
    auto sending = std::async(std::launch::async, [&] {
        block(WorkerReport(ends.worker));
        EXPECT_TRUE(ends.worker.send({{"end", Value(true)}}));
    });
    std::vector<Dictionary> messages;
    while (true) {
        const auto message = ends.service.receive(std::chrono::seconds(60));
        EXPECT_TRUE(message && *message);
        if (!message || !*message || (*message)->contains("end")) return messages;
        messages.push_back(**message);
    }
}

const std::u16string kEndless(kLongest + 1, u'x');

TEST(WorkerMessages, TheRequestSurvivesTheWay) {
    const WorkerRequest request{URL::fileURLWithPath("/a b/ü.enex"), URL::fileURLWithPath("/out", true), true, true};
    const auto read = WorkerRequest::fromMessage(request.message());
    ASSERT_TRUE(read);
    EXPECT_EQ(read->file.absoluteString(), request.file.absoluteString());
    EXPECT_EQ(read->directory.absoluteString(), request.directory.absoluteString());
    EXPECT_TRUE(read->debug);
    EXPECT_TRUE(read->webClippingsAsNotes);
    const WorkerRequest plain{request.file, request.directory};
    EXPECT_FALSE(WorkerRequest::fromMessage(plain.message())->debug);
    EXPECT_FALSE(WorkerRequest::fromMessage(plain.message())->webClippingsAsNotes);
    for (const char* key : {"file", "directory"}) {
        Dictionary message = request.message();
        message.erase(key);
        EXPECT_FALSE(WorkerRequest::fromMessage(message)) << key;
    }
}

TEST(WorkerMessages, EachEventIsOneMessage) {
    const Error error = Error::withDescription("domain", 7, "why");
    const auto messages = sentBy([&](const WorkerReport& report) {
        report.exported(ItemEntry{{"name", Value("a")}});
        report.exported(platform::failure(error));
        report.progress(3, std::uint64_t{1} << 40);
        report.systemLog("entry");
        (void)report.logStream()->write("line\n");
        report.finish(std::nullopt);
        report.finish(error);
    });
    EXPECT_EQ(messages, (std::vector<Dictionary>{{{"entry", Value(Dictionary{{"name", Value("a")}})}},
                                                 {{"noteError", Value(error)}},
                                                 {{"progress", Value(Array{Value(3), Value(std::uint64_t{1} << 40)})}},
                                                 {{"systemLog", Value("entry")}},
                                                 {{"log", Value(Data(std::string("line\n")))}},
                                                 {{"finish", Value(true)}},
                                                 {{"finish", Value(error)}}}));
}

TEST(WorkerMessages, ATitleTooLongForAMessageFailsItsNoteAlone) {
    const auto messages = sentBy([](const WorkerReport& report) {
        report.exported(ItemEntry{{std::string(kNameItemKey), Value(kEndless)}});
        report.exported(platform::failure(Error("domain", 1, {{std::string(kNoteNameKey), Value(kEndless)}})));
    });
    ASSERT_EQ(messages.size(), 2U);
    for (const Dictionary& message : messages) {
        const Error* error = message.begin()->second.asError();
        ASSERT_NE(error, nullptr);
        EXPECT_EQ(message.begin()->first, "noteError");
        EXPECT_EQ(error->code, EMSGSIZE);
        EXPECT_EQ(error->userInfo.at(std::string(kNoteNameKey)), Value(std::u16string(200, u'x')));
    }
    EXPECT_NE(messages[0].begin()->second.asError()->localizedDescription().find("was written"), std::string::npos);
    EXPECT_NE(messages[1].begin()->second.asError()->localizedDescription().find("was not written"), std::string::npos);
}

TEST(WorkerMessages, ALogLineOfAnyLengthArrivesWhole) {
    const std::string line(kLongest + 5, 'y');
    std::string arrived;
    for (const Dictionary& message :
         sentBy([&](const WorkerReport& report) { EXPECT_EQ(report.logStream()->write(line), std::ssize(line)); }))
        arrived += message.at("log").as<Data>()->bytes();
    EXPECT_TRUE(arrived == line);
    const auto entries = sentBy([&](const WorkerReport& report) { report.systemLog(line); });
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].at("systemLog").utf8().size(), std::size_t{1} << 20);
}

TEST(WorkerMessages, AnErrorTooLongForAMessageKeepsItsDomainAndCode) {
    const auto messages = sentBy([](const WorkerReport& report) {
        report.finish(Error("domain", 9, {{"NSLocalizedDescription", Value(kEndless)}}));
    });
    ASSERT_EQ(messages.size(), 1U);
    const Error* error = messages[0].at("finish").asError();
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->domain, "domain");
    EXPECT_EQ(error->code, 9);
}

} // namespace
} // namespace quillet
