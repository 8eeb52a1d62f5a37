#include "platform/ipc/BusConnection.h"

#include <cstddef>
#include <utility>

#include "platform/base/SystemLog.h"
#include "platform/ipc/BusError.h"

namespace platform {

namespace {

constexpr std::string_view kDroppedText = "The call was not answered.";

// A bus drops the sender of an array of more than 64 MiB, and a reply's dictionary is one array; the rest of a message
// is far below its own limit of 128 MiB.
constexpr std::size_t kMaximumMessageSize = std::size_t{64} << 20;
// Below this the bus's form of a message, which pads differently, cannot pass the limit.
constexpr std::size_t kSurelySmall = kMaximumMessageSize / 8;

bool isTooLarge(GDBusMethodInvocation* invocation, GVariant* tuple) {
    if (g_variant_get_size(tuple) < kSurelySmall) return false;
    const ObjectReference<GDBusMessage> message(
        g_dbus_message_new_method_reply(g_dbus_method_invocation_get_message(invocation)));
    g_dbus_message_set_body(message.get(), tuple);
    gsize size = 0;
    guchar* bytes = g_dbus_message_to_blob(message.get(), &size, G_DBUS_CAPABILITY_FLAGS_NONE, nullptr);
    g_free(bytes);
    return bytes == nullptr || size > kMaximumMessageSize;
}

// A call on its way to its answer: holds the service up, and answers for whoever forgets to.
class PendingCall {
  public:
    PendingCall(std::shared_ptr<BusContext> context, GDBusMethodInvocation* invocation)
        : context_(std::move(context)), work_(context_->beginWork()), invocation_(invocation) {}
    PendingCall(PendingCall&& other) noexcept
        : context_(std::move(other.context_)), work_(std::move(other.work_)),
          invocation_(std::exchange(other.invocation_, nullptr)) {}
    ~PendingCall() {
        if (invocation_) fail(busError(BusError::failed, kDroppedText));
    }
    PendingCall& operator=(PendingCall&&) = delete;

    void operator()(Result<Array> values, std::string_view whenTooLarge) {
        if (!invocation_) return;
        if (!values) return fail(values.error());
        const GDBusMethodInfo* method = g_dbus_method_invocation_get_method_info(invocation_);
        std::string signature = "(";
        for (GDBusArgInfo** argument = method->out_args; argument && *argument; ++argument)
            signature += (*argument)->signature;
        const Result<Variant> tuple = variantTuple(*values, signature + ")", context_->lists);
        if (!tuple) return fail(tuple.error());
        if (isTooLarge(invocation_, tuple->get()))
            return fail(busError(BusError::limitsExceeded,
                                 "The reply is too large for a message. " + std::string(whenTooLarge)));
        g_dbus_method_invocation_return_value(std::exchange(invocation_, nullptr), tuple->get());
    }

    void fail(const Error& error) {
        g_dbus_method_invocation_return_dbus_error(std::exchange(invocation_, nullptr), busErrorName(error).data(),
                                                   error.localizedDescription().c_str());
    }

  private:
    std::shared_ptr<BusContext> context_;
    std::shared_ptr<void> work_; // released after the answer has been handed to the library
    GDBusMethodInvocation* invocation_;
};

} // namespace

Result<std::unique_ptr<ObjectRegistration>> ObjectRegistration::make(std::shared_ptr<BusContext> context,
                                                                     const std::string& path,
                                                                     const std::vector<std::string>& interfaces,
                                                                     ObjectLookup lookup) {
    static constexpr GDBusInterfaceVTable kHandlers{methodCalled, propertyRead, nullptr, {}};
    std::unique_ptr<ObjectRegistration> made(new ObjectRegistration(std::move(context), std::move(lookup)));
    for (const std::string& name : interfaces) {
        GError* error = nullptr;
        const guint identifier =
            g_dbus_connection_register_object(made->context_->bus.get(), path.c_str(), made->context_->interface(name),
                                              &kHandlers, made.get(), nullptr, &error);
        if (identifier == 0) {
            const std::string text = error->message;
            g_error_free(error);
            return failure(busError(BusError::failed, text));
        }
        made->identifiers_.push_back(identifier);
    }
    return made;
}

ObjectRegistration::~ObjectRegistration() {
    for (const guint identifier : identifiers_) g_dbus_connection_unregister_object(context_->bus.get(), identifier);
}

void ObjectRegistration::methodCalled(GDBusConnection*, const char* sender, const char*, const char* interface,
                                      const char* method, GVariant* arguments, GDBusMethodInvocation* invocation,
                                      void* self) {
    auto& registration = *static_cast<ObjectRegistration*>(self);
    PendingCall pending(registration.context_, invocation);
    const auto object = registration.lookup_(sender);
    if (!object) return pending.fail(object.error());
    Result<Array> values = valuesOf(arguments);
    if (!values) return pending.fail(busError(BusError::invalidArguments, values.error().localizedDescription()));
    // Exceptions end at this boundary: one call failed, the service stays.
    try {
        (*object)->handleCall({interface, method, *std::move(values)}, std::move(pending));
    } catch (const std::exception& exception) {
        systemLog(std::string(method) + ": " + exception.what());
    }
}

GVariant* ObjectRegistration::propertyRead(GDBusConnection*, const char* sender, const char*, const char* interface,
                                           const char* name, GError** error, void* self) {
    auto& registration = *static_cast<ObjectRegistration*>(self);
    const auto refuse = [&](GDBusError code, const Error& reason) {
        g_set_error_literal(error, G_DBUS_ERROR, code, reason.localizedDescription().c_str());
        return nullptr;
    };
    const auto object = registration.lookup_(sender);
    if (!object) return refuse(G_DBUS_ERROR_ACCESS_DENIED, object.error());
    const GDBusPropertyInfo* property =
        g_dbus_interface_info_lookup_property(registration.context_->interface(interface), name);
    const Result<Variant> tuple =
        variantTuple({(*object)->property(interface, name)}, "(" + std::string(property->signature) + ")");
    if (!tuple) return refuse(G_DBUS_ERROR_FAILED, tuple.error());
    return g_variant_get_child_value(tuple->get(), 0);
}

BusConnection::~BusConnection() {
    if (watch_ != 0) g_bus_unwatch_name(watch_);
}

void BusConnection::watch(std::function<void()> left) {
    left_ = std::move(left);
    const auto vanished = [](GDBusConnection*, const char*, void* self) {
        auto& connection = *static_cast<BusConnection*>(self);
        // The handlers may let go of the connection, and with it of themselves.
        const auto invalidated = connection.invalidated_;
        const auto gone = connection.left_;
        if (invalidated) invalidated();
        gone();
    };
    watch_ = g_bus_watch_name_on_connection(context_->bus.get(), client_.c_str(), G_BUS_NAME_WATCHER_FLAGS_NONE,
                                            nullptr, vanished, this, nullptr);
}

Result<> BusConnection::addObject(const std::string& path, const std::vector<std::string>& interfaces,
                                  std::shared_ptr<ExportedObject> object) {
    auto onlyOwner = [owner = client_, object = std::move(object)](
                         const std::string& client) -> Result<std::shared_ptr<ExportedObject>> {
        if (client != owner) return failure(busError(BusError::accessDenied, "This object is another client's."));
        return object;
    };
    objects_.push_back(TRY(ObjectRegistration::make(context_, path, interfaces, std::move(onlyOwner))));
    return {};
}

void BusConnection::emitSignal(const std::string& path, const std::string& interface, const std::string& signal,
                               const Array& arguments, std::string_view signature) {
    const Result<Variant> tuple = variantTuple(arguments, signature, context_->lists);
    if (!tuple) return systemLog(signal + ": " + tuple.error().description());
    // Fails only without a bus, and then nobody listens.
    g_dbus_connection_emit_signal(context_->bus.get(), client_.c_str(), path.c_str(), interface.c_str(), signal.c_str(),
                                  tuple->get(), nullptr);
}

void BusConnection::emitPropertiesChanged(const std::string& path, const std::string& interface,
                                          const Dictionary& changed) {
    GVariantBuilder values;
    g_variant_builder_init(&values, G_VARIANT_TYPE_VARDICT);
    for (const auto& [name, value] : changed) {
        const GDBusPropertyInfo* property =
            g_dbus_interface_info_lookup_property(context_->interface(interface), name.c_str());
        const Result<Variant> tuple = variantTuple({value}, "(" + std::string(property->signature) + ")");
        if (!tuple) continue;
        const Variant member(g_variant_get_child_value(tuple->get(), 0));
        g_variant_builder_add(&values, "{sv}", name.c_str(), member.get());
    }
    g_dbus_connection_emit_signal(context_->bus.get(), client_.c_str(), path.c_str(), "org.freedesktop.DBus.Properties",
                                  "PropertiesChanged", g_variant_new("(sa{sv}as)", interface.c_str(), &values, nullptr),
                                  nullptr);
}

} // namespace platform
