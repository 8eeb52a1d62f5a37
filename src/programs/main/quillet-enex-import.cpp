// The command-line client: imports exports into a directory, in its own confined process or by the service.
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <system_error>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/core.h>
#include <syslog.h>
#include <unistd.h>

#include "platform/base/Error.h"
#include "platform/base/SystemLog.h"
#include "platform/foundation/Environment.h"
#include "platform/foundation/URL.h"
#include "platform/operations/OperationQueue.h"
#include "programs/Interruption.h"
#include "programs/ProgressBar.h"
#include "programs/RegisterClasses.h"
#include "programs/ServiceImport.h"
#include "programs/StandardStreams.h"
#include "programs/export/JSONForm.h"
#include "service/ImportConfinement.h"
#include "service/Quillet_ENEX_Import.h"

namespace quillet {
namespace {

using platform::Dictionary;
using platform::URL;
using platform::Value;

// Exit statuses.
constexpr int kAllWritten = 0;
constexpr int kNotesFailed = 1;
constexpr int kImportFailed = 2;
constexpr int kWrongUsage = 64;  // EX_USAGE
constexpr int kCannotPrint = 74; // EX_IOERR
constexpr int kUnavailable = 69; // EX_UNAVAILABLE

struct Options {
    bool debug = false;
    bool webClippingsAsNotes = false;
    bool json = false;
    bool service = false;
    bool verbose = false;
    bool quiet = false;
    std::vector<std::string> files;
    std::string directory;
};

constexpr std::string_view kProgram = "quillet-enex-import";

void complain(std::string_view message) {
    printMessage(kProgram, message);
}

// One FILE on its way into the directory.
struct Task {
    URL file;
    URL directory;
    Dictionary options;
    Quillet_ENEX_Import::ProgressBlock progress;
};

// Runs one import to its reply, with the main queue on this thread.
Dictionary importHere(const Task& task, Interruption& interruption) {
    const auto import = Quillet_ENEX_Import::create();
    import->setProgressBlock(task.progress);
    std::optional<Dictionary> result;
    std::atomic<bool> replied = false;
    import->importENEXFile(task.file, task.options, task.directory, [&](Dictionary reply) {
        result = std::move(reply);
        replied = true;
        platform::wakeMainQueue();
    });
    interruption.setCancel([import] { import->cancel(); });
    platform::runMainQueueUntil([&] { return replied.load(); });
    interruption.setCancel(nullptr);
    return *std::move(result);
}

platform::Result<Dictionary> importByService(const Task& task, Interruption& interruption) {
    const auto service = TRY(ServiceImport::connect());
    interruption.setCancel([&service] { service->cancel(); });
    platform::Result<Dictionary> reply = service->import(task.file, task.options, task.directory, task.progress);
    interruption.setCancel(nullptr);
    return reply;
}

platform::Result<Dictionary> runImport(const Options& options, const std::string& file, Interruption& interruption) {
    Task task{URL::fileURLWithPath(file),
              URL::fileURLWithPath(options.directory, true),
              {{std::string(kDebugOption), Value(options.debug)},
               {std::string(QLTImportENEXOptionWebClippingsAsNotes), Value(options.webClippingsAsNotes)}},
              nullptr};
    std::unique_ptr<ProgressBar> bar;
    if (!options.quiet && ::isatty(STDERR_FILENO) != 0) {
        bar = std::make_unique<ProgressBar>(std::filesystem::path(file).filename().string());
        task.progress = [&bar](const ImportProgress& progress) { bar->show(progress); };
    }
    if (options.service) return importByService(task, interruption);
    return importHere(task, interruption);
}

const platform::Array& listUnder(const Dictionary& reply, std::string_view key) {
    static const platform::Array none;
    const Value* value = platform::find(reply, key);
    const auto* list = value ? value->as<platform::Array>() : nullptr;
    return list ? *list : none;
}

std::string logPath(const Dictionary& reply) {
    const Value* log = platform::find(reply, kLogFileReplyKey);
    const auto url = log ? URL::fromString(log->utf8()) : std::nullopt;
    return url ? url->path() : std::string();
}

void printSummary(const std::string& file, const Dictionary& reply) {
    const auto shown = [](std::string_view text) { return platform::escapedForTerminal(text); };
    fmt::print("{}\n", shown(file));
    if (platform::find(reply, kErrorReplyKey) == nullptr) {
        const platform::Array& failed = listUnder(reply, kErrorNotesReplyKey);
        fmt::print("  notes written: {}\n  notes failed: {}\n", listUnder(reply, kItemsReplyKey).size(), failed.size());
        for (const Value& title : failed) fmt::print("    {}\n", shown(title.utf8()));
    } else {
        fmt::print("  not imported completely; notes already written stay in place\n");
    }
    fmt::print("  log: {}\n", shown(logPath(reply)));
}

// The text behind the file's name as it was given; an error within the file names it already, by its whole path.
std::string placed(const std::string& file, std::string text) {
    const std::string path = URL::fileURLWithPath(file).path() + ": ";
    return file + ": " + (text.starts_with(path) ? text.substr(path.size()) : text);
}

// The reply's part of the exit status; reports its error.
int statusOf(const std::string& file, const Dictionary& reply) {
    if (const Value* value = platform::find(reply, kErrorReplyKey)) {
        if (const platform::Error* error = value->asError()) complain(placed(file, error->description()));
        return kImportFailed;
    }
    return listUnder(reply, kErrorNotesReplyKey).empty() ? kAllWritten : kNotesFailed;
}

void warnOfSharedLogs(const std::vector<std::string>& files) {
    std::set<std::filesystem::path> stems;
    for (const std::string& file : files)
        if (!stems.insert(std::filesystem::path(file).stem()).second)
            complain(file + ": another FILE has the same base name; its log will be overwritten");
}

// False when standard output does not take it, and a script would wait for a reply in vain.
bool printReply(const Options& options, const std::string& file, const Dictionary& reply) {
    try {
        if (options.json) {
            const std::string line = jsonLine(reply) + "\n";
            (void)std::fwrite(line.data(), 1, line.size(), stdout); // the stream remembers a failure
        } else if (!options.quiet) {
            printSummary(file, reply);
        }
        if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return true;
        complain(fmt::format("standard output: {}", std::strerror(errno)));
    } catch (const std::system_error& failure) {
        complain(fmt::format("standard output: {}", failure.code().message()));
    }
    return false;
}

int importAll(const Options& options, Interruption& interruption) {
    warnOfSharedLogs(options.files);
    int status = kAllWritten;
    for (const std::string& file : options.files) {
        const platform::Result<Dictionary> reply = runImport(options, file, interruption);
        if (!reply) {
            complain("the service cannot be used: " + reply.error().localizedDescription());
            return kUnavailable;
        }
        status = std::max(status, statusOf(file, *reply));
        if (!printReply(options, file, *reply)) return kCannotPrint;
        if (interruption.signal() != 0) return Interruption::kSignalBase + interruption.signal();
    }
    return status;
}

// The import's own error does not tell why a file cannot be opened.
void reportUnreadable(const std::string& file) {
    std::error_code failure;
    const auto status = std::filesystem::status(file, failure);
    if (failure) return complain(file + ": " + failure.message());
    if (!std::filesystem::is_regular_file(status)) return complain(file + ": not a regular file");
    if (::access(file.c_str(), R_OK) != 0) complain(fmt::format("{}: {}", file, std::strerror(errno)));
}

// Makes the directory, then gives up whatever the imports do not need. False when that cannot be done.
bool prepare(const Options& options) {
    std::error_code failure;
    std::filesystem::create_directories(options.directory, failure);
    if (failure) complain(options.directory + ": cannot be made: " + failure.message());
    for (const std::string& file : options.files) reportUnreadable(file);
    if (options.service) return true; // nothing is read here
    // Connected while sockets can still be made.
    ::openlog("quillet-enex-import", LOG_NDELAY | LOG_PID, LOG_USER);
    const platform::Result<> confined = confineForImport(options.files, options.directory);
    if (!confined) complain("cannot be confined: " + confined.error().description());
    return confined.has_value();
}

// The last positional argument is the directory; CLI11 cannot say that of itself. An empty name is a script's unset
// variable: it must not stand for the current directory.
bool splitArguments(std::vector<std::string> arguments, Options& options) {
    if (arguments.size() < 2 || std::ranges::find(arguments, "") != arguments.end()) return false;
    options.directory = std::move(arguments.back());
    arguments.pop_back();
    options.files = std::move(arguments);
    return true;
}

// The usage line, which the library cannot derive: the last argument is of another kind than those before it.
class UsageFormatter : public CLI::Formatter {
  public:
    std::string make_usage(const CLI::App*, std::string) const override {
        return "Usage: quillet-enex-import [OPTIONS] FILE... DIRECTORY\n";
    }
};

// In the order in which the library takes them. It would take a name in brackets for a list of names.
std::vector<std::string> reversedArguments(int argc, char** argv) {
    std::vector<std::string> reversed;
    for (int index = argc - 1; index > 0; --index) {
        const std::string_view argument = argv[index];
        const bool looksLikeList = argument.starts_with('[') && argument.ends_with(']');
        reversed.push_back((looksLikeList ? "./" : "") + std::string(argument));
    }
    return reversed;
}

std::optional<int> parseCommandLine(int argc, char** argv, Options& options) {
    CLI::App app{
        "Imports Evernote exports (ENEX) into a directory: note packages, HTML pages of web clippings, single files.",
        std::string(kProgram)};
    std::vector<std::string> arguments;
    app.formatter(std::make_shared<UsageFormatter>());
    app.set_help_flag("-h,--help", "print this help");
    app.add_option("FILE... DIRECTORY", arguments, "exports to read, and where their notes go; made when missing")
        ->option_text(" "); // in place of a type
    app.add_flag("--debug", options.debug, "log every event of the parser");
    app.add_flag("--web-clippings-as-notes", options.webClippingsAsNotes,
                 "make notes of web clippings, not HTML pages");
    app.add_flag("--json", options.json, "print each import's reply as one line of JSON, and nothing else");
    app.add_flag("--service", options.service,
                 "have the import done by the service, over D-Bus; the reply is the same");
    app.add_flag("-v,--verbose", options.verbose, "send the system log to standard error");
    app.add_flag("-q,--quiet", options.quiet, "no progress, no summary");
    app.set_version_flag("--version", "quillet-enex-import " + platform::Environment::current().bundleShortVersion,
                         "print the version");
    app.footer(
        "Exit status: 0 every note was written; 1 a note failed; 2 an export could not be read to its end;\n"
        "64 wrong usage; 69 no bus or no service; 74 standard output cannot be written; 129, 130 and 143 interrupted.");
    try {
        app.parse(reversedArguments(argc, argv));
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kAllWritten : kWrongUsage;
    }
    if (!splitArguments(std::move(arguments), options)) {
        complain("FILE and DIRECTORY are needed, and neither may be empty; --help says more");
        return kWrongUsage;
    }
    return std::nullopt;
}

int run(int argc, char** argv) {
    Options options;
    if (const auto status = parseCommandLine(argc, argv, options)) return *status;
    if (options.verbose) platform::setSystemLogSink(printErrorLine);
    registerClasses();
    if (!prepare(options)) return kImportFailed;
    static Interruption interruption; // starts a thread, which is confined with the others
    return importAll(options, interruption);
}

} // namespace
} // namespace quillet

// Leaves without destroying what is static: the thread that waits for signals still runs, and a leak checker could not
// start its process here.
int main(int argc, char** argv) {
    quillet::occupyStandardDescriptors();
    const int status = quillet::run(argc, argv);
    std::fflush(nullptr);
    std::_Exit(status);
}
