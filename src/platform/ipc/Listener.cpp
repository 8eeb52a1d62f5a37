#include "platform/ipc/Listener.h"

#include <atomic>
#include <csignal>
#include <list>
#include <map>
#include <mutex>
#include <optional>
#include <utility>

#include <glib-unix.h>

#include "platform/base/SystemLog.h"
#include "platform/ipc/BusConnection.h"
#include "platform/ipc/BusError.h"
#include "platform/ipc/ServiceManager.h"

namespace platform {

namespace {

constexpr const char* kBusName = "org.freedesktop.DBus";
constexpr const char* kBusPath = "/org/freedesktop/DBus";
constexpr guint kDoNotQueue = 4;
constexpr guint kPrimaryOwner = 1;

Error takenError(GError* error, BusError code) {
    const Error taken = busError(code, error->message);
    g_error_free(error);
    return taken;
}

// The last reference may be an import's that has just sent progress, while the library is about to call the objects of
// the connection on the listener's thread: they go there.
void releaseConnection(BusConnection* connection) {
    const auto release = [](gpointer released) -> gboolean {
        delete static_cast<BusConnection*>(released);
        return G_SOURCE_REMOVE;
    };
    g_main_context_invoke(nullptr, release, connection);
}

using MainLoop = std::unique_ptr<GMainLoop, void (*)(GMainLoop*)>;

} // namespace

struct Listener::State : std::enable_shared_from_this<Listener::State> {
    State(ServiceDescription serviceDescription, Listener& owner, ListenerDelegate& listenerDelegate,
          std::chrono::milliseconds idle)
        : description(std::move(serviceDescription)), listener(owner), delegate(listenerDelegate), idleTime(idle) {}

    Result<> prepare();
    Result<> connectToBus();
    Result<bool> requestName();
    Result<std::shared_ptr<ExportedObject>> objectFor(const std::string& client);

    std::shared_ptr<void> beginWork(std::function<void()> stop);
    std::shared_ptr<void> counted(std::atomic<int>& count);
    void announceChange();
    void workChanged();
    void startIdleTimer();
    void giveBackName();
    void linger();
    void nameGivenBack();
    void stop(End reason);
    void quit(End reason);

    ServiceDescription description;
    Listener& listener;
    ListenerDelegate& delegate;
    std::chrono::milliseconds idleTime;

    MainLoop loop{nullptr, g_main_loop_unref};
    std::shared_ptr<BusContext> context;
    std::unique_ptr<ObjectRegistration> registration;
    std::map<std::string, std::shared_ptr<BusConnection>> connections;

    std::atomic<int> work = 0;
    std::atomic<int> guests = 0;
    std::mutex stopsMutex;
    std::list<std::function<void()>> stops; // of the work under way; guarded by stopsMutex
    guint idleTimer = 0;
    bool givingBack = false;
    std::optional<End> stopping;
    End end = End::idle;
};

// Registers the objects before the name is asked for: the first call may come with it.
Result<> Listener::State::prepare() {
    loop.reset(g_main_loop_new(nullptr, FALSE));
    TRY(connectToBus());
    GError* error = nullptr;
    context->introspection.reset(g_dbus_node_info_new_for_xml(description.interfaces.c_str(), &error));
    if (error) return failure(takenError(error, BusError::failed));
    context->lists = description.lists;
    context->beginWork = [this] { return counted(work); };
    registration = TRY(ObjectRegistration::make(context, description.objectPath, description.objectInterfaces,
                                                [this](const std::string& client) { return objectFor(client); }));
    if (!TRY(requestName()))
        return failure(busError(BusError::failed, description.busName + " is taken by another process."));
    return {};
}

Result<> Listener::State::connectToBus() {
    GError* error = nullptr;
    context = std::make_shared<BusContext>();
    context->bus.reset(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &error));
    if (error) return failure(takenError(error, BusError::noServer));
    // The library would end the process in the middle of an import.
    g_dbus_connection_set_exit_on_close(context->bus.get(), FALSE);
    const auto closed =
        +[](GDBusConnection*, gboolean, GError*, gpointer self) { static_cast<State*>(self)->stop(End::busGone); };
    g_signal_connect(context->bus.get(), "closed", G_CALLBACK(closed), this);
    return {};
}

Result<bool> Listener::State::requestName() {
    GError* error = nullptr;
    const Variant reply(g_dbus_connection_call_sync(context->bus.get(), kBusName, kBusPath, kBusName, "RequestName",
                                                    g_variant_new("(su)", description.busName.c_str(), kDoNotQueue),
                                                    G_VARIANT_TYPE("(u)"), G_DBUS_CALL_FLAGS_NONE, -1, nullptr,
                                                    &error));
    if (error) return failure(takenError(error, BusError::failed));
    guint answer = 0;
    g_variant_get(reply.get(), "(u)", &answer);
    return answer == kPrimaryOwner;
}

// A client's connection begins with its first call and ends when it leaves the bus.
Result<std::shared_ptr<ExportedObject>> Listener::State::objectFor(const std::string& client) {
    if (stopping) return failure(busError(BusError::failed, "The service is shutting down."));
    auto known = connections.find(client);
    if (known == connections.end()) {
        const std::shared_ptr<BusConnection> connection(new BusConnection(context, client), releaseConnection);
        if (!delegate.listenerShouldAcceptNewConnection(listener, connection))
            return failure(busError(BusError::accessDenied, "The service does not serve this client."));
        known = connections.emplace(client, connection).first;
        known->second->watch([this, client] { connections.erase(client); });
    }
    return known->second->exportedObject();
}

std::shared_ptr<void> Listener::State::beginWork(std::function<void()> stop) {
    const std::lock_guard lock(stopsMutex);
    const auto place = stops.insert(stops.end(), std::move(stop));
    return {static_cast<void*>(this), [this, place, kept = counted(work)](void*) {
                const std::lock_guard removing(stopsMutex);
                stops.erase(place);
            }};
}

// A token that counts while it lives.
std::shared_ptr<void> Listener::State::counted(std::atomic<int>& count) {
    if (count++ == 0) announceChange();
    return {static_cast<void*>(this), [self = shared_from_this(), &count](void*) {
                if (--count == 0) self->announceChange();
            }};
}

// Has the listener's thread look at the counts.
void Listener::State::announceChange() {
    const auto look = [](gpointer data) -> gboolean {
        if (const auto state = static_cast<std::weak_ptr<State>*>(data)->lock()) state->workChanged();
        return G_SOURCE_REMOVE;
    };
    const auto release = [](gpointer data) { delete static_cast<std::weak_ptr<State>*>(data); };
    g_main_context_invoke_full(nullptr, G_PRIORITY_DEFAULT, look, new std::weak_ptr<State>(weak_from_this()), release);
}

void Listener::State::workChanged() {
    if (givingBack && !stopping) return; // looked at when it is over
    if (work > 0 || (guests > 0 && !stopping)) {
        if (idleTimer != 0) g_source_remove(std::exchange(idleTimer, 0));
        return;
    }
    if (stopping) return quit(*stopping);
    startIdleTimer();
}

void Listener::State::startIdleTimer() {
    if (idleTimer != 0) return;
    const auto idle = [](gpointer self) -> gboolean {
        static_cast<State*>(self)->idleTimer = 0;
        static_cast<State*>(self)->giveBackName();
        return G_SOURCE_REMOVE;
    };
    idleTimer = g_timeout_add(static_cast<guint>(idleTime.count()), idle, this);
}

// The bus answers after everything that it has passed on to this process before, and the answer is looked at after all
// of that has been dispatched: with a lower priority than calls have.
void Listener::State::giveBackName() {
    givingBack = true;
    notifyServiceManager(kServiceStopping);
    const auto answered = [](GObject* bus, GAsyncResult* result, gpointer self) {
        if (GVariant* reply = g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, nullptr))
            g_variant_unref(reply);
        const auto afterCalls = [](gpointer state) -> gboolean {
            static_cast<State*>(state)->linger();
            return G_SOURCE_REMOVE;
        };
        g_idle_add_full(G_PRIORITY_LOW, afterCalls, self, nullptr);
    };
    g_dbus_connection_call(context->bus.get(), kBusName, kBusPath, kBusName, "ReleaseName",
                           g_variant_new("(s)", description.busName.c_str()), G_VARIANT_TYPE("(u)"),
                           G_DBUS_CALL_FLAGS_NONE, -1, nullptr, answered, this);
}

// Some clients ask the bus who has the name and then call that process: their calls may still be on their way.
void Listener::State::linger() {
    constexpr guint kLingerTime = 500; // milliseconds
    const auto over = [](gpointer self) -> gboolean {
        static_cast<State*>(self)->idleTimer = 0;
        static_cast<State*>(self)->nameGivenBack();
        return G_SOURCE_REMOVE;
    };
    idleTimer = g_timeout_add_full(G_PRIORITY_LOW, kLingerTime, over, this, nullptr);
}

// With a call in hand the process stays, under the name again unless a successor has it.
void Listener::State::nameGivenBack() {
    givingBack = false;
    if (work == 0 && (guests == 0 || stopping)) return quit(stopping.value_or(End::idle));
    if (const Result<bool> owner = requestName(); !owner) systemLog(owner.error().description());
    notifyServiceManager(kServiceReady);
    workChanged();
}

void Listener::State::stop(End reason) {
    if (stopping) return;
    stopping = reason;
    {
        const std::lock_guard lock(stopsMutex);
        for (const std::function<void()>& stopWork : stops) stopWork();
    }
    if (work == 0) quit(reason);
}

void Listener::State::quit(End reason) {
    end = reason;
    g_main_loop_quit(loop.get());
}

Listener::Listener(ServiceDescription description, ListenerDelegate& delegate, std::chrono::milliseconds idleTime)
    : state_(std::make_shared<State>(std::move(description), *this, delegate, idleTime)) {}

Listener::~Listener() {
    if (state_->idleTimer != 0) g_source_remove(state_->idleTimer);
    if (state_->context && state_->context->bus)
        g_signal_handlers_disconnect_by_data(state_->context->bus.get(), state_.get());
    // Before the state: connections and registrations point into it.
    state_->connections.clear();
    state_->registration.reset();
}

Result<Listener::End> Listener::run() {
    TRY(state_->prepare());
    const auto signalled = [](gpointer self) -> gboolean {
        static_cast<State*>(self)->stop(End::stopped);
        return G_SOURCE_CONTINUE;
    };
    const guint terminate = g_unix_signal_add(SIGTERM, signalled, state_.get());
    const guint interrupt = g_unix_signal_add(SIGINT, signalled, state_.get());
    notifyServiceManager(kServiceReady);
    state_->workChanged();
    g_main_loop_run(state_->loop.get());
    g_source_remove(terminate);
    g_source_remove(interrupt);
    // What has been answered is on its way before the process ends.
    g_dbus_connection_flush_sync(state_->context->bus.get(), nullptr, nullptr);
    return state_->end;
}

std::shared_ptr<void> Listener::beginWork(std::function<void()> stop) {
    return state_->beginWork(std::move(stop));
}

std::shared_ptr<void> Listener::stayForGuest() {
    return state_->counted(state_->guests);
}

} // namespace platform
