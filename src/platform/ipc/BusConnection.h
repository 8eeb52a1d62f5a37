// The bus library's side of Connection. For the sources of this directory alone.
#pragma once

#include <atomic>
#include <map>
#include <mutex>

#include <gio/gio.h>

#include "platform/ipc/Connection.h"
#include "platform/ipc/Listener.h"
#include "platform/ipc/VariantCoding.h"

namespace platform {

// Reference-counted objects of the library.
struct ObjectRelease {
    void operator()(void* object) const { g_object_unref(object); }
};
template<class T>
using ObjectReference = std::unique_ptr<T, ObjectRelease>;

// What every object on the bus needs of the listener; shared with calls that are still under way.
struct BusContext {
    ObjectReference<GDBusConnection> bus;
    std::unique_ptr<GDBusNodeInfo, void (*)(GDBusNodeInfo*)> introspection{nullptr, g_dbus_node_info_unref};
    std::vector<ListSignature> lists;
    std::function<std::shared_ptr<void>()> beginWork;

    GDBusInterfaceInfo* interface(const std::string& name) const {
        return g_dbus_node_info_lookup_interface(introspection.get(), name.c_str());
    }
};

// Finds the object that a client's call is for, or says why there is none.
using ObjectLookup = std::function<Result<std::shared_ptr<ExportedObject>>(const std::string& client)>;

// One path with its interfaces on the bus, for as long as it lives. Main thread.
class ObjectRegistration {
  public:
    static Result<std::unique_ptr<ObjectRegistration>> make(std::shared_ptr<BusContext> context,
                                                            const std::string& path,
                                                            const std::vector<std::string>& interfaces,
                                                            ObjectLookup lookup);
    ~ObjectRegistration();
    ObjectRegistration(const ObjectRegistration&) = delete;
    ObjectRegistration& operator=(const ObjectRegistration&) = delete;

  private:
    ObjectRegistration(std::shared_ptr<BusContext> context, ObjectLookup lookup)
        : context_(std::move(context)), lookup_(std::move(lookup)) {}

    static void methodCalled(GDBusConnection*, const char* sender, const char* path, const char* interface,
                             const char* method, GVariant* arguments, GDBusMethodInvocation* invocation, void* self);
    static GVariant* propertyRead(GDBusConnection*, const char* sender, const char* path, const char* interface,
                                  const char* name, GError** error, void* self);

    std::shared_ptr<BusContext> context_;
    ObjectLookup lookup_;
    std::vector<guint> identifiers_;
};

class BusConnection : public Connection {
  public:
    BusConnection(std::shared_ptr<BusContext> context, std::string client)
        : context_(std::move(context)), client_(std::move(client)) {}
    ~BusConnection() override;

    // Calls back once when the client leaves, at once when it has left already.
    void watch(std::function<void()> left);
    const std::shared_ptr<ExportedObject>& exportedObject() const { return exportedObject_; }

    const std::string& clientName() const override { return client_; }
    void setExportedObject(std::shared_ptr<ExportedObject> object) override { exportedObject_ = std::move(object); }
    Result<> addObject(const std::string& path, const std::vector<std::string>& interfaces,
                       std::shared_ptr<ExportedObject> object) override;
    void setInvalidationHandler(std::function<void()> handler) override { invalidated_ = std::move(handler); }
    void emitSignal(const std::string& path, const std::string& interface, const std::string& signal,
                    const Array& arguments, std::string_view signature) override;
    void emitPropertiesChanged(const std::string& path, const std::string& interface,
                               const Dictionary& changed) override;

  private:
    std::shared_ptr<BusContext> context_;
    std::string client_;
    std::shared_ptr<ExportedObject> exportedObject_;
    std::vector<std::unique_ptr<ObjectRegistration>> objects_;
    std::function<void()> invalidated_;
    std::function<void()> left_;
    guint watch_ = 0;
};

} // namespace platform
