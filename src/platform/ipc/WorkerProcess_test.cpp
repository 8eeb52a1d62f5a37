#include "platform/ipc/WorkerProcess.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <optional>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <sys/socket.h>

namespace platform {
namespace {

struct Pair {
    Pair() {
        std::array<int, 2> ends{};
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
        here = Descriptor(ends[0]);
        there = Descriptor(ends[1]);
    }
    Descriptor here;
    Descriptor there;
};

using std::chrono::milliseconds;

TEST(MessageChannel, KeepsMessagesAndTheirOrder) {
    Pair pair;
    MessageChannel here(std::move(pair.here));
    std::optional<MessageChannel> there(std::in_place, std::move(pair.there));
    const std::string large(3 << 20, 'x');
    std::jthread sender([&] {
        EXPECT_TRUE(there->send({{"n", Value(1)}}));
        EXPECT_TRUE(there->send({{"text", Value(large)}}));
        EXPECT_TRUE(there->send({}));
        there.reset();
    });
    EXPECT_EQ(here.receive().value(), (Dictionary{{"n", Value(1)}}));
    EXPECT_EQ(here.receive().value(), (Dictionary{{"text", Value(large)}}));
    EXPECT_EQ(here.receive().value(), Dictionary());
    EXPECT_EQ(here.receive().value(), std::nullopt);
}

TEST(MessageChannel, RefusesDamageAndExcess) {
    const std::array<std::pair<std::string, int>, 4> cases{{
        {std::string("\x02\0", 2), ECONNRESET},
        {std::string("\x08\0\0\0xx", 6), ECONNRESET},
        {std::string("\x02\0\0\0xx", 6), EBADMSG},
        {std::string("\xFF\xFF\xFF\xFF", 4), EMSGSIZE},
    }};
    for (const auto& [bytes, code] : cases) {
        Pair pair;
        ASSERT_EQ(::send(pair.there.get(), bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
        pair.there = Descriptor();
        const auto received = MessageChannel(std::move(pair.here)).receive();
        ASSERT_FALSE(received);
        EXPECT_EQ(received.error().code, code);
    }
}

TEST(MessageChannel, LosesPatienceWithASilentSide) {
    Pair pair;
    MessageChannel here(std::move(pair.here));
    const auto received = here.receive(milliseconds(20));
    ASSERT_FALSE(received);
    EXPECT_EQ(received.error().code, ETIMEDOUT);
}

TEST(MessageChannel, SendingToNobodyIsAnErrorNotASignal) {
    Pair pair;
    pair.there = Descriptor();
    EXPECT_FALSE(MessageChannel(std::move(pair.here)).send({}));
}

TEST(WorkerProcess, TalksOverDescriptorThree) {
    // An empty message: a length of four zero bytes is read and sent back.
    const auto worker = WorkerProcess::start("/bin/sh", {"-c", "head -c 4 <&3 >&3"});
    ASSERT_TRUE(worker) << worker.error().description();
    ASSERT_TRUE((*worker)->channel().send({}));
    EXPECT_EQ((*worker)->channel().receive(milliseconds(5000)).value(), Dictionary());
    EXPECT_EQ((*worker)->waitUntilExit(), "exit status 0");
}

TEST(WorkerProcess, InheritsNothingElse) {
    const Descriptor leaked(::dup(STDERR_FILENO)); // without close-on-exec
    const auto worker =
        WorkerProcess::start("/bin/sh", {"-c", "for f in 4 5 6 7 8 9; do ! [ -e /dev/fd/$f ] || exit 1; done"});
    ASSERT_TRUE(worker);
    EXPECT_EQ((*worker)->waitUntilExit(), "exit status 0");
}

TEST(WorkerProcess, SaysHowItEnded) {
    const auto killed = WorkerProcess::start("/bin/sh", {"-c", "kill -SEGV $$"});
    ASSERT_TRUE(killed);
    EXPECT_EQ((*killed)->waitUntilExit(), "signal 11 (Segmentation fault)");
    const auto left = WorkerProcess::start("/bin/sh", {"-c", "exit 7"});
    ASSERT_TRUE(left);
    EXPECT_EQ((*left)->waitUntilExit(), "exit status 7");
    EXPECT_EQ((*left)->waitUntilExit(), "exit status 7");
}

TEST(WorkerProcess, IsKilledWithItsOwner) {
    const auto worker = WorkerProcess::start("/bin/sleep", {"600"});
    ASSERT_TRUE(worker);
    (*worker)->kill();
    EXPECT_EQ((*worker)->waitUntilExit(), "signal 9 (Killed)");
}

TEST(WorkerProcess, AMissingProgramIsAnError) {
    const auto worker = WorkerProcess::start("/no/such/program", {});
    ASSERT_FALSE(worker);
    EXPECT_EQ(worker.error().code, static_cast<std::int64_t>(CocoaError::fileReadNoSuchFile));
}

} // namespace
} // namespace platform
