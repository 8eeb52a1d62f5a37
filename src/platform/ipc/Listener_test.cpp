#include "platform/ipc/Listener.h"

#include <csignal>

#include "platform/ipc/ListenerFixture.h"

namespace platform {
namespace {

TEST_F(ListenerOnABus, AnswersCallsAndLeavesWhenIdle) {
    const auto end = serve([] {
        const Client client;
        EXPECT_EQ(client.request("hello").text, "('hello',)");
        GVariant* values = g_variant_new_parsed("({'a': <'x'>, 'b': <@ax [1, 2]>},)");
        EXPECT_EQ(client.call(kPath, kInterface, "Echo", values).text,
                  "({'a': <'x'>, 'b': <[<int64 1>, <int64 2>]>},)");
        EXPECT_EQ(client.property(kPath, kInterface, "Level").text, "(<uint32 3>,)");
        EXPECT_EQ(client.request("later").text, "('later',)"); // longer than the idle time
    });
    EXPECT_EQ(end, Listener::End::idle);
}

TEST_F(ListenerOnABus, RefusesWhatIsNotInItsInterfaces) {
    serve([] {
        const Client client;
        EXPECT_EQ(client.call(kPath, kInterface, "Nothing", nullptr).error, errorNamed("UnknownMethod"));
        EXPECT_EQ(client.call(kPath, kItem, "Name", nullptr).error, errorNamed("UnknownMethod"));
        EXPECT_EQ(client.call("/elsewhere", kInterface, "Do", g_variant_new("(s)", "x")).error,
                  errorNamed("UnknownMethod"));
        EXPECT_EQ(client.call(kPath, kInterface, "Do", g_variant_new("(i)", 1)).error, errorNamed("InvalidArgs"));
        EXPECT_EQ(client.property(kPath, kInterface, "Nothing").error, errorNamed("InvalidArgs"));
        EXPECT_FALSE(client
                         .call(kPath, "org.freedesktop.DBus.Properties", "Set",
                               g_variant_new("(ssv)", kInterface.c_str(), "Level", g_variant_new_uint32(1)))
                         .error.empty());
        for (const char* odd : {"({'a': <{1: 2}>},)", "({'a': <@a{ys} {0x01: 'x'}>},)"})
            EXPECT_EQ(client.call(kPath, kInterface, "Echo", g_variant_new_parsed(odd)).error,
                      errorNamed("InvalidArgs"))
                << odd;
        // A descriptor that does not come with the message, as well.
        EXPECT_EQ(client.call(kPath, kInterface, "Echo", g_variant_new_parsed("({'a': <handle 0>},)")).error,
                  errorNamed("InvalidArgs"));
    });
}

TEST_F(ListenerOnABus, GivesErrorsTheirNamesOnTheBus) {
    serve([] {
        const Client client;
        const Outcome failed = client.request("fail");
        EXPECT_EQ(failed.error, errorNamed("InvalidArgs"));
        EXPECT_EQ(failed.message, "because");
        EXPECT_EQ(client.request("foreign error").error, errorNamed("Failed"));
        EXPECT_EQ(client.request("wrong type").error, errorNamed("Failed"));
    });
}

TEST_F(ListenerOnABus, AnswersForAnObjectThatForgetsOrThrows) {
    serve([] {
        const Client client;
        for (const char* what : {"forget", "throw"}) {
            const Outcome dropped = client.request(what);
            EXPECT_EQ(dropped.error, errorNamed("Failed")) << what;
            EXPECT_EQ(dropped.message, "The call was not answered.") << what;
        }
        EXPECT_EQ(client.request("hello").text, "('hello',)");
    });
}

TEST_F(ListenerOnABus, TellsWhereToLookWhenAReplyIsTooLarge) {
    serve([] {
        const Client client;
        const Outcome refused = client.call(kPath, kInterface, "Large", nullptr);
        EXPECT_EQ(refused.error, errorNamed("LimitsExceeded"));
        EXPECT_EQ(refused.message, "The reply is too large for a message. Look elsewhere.");
        EXPECT_EQ(client.request("hello").text, "('hello',)"); // the bus has not dropped the service
    });
}

TEST_F(ListenerOnABus, MakesOneConnectionForEachClient) {
    serve([] {
        const Client one;
        EXPECT_EQ(one.request("a").text, "('a',)");
        EXPECT_EQ(one.request("b").text, "('b',)");
        const Client other;
        EXPECT_EQ(other.request("c").text, "('c',)");
    });
    ASSERT_EQ(delegate_.clients.size(), 2U);
    EXPECT_NE(delegate_.clients[0], delegate_.clients[1]);
}

TEST_F(ListenerOnABus, TurnsAwayWhomTheDelegateRefuses) {
    delegate_.refuses = true;
    serve([] { EXPECT_EQ(Client().request("a").error, errorNamed("AccessDenied")); });
}

TEST_F(ListenerOnABus, ReleasesWhatItHasForAClientThatLeaves) {
    serve(
        [this] {
            {
                EXPECT_EQ(Client().request("item").text, "('item',)");
            }
            for (int tries = 0; tries < 1000 && delegate_.left == 0; ++tries)
                std::this_thread::sleep_for(milliseconds(5));
            EXPECT_EQ(delegate_.left, 1);
            const Client next; // the item's path is free again
            EXPECT_TRUE(delegate_.objects.front().expired());
            EXPECT_EQ(next.call(kPath + "/item", kItem, "Name", nullptr).error, errorNamed("UnknownMethod"));
            EXPECT_EQ(next.request("item").text, "('item',)");
        },
        milliseconds(300));
}

TEST_F(ListenerOnABus, KeepsAClientsObjectForItAlone) {
    serve([] {
        const Client owner, other;
        EXPECT_EQ(owner.request("item").text, "('item',)");
        EXPECT_EQ(owner.call(kPath + "/item", kItem, "Name", nullptr).text, "('item',)");
        EXPECT_EQ(owner.property(kPath + "/item", kItem, "Count").text, "(<uint64 9>,)");
        EXPECT_EQ(other.call(kPath + "/item", kItem, "Name", nullptr).error, errorNamed("AccessDenied"));
        EXPECT_EQ(other.property(kPath + "/item", kItem, "Count").error, errorNamed("AccessDenied"));
        EXPECT_EQ(other.request("item").error, errorNamed("Failed")); // the path is taken
    });
}

TEST_F(ListenerOnABus, SendsSignalsToTheirClientAlone) {
    serve([] {
        Client client, other;
        client.subscribe("Tick");
        client.subscribe("PropertiesChanged");
        other.subscribe("Tick");
        other.subscribe("PropertiesChanged");
        EXPECT_EQ(client.request("tick").text, "('tick',)");
        EXPECT_EQ(client.request("change").text, "('change',)");
        EXPECT_EQ(client.signals(), (std::vector<std::string>{"Tick(7,)", "PropertiesChanged('" + kInterface +
                                                                              "', {'Level': <uint32 4>}, [])"}));
        EXPECT_TRUE(other.signals().empty());
    });
}

TEST_F(ListenerOnABus, StaysForAGuest) {
    serve([this] {
        const Client guest;
        EXPECT_EQ(guest.request("stay").text, "('stay',)");
        held_.reset();
        std::this_thread::sleep_for(milliseconds(900)); // idle time, and the half second after it
        const Client other;
        EXPECT_EQ(other.request("hello").text, "('hello',)");
    });
}

TEST_F(ListenerOnABus, IsToldToStopAndWaitsForItsWork) {
    const auto end = serve(
        [] {
            const Client client;
            EXPECT_EQ(client.request("work").text, "('work',)");
            EXPECT_EQ(client.request("stay").text, "('stay',)"); // no reason to stay now
            ::kill(::getpid(), SIGTERM);
            for (int tries = 0; tries < 1000 && Things::stops == 0; ++tries)
                std::this_thread::sleep_for(milliseconds(5));
            ::kill(::getpid(), SIGINT); // asked again, nothing is stopped twice
            EXPECT_EQ(client.request("hello").message, "The service is shutting down.");
        },
        std::chrono::minutes(10));
    EXPECT_EQ(end, Listener::End::stopped);
    EXPECT_EQ(Things::stops, 1);
}

TEST_F(ListenerOnABus, EndsWithTheBusButNotBeforeItsWork) {
    const auto end = serve(
        [this] {
            const Client client;
            EXPECT_EQ(client.request("work").text, "('work',)");
            bus_->stop();
        },
        std::chrono::minutes(10));
    EXPECT_EQ(end, Listener::End::busGone);
    EXPECT_EQ(Things::stops, 1);
}

TEST_F(ListenerOnABus, DoesNotServeUnderANameThatIsTaken) {
    const Client other;
    other.call("/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName", g_variant_new("(su)", kName.c_str(), 0),
               "org.freedesktop.DBus");
    Listener listener(description(), delegate_, milliseconds(100));
    const Result<Listener::End> end = listener.run();
    ASSERT_FALSE(end);
    EXPECT_EQ(end.error().localizedDescription(), kName + " is taken by another process.");
}

TEST(Listener, NeedsABus) {
    ASSERT_EQ(::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere", 1), 0);
    Delegate delegate;
    Listener listener(description(), delegate, milliseconds(100));
    const Result<Listener::End> end = listener.run();
    ASSERT_FALSE(end);
    EXPECT_EQ(end.error().domain, kBusErrorDomain);
    EXPECT_EQ(end.error().code, static_cast<std::int64_t>(BusError::noServer));
}

} // namespace
} // namespace platform
