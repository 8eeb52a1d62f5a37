#include "service/Quillet_ENEX_Import.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "conversion/NoteOutput.h"
#include "enex/EvernoteXMLParseOperation.h"
#include "platform/base/SystemLog.h"
#include "platform/foundation/PathString.h"
#include "platform/foundation/StringFormat.h"
#include "platform/foundation/URL.h"
#include "service/GroupSuite.h"
#include "service/NoteDispatch.h"
#include "service/operations/OutputStream.h"

namespace quillet {

using platform::Array;
using platform::Dictionary;
using platform::Error;
using platform::URL;
using platform::Value;

namespace {

constexpr std::string_view kImportingText = "Importing %@";
constexpr std::string_view kParsedNoteText = "Parsed note with temporary identifier: %@";
constexpr std::string_view kLogIsExportText = "%@ is an export; no log is written over it.";
constexpr std::string_view kSkippingNoteText = "Skipping note (%@) with error: %@";

bool booleanOption(const Dictionary& options, std::string_view key) {
    const Value* value = platform::find(options, key);
    return value && value->boolValue();
}

// An export called "Export.log" in the destination: its log would destroy it, so there is none.
bool isSameFile(const URL& file, const URL& other) {
    std::error_code failure;
    return std::filesystem::equivalent(file.path(), other.path(), failure);
}

} // namespace

URL Quillet_ENEX_Import::logFileURL(const URL& file, const URL& directory) {
    return directory.appendingPathComponent(
        platform::appendingPathExtension(platform::deletingPathExtension(file.lastPathComponent()), "log"));
}

// What one call carries from its start to its reply.
struct Quillet_ENEX_Import::Job {
    URL logFile;
    bool debug = false;
    Reply reply;
    NoteOutput output;
    ImportProgress progress; // guarded by the importer's mutex
    ProgressBlock progressBlock;
    std::weak_ptr<EvernoteXMLParseOperation> operation;
};

Quillet_ENEX_Import::Quillet_ENEX_Import()
    : Quillet_ENEX_Import(EvernoteXMLParseOperation::evernoteParseOperationForFileAtURL) {}
Quillet_ENEX_Import::Quillet_ENEX_Import(ParseOperationMaker maker) : makeParseOperation_(std::move(maker)) {}
Quillet_ENEX_Import::~Quillet_ENEX_Import() = default;

void Quillet_ENEX_Import::importENEXFile(const URL& file, const Dictionary& options, const URL& directory,
                                         Reply reply) {
    readGroupSuite();

    const std::shared_ptr<Job> job(new Job{logFileURL(file, directory),
                                           booleanOption(options, kDebugOption),
                                           std::move(reply),
                                           NoteOutput(directory),
                                           {},
                                           {},
                                           {}});
    auto logStream = std::make_shared<OutputStream>(job->logFile.path());
    if (isSameFile(file, job->logFile)) {
        platform::systemLog(platform::formatted(kLogIsExportText, {file.path()}));
    } else {
        // No line break: the stream's first line goes on in this one.
        job->output.overwriteLog(job->logFile.lastPathComponent(), platform::formatted(kImportingText, {file.path()}));
        logStream->open();
    }

    auto operation = makeParseOperation_(file, directory);
    operation->setDebugMode(job->debug);
    operation->setLogStream(logStream);
    operation->setSaveWebClippingsAsNotes(booleanOption(options, QLTImportENEXOptionWebClippingsAsNotes));
    job->operation = operation;
    installBlocks(*operation, job);

    const std::lock_guard lock(mutex_);
    job->progressBlock = progressBlock_;
    operationQueue_ = std::make_unique<platform::OperationQueue>();
    items_.clear();
    failedItemNames_.clear();
    logStream_ = std::move(logStream);
    operationQueue_->addOperation(operation);
    operations_.push_back(std::move(operation)); // it cannot have ended: its end waits for the lock
}

void Quillet_ENEX_Import::installBlocks(EvernoteXMLParseOperation& operation, const std::shared_ptr<Job>& job) {
    const auto self = shared_from_this();
    operation.getItemDict = [job](EvernoteXMLItem& item) -> platform::Result<std::optional<ItemEntry>> {
        return TRY(getItemDict(item, job->output));
    };
    operation.parseOperationDidExportItemBlock = [self, job](platform::Result<ItemEntry> item) {
        item ? self->addExportedItem(*job, *std::move(item)) : self->addFailedItem(*job, item.error());
    };
    operation.parseOperationCompletionBlock = [self, job](const std::optional<Error>& error) {
        self->finish(*job, error);
    };
    operation.progressHandler = [self, job](std::uint64_t read, std::uint64_t total) {
        self->reportProgress(*job, [&](ImportProgress& progress) {
            progress.bytesRead = read;
            progress.bytesTotal = total;
        });
    };
}

void Quillet_ENEX_Import::addExportedItem(Job& job, Dictionary item) {
    {
        const std::lock_guard lock(mutex_);
        if (job.debug) {
            // A worker that an export has taken over may send entries without one.
            const Value* identifier = platform::find(item, kIdentifierItemKey);
            writeLogLine(*logStream_, platform::formatted(kParsedNoteText, {identifier ? identifier->utf8() : ""}));
        }
        items_.emplace_back(std::move(item));
    }
    reportProgress(job, [](ImportProgress& progress) { ++progress.notesWritten; });
}

void Quillet_ENEX_Import::addFailedItem(Job& job, const Error& error) {
    {
        const std::lock_guard lock(mutex_);
        const Value* name = platform::find(error.userInfo, kNoteNameKey);
        if (name) failedItemNames_.push_back(*name);
        const std::optional<std::string> shownName = name ? std::optional(name->utf8()) : std::nullopt;
        writeLogLine(*logStream_, platform::formatted(kSkippingNoteText, {shownName, error.description()}));
    }
    reportProgress(job, [](ImportProgress& progress) { ++progress.notesFailed; });
}

void Quillet_ENEX_Import::finish(Job& job, const std::optional<Error>& error) {
    if (platform::Result<> flushed = job.output.flush(); !flushed) platform::systemLog(flushed.error().description());
    Dictionary reply{{std::string(kLogFileReplyKey), Value(job.logFile.absoluteString())}};
    {
        const std::lock_guard lock(mutex_);
        logStream_->close();
        if (error) {
            reply.emplace(kErrorReplyKey, Value(*error));
        } else {
            reply.emplace(kItemsReplyKey, items_);
            reply.emplace(kErrorNotesReplyKey, failedItemNames_);
        }
        // The operation's blocks hold this importer; it must not hold the operation any longer.
        std::erase(operations_, job.operation.lock());
    }
    if (Reply replyBlock = std::exchange(job.reply, nullptr)) replyBlock(std::move(reply));
}

template<class Change>
void Quillet_ENEX_Import::reportProgress(Job& job, Change change) {
    ImportProgress progress;
    {
        const std::lock_guard lock(mutex_);
        if (!job.reply) return; // replied: who watched may be gone
        change(job.progress);
        progress = job.progress;
    }
    if (job.progressBlock) job.progressBlock(progress);
}

void Quillet_ENEX_Import::setProgressBlock(ProgressBlock block) {
    const std::lock_guard lock(mutex_);
    progressBlock_ = std::move(block);
}

void Quillet_ENEX_Import::cancel() {
    const std::lock_guard lock(mutex_);
    for (const auto& operation : operations_) operation->cancel();
}

Array Quillet_ENEX_Import::items() const {
    const std::lock_guard lock(mutex_);
    return items_;
}

Array Quillet_ENEX_Import::failedItemNames() const {
    const std::lock_guard lock(mutex_);
    return failedItemNames_;
}

} // namespace quillet
