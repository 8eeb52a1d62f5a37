// A developers' program: shows what the product's readers of rich text make of a file, and writes it in other forms.
#include <cstdio>
#include <map>
#include <optional>
#include <string>

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include "platform/base/SystemLog.h"
#include "platform/foundation/Environment.h"
#include "platform/text/TextDump.h"
#include "programs/RegisterClasses.h"
#include "programs/export/ReadRichText.h"

namespace quillet {
namespace {

constexpr int kDone = 0;
constexpr int kFailed = 1;
constexpr int kWrongUsage = 64; // EX_USAGE

struct Options {
    std::string file;
    std::optional<std::string> baseDirectory;
    std::optional<RichTextFormat> format;
    std::string out;
};

std::optional<int> parseCommandLine(int argc, char** argv, Options& options) {
    const std::map<std::string, RichTextFormat> formats{{"rtf", RichTextFormat::rtf},
                                                        {"rtfd", RichTextFormat::rtfd},
                                                        {"html", RichTextFormat::html},
                                                        {"archive", RichTextFormat::archive}};
    CLI::App app{"Shows the rich text of a file: .html, .rtf, .rtfd, .qltnote, or a keyed archive.", "quillet-dump"};
    app.add_option("FILE", options.file, "what to read")->required();
    app.add_option("--base", options.baseDirectory, "directory that relative addresses of a page refer to");
    auto* format =
        app.add_option("--to", options.format, "write in this form instead of showing: rtf, rtfd, html, archive")
            ->transform(CLI::CheckedTransformer(formats));
    app.add_option("-o,--out", options.out, "where --to writes; must not exist")->needs(format);
    app.set_version_flag("--version", "quillet-dump " + platform::Environment::current().bundleShortVersion);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kDone : kWrongUsage;
    }
    return std::nullopt;
}

platform::Result<> dump(const Options& options) {
    const platform::AttributedString text = TRY(readRichText(options.file, options.baseDirectory));
    if (options.format) return writeRichText(text, *options.format, options.out);
    const std::string shown = platform::textDump(text);
    std::fwrite(shown.data(), 1, shown.size(), stdout);
    return {};
}

int run(int argc, char** argv) {
    Options options;
    if (const auto status = parseCommandLine(argc, argv, options)) return *status;
    registerClasses();
    if (const platform::Result<> done = dump(options); !done) {
        fmt::print(stderr, "quillet-dump: {}: {}\n", platform::escapedForTerminal(options.file),
                   platform::escapedForTerminal(done.error().description()));
        return kFailed;
    }
    return kDone;
}

} // namespace
} // namespace quillet

int main(int argc, char** argv) {
    return quillet::run(argc, argv);
}
