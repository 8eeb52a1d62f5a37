// The two forms are held against an independent reader and writer, on random values and on hand-made faults.
#include "platform/plist/PropertyList.h"

#include <cstdlib>

#include <gtest/gtest.h>
#include <plist/plist.h>
#include <rapidcheck.h>

namespace platform {
namespace {

// What the oracle cannot hold is kept out where it is asked: U+0000, lone surrogates, fractions of dates.
enum class Alphabet { any, wellFormed };

std::u16string randomText(Alphabet alphabet) {
    const auto unit = rc::gen::weightedOneOf<char16_t>({{4, rc::gen::inRange<char16_t>(0x20, 0x7F)},
                                                        {1, rc::gen::inRange<char16_t>(0xA0, 0xD7FF)},
                                                        {1, rc::gen::arbitrary<char16_t>()}});
    auto text = *rc::gen::container<std::u16string>(unit);
    if (alphabet == Alphabet::any) return text;
    std::erase_if(text, [](char16_t c) { return c < 0x20 || c >= 0xFFFE || isHighSurrogate(c) || isLowSurrogate(c); });
    if (*rc::gen::inRange(0, 4) == 0) text += u"\U0001F600&<>\t\n";
    return text;
}

Value randomValue(Alphabet alphabet, int depth) {
    switch (*rc::gen::inRange(0, depth > 0 ? 9 : 7)) {
    case 0:
        return *rc::gen::arbitrary<bool>();
    case 1:
        return *rc::gen::oneOf(rc::gen::arbitrary<std::int64_t>(), rc::gen::inRange<std::int64_t>(-300, 70000));
    case 2:
        return static_cast<double>(*rc::gen::arbitrary<std::int64_t>()) / 1024;
    case 3:
        return Date{static_cast<double>(*rc::gen::arbitrary<std::int32_t>())};
    case 4:
        return Data(*rc::gen::arbitrary<std::string>());
    case 5:
        return UID{*rc::gen::oneOf(rc::gen::inRange<std::uint64_t>(0, 70000), rc::gen::just<std::uint64_t>(1u << 30))};
    case 6:
        return randomText(alphabet);
    case 7: {
        Array array;
        for (int i = *rc::gen::inRange(0, 20); i > 0; --i) array.push_back(randomValue(alphabet, depth - 1));
        return array;
    }
    default: {
        Dictionary dictionary;
        for (int i = *rc::gen::inRange(0, 20); i > 0; --i)
            dictionary.emplace(utf8FromUTF16(randomText(Alphabet::wellFormed)), randomValue(alphabet, depth - 1));
        return dictionary;
    }
    }
}

plist_t oracleNode(const Value& value) {
    if (const auto* boolean = value.as<bool>()) return plist_new_bool(*boolean);
    if (const auto* integer = value.as<std::int64_t>()) return plist_new_uint(static_cast<std::uint64_t>(*integer));
    if (const auto* real = value.as<double>()) return plist_new_real(*real);
    if (const auto* date = value.as<Date>())
        return plist_new_date(static_cast<std::int32_t>(date->secondsSinceReferenceDate), 0);
    if (const auto* data = value.as<Data>()) return plist_new_data(data->bytes().data(), data->size());
    if (const auto* uid = value.as<UID>()) return plist_new_uid(uid->value);
    if (const auto* array = value.as<Array>()) {
        const plist_t node = plist_new_array();
        for (const Value& element : *array) plist_array_append_item(node, oracleNode(element));
        return node;
    }
    if (const auto* dictionary = value.as<Dictionary>()) {
        const plist_t node = plist_new_dict();
        for (const auto& [key, element] : *dictionary) plist_dict_set_item(node, key.c_str(), oracleNode(element));
        return node;
    }
    return plist_new_string(value.utf8().c_str());
}

Value valueOfNode(plist_t node);

Value scalarOfNode(plist_t node) {
    std::uint64_t number = 0, length = 0;
    double real = 0;
    std::int32_t seconds = 0, microseconds = 0;
    std::uint8_t boolean = 0;
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN:
        plist_get_bool_val(node, &boolean);
        return boolean != 0;
    case PLIST_UINT:
        plist_get_uint_val(node, &number);
        return static_cast<std::int64_t>(number);
    case PLIST_REAL:
        plist_get_real_val(node, &real);
        return real;
    case PLIST_DATE:
        plist_get_date_val(node, &seconds, &microseconds);
        return Date{seconds + microseconds / 1e6};
    case PLIST_UID:
        plist_get_uid_val(node, &number);
        return UID{number};
    case PLIST_STRING:
        return std::string_view(plist_get_string_ptr(node, &length));
    case PLIST_DATA: {
        const char* bytes = plist_get_data_ptr(node, &length);
        return Data(length ? std::string(bytes, length) : std::string());
    }
    default:
        return {};
    }
}

Value valueOfNode(plist_t node) {
    if (plist_get_node_type(node) == PLIST_ARRAY) {
        Array array;
        for (std::uint32_t i = 0; i < plist_array_get_size(node); ++i)
            array.push_back(valueOfNode(plist_array_get_item(node, i)));
        return array;
    }
    if (plist_get_node_type(node) != PLIST_DICT) return scalarOfNode(node);
    Dictionary dictionary;
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(node, &iterator);
    while (true) {
        char* key = nullptr;
        plist_t element = nullptr;
        plist_dict_next_item(node, iterator, &key, &element);
        if (!element) break;
        dictionary.emplace(key, valueOfNode(element));
        std::free(key);
    }
    std::free(iterator);
    // The oracle writes references in XML as such dictionaries but does not read them back as references.
    const Value* uid = find(dictionary, "CF$UID");
    if (uid && dictionary.size() == 1) return UID{static_cast<std::uint64_t>(uid->integerValue())};
    return dictionary;
}

using OracleReader = decltype(&plist_from_bin);
using OracleWriter = decltype(&plist_to_bin);

Value readByOracle(OracleReader reader, const std::string& bytes) {
    plist_t node = nullptr;
    reader(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &node);
    Value value = node ? valueOfNode(node) : Value();
    plist_free(node);
    return value;
}

std::string writtenByOracle(OracleWriter writer, const Value& value) {
    const plist_t node = oracleNode(value);
    char* bytes = nullptr;
    std::uint32_t length = 0;
    writer(node, &bytes, &length);
    std::string file(bytes, length);
    std::free(bytes);
    plist_free(node);
    return file;
}

std::string describedError(std::string_view bytes) {
    const Result<Value> result = propertyListFromData(bytes);
    if (result) return "no error";
    EXPECT_EQ(result.error().domain, kCocoaErrorDomain);
    EXPECT_EQ(result.error().code, 3840);
    return result.error().localizedDescription();
}

TEST(PropertyList, BinaryFormRoundTripsEveryValue) {
    EXPECT_TRUE(rc::check([] {
        const Value value = randomValue(Alphabet::any, 4);
        const std::string file = binaryDataFromPropertyList(value).value();
        RC_ASSERT(propertyListFromData(file).value() == value);
        RC_ASSERT(binaryDataFromPropertyList(value).value() == file);
    }));
}

TEST(PropertyList, XMLFormRoundTripsWhatItCanHold) {
    EXPECT_TRUE(rc::check([] {
        const Value value = randomValue(Alphabet::wellFormed, 4);
        RC_ASSERT(propertyListFromData(xmlDataFromPropertyList(value).value()).value() == value);
    }));
}

TEST(PropertyList, AgreesWithAnotherImplementationBothWays) {
    EXPECT_TRUE(rc::check([] {
        const Value value = Array{randomValue(Alphabet::wellFormed, 3)};
        RC_ASSERT(readByOracle(plist_from_bin, binaryDataFromPropertyList(value).value()) == value);
        RC_ASSERT(readByOracle(plist_from_xml, xmlDataFromPropertyList(value).value()) == value);
        RC_ASSERT(propertyListFromData(writtenByOracle(plist_to_bin, value)).value() == value);
        RC_ASSERT(propertyListFromData(writtenByOracle(plist_to_xml, value)).value() == value);
    }));
}

TEST(PropertyList, DamagedFilesNeverCrash) {
    EXPECT_TRUE(rc::check([](bool binary) {
        const Value value = randomValue(Alphabet::wellFormed, 3);
        std::string file = (binary ? binaryDataFromPropertyList(value) : xmlDataFromPropertyList(value)).value();
        for (int i = *rc::gen::inRange(1, 8); i > 0; --i)
            file[*rc::gen::inRange<std::size_t>(binary ? 8 : 0, file.size())] = *rc::gen::arbitrary<char>();
        if (const Result<Value> read = propertyListFromData(file))
            RC_ASSERT(binaryDataFromPropertyList(*read).has_value());
    }));
}

TEST(PropertyList, XMLFormLooksLikeThePlatforms) {
    const Value value(Dictionary{
        {"array", Array{1, true, 0.5, "a<b"}},
        {"data", Data("Hello")},
        {"date", Date{0}},
        {"empty", Array{}},
        {"none", Dictionary{}},
        {"text", ""},
        {"uid", UID{3}},
    });
    const std::string body = R"(<plist version="1.0">
<dict>
	<key>array</key>
	<array>
		<integer>1</integer>
		<true/>
		<real>0.5</real>
		<string>a&lt;b</string>
	</array>
	<key>data</key>
	<data>
	SGVsbG8=
	</data>
	<key>date</key>
	<date>2001-01-01T00:00:00Z</date>
	<key>empty</key>
	<array/>
	<key>none</key>
	<dict/>
	<key>text</key>
	<string></string>
	<key>uid</key>
	<dict>
		<key>CF$UID</key>
		<integer>3</integer>
	</dict>
</dict>
</plist>
)";
    const std::string file = xmlDataFromPropertyList(value).value();
    EXPECT_TRUE(file.starts_with("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC "));
    EXPECT_EQ(file.substr(file.find("<plist")), body);
}

TEST(PropertyList, RefusesToWriteWhatAFormCannotHold) {
    const auto code = [](const Result<std::string>& result) { return result ? 0 : result.error().code; };
    EXPECT_EQ(code(binaryDataFromPropertyList(Value())), 3851);
    EXPECT_EQ(code(binaryDataFromPropertyList(Array{Value(Error("D", 1))})), 3851);
    EXPECT_EQ(code(xmlDataFromPropertyList(std::u16string(1, u'\0'))), 3851);
    EXPECT_EQ(code(xmlDataFromPropertyList(std::u16string{0xDC00})), 3851);
    EXPECT_EQ(code(xmlDataFromPropertyList(std::u16string{0xD800, 'a'})), 3851);
    EXPECT_EQ(code(xmlDataFromPropertyList(Dictionary{{"\x01", 1}})), 3851);
    EXPECT_EQ(code(xmlDataFromPropertyList(UID{std::uint64_t{1} << 63})), 3851);
    EXPECT_EQ(xmlDataFromPropertyList(Dictionary{{"a", Array{1, "\x1b"}}}).error().localizedDescription(),
              "at “/a/1”: the text holds a character that XML has no form for");
    Value deep;
    deep = Array{};
    for (int i = 1; i < 512; ++i) deep = Array{std::move(deep)};
    EXPECT_TRUE(propertyListFromData(binaryDataFromPropertyList(deep).value()).has_value());
    EXPECT_TRUE(propertyListFromData(xmlDataFromPropertyList(deep).value()).has_value());
    deep = Array{std::move(deep)};
    EXPECT_EQ(code(binaryDataFromPropertyList(deep)), 3851);
    EXPECT_EQ(code(xmlDataFromPropertyList(deep)), 3851);
}

// A file of the given objects, each with its offset, one-byte references, the first object on top.
std::string fileOf(const std::vector<std::string>& objects) {
    std::string file = "bplist00", offsets;
    for (const std::string& object : objects) {
        offsets += {static_cast<char>(file.size() >> 8), static_cast<char>(file.size())};
        file += object;
    }
    const std::size_t table = file.size();
    file += offsets + std::string(6, '\0') + "\x02\x01" + std::string(7, '\0') + static_cast<char>(objects.size());
    return file + std::string(14, '\0') + static_cast<char>(table >> 8) + static_cast<char>(table);
}

TEST(BinaryPropertyListReader, SaysWhatIsWrongAndWhere) {
    struct Row {
        std::string file, error;
    };
    using namespace std::string_literals;
    const std::vector<Row> rows{
        {"bplist00", "Binary property list: the file is cut short."},
        {"bplist15" + std::string(40, '\0'), "Binary property list: unknown version."},
        {"bplist00" + std::string(32, '\0'), "Binary property list: sizes of offsets and references must be 1 to 8."},
        {fileOf({"\xA1\x00"s}), "Binary property list, object 0: it contains itself."},
        {fileOf({"\xA1\x01"s, "\xD1\x02\x00"s, "\x51x"}), "Binary property list, object 0: it contains itself."},
        {fileOf({"\xA1\x07"s}), "Binary property list, object 7: it is referred to but does not exist."},
        {fileOf({"\xD1\x01\x01"s, "\x08"}), "Binary property list, object 0: one of its keys is no string."},
        {fileOf({"\xD1\x09\x01"s, "\x08"}), "Binary property list, object 0: one of its keys does not exist."},
        {fileOf({"\x5F\x13\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF"}), "Binary property list, object 0: it runs past the end."},
        {fileOf({"\xAF\x13\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF"}), "Binary property list, object 0: it runs past the end."},
        {fileOf({"\x5F"}), "Binary property list, object 0: its size is unreadable."},
        {fileOf({"\x5F\x20xxxxxxxxx"}), "Binary property list, object 0: its size is unreadable."},
        {fileOf({"\x51\xFF"}), "Binary property list, object 0: an ASCII string holds another character."},
        {fileOf({"\x00"s}), "Binary property list, object 0: its marker 0x00 is unknown."},
        {fileOf({"\x70"}), "Binary property list, object 0: its marker 0x70 is unknown."},
        {fileOf({"\x15" + std::string(32, '\0')}), "Binary property list, object 0: no number has its size."},
        {fileOf({"\x21\0\0"s}), "Binary property list, object 0: no number has its size."},
        {fileOf({"\x14\x01" + std::string(15, '\0')}), "Binary property list, object 0: its number is too large."},
        {fileOf({"\x88" + std::string(9, '\0')}), "Binary property list, object 0: its UID is longer than 8 bytes."},
    };
    for (const Row& row : rows) EXPECT_EQ(describedError(row.file), row.error);
}

TEST(BinaryPropertyListReader, ReadsFormsThatOurWriterNeverMakes) {
    using namespace std::string_literals;
    EXPECT_EQ(propertyListFromData(fileOf({"\x22\x3F\x00\x00\x00"s})).value(), Value(0.5));
    EXPECT_EQ(propertyListFromData(fileOf({"\x14" + std::string(15, '\0') + "\x07"})).value(), Value(7));
    EXPECT_EQ(propertyListFromData(fileOf({"\x14" + std::string(16, '\xFF')})).value(), Value(-1));
    EXPECT_EQ(propertyListFromData(fileOf({"\x14" + std::string(8, '\0') + "\x80" + std::string(7, '\0')})).value(),
              Value(9223372036854775808.0));
    EXPECT_EQ(propertyListFromData(fileOf({"\xD2\x01\x01\x02\x03"s, "\x51k", "\x08", "\x09"})).value(),
              Value(Dictionary{{"k", false}}));
}

// 200 arrays, each of fourteen times the next: 14^200 values from some 4 kB. And a long string, many times.
TEST(BinaryPropertyListReader, RefusesSharingThatGrowsWithoutBound) {
    std::vector<std::string> objects;
    for (int i = 1; i < 200; ++i) objects.push_back("\xAE" + std::string(14, static_cast<char>(i)));
    objects.push_back("\x08");
    EXPECT_NE(describedError(fileOf(objects)).find("out of proportion"), std::string::npos);
    const std::string text = "\x5F\x11\x75\x30" + std::string(30000, 'x');
    EXPECT_NE(describedError(fileOf({"\xAF\x11\x13\x88" + std::string(5000, '\x01'), text})).find("out of proportion"),
              std::string::npos);
}

TEST(BinaryPropertyListReader, RefusesDeepNesting) {
    std::string file = "bplist00", offsets;
    constexpr int kCount = 600;
    for (int i = 0; i < kCount; ++i) {
        offsets += {static_cast<char>(file.size() >> 8), static_cast<char>(file.size())};
        file +=
            i + 1 < kCount ? std::string{'\xA1', static_cast<char>((i + 1) >> 8), static_cast<char>(i + 1)} : "\x08";
    }
    const std::size_t table = file.size();
    file += offsets + std::string(6, '\0') + "\x02\x02" + std::string(6, '\0') + static_cast<char>(kCount >> 8) +
            static_cast<char>(kCount & 0xFF) + std::string(14, '\0') + static_cast<char>(table >> 8) +
            static_cast<char>(table);
    EXPECT_EQ(describedError(file), "Binary property list, object 512: containers are nested deeper than 512.");
}

TEST(XMLPropertyListReader, SaysWhatIsWrongAndWhere) {
    struct Row {
        std::string file, error;
    };
    std::string deep;
    for (int i = 0; i < 100000; ++i) deep += "<array>";
    const std::vector<Row> rows{
        {"", "line 1: the file ends too early"},
        {"hello", "line 1: text stands where an element is expected"},
        {"<plist>\n<array>\n<integer>x</integer>", "line 3: the <integer> is unreadable"},
        {"<plist><dict><integer>1</integer></dict></plist>", "line 1: <integer> has no key"},
        {"<dict><key>a</key></dict>", "line 1: the key “a” has no value"},
        {"<dict><key>a</key><key>b</key></dict>", "line 1: a key stands where a value is expected"},
        {"<key>a</key>", "line 1: a key stands where a value is expected"},
        {"<array></dict>", "line 1: </dict> closes nothing"},
        {"<plist><true/><true/></plist>", "line 1: more than one value"},
        {"<plist><true/>", "line 1: the file ends too early"},
        {"<plist></plist>", "line 1: </plist> closes nothing"},
        {"<set/>", "line 1: <set> is unknown"},
        {"<string>a<b/></string>", "line 1: <b> stands inside <string>"},
        {"<string>a", "line 1: the <string> does not end"},
        {"<string>&lol;</string>", "line 1: a character reference is unreadable"},
        {"<string>&#xD800;</string>", "line 1: a character reference is unreadable"},
        {"<string>&#0;</string>", "line 1: a character reference is unreadable"},
        {"<!DOCTYPE plist [<!ENTITY a \"b\">]>", "line 1: declarations are not allowed"},
        {"<!-- x", "line 1: “-->” is missing"},
        {"<array a='", "line 1: “'” is missing"},
        {"<array", "line 1: a tag is not closed"},
        {"<date>2024-05-01</date>", "line 1: the <date> is unreadable"},
        {"<date>2024-13-01T00:00:00Z</date>", "line 1: the <date> is unreadable"},
        {"<data>AAA</data>", "line 1: the <data> is unreadable"},
        {"<integer>-9223372036854775809</integer>", "line 1: the <integer> is unreadable"},
        {"<real></real>", "line 1: the <real> is unreadable"},
        {"<true>x</true>", "line 1: the <true> is unreadable"},
        {deep, "line 1: containers are nested deeper than 512"},
    };
    for (const Row& row : rows) EXPECT_EQ(describedError(row.file), "XML property list, " + row.error + ".");
}

TEST(XMLPropertyListReader, ReadsWhatOthersWrite) {
    struct Row {
        std::string file;
        Value value;
    };
    const std::vector<Row> rows{
        {"\xEF\xBB\xBF<?xml version='1.0'?>\n<!-- > --><plist version='>'>\n<true />\n</plist>\n", true},
        {"<string>a&amp;&#x1F600;&#65;<![CDATA[<b>&]]>\r\n<!-- c -->\rd</string>", "a&\U0001F600A<b>&\n\nd"},
        {"<string/>", ""},
        {"<data/>", Data()},
        {"<integer> +0x1F </integer>", 31},
        {"<integer>18446744073709551615</integer>", 18446744073709551615.0},
        {"<integer>-9223372036854775808</integer>", std::numeric_limits<std::int64_t>::min()},
        {"<real>+1e3</real>", 1000.0},
        {"<date>1999-12-31T23:59:59Z</date>", Date{-31622401}},
        {"<false></false>", false},
        {"<dict><key>CF$UID</key><integer>7</integer></dict>", UID{7}},
        {"<dict><key>CF$UID</key><integer>-7</integer></dict>", Dictionary{{"CF$UID", -7}}},
        {"<dict><key>a</key><true/><key>a</key><false/></dict>", Dictionary{{"a", true}}},
    };
    for (const Row& row : rows) EXPECT_EQ(propertyListFromData(row.file).value(), row.value) << row.file;
    std::string wide = "\xFE\xFF";
    for (const char c : std::string_view("<string>x</string>")) wide += std::string{'\0', c};
    EXPECT_EQ(propertyListFromData(wide).value(), Value("x"));
}

} // namespace
} // namespace platform
