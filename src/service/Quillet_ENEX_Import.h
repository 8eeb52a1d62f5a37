// One import: opens the log, runs the parse operation on a queue of its own, collects what was written and what failed,
// and answers once.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "platform/base/Value.h"
#include "platform/operations/OperationQueue.h"
#include "service/QLTImportENEXProtocol.h"

namespace platform {
class URL;
}

namespace quillet {

class EvernoteXMLParseOperation;
class OutputStream;

// Where an import stands, for those who watch it.
struct ImportProgress {
    std::uint64_t bytesRead = 0;
    std::uint64_t bytesTotal = 0;
    std::uint64_t notesWritten = 0;
    std::uint64_t notesFailed = 0;
};

// An importer serves one import at a time. A second call before the first has replied starts afresh and takes the first
// one's lists and log stream from it: what the first still exports goes into the second's lists and log, and each call
// replies with the lists as they stand. Access to them is serialised.
class Quillet_ENEX_Import : public QLTImportENEXProtocol, public std::enable_shared_from_this<Quillet_ENEX_Import> {
  public:
    // Called on the import's thread, often; may be empty.
    using ProgressBlock = std::function<void(const ImportProgress&)>;

    // Makes the operation that reads an export into a directory.
    using ParseOperationMaker =
        std::function<std::shared_ptr<EvernoteXMLParseOperation>(const platform::URL&, const platform::URL&)>;

    // An importer that reads exports in this process, or as the maker's operations do.
    static std::shared_ptr<Quillet_ENEX_Import> create() { return std::make_shared<Quillet_ENEX_Import>(); }
    static std::shared_ptr<Quillet_ENEX_Import> create(ParseOperationMaker maker) {
        return std::make_shared<Quillet_ENEX_Import>(std::move(maker));
    }
    Quillet_ENEX_Import();
    explicit Quillet_ENEX_Import(ParseOperationMaker maker);
    ~Quillet_ENEX_Import() override;

    void importENEXFile(const platform::URL& file, const platform::Dictionary& options, const platform::URL& directory,
                        Reply reply) override;

    // For the imports that are started from now on.
    void setProgressBlock(ProgressBlock block);
    // Ends what runs, also imports that a later call has taken over, after the note under way; the replies take the
    // error form. Callable from any thread.
    void cancel();

    // "Export 2024.enex" has its log in "Export 2024.log", in the destination.
    static platform::URL logFileURL(const platform::URL& file, const platform::URL& directory);

    // Snapshots, in the order in which the notes' end tags were read.
    platform::Array items() const;
    platform::Array failedItemNames() const;

  private:
    struct Job;

    void installBlocks(EvernoteXMLParseOperation& operation, const std::shared_ptr<Job>& job);
    void addExportedItem(Job& job, platform::Dictionary item);
    void addFailedItem(Job& job, const platform::Error& error);
    void finish(Job& job, const std::optional<platform::Error>& error);
    template<class Change>
    void reportProgress(Job& job, Change change);

    const ParseOperationMaker makeParseOperation_;
    mutable std::mutex mutex_; // guards everything below
    std::unique_ptr<platform::OperationQueue> operationQueue_;
    platform::Array items_;
    platform::Array failedItemNames_;
    std::shared_ptr<OutputStream> logStream_;
    std::vector<std::shared_ptr<EvernoteXMLParseOperation>> operations_; // those that have not replied
    ProgressBlock progressBlock_;
};

} // namespace quillet
