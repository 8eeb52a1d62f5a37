#include "platform/foundation/Base64.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include "platform/foundation/Digest.h"

namespace platform {
namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// The rules one after another, with no thought for speed.
std::optional<std::string> decodedNaively(std::string_view text) {
    std::string kept;
    for (const char c : text)
        if (c == '=' || kAlphabet.find(c) != std::string_view::npos) kept += c;
    if (kept.size() % 4 != 0) return std::nullopt;
    const std::size_t padding = kept.find('=') == std::string::npos ? 0 : kept.size() - kept.find('=');
    if (padding > 2 || kept.find_first_not_of('=', kept.size() - padding) != std::string::npos) return std::nullopt;
    std::string bytes;
    unsigned bits = 0, count = 0;
    for (const char c : kept.substr(0, kept.size() - padding)) {
        bits = bits << 6 | static_cast<unsigned>(kAlphabet.find(c));
        count += 6;
        if (count >= 8) bytes += static_cast<char>(bits >> (count -= 8) & 0xFF);
    }
    return bytes;
}

TEST(Base64, DecodesWithJunkAndRefusesBadPadding) {
    struct Row {
        std::string_view text;
        std::optional<std::string> bytes;
    };
    const std::vector<Row> rows{
        {"", ""},
        {" \n-_.", ""},
        {"YWJj", "abc"},
        {"YWI=", "ab"},
        {"YQ==", "a"},
        {"YR==", "a"}, // bits over
        {"Y W\nJ\tj\r\n", "abc"},
        {" YWJjYWJj", "abcabc"},
        {"YWJjY-WJj", "abcabc"},
        {"Y\nQ\n=\n=\n", "a"},
        {"YWJ", std::nullopt},
        {"Y", std::nullopt},
        {"=", std::nullopt},
        {"====", std::nullopt},
        {"Y===", std::nullopt},
        {"YQ=", std::nullopt},
        {"YWJj====", std::nullopt},
        {"YWJjYQ=", std::nullopt},
        {"YQ==YWJj", std::nullopt},
        {"YQ=Y", std::nullopt},
        {"YWJj==", std::nullopt},
        {"YQ===", std::nullopt},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(base64Decoded(row.text), row.bytes) << row.text;
        EXPECT_EQ(decodedNaively(row.text), row.bytes) << row.text;
    }
}

TEST(Base64, EncodesTheStandardsVectors) {
    struct Row {
        std::string_view bytes, text;
    };
    for (const Row& row : {Row{"", ""}, Row{"f", "Zg=="}, Row{"fo", "Zm8="}, Row{"foo", "Zm9v"},
                           Row{"foob", "Zm9vYg=="}, Row{"fooba", "Zm9vYmE="}, Row{"foobar", "Zm9vYmFy"}}) {
        EXPECT_EQ(base64Encoded(row.bytes), row.text);
        EXPECT_EQ(base64Decoded(row.text), row.bytes);
    }
    std::string url = "data:image/png;base64,";
    appendBase64(url, "\xFF\xFE\xFD");
    EXPECT_EQ(url, "data:image/png;base64,//79");
}

TEST(Base64, LinesOfAnyLengthDecodeToTheSameBytes) {
    EXPECT_TRUE(rc::check([](const std::string& bytes) {
        const std::string text = base64Encoded(bytes);
        const std::size_t length = *rc::gen::inRange<std::size_t>(1, 80);
        std::string lines;
        for (std::size_t i = 0; i < text.size(); i += length) lines += text.substr(i, length) + "\r\n \t";
        RC_ASSERT(base64Decoded(lines) == bytes);
        RC_ASSERT(base64Decoded(text) == bytes);
        RC_ASSERT(text.size() == base64EncodedSize(bytes.size()));
    }));
}

TEST(Base64, AgreesWithTheRulesOnAnyText) {
    const auto character = rc::gen::weightedOneOf<char>(
        {{20, rc::gen::elementOf(std::string(kAlphabet))}, {2, rc::gen::just('=')}, {1, rc::gen::arbitrary<char>()}});
    EXPECT_TRUE(rc::check([&] {
        std::string text = *rc::gen::container<std::string>(character);
        RC_ASSERT(base64Decoded(text) == decodedNaively(text));
        // Most random texts are malformed: with the "=" moved to the end, many are not.
        std::erase(text, '=');
        while (text.size() % 4) text += '=';
        RC_ASSERT(base64Decoded(text) == decodedNaively(text));
    }));
}

TEST(Digest, MD5OfTheStandardsVectors) {
    EXPECT_EQ(hexadecimalString(md5Checksum("abc")), "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(hexadecimalString(md5Checksum("")), "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(hexadecimalString(
                  md5Checksum("12345678901234567890123456789012345678901234567890123456789012345678901234567890")),
              "57edf4a22be3c955ac49da2e2107b67a");
}

} // namespace
} // namespace platform
