// A developers' program: shows what the product's readers of rich text make of a file, and writes it in other forms.
#include <cerrno>
#include <cstdio>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>

#include "platform/foundation/Environment.h"
#include "platform/text/TextDump.h"
#include "programs/RegisterClasses.h"
#include "programs/StandardStreams.h"
#include "programs/export/ReadRichText.h"
#include "programs/export/RichTextJSON.h"

namespace quillet {
namespace {

constexpr std::string_view kProgram = "quillet-dump";
constexpr int kDone = 0;
constexpr int kFailed = 1;
constexpr int kWrongUsage = 64; // EX_USAGE

struct Options {
    std::string file;
    std::optional<std::string> baseDirectory;
    bool json = false;
    std::vector<std::string> to; // format and place; empty to show
};

const std::map<std::string, RichTextFormat>& formats() {
    static const std::map<std::string, RichTextFormat> all{{"rtf", RichTextFormat::rtf},
                                                           {"rtfd", RichTextFormat::rtfd},
                                                           {"html", RichTextFormat::html},
                                                           {"archive", RichTextFormat::archive}};
    return all;
}

std::optional<int> parseCommandLine(int argc, char** argv, Options& options) {
    CLI::App app{"Shows the rich text of a file: .html, .rtf, .rtfd, .qltnote, or a keyed archive.", "quillet-dump"};
    app.add_option("FILE", options.file, "what to read")->required();
    app.add_option("--base", options.baseDirectory, "directory that relative addresses of a page refer to");
    app.add_flag("--json", options.json, "show as JSON");
    app.add_option("--to", options.to, "write as rtf, rtfd, html or archive instead of showing; OUT must not exist")
        ->expected(2)
        ->type_name("FORMAT OUT");
    app.set_version_flag("--version", "quillet-dump " + platform::Environment::current().bundleShortVersion);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kDone : kWrongUsage;
    }
    if (!options.to.empty() && !formats().contains(options.to.front())) {
        printMessage(kProgram, "--to: " + options.to.front() + ": not rtf, rtfd, html or archive");
        return kWrongUsage;
    }
    return std::nullopt;
}

platform::Result<> dump(const Options& options) {
    const platform::AttributedString text = TRY(readRichText(options.file, options.baseDirectory));
    if (!options.to.empty()) return writeRichText(text, formats().at(options.to.front()), options.to.back());
    const std::string shown = options.json ? richTextJSON(text) + "\n" : platform::textDump(text);
    if (std::fwrite(shown.data(), 1, shown.size(), stdout) == shown.size() && std::fflush(stdout) == 0) return {};
    return platform::failure(platform::errorFromErrno(errno, platform::FileAccess::writing, "standard output"));
}

int run(int argc, char** argv) {
    Options options;
    if (const auto status = parseCommandLine(argc, argv, options)) return *status;
    registerClasses();
    if (const platform::Result<> done = dump(options); !done) {
        printMessage(kProgram, options.file + ": " + done.error().description());
        return kFailed;
    }
    return kDone;
}

} // namespace
} // namespace quillet

int main(int argc, char** argv) {
    quillet::occupyStandardDescriptors();
    return quillet::run(argc, argv);
}
