// Counterpart of NSXPCConnection: one client of a listener, with the objects that it may call.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/Result.h"

namespace platform {

struct MethodCall {
    std::string interface;
    std::string method;
    Array arguments; // of the types that the interface declares
};

// Answers one call, once, from any thread; one that is dropped unanswered answers with an error. What is too large for
// a message becomes LimitsExceeded, with the second text as an explanation.
using MethodReply = std::move_only_function<void(Result<Array> values, std::string_view whenTooLarge)>;

class ExportedObject {
  public:
    virtual ~ExportedObject() = default;

    virtual void handleCall(MethodCall call, MethodReply reply) = 0;
    virtual Value property(std::string_view interface, std::string_view name) = 0;
};

class Connection {
  public:
    virtual ~Connection() = default;

    // The client's unique name on the bus.
    virtual const std::string& clientName() const = 0;
    // What the client sees at the service's path. Released when the client leaves.
    virtual void setExportedObject(std::shared_ptr<ExportedObject> object) = 0;
    // A further object, for this client alone: others get AccessDenied. Released when the client leaves. To be called
    // on the listener's thread.
    virtual Result<> addObject(const std::string& path, const std::vector<std::string>& interfaces,
                               std::shared_ptr<ExportedObject> object) = 0;
    // Called when the client has left the bus.
    virtual void setInvalidationHandler(std::function<void()> handler) = 0;

    // Sent to this client alone; callable from any thread. The signature is the arguments' tuple, "(sttuu)".
    virtual void emitSignal(const std::string& path, const std::string& interface, const std::string& signal,
                            const Array& arguments, std::string_view signature) = 0;
    // Tells the client of changed properties; their types are those that the interface declares.
    virtual void emitPropertiesChanged(const std::string& path, const std::string& interface,
                                       const Dictionary& changed) = 0;
};

} // namespace platform
