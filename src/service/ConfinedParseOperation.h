// A parse operation whose work is done by a confined process of its own: what that process reports becomes this
// operation's blocks and log lines, as if the export had been read here.
#pragma once

#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "enex/EvernoteXMLParseOperation.h"
#include "platform/ipc/WorkerProcess.h"

namespace quillet {

// How workers are started and how long they may be silent.
struct WorkerProgram {
    std::string path;
    std::vector<std::string> arguments;
    // One note of a gigabyte takes a minute; who is silent for so long has stopped working.
    std::chrono::milliseconds patience = std::chrono::minutes(10);
};

// A worker that dies, talks nonsense or falls silent ends the import with NSCocoaErrorDomain 4097.
class ConfinedParseOperation : public EvernoteXMLParseOperation {
  public:
    ConfinedParseOperation(platform::URL file, platform::URL directory, WorkerProgram program)
        : EvernoteXMLParseOperation(std::move(file), std::move(directory)), program_(std::move(program)) {}

    void start() override;
    void cancel() override;

  protected:
    void changeOperationFinished(bool finished) override;
    // Does what a worker's message says; an error for what no honest worker sends.
    platform::Result<> handleMessage(const platform::Dictionary& message);

  private:
    platform::Result<> converse();
    platform::Result<> startWorker();
    platform::Result<> readEvents();
    platform::Result<> handleEvent(std::string_view event, const platform::Value& value);
    void sendCancel();
    platform::Error deathError(const platform::Error& reason);

    WorkerProgram program_;
    std::mutex mutex_;
    std::unique_ptr<platform::WorkerProcess> worker_; // guarded by mutex_ while cancel may come
    bool cancelSent_ = false;                         // guarded by mutex_
    bool workerFinished_ = false;
};

} // namespace quillet
