#include "service/ImportRun.h"

#include <future>
#include <system_error>

#include <gtest/gtest.h>

#include "enex/EvernoteXMLParseOperation.h"
#include "platform/base/SystemLog.h"
#include "service/ServiceDelegate.h"
#include "tests/support/ScratchDirectory.h"

namespace quillet {
namespace {

using platform::Dictionary;
using platform::URL;

class Run : public testing::Test {
  protected:
    ~Run() override { platform::setSystemLogSink(saved_); }

    Dictionary replyOf(const std::shared_ptr<Quillet_ENEX_Import>& importer, bool cancelFirst = false) {
        const auto run =
            std::make_shared<ImportRun>(importer, ImportCall{URL::fileURLWithPath((scratch_ / "a.enex").string()),
                                                             {},
                                                             URL::fileURLWithPath(scratch_.path().string(), true)});
        if (cancelFirst) run->cancel();
        std::promise<Dictionary> reply;
        run->begin(queue_, listener_, {}, [&](Dictionary answer) { reply.set_value(std::move(answer)); });
        return reply.get_future().get();
    }

    tests::ScratchDirectory scratch_;
    platform::SystemLogSink saved_ = platform::setSystemLogSink([](std::string_view) {});
    ServiceDelegate delegate_{WorkerProgram{}};
    platform::Listener listener_{serviceDescription(), delegate_, std::chrono::minutes(1)};
    platform::OperationQueue queue_;
};

TEST_F(Run, RepliesWithAnErrorWhenTheImportCannotBegin) {
    const auto importer =
        Quillet_ENEX_Import::create([](const URL&, const URL&) -> std::shared_ptr<EvernoteXMLParseOperation> {
            throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
        });
    const Dictionary reply = replyOf(importer);
    EXPECT_EQ(reply.size(), 2U);
    ASSERT_NE(reply.at("Error").asError(), nullptr);
    EXPECT_EQ(reply.at("Error").asError()->code, EAGAIN);
    EXPECT_EQ(reply.at("Log File").utf8(), URL::fileURLWithPath((scratch_ / "a.log").string()).absoluteString());
}

TEST_F(Run, IsCancelledAlsoBeforeItsTurn) {
    std::string notes;
    for (int index = 0; index < 500; ++index) notes += "<note><title>x</title></note>";
    tests::writeFile(scratch_ / "a.enex", "<en-export>" + notes + "</en-export>");
    std::atomic<bool> goOn = false;
    queue_.addOperationWithBlock([&] { goOn.wait(false); });
    // The queue is held up until the cancel has come.
    auto reply = std::async(std::launch::async, [&] { return replyOf(Quillet_ENEX_Import::create(), true); });
    goOn = true;
    goOn.notify_all();
    const Dictionary answer = reply.get();
    ASSERT_TRUE(answer.contains("Error"));
    EXPECT_EQ(answer.at("Error").asError()->code, 512);
}

} // namespace
} // namespace quillet
