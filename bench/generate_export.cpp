// Writes a large export for the benchmarks, the same bytes for the same arguments:
//     generate_export --notes N [--note-bytes B] [--attachment-bytes A] [--same-title] [--seed S] > export.enex
// Each note has text of about B bytes with the markup that real notes have, and, with --attachment-bytes, one PNG-like
// and one other attachment of together A bytes.
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <string_view>

#include <fmt/core.h>

#include "platform/foundation/Base64.h"
#include "platform/foundation/Digest.h"

namespace {

struct Options {
    std::uint64_t notes = 100;
    std::size_t noteBytes = 8192;
    std::size_t attachmentBytes = 0;
    std::uint64_t seed = 1;
    bool sameTitle = false;
};

class Generator {
  public:
    explicit Generator(const Options& options) : options_(options), random_(options.seed) {}

    void write() {
        put("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<!DOCTYPE en-export SYSTEM \"http://xml.evernote.com/pub/evernote-export4.dtd\">\n"
            "<en-export export-date=\"20240610T080000Z\" application=\"Evernote\" version=\"10.88.4\">\n");
        for (std::uint64_t number = 0; number < options_.notes; ++number) writeNote(number);
        put("</en-export>\n");
    }

  private:
    static void put(std::string_view text) { std::fwrite(text.data(), 1, text.size(), stdout); }

    std::uint64_t below(std::uint64_t limit) { return random_() % limit; }

    std::string words(std::size_t count) {
        constexpr std::string_view kWords[] = {"garden", "report", "the",      "of",    "meeting", "Müller",
                                               "and",    "notes",  "tomorrow", "price", "river",   "letter",
                                               "a",      "to",     "42",       "café"};
        std::string text;
        for (std::size_t i = 0; i < count; ++i) {
            if (i != 0) text += ' ';
            text += kWords[below(std::size(kWords))];
        }
        return text;
    }

    // One block of markup, of the kinds that notes have, in the proportions that they have them.
    void appendBlock(std::string& body) {
        switch (below(12)) {
        case 0:
            body += fmt::format("<div><b>{}</b> {} <i>{}</i></div>", words(3), words(8), words(2));
            break;
        case 1:
            body += fmt::format("<div><en-todo checked=\"{}\"/>{}</div>", below(2) == 0 ? "true" : "false", words(5));
            break;
        case 2:
            body += fmt::format("<ul><li><div>{}</div></li><li><div>{}</div></li></ul>", words(4), words(6));
            break;
        case 3:
            body +=
                fmt::format("<div>{} <a href=\"https://example.com/{}\">{}</a></div>", words(4), below(1000), words(2));
            break;
        case 4:
            body += fmt::format("<div><span style=\"color:rgb({}, 0, 0);\">{}</span></div>", below(256), words(6));
            break;
        case 5:
            body += "<div><br/></div>";
            break;
        default:
            body += fmt::format("<div>{}</div>", words(12));
            break;
        }
    }

    // Bytes that do not compress; the image ones begin like a PNG file.
    std::string attachment(std::size_t size, bool image) {
        std::string bytes = image ? std::string("\x89PNG\r\n\x1a\n", 8) : std::string("PK\x05\x06", 4);
        while (bytes.size() < size) {
            const std::uint64_t word = random_();
            bytes.append(reinterpret_cast<const char*>(&word), sizeof word);
        }
        bytes.resize(size);
        return bytes;
    }

    void writeResource(std::string_view bytes, std::string_view mime, std::string_view name) {
        const std::string text = platform::base64Encoded(bytes);
        put("<resource><data encoding=\"base64\">\n");
        constexpr std::size_t kLine = 76;
        for (std::size_t i = 0; i < text.size(); i += kLine) {
            put(std::string_view(text).substr(i, kLine));
            put("\n");
        }
        put(fmt::format(
            "</data><mime>{}</mime><resource-attributes><file-name>{}</file-name></resource-attributes></resource>",
            mime, name));
    }

    void writeNote(std::uint64_t number) {
        std::string body;
        while (body.size() < options_.noteBytes) appendBlock(body);
        std::string image, file;
        if (options_.attachmentBytes != 0) {
            image = attachment(options_.attachmentBytes / 2, true);
            file = attachment(options_.attachmentBytes / 2, false);
            const auto hash = [](const std::string& bytes) {
                return platform::hexadecimalString(platform::md5Checksum(bytes));
            };
            body += fmt::format("<div><en-media type=\"image/png\" hash=\"{}\"/></div><div><en-media "
                                "type=\"application/zip\" hash=\"{}\"/></div>",
                                hash(image), hash(file));
        }
        const std::string title = options_.sameTitle ? "Untitled" : fmt::format("Note {:06} {}", number, words(3));
        put(fmt::format(
            "<note><title>{}</title><created>2024{:02}{:02}T{:02}{:02}{:02}Z</created><updated>20240601T101500Z</"
            "updated>"
            "<tag>bench</tag><note-attributes><source>desktop.mac</source></note-attributes><content><![CDATA[",
            title, 1 + below(12), 1 + below(28), below(24), below(60), below(60)));
        put("<?xml version=\"1.0\" encoding=\"UTF-8\"?><!DOCTYPE en-note SYSTEM "
            "\"http://xml.evernote.com/pub/enml2.dtd\"><en-note>");
        put(body);
        put("</en-note>]]></content>");
        if (!image.empty()) {
            writeResource(image, "image/png", "picture.png");
            writeResource(file, "application/zip", "archive.zip");
        }
        put("</note>\n");
    }

    Options options_;
    std::mt19937_64 random_;
};

bool parse(int argc, char** argv, Options& options) {
    for (int i = 1; i < argc; ++i) {
        const std::string_view name = argv[i];
        if (name == "--same-title") {
            options.sameTitle = true;
            continue;
        }
        if (i + 1 == argc) return false;
        const std::uint64_t value = std::strtoull(argv[++i], nullptr, 10);
        if (name == "--notes")
            options.notes = value;
        else if (name == "--note-bytes")
            options.noteBytes = value;
        else if (name == "--attachment-bytes")
            options.attachmentBytes = value;
        else if (name == "--seed")
            options.seed = value;
        else
            return false;
    }
    return true;
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    if (!parse(argc, argv, options)) {
        fmt::print(
            stderr,
            "usage: generate_export [--notes N] [--note-bytes B] [--attachment-bytes A] [--same-title] [--seed S]\n");
        return 64;
    }
    Generator(options).write();
}
