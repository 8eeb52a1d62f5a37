// Reads note packages back: shows one, exports it to other formats, checks that they are sound.
#include <cerrno>
#include <cstdio>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include "documents/PackageNames.h"
#include "documents/QLTNoteFile.h"
#include "platform/base/SystemLog.h"
#include "platform/files/FileManager.h"
#include "platform/files/FileWrapper.h"
#include "platform/foundation/Environment.h"
#include "platform/foundation/PathString.h"
#include "platform/html/HTMLWriter.h"
#include "platform/plist/PropertyList.h"
#include "platform/rtf/RTFWriter.h"
#include "programs/RegisterClasses.h"
#include "programs/StandardStreams.h"
#include "programs/export/MarkdownExport.h"
#include "programs/export/PackageCheck.h"
#include "programs/export/PlainTextExport.h"
#include "programs/export/RichTextJSON.h"
#include "util/Markdown.h"

namespace quillet {
namespace {

using platform::AttributedString;
using platform::FileWrapper;
using platform::Result;
using platform::URL;
using platform::Value;

constexpr int kDone = 0;
constexpr int kFailed = 1;
constexpr int kWrongUsage = 64; // EX_USAGE

enum class Format { html, rtf, rtfd, markdown, text, json };

const std::map<std::string, Format>& formats() {
    static const std::map<std::string, Format> all{{"html", Format::html}, {"rtf", Format::rtf},
                                                   {"rtfd", Format::rtfd}, {"markdown", Format::markdown},
                                                   {"text", Format::text}, {"json", Format::json}};
    return all;
}

struct Options {
    std::vector<std::string> notes;
    Format format = Format::text;
    std::string out; // "" for standard output
};

void complain(std::string_view what) {
    printMessage("quillet-note", what);
}

// A package with the note in it.
struct OpenNote {
    std::string path;
    URL url;
    std::unique_ptr<QLTNoteFile> note;
};

Result<OpenNote> openNote(const std::string& path) {
    const URL url = URL::fileURLWithPath(path, true);
    std::unique_ptr<QLTNoteFile> note = TRY(QLTNoteFile::initWithFileURL(url));
    return OpenNote{path, url, std::move(note)};
}

Result<> writeToStandardOutput(std::string_view bytes) {
    if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) == bytes.size() && std::fflush(stdout) == 0) return {};
    return platform::failure(platform::errorFromErrno(errno, platform::FileAccess::writing, "standard output"));
}

// ---- show

Result<> show(const Options& options) {
    const OpenNote open = TRY(openNote(options.notes.front()));
    std::string shown = plainTextFromNoteText(open.note->noteText());
    const std::string files = attachmentList(open.note->noteText());
    if (!files.empty()) shown += (shown.empty() ? "" : "\n") + std::string("Attachments:\n") + files;
    return writeToStandardOutput(shown);
}

// ---- export

// As they are stored; nothing where they cannot be read.
Value noteAttributesAt(const URL& package) {
    const auto bytes = platform::contentsAtURL(package.appendingPathComponent(kNoteAttributesEntry));
    return bytes ? platform::propertyListFromData(bytes->bytes()).value_or(Value()) : Value();
}

std::string markdownOf(const OpenNote& open, const std::string& out) {
    // Links lead from where the Markdown lies into the package.
    const URL item = URL::fileURLWithPath(out.empty() ? "note.md" : out);
    return markdownFromNoteText(open.note->noteText(), [&](std::string_view name) {
        return relativeLinkFor(open.url.appendingPathComponent(name), item);
    });
}

std::string titleOf(const std::string& path) {
    return platform::deletingPathExtension(std::string_view(platform::lastPathComponent(std::string_view(path))));
}

Result<std::string> exported(const OpenNote& open, const Options& options) {
    const AttributedString text = open.note->noteTextSuitableForExport();
    switch (options.format) {
    case Format::html:
        return platform::htmlDataFromAttributedString(text, {.title = titleOf(open.path)});
    case Format::rtf:
        return platform::rtfFromRange(text, {0, text.length()});
    case Format::markdown:
        return markdownOf(open, options.out);
    case Format::json:
        return richTextJSON(open.note->noteText(), noteAttributesAt(open.url)) + "\n";
    case Format::rtfd: // a directory, which has no bytes
    case Format::text:
        break;
    }
    return plainTextFromNoteText(open.note->noteText());
}

Result<> exportNote(const Options& options) {
    const OpenNote open = TRY(openNote(options.notes.front()));
    if (options.format == Format::rtfd) {
        // The text may name a missing file as no file can be named.
        open.note->setNoteText(textWithPackageNames(open.note->noteText()));
        const AttributedString text = open.note->noteTextSuitableForExport();
        return TRY(platform::rtfdFileWrapperFromRange(text, {0, text.length()}))
            ->writeToURL(URL::fileURLWithPath(options.out, true));
    }
    const std::string bytes = TRY(exported(open, options));
    if (options.out.empty()) return writeToStandardOutput(bytes);
    return platform::writeContents(bytes, URL::fileURLWithPath(options.out));
}

// ---- check

// Whether the package is sound; what is wrong with it goes to standard output, a line each.
bool checkNote(const std::string& path) {
    const auto say = [&](std::string_view entry, std::string_view message) {
        const std::string place = entry.empty() ? path : path + ": " + std::string(entry);
        fmt::print("{}: {}\n", platform::escapedForTerminal(place), platform::escapedForTerminal(message));
    };
    const auto package = FileWrapper::readingURL(URL::fileURLWithPath(path));
    if (!package) {
        say("", package.error().localizedDescription());
        return false;
    }
    const std::vector<PackageProblem> problems = problemsOfPackage(**package);
    for (const PackageProblem& problem : problems) say(problem.entry, problem.message);
    return problems.empty();
}

int checkNotes(const Options& options) {
    bool sound = true;
    for (const std::string& path : options.notes) sound = checkNote(path) && sound;
    return sound ? kDone : kFailed;
}

// ---- the command line

int finish(const Options& options, const Result<>& result) {
    if (result) return kDone;
    complain(options.notes.front() + ": " + result.error().localizedDescription());
    return kFailed;
}

int run(int argc, char** argv) {
    Options options;
    CLI::App app{"Reads note packages: shows, exports and checks them.", "quillet-note"};
    app.set_version_flag("--version", "quillet-note " + platform::Environment::current().bundleShortVersion);
    app.require_subcommand(1);
    // An empty name would be the working directory.
    const auto isNamed = [](const std::string& path) { return std::string(path.empty() ? "a name is empty" : ""); };
    app.footer("Exit status: 0 done; 1 a package is damaged, or cannot be read or exported; 64 wrong usage.");
    CLI::App* showing = app.add_subcommand("show", "plain text of the note, with its attachments listed");
    showing->add_option("NOTE", options.notes, "the note package")->required()->expected(1)->check(isNamed);
    CLI::App* exporting = app.add_subcommand("export", "the note in another format");
    std::string format;
    exporting->add_option("--to", format, "html, rtf, rtfd (needs -o), markdown, text, json")
        ->required()
        ->type_name("FORMAT")
        ->check([](const std::string& name) {
            return formats().contains(name) ? std::string() : "not html, rtf, rtfd, markdown, text or json";
        });
    exporting->add_option("NOTE", options.notes, "the note package")->required()->expected(1)->check(isNamed);
    exporting->add_option("-o,--output", options.out, "where to write; standard output without it")->check(isNamed);
    CLI::App* checking = app.add_subcommand("check", "what is wrong with packages; exit status 1 when anything is");
    checking->add_option("NOTE", options.notes, "the note packages")->required()->check(isNamed);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kDone : kWrongUsage;
    }
    if (*exporting) options.format = formats().at(format);
    if (*exporting && options.format == Format::rtfd && options.out.empty()) {
        complain("export --to rtfd writes a directory: name it with -o");
        return kWrongUsage;
    }
    registerClasses();
    if (*checking) return checkNotes(options);
    return finish(options, *exporting ? exportNote(options) : show(options));
}

} // namespace
} // namespace quillet

int main(int argc, char** argv) {
    quillet::occupyStandardDescriptors();
    return quillet::run(argc, argv);
}
