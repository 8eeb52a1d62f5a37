// What reaches the service from the two sides that it does not trust. The first byte says which: the arguments of an
// import as a client sends them, or the messages of a worker that an export has taken over. Messages are separated by
// the text "|next|". However odd they are, the import replies once, and the reply can be sent.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <future>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/base/SystemLog.h"
#include "platform/foundation/Environment.h"
#include "platform/ipc/MessageCoding.h"
#include "service/ConfinedParseOperation.h"
#include "service/ImportCall.h"
#include "service/Quillet_ENEX_Import.h"
#include "service/ServiceNames.h"
#include "service/WorkerMessages.h"

using namespace platform;
using namespace quillet;

namespace {

constexpr std::string_view kSeparator = "|next|";

using Messages = std::vector<Dictionary>;

// A parse operation whose worker has sent just these messages.
class ToldOperation : public ConfinedParseOperation {
  public:
    ToldOperation(URL file, URL directory, Messages messages)
        : ConfinedParseOperation(std::move(file), std::move(directory), {}), messages_(std::move(messages)) {}

    void start() override {
        setOperationExecuting(true);
        for (const Dictionary& message : messages_) {
            if (operationFinished()) return;
            if (const Result<> handled = handleMessage(message); !handled) return finishWithError(handled.error());
        }
        if (!operationFinished()) finishWithError(Error("Fuzz", 1));
    }

  private:
    Messages messages_;
};

Messages messagesIn(std::string_view bytes) {
    Messages messages;
    while (!bytes.empty()) {
        const std::size_t end = bytes.find(kSeparator);
        if (Result<Dictionary> message = decodedMessage(bytes.substr(0, end))) messages.push_back(*std::move(message));
        bytes.remove_prefix(end == std::string_view::npos ? bytes.size() : end + kSeparator.size());
    }
    return messages;
}

void importToldBy(const Messages& messages) {
    std::weak_ptr<ToldOperation> running;
    const auto importer = Quillet_ENEX_Import::create([&](const URL& file, const URL& directory) {
        auto operation = std::make_shared<ToldOperation>(file, directory, messages);
        running = operation;
        return operation;
    });
    importer->setProgressBlock([](const ImportProgress&) {});
    std::promise<Dictionary> reply;
    importer->importENEXFile(URL::fileURLWithPath("/nonexistent/a.enex"), {{std::string(kDebugOption), Value(true)}},
                             URL::fileURLWithPath("/nonexistent", true),
                             [&](Dictionary answer) { reply.set_value(std::move(answer)); });
    const Dictionary answer = reply.get_future().get();
    while (!running.expired()) std::this_thread::yield(); // what its thread still holds is no leak
    if (!find(answer, kLogFileReplyKey)) std::abort();
    if (find(answer, kErrorReplyKey) && find(answer, kItemsReplyKey)) std::abort();
    (void)encodedMessage(answer, kReplyLists);
}

// A message of a worker's form is as good a source of arguments as any.
void callWith(std::string_view bytes) {
    const Result<Dictionary> message = decodedMessage(bytes);
    if (!message) return;
    (void)WorkerRequest::fromMessage(*message);
    Array arguments;
    for (const auto& [key, value] : *message) arguments.push_back(value);
    if (const Result<ImportCall> call = ImportCall::fromArguments(arguments))
        if (!call->file.isFileURL() || !call->directory.isFileURL()) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool prepared = [] {
        Environment::current().preferencesDirectory = "/nonexistent";
        setSystemLogSink([](std::string_view) {});
        return true;
    }();
    if (!prepared || size == 0) return 0;
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    *data % 2 == 0 ? callWith(bytes) : importToldBy(messagesIn(bytes));
    return 0;
}
