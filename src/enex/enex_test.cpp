// Reading an export: what reaches the records, the log, the blocks, in which order, whatever the size of the pieces.
#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

#include <fmt/core.h>
#include <gtest/gtest.h>

#include "enex/ImportCase.h"
#include "tests/support/ScratchDirectory.h"

namespace quillet {
namespace {

using platform::Error;
using platform::Result;

TEST(EvernoteXMLParseOperation, FillsEveryField) {
    Import import;
    import.run(exported(kFullNote));
    EXPECT_EQ(import.notes, kFullNoteDump);
    EXPECT_EQ(import.blocks, (std::vector<std::string>{"entry", "end"}));
    EXPECT_EQ(import.logTexts(), "ENEX file created by: 10.88.4\nConverting \"Größe & Maß\"\n"
                                 "Finish parsing ENEX file.\n");
}

TEST(EvernoteXMLParseOperation, ReadsTheSameWhateverThePieces) {
    for (const bool debug : {false, true}) {
        Import whole;
        whole.debug = debug;
        whole.run(exported(kFullNote));
        for (const std::size_t size : {1U, 7U, 300U, 65536U}) {
            Import pieces;
            pieces.debug = debug;
            pieces.pieceSize = size;
            pieces.run(exported(kFullNote));
            EXPECT_EQ(pieces.notes, whole.notes) << size;
            EXPECT_EQ(pieces.blocks, whole.blocks) << size;
            EXPECT_EQ(pieces.log, whole.log) << size;
        }
    }
}

struct Case {
    std::string_view markup, expected; // a part of the note's dump
};

TEST(EvernoteXMLParseOperation, KeepsEachRuleOfItsStates) {
    const Case cases[] = {
        // Text behind an end tag still counts for the element that has ended.
        {"\n  ", "title 'T\n  '\n"},
        {"<title>U</title>", "title 'TU'\n"},
        {"<task><title>U</title><created>20240501T091502Z</created></task>", "title 'TU'\n"},
        {"<task><title>U</title><created>20240501T091502Z</created></task>", "created 2024-05-01T09:15:02Z"},
        {"<resource><width>640</width>\n<height>480</height>\n<mime>a</mime></resource>", "'a' 0x0"},
        {"<resource><width>640</width><height>480</height></resource>", "'' 640x480"},
        {"<resource><width> 640px </width><height>none</height></resource>", "640x0"},
        {"<resource><width>inf</width><height>-2.5e1</height></resource>", "0x-25"},
        {"<resource><width>+5</width><height>+ 5</height></resource>", "5x0"},
        {"<resource><resource-attributes><file-name> a </file-name>\n</resource-attributes></resource>", "' a \n'"},
        {"<resource><data>YWJj</data>\n<mime>x/y</mime></resource>", "data abc"},
        // The body comes from sections alone.
        {"<content>&lt;en-note/&gt;</content>", "content ''"},
        {"<content> <![CDATA[a]]> x <![CDATA[b]]></content>", "content 'ab'"},
        {"<other><![CDATA[a]]></other>", "content ''"},
        // Dates.
        {"<created>20240501T091502Z</created>", "created 2024-05-01T09:15:02Z"},
        {"<created>\n 20240501T091502Z \n</created>", "created 2024-05-01T09:15:02Z"},
        {"<created>20240501T091502 pmZ</created>", "created 2024-05-01T09:15:02Z"},
        {"<created>20240501T091502 amZ</created>", "created 2024-05-01T09:15:02Z"},
        {"<created>20240501T251502Z</created>", "created -"},
        {"<created>yesterday</created>", "created -"},
        {"<created>20240501T091502Z</created><created>x</created>", "created -"},
        {"<updated>20240501T091502Z</updated>\n", "updated 2024-05-01T09:15:02Z"},
        {"<created>2024<!-- c -->0501T091502Z</created>", "created 2024-05-01T09:15:02Z"},
        // Tags.
        {"<tag>\n</tag>", "tag ''\n"},
        {"<tag> a b </tag>\n ", "tag 'a b'\n"},
        // Attributes.
        {"<note-attributes><source>a</source>\n<source> b </source></note-attributes>", "source 'ab'"},
        {"<note-attributes><source-url>u</source-url><x>y</x></note-attributes>", "url 'u'"},
        {"<note-attributes><title>x</title></note-attributes>", "title 'T'\n"},
        {"<source-url>u</source-url>", "url ''"},
        // Resources.
        {"<resource><data>YWJj</data><recognition>x</recognition></resource>", "data abc"},
        {"<resource><data encoding=''>YWJj</data></resource>", "data abc"},
        {"<resource><data/></resource>", "data No content data for resource."},
        {"<resource><data>YWJ</data></resource>", "data Invalid content data for resource."},
        {"<resource><mime>image/</mime><mime> png</mime></resource>", "'image/png'"},
        {"<resource><mime>no such/type</mime></resource>", "'no such/type'"},
        {"<resource><unknown/><mime>a/b</mime></resource>", "'a/b'"},
        {"<resource><mime>a/b</mime><unknown>c</unknown></resource>", "'a/bc'"},
        {"<resource><resource-attributes><file-name>f</file-name><camera>c</camera></resource-attributes></resource>",
         "'f'"},
        {"<resource><resource-attributes><file-name>f</file-name></resource-attributes> g</resource>", "'f'"},
        // The name is not inside resource-attributes, yet the state is.
        {"<resource><resource-attributes><x/></resource-attributes><file-name>g</file-name></resource>", "'g'"},
        {"<NOTE/><Title>x</Title>", "title 'T'\n"},
    };
    for (const auto& row : cases) {
        Import import;
        import.run(noteWith(row.markup));
        EXPECT_NE(import.notes.find(row.expected), std::string::npos) << row.markup << "\n" << import.notes;
        EXPECT_EQ(import.blocks, (std::vector<std::string>{"entry", "end"})) << row.markup;
    }
}

TEST(EvernoteXMLParseOperation, SaysWhoseTasksAreLeftOut) {
    const std::string_view tasks = "<task><title>Milk</title></task><task><title>Eggs</title></task>";
    Import import;
    import.run(fmt::format("<x><note><title> A\n</title>{0}</note><note><title>B</title></note><note><title>C</title>"
                           "{0}</note></x>",
                           tasks));
    EXPECT_EQ(std::ranges::count(import.systemLog, "The tasks of the note \"A\" are left out."), 1);
    EXPECT_EQ(std::ranges::count(import.systemLog, "The tasks of the note \"C\" are left out."), 1);
    EXPECT_FALSE(std::ranges::any_of(import.systemLog, [](const auto& entry) { return entry.contains("\"B\" are"); }));
    EXPECT_FALSE(import.log.contains("left out"));
}

TEST(EvernoteXMLParseOperation, PassesOverTextBetweenNotes) {
    const std::pair<std::string_view, std::string_view> rows[] = {
        {"<note><title>a</title></note>", "title 'a'\n"},
        {"<note><title>a</title><created>20240501T091502Z</created></note>", "created 2024-05-01T09:15:02Z"},
        {"<note><title>a</title><tag>b</tag></note>", "tag 'b'\n"},
    };
    for (const auto& [note, expected] : rows) {
        Import import;
        import.run(fmt::format("<x>\n {0}\n stray <![CDATA[text]]>\n {0}\n stray\n</x>", note));
        EXPECT_EQ(import.blocks, (std::vector<std::string>{"entry", "entry", "end"}));
        const auto second = import.notes.find("title", 1);
        ASSERT_NE(second, std::string::npos);
        EXPECT_EQ(import.notes.substr(0, second), import.notes.substr(second));
        EXPECT_NE(import.notes.find(expected), std::string::npos) << import.notes;
    }
}

TEST(EvernoteXMLParseOperation, TakesBase64InLinesOfAnyLength) {
    const std::string bytes(1000, 'q');
    std::string encoded;
    for (int i = 0; i < 333; ++i) encoded += "cXFx";
    encoded += "cQ==";
    for (const std::size_t width : {76U, 80U, 120U, 256U, 100'000U}) {
        std::string lines;
        for (std::size_t at = 0; at < encoded.size(); at += width) lines += encoded.substr(at, width) + "\r\n \t";
        for (const std::size_t size : {7U, 65536U}) {
            Import import;
            import.pieceSize = size;
            import.run(noteWith("<resource><data encoding=\"base64\">" + lines + "</data></resource>"));
            EXPECT_NE(import.notes.find("data " + bytes + "\n"), std::string::npos) << width;
        }
    }
}

// The start tags of real exports, and odd ones; of each the log names the version alone, as it stands.
TEST(EvernoteXMLParseOperation, NamesTheVersionThatWroteTheFile) {
    const std::string longVersion(10'000, '7');
    const struct {
        std::string attributes, logged;
    } rows[] = {
        // Evernote for Mac
        {R"a(export-date="20130730T205204Z" application="Evernote" version="Evernote Mac 5.2.1 (401317)")a",
         "Evernote Mac 5.2.1 (401317)"},
        {R"a(export-date="20150614T101010Z" application="Evernote" version="Evernote Mac 6.0.12 (451396)")a",
         "Evernote Mac 6.0.12 (451396)"},
        {R"a(export-date="20180502T083402Z" application="Evernote" version="Evernote Mac 7.1 (456785)")a",
         "Evernote Mac 7.1 (456785)"},
        {R"a(export-date="20200412T161544Z" application="Evernote" version="Evernote Mac 7.14 (458265)")a",
         "Evernote Mac 7.14 (458265)"},
        {R"a(export-date="20220105T120000Z" application="Evernote" version="Evernote Mac 7.14")a", "Evernote Mac 7.14"},
        {R"a(export-date="20201109T000000Z" application="Evernote" version="Evernote Mac")a", "Evernote Mac"},
        {R"a(application="Evernote" version="Evernote Legacy 7.14.1 (458325)" export-date="20211231T235959Z")a",
         "Evernote Legacy 7.14.1 (458325)"},
        {R"a(application="Evernote Legacy" version="7.14.1")a", "7.14.1"},
        // Evernote for Windows
        {R"a(export-date="20110310T171717Z" application="Evernote/Windows" version="4.x")a", "4.x"},
        {R"a(export-date="20130101T000000Z" application="Evernote/Windows" version="4.6.7.8409")a", "4.6.7.8409"},
        {R"a(export-date="20141024T061839Z" application="Evernote/Windows" version="5.x")a", "5.x"},
        {R"a(export-date="20160309T154321Z" application="Evernote/Windows" version="5.9.9.1337")a", "5.9.9.1337"},
        {R"a(export-date="20171013T090210Z" application="Evernote/Windows" version="6.x")a", "6.x"},
        {R"a(export-date="20180608T072031Z" application="Evernote" version="6.13.1")a", "6.13.1"},
        {R"a(export-date="20200420T181500Z" application="Evernote/Windows" version="6.25.1.9091")a", "6.25.1.9091"},
        {R"a(application="Evernote/Windows" version="Evernote Windows 6.x")a", "Evernote Windows 6.x"},
        // the later programs
        {R"a(export-date="20201006T141312Z" application="Evernote" version="10.0.6")a", "10.0.6"},
        {R"a(export-date="20210304T120001Z" application="Evernote" version="10.8.5")a", "10.8.5"},
        {R"a(export-date="20220718T154110Z" application="Evernote" version="10.41.7")a", "10.41.7"},
        {R"a(export-date="20230401T000000Z" application="Evernote" version="10.55.2")a", "10.55.2"},
        {R"a(export-date="20240501T091502Z" application="Evernote" version="10.88.4")a", "10.88.4"},
        {R"a(export-date="20251103T235959Z" application="Evernote" version="10.160.3")a", "10.160.3"},
        {R"a(export-date="20240501T091502Z" application="Evernote" version="10.93.0-mac-ddl-public")a",
         "10.93.0-mac-ddl-public"},
        // elsewhere
        {R"a(application="Evernote" version="Evernote iPhone 8.2")a", "Evernote iPhone 8.2"},
        {R"a(application="Evernote/iOS" version="10.4 (1)")a", "10.4 (1)"},
        {R"a(application="Evernote Android" version="8.13.3")a", "8.13.3"},
        {R"a(export-date="20190909T090909Z" application="Yinxiang" version="印象笔记 9.1.6")a", "印象笔记 9.1.6"},
        {R"a(application="NixNote" export-date="2016-03-04T05:06:07Z" version="2.1.4")a", "2.1.4"},
        {R"a(application="another program" version="export-0.9+git20240501~rc1")a", "export-0.9+git20240501~rc1"},
        // odd ones
        {R"a(version="")a", ""},
        {R"a(version="  10.1 ")a", "  10.1 "},
        {R"a(version='with "quotes"')a", "with \"quotes\""},
        {R"a(version="1 &amp; 2 &lt;3&gt; &#x1F375; &quot;4&quot;")a", "1 & 2 <3> 🍵 \"4\""},
        {"version=\"two\nlines\"", "two lines"}, // as XML has it
        {R"a(version="%@ %s %n")a", "%@ %s %n"},
        {R"a(version="7" xml:lang="en" export-date="yesterday")a", "7"},
        {"version=\"" + longVersion + "\"", longVersion},
        {R"a(Version="7" export-date="20240501T091502Z")a", "(null)"},
        {R"a(application="Evernote" export-date="20240501T091502Z")a", "(null)"},
        {"", "(null)"},
    };
    for (const auto& row : rows) {
        Import import;
        import.run(fmt::format("<en-export {}><note><title>a</title></note></en-export>", row.attributes));
        EXPECT_EQ(import.logTexts(), fmt::format("ENEX file created by: {}\nConverting \"a\"\n"
                                                 "Finish parsing ENEX file.\n",
                                                 row.logged));
        EXPECT_EQ(import.blocks, (std::vector<std::string>{"entry", "end"})) << row.attributes;
    }
}

TEST(EvernoteXMLParseOperation, NamesTheVersionOfEachExportElement) {
    Import twice;
    twice.run("<en-export version='1'><en-export version='2'/></en-export>");
    EXPECT_EQ(twice.logTexts(), "ENEX file created by: 1\nENEX file created by: 2\nFinish parsing ENEX file.\n");
}

TEST(EvernoteXMLParseOperation, LogsEachEventInDebugMode) {
    Import import;
    import.debug = true;
    import.run("<note><title>a &amp; b</title><content><![CDATA[x]]></content></note>");
    EXPECT_EQ(import.logTexts(), "parser:didStartElement: note\nparser:didStartElement: title\n"
                                 "parser:foundCharacters:\nparser:didEndElement: title\n"
                                 "parser:didStartElement: content\nparser:foundCDATA:\n"
                                 "parser:didEndElement: content\nparser:didEndElement: note\n"
                                 "Converting \"a & b\"\nFinish parsing ENEX file.\n");
}

TEST(EvernoteXMLParseOperation, PassesTheDirectoryAndTheOptionToEachNote) {
    Import import;
    import.asNotes = true;
    int notes = 0;
    import.convert = [&](EvernoteXMLItem& item) -> Result<std::optional<ItemEntry>> {
        EXPECT_TRUE(item.saveWebClippingsAsNotes);
        EXPECT_TRUE(item.directoryURL.isFileURL());
        EXPECT_EQ(item.identifier.size(), 36U);
        ++notes;
        return ItemEntry{};
    };
    std::string many;
    for (int i = 0; i < 100; ++i) many += kFullNote;
    import.run(exported(many));
    EXPECT_EQ(notes, 100);
    EXPECT_EQ(import.blocks.size(), 101U);
}

TEST(EvernoteXMLParseOperation, ReportsANoteThatFailsAndGoesOn) {
    Import import;
    int call = 0;
    import.convert = [&](EvernoteXMLItem&) -> Result<std::optional<ItemEntry>> {
        switch (call++) {
        case 0:
            return platform::failure(Error("domain", 7));
        case 1:
            return std::nullopt;
        case 2:
            throw std::runtime_error("broken");
        default:
            return ItemEntry{};
        }
    };
    import.run("<x><note><title>a</title></note><note><title>b</title></note><note><title>c</title></note>"
               "<note><title>d</title></note></x>");
    EXPECT_EQ(import.blocks,
              (std::vector<std::string>{"error domain 7 'a'", "error EvernoteXMLParseOperationErrorDomain 1005 'b'",
                                        "error EvernoteXMLParseOperationErrorDomain 1004 'c'", "entry", "end"}));
    EXPECT_EQ(import.logTexts(), "Converting \"a\"\nSkipping \"a\"\nConverting \"b\"\nSkipping \"b\"\n"
                                 "Converting \"c\"\nSkipping \"c\"\nConverting \"d\"\nFinish parsing ENEX file.\n");
}

TEST(EvernoteXMLParseOperation, TakesANoteInsideANoteForItsEnd) {
    Import import;
    import.run("<x><note><title>a</title><note/></note></x>");
    EXPECT_EQ(import.blocks,
              (std::vector<std::string>{"entry", "error EvernoteXMLParseOperationErrorDomain 1005", "end"}));
    EXPECT_EQ(import.logTexts(), "Converting \"a\"\nConverting \"(null)\"\nSkipping \"(null)\"\n"
                                 "Finish parsing ENEX file.\n");
}

TEST(EvernoteXMLParseOperation, EndsWithOneErrorForTheFile) {
    const struct {
        std::string_view xml, expected, description;
    } rows[] = {
        {"<x><note><title> A\n</title><b></note></x>", "end EvernoteXMLParseOperationErrorDomain 1006",
         "There is a problem with the note “A”. Try editing the note and exporting a new ENEX file."},
        {"<x><note><title> </title><b></note></x>", "end NSXMLParserErrorDomain 76", ""},
        {"<x><note><b></note></x>", "end NSXMLParserErrorDomain 76", ""},
        {"<x><b></x>", "end NSXMLParserErrorDomain 76", ""},
        {"", "end NSXMLParserErrorDomain 5", ""},
        {"<note><title>A</title><resource><data encoding='Base64'>YWJj</data></resource></note>",
         "end EvernoteXMLParseOperationErrorDomain 1003", "Cannot parse \"Base64\" data."},
        {"<!DOCTYPE x [<!ENTITY a 'b'>]><x/>", "end NSXMLParserErrorDomain 1", ""},
    };
    for (const auto& row : rows) {
        Import import;
        import.run(row.xml);
        EXPECT_EQ(import.blocks, (std::vector<std::string>{std::string(row.expected)})) << row.xml;
        ASSERT_TRUE(import.endError);
        const auto description = import.endError->localizedDescription();
        EXPECT_TRUE(row.description.empty() || row.description == description) << description;
        EXPECT_EQ(import.logTexts(), "Finish parsing ENEX file with error: " + import.endError->description() + "\n");
    }
    Import titled;
    titled.run(rows[0].xml);
    ASSERT_NE(titled.endError->underlyingError(), nullptr);
    EXPECT_EQ(titled.endError->underlyingError()->code, 76);
}

TEST(EvernoteXMLParseOperation, KeepsTheNotesBeforeAnError) {
    Import import;
    import.run("<x><note><title>a</title></note><note><title>b</title><c></note></x>");
    EXPECT_EQ(import.blocks, (std::vector<std::string>{"entry", "end EvernoteXMLParseOperationErrorDomain 1006"}));
}

TEST(EvernoteXMLParseOperation, RefusesAFileThatItCannotRead) {
    tests::ScratchDirectory scratch;
    for (const auto& path : {(scratch / "none.enex").string(), scratch.path().string()}) {
        Import import;
        import.runFile(path);
        EXPECT_EQ(import.blocks, (std::vector<std::string>{"end EvernoteXMLParseOperationErrorDomain 1001"}));
        EXPECT_EQ(import.endError->localizedDescription(), "Cannot create input stream.");
        EXPECT_NE(import.systemLog.front().find(path), std::string::npos);
    }
}

TEST(EvernoteXMLParseOperation, HonoursACancelBetweenNotes) {
    Import import;
    EvernoteXMLParseOperation* operation = nullptr;
    import.prepare = [&](EvernoteXMLParseOperation& prepared) { operation = &prepared; };
    import.convert = [&](EvernoteXMLItem&) -> Result<std::optional<ItemEntry>> {
        operation->cancel();
        return ItemEntry{};
    };
    import.run("<x><note><title>a</title></note><note><title>b</title></note></x>");
    EXPECT_EQ(import.blocks, (std::vector<std::string>{"entry", "end NSXMLParserErrorDomain 512"}));
    EXPECT_TRUE(operation != nullptr);
}

TEST(EvernoteXMLParseOperation, TellsHowFarItIs) {
    Import import;
    using Steps = std::vector<std::pair<std::uint64_t, std::uint64_t>>;
    Steps steps;
    import.pieceSize = 10;
    import.prepare = [&](EvernoteXMLParseOperation& operation) {
        operation.progressHandler = [&](std::uint64_t read, std::uint64_t size) { steps.emplace_back(read, size); };
    };
    import.run("<x>0123456789</x>");
    EXPECT_EQ(steps, (Steps{{0, 17}, {3, 17}, {17, 17}}));
    // A piece may hold many notes: each is a step.
    steps.clear();
    import.pieceSize = 1000;
    import.run("<x><note></note><note></note></x>");
    EXPECT_EQ(steps, (Steps{{0, 33}, {16, 33}, {29, 33}, {33, 33}}));
}

} // namespace
} // namespace quillet
