// A bus of a test's own with a listener on it, and clients of the bus library. The listener has the test's thread, the
// clients have one of their own. For the tests of this directory.
#pragma once

#include "platform/ipc/Listener.h"

#include <atomic>
#include <cstdlib>
#include <functional>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gio/gio.h>
#include <gtest/gtest.h>

#include "platform/ipc/BusConnection.h"
#include "platform/ipc/BusError.h"

namespace platform {

using std::chrono::milliseconds;

inline const std::string kName = "org.example.Test1", kPath = "/org/example/Test1",
                         kInterface = "org.example.Test1.Things", kItem = "org.example.Test1.Item";
inline constexpr const char* kInterfaces = R"(<node>
  <interface name="org.example.Test1.Things">
    <method name="Echo"><arg type="a{sv}" direction="in"/><arg type="a{sv}" direction="out"/></method>
    <method name="Do"><arg type="s" direction="in"/><arg type="s" direction="out"/></method>
    <method name="Large"><arg type="a{sv}" direction="out"/></method>
    <signal name="Tick"><arg type="t"/></signal>
    <property name="Level" type="u" access="read"/>
  </interface>
  <interface name="org.example.Test1.Item">
    <method name="Name"><arg type="s" direction="out"/></method>
    <property name="Count" type="t" access="read"/>
  </interface>
</node>)";

// A bus of the test's own.
class PrivateBus {
  public:
    PrivateBus() : bus_(g_test_dbus_new(G_TEST_DBUS_NONE)) { g_test_dbus_up(bus_); }
    ~PrivateBus() {
        stop();
        g_object_unref(bus_);
    }
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    std::string address() const { return g_test_dbus_get_bus_address(bus_); }
    void stop() {
        if (!std::exchange(stopped_, true)) g_test_dbus_stop(bus_);
    }

  private:
    bool stopped_ = false;
    GTestDBus* bus_;
};

// What a call gave: a reply's first text, or an error's name and message.
struct Outcome {
    std::string text;
    std::string error;
    std::string message;
};

// A client of its own on the bus.
class Client {
  public:
    Client() {
        const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
        constexpr auto kFlags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                                  G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
        context_ = g_main_context_new();
        bus_.reset(g_dbus_connection_new_for_address_sync(address, kFlags, nullptr, nullptr, nullptr));
    }
    ~Client() {
        g_dbus_connection_close_sync(bus_.get(), nullptr, nullptr);
        bus_.reset();
        g_main_context_unref(context_);
    }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    Outcome call(const std::string& path, const std::string& interface, const std::string& method, GVariant* arguments,
                 const std::string& name = kName) const {
        GError* error = nullptr;
        const Variant reply(g_dbus_connection_call_sync(bus_.get(), name.c_str(), path.c_str(), interface.c_str(),
                                                        method.c_str(), arguments, nullptr, G_DBUS_CALL_FLAGS_NONE,
                                                        60'000, nullptr, &error));
        if (!error) {
            char* text = g_variant_print(reply.get(), FALSE);
            Outcome outcome{text, {}, {}};
            g_free(text);
            return outcome;
        }
        char* errorName = g_dbus_error_get_remote_error(error);
        g_dbus_error_strip_remote_error(error);
        Outcome outcome{{}, errorName ? errorName : "", error->message};
        g_free(errorName);
        g_error_free(error);
        return outcome;
    }
    Outcome request(const std::string& what) const {
        return call(kPath, kInterface, "Do", g_variant_new("(s)", what.c_str()));
    }
    Outcome property(const std::string& path, const std::string& interface, const std::string& name) const {
        return call(path, "org.freedesktop.DBus.Properties", "Get",
                    g_variant_new("(ss)", interface.c_str(), name.c_str()));
    }

    // Counts the signals that come with this one from now on.
    void subscribe(const char* signal) {
        const auto received = [](GDBusConnection*, const char*, const char*, const char*, const char* name,
                                 GVariant* arguments, gpointer self) {
            char* text = g_variant_print(arguments, FALSE);
            static_cast<Client*>(self)->signals_.push_back(std::string(name) + text);
            g_free(text);
        };
        g_main_context_push_thread_default(context_);
        g_dbus_connection_signal_subscribe(bus_.get(), nullptr, nullptr, signal, nullptr, nullptr,
                                           G_DBUS_SIGNAL_FLAGS_NONE, received, this, nullptr);
        g_main_context_pop_thread_default(context_);
    }
    const std::vector<std::string>& signals() {
        (void)call("/", "org.freedesktop.DBus.Peer", "Ping", nullptr); // what came before its answer has been read
        while (g_main_context_iteration(context_, FALSE)) {
        }
        return signals_;
    }

  private:
    GMainContext* context_;
    ObjectReference<GDBusConnection> bus_;
    std::vector<std::string> signals_;
};

// What a client sees: does what it is told.
class Things : public ExportedObject {
  public:
    Things(Listener& listener, std::weak_ptr<Connection> connection)
        : listener_(listener), connection_(std::move(connection)) {}

    void handleCall(MethodCall call, MethodReply reply) override {
        if (call.method == "Echo") return reply(std::move(call.arguments), {});
        if (call.method == "Name") {
            ++named;
            return reply(Array{Value("item")}, {});
        }
        if (call.method == "Large") {
            constexpr std::size_t kLarge = std::size_t{64} << 20;
            return reply(Array{Value(Dictionary{{"data", Value(Data(std::string(kLarge, 'x')))}})}, "Look elsewhere.");
        }
        const std::string what = call.arguments.front().utf8();
        const auto client = connection_.lock();
        if (what == "forget") return;
        if (what == "throw") throw std::runtime_error("thrown");
        if (what == "fail") return reply(failure(busError(BusError::invalidArguments, "because")), {});
        if (what == "foreign error") return reply(failure(Error("SomeDomain", 5)), {});
        if (what == "wrong type") return reply(Array{Value(1), Value(2)}, {});
        if (what == "later") {
            std::thread([held = std::move(reply)]() mutable {
                std::this_thread::sleep_for(milliseconds(300));
                held(Array{Value("later")}, {});
            }).detach();
            return;
        }
        if (what == "item" && !client->addObject(kPath + "/item", {kItem}, std::make_shared<Things>(listener_, client)))
            return reply(failure(busError(BusError::failed, "taken")), {});
        if (what == "tick") client->emitSignal(kPath, kInterface, "Tick", {Value(7)}, "(t)");
        if (what == "change") client->emitPropertiesChanged(kPath, kInterface, {{"Level", Value(4)}});
        if (what == "stay") guest_ = listener_.stayForGuest();
        if (what == "work") startWork();
        reply(Array{Value(what)}, {});
    }
    Value property(std::string_view, std::string_view name) override { return Value(name == "Level" ? 3 : 9); }

    static inline std::atomic<int> stops = 0, named = 0;

  private:
    // Work that ends a while after it has been told to.
    void startWork() {
        work_ = listener_.beginWork([] {
            ++stops;
            std::thread([work = std::move(work_)]() mutable {
                std::this_thread::sleep_for(milliseconds(300));
                work.reset();
            }).detach();
        });
    }

    Listener& listener_;
    std::weak_ptr<Connection> connection_;
    std::shared_ptr<void> guest_;
    // Goes on when the client leaves: a bus that ends may drop it before the listener hears of the end.
    static inline std::shared_ptr<void> work_;
};

class Delegate : public ListenerDelegate {
  public:
    bool listenerShouldAcceptNewConnection(Listener& listener, const std::shared_ptr<Connection>& connection) override {
        clients.push_back(connection->clientName());
        if (refuses) return false;
        const auto things = std::make_shared<Things>(listener, connection);
        objects.push_back(things);
        connection->setExportedObject(things);
        connection->setInvalidationHandler([this] { ++left; });
        return true;
    }

    bool refuses = false;
    std::vector<std::string> clients;
    std::vector<std::weak_ptr<Things>> objects;
    std::atomic<int> left = 0;
};

inline ServiceDescription description() {
    return {.busName = kName,
            .objectPath = kPath,
            .interfaces = kInterfaces,
            .objectInterfaces = {kInterface},
            .lists = {}};
}

class ListenerOnABus : public testing::Test {
  protected:
    void SetUp() override {
        if (std::system("command -v dbus-daemon >/dev/null") != 0) GTEST_SKIP() << "no dbus-daemon";
        bus_ = std::make_unique<PrivateBus>();
        ASSERT_EQ(::setenv("DBUS_SESSION_BUS_ADDRESS", bus_->address().c_str(), 1), 0);
        Things::stops = Things::named = 0;
    }

    // Serves until the listener leaves. The clients begin when it has the name, and it does not leave before they have
    // ended or let go of it, however slow the machine is.
    Listener::End serve(const std::function<void()>& clients, milliseconds idleTime = milliseconds(100)) {
        Listener listener(description(), delegate_, idleTime);
        held_ = listener.stayForGuest();
        auto clientsEnd = std::async(std::launch::async, [&] {
            waitForName();
            clients();
            held_.reset();
        });
        const Result<Listener::End> end = listener.run();
        EXPECT_TRUE(end) << (end ? "" : end.error().description());
        clientsEnd.get();
        return end.value_or(Listener::End::busGone);
    }

    static void waitForName() {
        const Client client;
        for (int tries = 0; tries < 1000; ++tries) {
            const Outcome owner = client.call("/", "org.freedesktop.DBus.Peer", "Ping", nullptr);
            if (owner.error != "org.freedesktop.DBus.Error.ServiceUnknown") return;
            std::this_thread::sleep_for(milliseconds(5));
        }
    }

    std::unique_ptr<PrivateBus> bus_;
    std::shared_ptr<void> held_;
    Delegate delegate_;
};

inline std::string errorNamed(const char* word) {
    return std::string("org.freedesktop.DBus.Error.") + word;
}

} // namespace platform
