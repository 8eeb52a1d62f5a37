// For tests of reading exports: an import of a text that writes down what it did, and a note with everything in it.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "enex/EvernoteXMLParseOperation.h"
#include "platform/base/SystemLog.h"
#include "platform/foundation/Environment.h"

namespace tests {
class ScratchDirectory;
}

namespace quillet {

// Runs one import of a text and writes down what it did.
class Import {
  public:
    Import();
    ~Import();
    Import(const Import&) = delete;
    Import& operator=(const Import&) = delete;

    // What the import is to do.
    bool debug = false;
    bool asNotes = false;
    std::size_t pieceSize = platform::InputStream::kPieceSize;
    std::function<platform::Result<std::optional<ItemEntry>>(EvernoteXMLItem&)> convert;
    std::function<void(EvernoteXMLParseOperation&)> prepare;

    Import& run(std::string_view enex);
    Import& runFile(const std::string& path);

    // What it did.
    std::string notes;               // dumps
    std::vector<std::string> blocks; // "entry", "error CODE NAME" and "end" or "end DOMAIN CODE"
    std::vector<std::string> systemLog;
    std::string log;
    std::optional<platform::Error> endError;
    std::string logTexts() const; // the log's texts without their dates
    std::size_t ends() const;

  private:
    platform::ScopedEnvironment environment_;
    platform::SystemLogSink saved_;
    std::unique_ptr<tests::ScratchDirectory> scratch_;
};

// A whole export of these notes.
std::string exported(std::string_view notes);

// A time stamp of the odd kind is one only when its marker ends the text: the line break makes that of the change none.
inline constexpr std::string_view kFullNote =
    "<note><title>Größe &amp; Maß</title><content><![CDATA[<en-note>a]]><![CDATA[b</en-note>]]></content>"
    "<created>20240501T091502Z</created><updated> 20240502T101112 pmZ\n</updated>"
    "<tag> one </tag><tag>two</tag><tag>  </tag>"
    "<note-attributes><author>x</author><source>web.clip7</source><source-url> https://a.b/?c=d&amp;e=f "
    "</source-url></note-attributes>"
    "<resource><data encoding=\"base64\">\nYWJj\nZGVm\n</data><mime> image/png </mime><width>640</width>"
    "<height>480.5</height><duration>3</duration><recognition><![CDATA[<recoIndex/>]]></recognition>"
    "<resource-attributes><source-url>u</source-url><timestamp>20240503T000000Z</timestamp>"
    "<file-name>a b.png</file-name></resource-attributes></resource></note>";

inline constexpr std::string_view kFullNoteDump =
    "title 'Größe & Maß'\ncontent '<en-note>ab</en-note>'\ncreated 2024-05-01T09:15:02Z updated -\n"
    "source 'web.clip7' url 'https://a.b/?c=d&e=f'\ntag 'one'\ntag 'two'\ntag ''\n"
    "resource 'image/png' 640x480.5 'a b.png' 2024-05-03T00:00:00Z data abcdef\n";

// An export of one note that is called T.
std::string noteWith(std::string_view markup);

} // namespace quillet
