// The event parser: events, errors with their places, limits, and what never happens (fetching, expanding).
#include <filesystem>
#include <string>
#include <vector>

#include <fmt/core.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/base/SystemLog.h"
#include "platform/xml/XMLParser.h"
#include "tests/support/ScratchDirectory.h"

namespace platform {
namespace {

// Writes the events down, one a line: "<name a=b", "text", "[cdata", ">name", "!code", "$" for the end.
class Recorder : public XMLParserDelegate {
  public:
    std::string events;
    std::string abortAt; // name of the start tag whose callback aborts
    std::string piecesIn;
    std::size_t texts = 0;

    void parserDidStartElement(XMLParser& parser, std::string_view name, XMLAttributes attributes) override {
        if (name == abortAt) parser.abortParsing();
        add('<', name);
        for (const auto& attribute : attributes)
            events.insert(events.size() - 1, fmt::format(" {}={}", attribute.name, attribute.value));
        if (name == piecesIn) parser.setDeliversPieces(true);
    }
    void parserFoundCharacters(XMLParser&, std::string_view text) override {
        ++texts;
        add('\'', text);
    }
    void parserFoundCDATA(XMLParser&, std::string_view bytes) override {
        if (events.ends_with("]\n") && !bytes.empty()) {
            events.insert(events.size() - 2, bytes);
        } else {
            add('[', std::string(bytes) + "]");
        }
    }
    void parserDidEndElement(XMLParser& parser, std::string_view name) override {
        add('>', name);
        if (name == piecesIn) parser.setDeliversPieces(false);
    }
    void parserParseErrorOccurred(XMLParser&, const Error& error) override {
        add('!', error.domain == kXMLParserErrorDomain ? std::to_string(error.code) : error.domain);
    }
    void parserDidEndDocument(XMLParser& parser) override {
        add('$', "");
        parser.abortParsing();
    }

  private:
    void add(char kind, std::string_view rest) { events += fmt::format("{}{}\n", kind, rest); }
};

class Quiet : public testing::Test {
  protected:
    void SetUp() override {
        saved = setSystemLogSink([this](std::string_view entry) { entries.emplace_back(entry); });
    }
    void TearDown() override { setSystemLogSink(saved); }
    SystemLogSink saved;
    std::vector<std::string> entries;
};

using XMLParserEvents = Quiet;
using XMLParserLimits = Quiet;

std::string events(std::string_view xml, std::size_t pieceSize = InputStream::kPieceSize, Recorder recorder = {}) {
    XMLParser parser(InputStream::inputStreamWithBytes(xml, pieceSize));
    parser.setDelegate(&recorder);
    parser.parse();
    return recorder.events;
}

TEST_F(XMLParserEvents, ComeInDocumentOrder) {
    const struct {
        std::string_view xml, expected;
    } rows[] = {
        {"<a/>", "<a\n>a\n$\n"},
        {"<a b='1' c=\"x &amp; &lt;y&#33;\"> t </a>", "<a b=1 c=x & <y!\n' t \n>a\n$\n"},
        {"<a>x &amp; y&#xe9;</a>", "<a\n'x & yé\n>a\n$\n"},
        {"<a>1<!-- c -->2<?p d?>3</a>", "<a\n'123\n>a\n$\n"},
        {"<a><![CDATA[<b> & ]]>t<![CDATA[]]></a>", "<a\n[<b> & ]\n't\n[]\n>a\n$\n"},
        {"<x:a xmlns:x='u' x:b='1'/>", "<x:a xmlns:x=u x:b=1\n>x:a\n$\n"},
        {"<x:a x:b='1'/>", "<x:a x:b=1\n>x:a\n$\n"},
        {"<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9</a>", "<a\n'é\n>a\n$\n"},
        {"\xEF\xBB\xBF<a/>", "<a\n>a\n$\n"},
        {"<!DOCTYPE a SYSTEM 'http://127.0.0.1:9/a.dtd'><a>x</a>", "<a\n'x\n>a\n$\n"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(events(row.xml), row.expected) << row.xml;
        EXPECT_EQ(events(row.xml, 1), row.expected) << row.xml;
        EXPECT_EQ(events(row.xml, 7), row.expected) << row.xml;
    }
}

TEST_F(XMLParserEvents, EndWithOneErrorThatHasLibraryNumberAndPlace) {
    const struct {
        std::string_view xml, expected;
    } rows[] = {
        {"", "!5\n"},
        {"<a>x", "<a\n!5\n"},
        {"<a>&nbsp;</a>", "<a\n!26\n"},
        {"<a><b></a>", "<a\n<b\n!76\n"},
        {"<a/><b/>", "<a\n>a\n!5\n"},
        {" <?xml version='1.0'?><a/>", "!64\n"},
        {"<a>x\x01</a>", "<a\n'x\n!9\n"},
    };
    for (const auto& row : rows) EXPECT_EQ(events(row.xml), row.expected) << row.xml;

    Recorder recorder;
    XMLParser parser(InputStream::inputStreamWithBytes("<a>\n<b></a>"));
    parser.setDelegate(&recorder);
    EXPECT_FALSE(parser.parse());
    ASSERT_NE(parser.parserError(), nullptr);
    EXPECT_EQ(parser.parserError()->domain, kXMLParserErrorDomain);
    EXPECT_TRUE(parser.parserError()->localizedDescription().starts_with("line 2, column 8: Opening and ending tag"))
        << parser.parserError()->localizedDescription();
}

TEST_F(XMLParserEvents, EndAtBytesOfAnotherEncodingWithOneLineAndNoneOnStandardError) {
    const struct {
        std::string_view xml, expected;
    } rows[] = {
        {"<a>x\xFF\xFE</a>",
         "line 1, column 5: Input is not proper UTF-8, indicate encoding ! Bytes: 0xFF 0xFE 0x3C 0x2F"},
        {"<?xml version='1.0' encoding='EUC-JP'?><a>\xFF\xFE</a>",
         "line 1, column 43: there are bytes that the document's encoding does not have"},
    };
    for (const auto& row : rows) {
        testing::internal::CaptureStderr();
        XMLParser parser(InputStream::inputStreamWithBytes(row.xml));
        EXPECT_FALSE(parser.parse());
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        ASSERT_NE(parser.parserError(), nullptr);
        EXPECT_EQ(parser.parserError()->localizedDescription(), row.expected);
    }
}

TEST_F(XMLParserEvents, NeverHoldATagThatBreaksOff) {
    EXPECT_EQ(events("<a><b c='1"), "<a\n!40\n");
}

TEST_F(XMLParserEvents, GoOnAfterAnUndeclaredEntityOfADocumentWithADTD) {
    EXPECT_EQ(events("<!DOCTYPE a SYSTEM 'a.dtd'><a>x&nbsp;y</a>"), "<a\n'xy\n>a\n$\n");
    EXPECT_FALSE(entries.empty());
}

TEST_F(XMLParserEvents, KeepWhatTheyToldWhenTheyAskForAnAbort) {
    const std::string value(1000, 'v');
    for (const std::size_t pieceSize : {std::size_t{16}, InputStream::kPieceSize}) {
        Recorder recorder;
        recorder.abortAt = "b";
        EXPECT_EQ(events("<a><b c='" + value + "' d='e'>x<f/></b></a>", pieceSize, recorder),
                  "<a\n<b c=" + value + " d=e\n!512\n");
    }
}

// Whatever the library comes with next.
TEST_F(XMLParserEvents, AreOverWithAnAbort) {
    class All : public Recorder {
        void parserFoundComment(XMLParser&, std::string_view text) override { events += fmt::format("#{}\n", text); }
        void parserFoundProcessingInstructionWithTarget(XMLParser&, std::string_view target,
                                                        std::string_view) override {
            events += fmt::format("?{}\n", target);
        }
    };
    for (const std::string_view next : {"", "t", "&amp;", "<!--c-->", "<?p d?>", "<![CDATA[d]]>", "<c/>", "&x;", "<"})
        for (const std::string_view pieces : {"b", ""})
            for (const std::size_t pieceSize : {std::size_t{1}, InputStream::kPieceSize}) {
                All all;
                all.abortAt = "b";
                all.piecesIn = pieces;
                const std::string xml = fmt::format("<!DOCTYPE a SYSTEM 'a.dtd'><a><b>{0}{0}</b></a>", next);
                XMLParser parser(InputStream::inputStreamWithBytes(xml, pieceSize));
                parser.setDelegate(&all);
                EXPECT_FALSE(parser.parse());
                EXPECT_EQ(all.events, "<a\n<b\n!512\n") << next;
            }
    EXPECT_TRUE(entries.empty());
}

TEST_F(XMLParserEvents, SayWhereTheAbortWas) {
    for (const std::size_t pieceSize : {std::size_t{1}, InputStream::kPieceSize}) {
        Recorder recorder;
        recorder.abortAt = "b";
        XMLParser parser(InputStream::inputStreamWithBytes("<a>\n<b>\n\nt</b>\n</a>", pieceSize));
        parser.setDelegate(&recorder);
        EXPECT_FALSE(parser.parse());
        ASSERT_NE(parser.parserError(), nullptr);
        EXPECT_EQ(parser.parserError()->userInfo.at("NSXMLParserErrorLineNumber"), Value(std::int64_t{2}));
    }
}

TEST_F(XMLParserEvents, KeepWhatEndedThemWhenAnAbortComesLater) {
    class Late : public Recorder {
        void parserParseErrorOccurred(XMLParser& parser, const Error& error) override {
            Recorder::parserParseErrorOccurred(parser, error);
            parser.abortParsing();
        }
    };
    Late late;
    XMLParser whole(InputStream::inputStreamWithBytes("<a/>"));
    whole.setDelegate(&late);
    EXPECT_TRUE(whole.parse());
    EXPECT_EQ(whole.parserError(), nullptr);
    XMLParser broken(InputStream::inputStreamWithBytes("<a>&nbsp;</a>"));
    broken.setDelegate(&late);
    EXPECT_FALSE(broken.parse());
    ASSERT_NE(broken.parserError(), nullptr);
    EXPECT_EQ(broken.parserError()->code, 26);
}

TEST_F(XMLParserEvents, StopAfterAnAbortWithError512) {
    Recorder recorder;
    recorder.abortAt = "b";
    EXPECT_EQ(events("<a><b>x</b></a>", InputStream::kPieceSize, recorder), "<a\n<b\n!512\n");
    EXPECT_EQ(events("<a><b>x</b></a>", 1, recorder), "<a\n<b\n!512\n");
}

TEST_F(XMLParserEvents, GiveTextPieceByPieceOnRequest) {
    std::string xml = "<a><b>";
    xml.append(100'000, 'x');
    xml += "</b>t</a>";
    Recorder recorder;
    recorder.piecesIn = "b";
    XMLParser parser(InputStream::inputStreamWithBytes(xml, 4096));
    parser.setDelegate(&recorder);
    EXPECT_TRUE(parser.parse());
    EXPECT_GT(recorder.texts, 2U);
    EXPECT_TRUE(recorder.events.ends_with(">b\n't\n>a\n$\n"));
}

TEST_F(XMLParserEvents, TellHowManyBytesHaveBeenRead) {
    const std::string xml = "<a>" + std::string(1000, 'x') + "</a>";
    std::vector<std::uint64_t> counts;
    XMLParser parser(InputStream::inputStreamWithBytes(xml, 400));
    parser.setProgressHandler([&](std::uint64_t count) { counts.push_back(count); });
    EXPECT_TRUE(parser.parse());
    EXPECT_EQ(counts, (std::vector<std::uint64_t>{400, 800, 1007}));
}

TEST_F(XMLParserEvents, NameTheFile) {
    tests::ScratchDirectory scratch;
    tests::writeFile(scratch / "x.enex", "<a>");
    auto stream = InputStream::inputStreamWithURL(URL::fileURLWithPath((scratch / "x.enex").string()));
    ASSERT_TRUE(stream);
    XMLParser parser(std::move(*stream));
    EXPECT_FALSE(parser.parse());
    EXPECT_NE(parser.parserError()->localizedDescription().find("x.enex: line 1"), std::string::npos);
}

TEST_F(XMLParserLimits, RefuseEntityDeclarationsOfEveryKind) {
    const std::string_view declarations[] = {
        "<!ENTITY a 'b'>",
        "<!ENTITY a SYSTEM 'file:///etc/passwd'>",
        "<!ENTITY % p SYSTEM 'file:///etc/passwd'> %p;",
        "<!ENTITY a0 'lol'><!ENTITY a '&a0;&a0;'>",
    };
    for (const auto declaration : declarations)
        EXPECT_EQ(events(fmt::format("<!DOCTYPE r [{}]><r>&a;</r>", declaration)), "!1\n") << declaration;
}

TEST_F(XMLParserLimits, NeverOpenADTD) {
    tests::ScratchDirectory scratch;
    const auto fifo = (scratch / "a.dtd").string(); // opening it would wait for ever
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_EQ(events(fmt::format("<!DOCTYPE a SYSTEM '{}'><a/>", fifo)), "<a\n>a\n$\n");
    EXPECT_EQ(events(fmt::format("<!DOCTYPE a PUBLIC 'p' 'file://{}'><a/>", fifo)), "<a\n>a\n$\n");
}

TEST_F(XMLParserLimits, RefuseDeepNesting) {
    std::string xml;
    for (int i = 0; i < 1'000'000; ++i) xml += "<a>";
    EXPECT_TRUE(events(xml).ends_with("!1\n"));
    std::string allowed;
    for (std::size_t i = 0; i < XMLParser::kMaximumDepth; ++i) allowed += "<a>";
    for (std::size_t i = 0; i < XMLParser::kMaximumDepth; ++i) allowed += "</a>";
    EXPECT_TRUE(events(allowed).ends_with("$\n"));
}

TEST_F(XMLParserLimits, RefuseTooManyAttributes) {
    std::string xml = "<a";
    for (int i = 0; i < 100'000; ++i) xml += fmt::format(" a{}=''", i);
    EXPECT_EQ(events(xml + "/>"), "!1\n");
}

TEST_F(XMLParserLimits, RefuseAHugeTagInAFile) {
    tests::ScratchDirectory scratch;
    for (const bool closed : {true, false}) {
        tests::writeFile(scratch / "x.enex",
                         "<a b='" + std::string(XMLParser::kMaximumTagSize * 4, 'x') + (closed ? "'/>" : ""));
        auto stream = InputStream::inputStreamWithURL(URL::fileURLWithPath((scratch / "x.enex").string()));
        ASSERT_TRUE(stream);
        XMLParser parser(std::move(*stream));
        EXPECT_FALSE(parser.parse());
        EXPECT_EQ(parser.parserError()->code, XMLParser::kInternalError);
    }
}

TEST_F(XMLParserLimits, AllowTextAndSectionsOfAnySize) {
    const std::string large(12U << 20, 'x');
    EXPECT_EQ(events("<a>" + large + "</a>").size(), large.size() + 10);
    EXPECT_EQ(events("<a><![CDATA[" + large + "]]></a>").size(), large.size() + 11);
    EXPECT_EQ(events("<a><!--" + large + "--></a>"), "<a\n>a\n$\n");
}

TEST(InputStream, OpensRegularFilesOnly) {
    tests::ScratchDirectory scratch;
    ASSERT_EQ(::mkfifo((scratch / "fifo").c_str(), 0600), 0);
    EXPECT_FALSE(InputStream::inputStreamWithURL(URL::fileURLWithPath((scratch / "fifo").string())));
    EXPECT_FALSE(InputStream::inputStreamWithURL(URL::fileURLWithPath(scratch.path().string())));
    const auto missing = InputStream::inputStreamWithURL(URL::fileURLWithPath((scratch / "none").string()));
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error().code, static_cast<std::int64_t>(CocoaError::fileReadNoSuchFile));
}

} // namespace
} // namespace platform
