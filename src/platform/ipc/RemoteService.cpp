#include "platform/ipc/RemoteService.h"

#include <deque>
#include <optional>
#include <utility>

#include <gio/gio.h>

#include "platform/ipc/BusConnection.h"
#include "platform/ipc/BusError.h"
#include "platform/ipc/VariantCoding.h"

namespace platform {

namespace {

// The bus's own name for the error, which the library keeps in front of the text, is split off.
Error errorFromBus(GError* error) {
    char* name = g_dbus_error_get_remote_error(error);
    const BusError code = name ? busErrorNamed(name) : BusError::failed;
    g_dbus_error_strip_remote_error(error);
    const Error result = busError(code, error->message);
    g_free(name);
    g_error_free(error);
    return result;
}

} // namespace

struct RemoteService::State {
    ~State() {
        for (const guint subscription : subscriptions) g_dbus_connection_signal_unsubscribe(bus.get(), subscription);
        g_main_context_unref(context);
    }

    GMainContext* context = g_main_context_new(); // answers and signals arrive here, while a call waits
    ObjectReference<GDBusConnection> bus;
    std::string busName;
    std::vector<guint> subscriptions;
    std::deque<std::function<void(const Array&)>> handlers; // a deque: subscriptions point into it
};

RemoteService::RemoteService(std::unique_ptr<State> state) : state_(std::move(state)) {}
RemoteService::~RemoteService() = default;

Result<std::unique_ptr<RemoteService>> RemoteService::connect(const std::string& busName) {
    auto state = std::make_unique<State>();
    GError* error = nullptr;
    state->bus.reset(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &error));
    if (error) {
        const Error none = busError(BusError::noServer, error->message);
        g_error_free(error);
        return failure(none);
    }
    g_dbus_connection_set_exit_on_close(state->bus.get(), FALSE);
    state->busName = busName;
    return std::unique_ptr<RemoteService>(new RemoteService(std::move(state)));
}

Result<Array> RemoteService::call(const std::string& path, const std::string& interface, const std::string& method,
                                  const Array& arguments, std::string_view signature) {
    const Variant tuple = TRY(variantTuple(arguments, signature));
    ObjectReference<GAsyncResult> answer;
    const auto answered = [](GObject*, GAsyncResult* result, gpointer place) {
        static_cast<ObjectReference<GAsyncResult>*>(place)->reset(static_cast<GAsyncResult*>(g_object_ref(result)));
    };
    g_main_context_push_thread_default(state_->context);
    g_dbus_connection_call(state_->bus.get(), state_->busName.c_str(), path.c_str(), interface.c_str(), method.c_str(),
                           tuple.get(), nullptr, G_DBUS_CALL_FLAGS_NONE, G_MAXINT, nullptr, answered, &answer);
    while (!answer) g_main_context_iteration(state_->context, TRUE);
    g_main_context_pop_thread_default(state_->context);

    GError* error = nullptr;
    GVariant* reply = g_dbus_connection_call_finish(state_->bus.get(), answer.get(), &error);
    if (error) return failure(errorFromBus(error));
    return valuesOf(Variant(reply).get());
}

void RemoteService::send(const std::string& path, const std::string& interface, const std::string& method) {
    g_dbus_connection_call(state_->bus.get(), state_->busName.c_str(), path.c_str(), interface.c_str(), method.c_str(),
                           nullptr, nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr, nullptr);
}

void RemoteService::onSignal(const std::string& interface, const std::string& signal,
                             std::function<void(const Array&)> handler) {
    const auto received = [](GDBusConnection*, const char*, const char*, const char*, const char*, GVariant* arguments,
                             gpointer place) {
        if (const Result<Array> values = valuesOf(arguments))
            (*static_cast<std::function<void(const Array&)>*>(place))(*values);
    };
    state_->handlers.push_back(std::move(handler));
    g_main_context_push_thread_default(state_->context);
    state_->subscriptions.push_back(g_dbus_connection_signal_subscribe(
        state_->bus.get(), state_->busName.c_str(), interface.c_str(), signal.c_str(), nullptr, nullptr,
        G_DBUS_SIGNAL_FLAGS_NONE, received, &state_->handlers.back(), nullptr));
    g_main_context_pop_thread_default(state_->context);
}

} // namespace platform
