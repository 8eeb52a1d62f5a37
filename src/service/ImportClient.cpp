#include "service/ImportClient.h"

#include <atomic>
#include <utility>

#include <fmt/core.h>

#include "platform/ipc/BusError.h"
#include "platform/ipc/Confinement.h"
#include "service/ImportJob.h"
#include "service/ImportRun.h"
#include "service/ProgressPace.h"
#include "service/ServiceNames.h"

namespace quillet {

using platform::Array;
using platform::BusError;
using platform::Dictionary;
using platform::Result;
using platform::URL;
using platform::Value;

ImportClient::ImportClient(platform::Listener& listener, std::weak_ptr<platform::Connection> connection,
                           WorkerProgram program, Capacity importsInAll)
    : listener_(listener), connection_(std::move(connection)), program_(std::move(program)), importer_(makeImporter()),
      importsInAll_(std::move(importsInAll)) {}

std::shared_ptr<Quillet_ENEX_Import> ImportClient::makeImporter() const {
    return Quillet_ENEX_Import::create([program = program_](const URL& file, const URL& directory) {
        return std::make_shared<ConfinedParseOperation>(file, directory, program);
    });
}

void ImportClient::handleCall(platform::MethodCall call, platform::MethodReply reply) {
    const Result<ImportCall> arguments = ImportCall::fromArguments(call.arguments);
    if (!arguments) return reply(platform::failure(arguments.error()), {});
    if (call.interface == kProtocolInterface && call.method == kImportMethod)
        return import(*arguments, std::move(reply));
    if (call.interface == kJobsInterface && call.method == kStartImportMethod) return reply(startJob(*arguments), {});
    reply(platform::failure(platform::busError(BusError::unknownMethod, "There is no method " + call.method + ".")),
          {});
}

Value ImportClient::property(std::string_view, std::string_view) {
    return Value(platform::confinementName(platform::availableConfinement())); // the one property of the object
}

// A place among the client's imports and among all; held until the import has replied.
Result<ImportClient::Place> ImportClient::takePlace() const {
    Place own = imports_.take();
    if (!own)
        return platform::failure(platform::busError(
            BusError::limitsExceeded, fmt::format("This client has {} imports under way; no more.", kMaximumImports)));
    Place shared = importsInAll_.take();
    if (!shared)
        return platform::failure(
            platform::busError(BusError::limitsExceeded, "There are too many imports under way already."));
    return std::make_shared<std::pair<Place, Place>>(std::move(own), std::move(shared));
}

// The client may leave while its import runs; the import goes on, and its reply goes nowhere.
void ImportClient::import(const ImportCall& call, platform::MethodReply reply) {
    Result<Place> place = takePlace();
    if (!place) return reply(platform::failure(place.error()), {});
    std::make_shared<ImportRun>(importer_, call)
        ->begin(calls_, listener_, progressSender(call.file),
                [reply = std::move(reply), place = *std::move(place)](Dictionary answer) mutable {
                    const std::string hint = tooLargeText(answer);
                    place.reset(); // before the reply, after which the client may call again
                    reply(Array{Value(std::move(answer))}, hint);
                });
}

Result<Array> ImportClient::startJob(const ImportCall& call) {
    static std::atomic<std::uint64_t> lastNumber = 0;
    const auto connection = connection_.lock();
    if (!connection) return platform::failure(platform::busError(BusError::failed, "The client has left."));
    Place jobPlace = jobs_.take();
    if (!jobPlace)
        return platform::failure(platform::busError(
            BusError::limitsExceeded,
            fmt::format("This client has started {} jobs; it must leave before it starts more.", kMaximumJobs)));
    Place place = TRY(takePlace());
    const std::string path = fmt::format("{}/job/{}", kServicePath, ++lastNumber);
    const auto job = std::make_shared<ImportJob>(
        path, connection_, std::make_shared<std::pair<Place, Place>>(listener_.stayForGuest(), std::move(jobPlace)));
    TRY(connection->addObject(path, {kJobInterface}, job));
    job->start(std::make_shared<ImportRun>(makeImporter(), call), calls_, listener_, progressSender(call.file),
               std::move(place));
    return Array{Value(path)};
}

Quillet_ENEX_Import::ProgressBlock ImportClient::progressSender(const URL& file) const {
    return [connection = connection_, url = file.absoluteString(),
            pace = std::make_shared<ProgressPace>()](const ImportProgress& progress) {
        const auto client = connection.lock();
        if (!client || !pace->isDue()) return;
        client->emitSignal(kServicePath, kJobsInterface, kProgressSignal,
                           {Value(url), Value(progress.bytesRead), Value(progress.bytesTotal),
                            Value(progress.notesWritten), Value(progress.notesFailed)},
                           kProgressSignature);
    };
}

} // namespace quillet
