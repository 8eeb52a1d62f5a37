#include "platform/ipc/RemoteService.h"

#include <utility>

#include "platform/ipc/ListenerFixture.h"

namespace platform {
namespace {

class RemoteServiceOnABus : public ListenerOnABus {
  protected:
    static std::unique_ptr<RemoteService> connect() {
        auto service = RemoteService::connect(kName);
        EXPECT_TRUE(service) << (service ? "" : service.error().description());
        return std::move(*service);
    }
    static Result<Array> request(RemoteService& service, std::string_view what) {
        return service.call(kPath, kInterface, "Do", {Value(what)}, "(s)");
    }
};

TEST_F(RemoteServiceOnABus, CallsAndWaits) {
    serve([] {
        const auto service = connect();
        EXPECT_EQ(request(*service, "later").value(), Array{Value("later")});
        const Dictionary values{{"text", Value("ü")}, {"list", Value(Array{Value("a")})}, {"number", Value(-1)}};
        EXPECT_EQ(service->call(kPath, kInterface, "Echo", {Value(values)}, "(a{sv})").value(), Array{Value(values)});
    });
}

TEST_F(RemoteServiceOnABus, DeliversSignalsWhileACallWaits) {
    serve([] {
        const auto service = connect();
        std::vector<Array> ticks, items;
        service->onSignal(kInterface, "Tick", [&](const Array& arguments) { ticks.push_back(arguments); });
        service->onSignal(kItem, "Tick", [&](const Array& arguments) { items.push_back(arguments); });
        ASSERT_TRUE(request(*service, "tick"));
        ASSERT_TRUE(request(*service, "later"));
        EXPECT_EQ(ticks, (std::vector<Array>{{Value(7)}}));
        EXPECT_TRUE(items.empty());
    });
}

TEST_F(RemoteServiceOnABus, SendsFromAnotherThreadWhileACallWaits) {
    serve([] {
        const auto service = connect();
        ASSERT_TRUE(request(*service, "item"));
        auto waiting = std::async(std::launch::async, [&] {
            std::this_thread::sleep_for(milliseconds(50));
            service->send(kPath + "/item", kItem, "Name");
        });
        EXPECT_TRUE(request(*service, "later"));
        waiting.get();
        EXPECT_TRUE(request(*service, "hello")); // the answer to what was sent is nobody's
        EXPECT_EQ(Things::named, 1);
    });
}

TEST_F(RemoteServiceOnABus, GivesTheBusesErrors) {
    serve([] {
        const auto service = connect();
        const Result<Array> refused = request(*service, "fail");
        ASSERT_FALSE(refused);
        EXPECT_EQ(refused.error().domain, kBusErrorDomain);
        EXPECT_EQ(refused.error().code, static_cast<std::int64_t>(BusError::invalidArguments));
        EXPECT_EQ(refused.error().localizedDescription(), "because");
        const auto codeOf = [](const Result<Array>& result) { return result ? 0 : result.error().code; };
        EXPECT_EQ(codeOf(service->call(kPath, kInterface, "Nothing", {}, "()")),
                  static_cast<std::int64_t>(BusError::unknownMethod));
        EXPECT_EQ(codeOf(service->call(kPath, kInterface, "Large", {}, "()")),
                  static_cast<std::int64_t>(BusError::limitsExceeded));
        EXPECT_FALSE(service->call(kPath, kInterface, "Do", {Value("x")}, "(ss)")); // not sent at all
    });
}

TEST_F(RemoteServiceOnABus, FindsNobodyUnderTheName) {
    const auto service = connect();
    const Result<Array> nobody = request(*service, "hello");
    ASSERT_FALSE(nobody);
    EXPECT_EQ(nobody.error().code, static_cast<std::int64_t>(BusError::serviceUnknown));
}

TEST(RemoteService, NeedsABus) {
    ASSERT_EQ(::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere", 1), 0);
    const auto service = RemoteService::connect(kName);
    ASSERT_FALSE(service);
    EXPECT_EQ(service.error().code, static_cast<std::int64_t>(BusError::noServer));
}

TEST(BusError, NamesGoBothWays) {
    for (const BusError code :
         {BusError::failed, BusError::invalidArguments, BusError::accessDenied, BusError::limitsExceeded,
          BusError::unknownMethod, BusError::serviceUnknown, BusError::noServer, BusError::noReply})
        EXPECT_EQ(busErrorNamed(busErrorName(busError(code, ""))), code);
    EXPECT_EQ(busErrorNamed("org.example.Error.Odd"), BusError::failed);
    EXPECT_EQ(busErrorName(Error("SomeDomain", 2)), errorNamed("Failed"));
}

} // namespace
} // namespace platform
