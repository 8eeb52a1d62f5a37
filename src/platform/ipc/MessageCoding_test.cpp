#include "platform/ipc/MessageCoding.h"

#include <cerrno>
#include <string>

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include "platform/base/UTF16.h"
#include "platform/ipc/VariantCoding.h"

namespace platform {
namespace {

Dictionary roundTripped(const Dictionary& dictionary) {
    const Result<std::string> bytes = encodedMessage(dictionary);
    EXPECT_TRUE(bytes);
    const Result<Dictionary> decoded = decodedMessage(bytes.value_or(""));
    EXPECT_TRUE(decoded) << (decoded ? "" : decoded.error().description());
    return decoded.value_or(Dictionary());
}

TEST(MessageCoding, KeepsEveryKindOfValue) {
    const Dictionary dictionary{
        {"bool", Value(true)},
        {"integer", Value(std::int64_t{-5'000'000'000})},
        {"real", Value(0.1)},
        {"string", Value("Größe 🎈")},
        {"data", Value(Data(std::string("\0\xFF", 2)))},
        {"strings", Value(Array{Value("a"), Value("b")})},
        {"dictionaries", Value(Array{Value(Dictionary{{"name", Value("x")}}), Value(Dictionary())})},
        {"mixed", Value(Array{Value(1), Value("two"), Value(Array{Value(3.0)})})},
        {"empty", Value(Array())},
        {"dictionary", Value(Dictionary{{"key", Value(false)}})},
    };
    EXPECT_EQ(roundTripped(dictionary), dictionary);
    EXPECT_EQ(roundTripped({}), Dictionary());
}

TEST(MessageCoding, KeepsErrorsWithTheirUnderlyingErrors) {
    const Error error = errorFromErrno(ENOENT, FileAccess::reading, "/no/file");
    ASSERT_NE(error.underlyingError(), nullptr);
    EXPECT_EQ(roundTripped({{"Error", Value(error)}}), (Dictionary{{"Error", Value(error)}}));
}

TEST(MessageCoding, ReplacesWhatUTF8WithoutNulCannotHold) {
    const Dictionary dictionary{{"text", Value(std::u16string(u"a\xDBFF"
                                                              u"b\0c",
                                                              5))}};
    EXPECT_EQ(roundTripped(dictionary).at("text"), Value(std::u16string(u"a\uFFFDb\uFFFDc")));
}

TEST(MessageCoding, LeavesNullsOut) {
    EXPECT_EQ(roundTripped({{"null", Value()}}), Dictionary());
}

TEST(MessageCoding, GivesEmptyListsTheSignatureOfTheirKey) {
    constexpr std::array kLists{ListSignature{"Items", "a{sv}"}, ListSignature{"Error Notes", "s"}};
    const Result<std::string> typed =
        encodedMessage({{"Items", Value(Array())}, {"Error Notes", Value(Array())}}, kLists);
    ASSERT_TRUE(typed);
    EXPECT_NE(typed->find("aa{sv}"), std::string::npos);
    EXPECT_NE(typed->find("as"), std::string::npos);
    EXPECT_EQ(typed->find("av"), std::string::npos);
}

TEST(MessageCoding, RefusesWhatABusWouldDropTheSenderFor) {
    Dictionary nested;
    for (int depth = 0; depth < kMaximumMessageDepth - 1; ++depth) nested = Dictionary{{"k", Value(nested)}};
    EXPECT_EQ(roundTripped(nested), nested);
    for (int depth = 0; depth < 10; ++depth) nested = Dictionary{{"k", Value(nested)}};
    const Result<std::string> refused = encodedMessage(nested);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().code, EMSGSIZE);
}

TEST(MessageCoding, RefusesDamagedBytes) {
    EXPECT_FALSE(decodedMessage("x"));
    EXPECT_FALSE(decodedMessage(std::string_view("\0\0\0\0\0\0\0\0\0", 9)));
    const std::string whole = encodedMessage({{"key", Value("value")}, {"n", Value(7)}}).value();
    for (std::size_t size = 1; size < whole.size(); ++size) {
        const Result<Dictionary> cut = decodedMessage(std::string_view(whole).substr(0, size));
        EXPECT_TRUE(!cut || *cut != decodedMessage(whole).value()) << size;
    }
}

TEST(MessageCoding, TextsRoundTrip) {
    EXPECT_TRUE(rc::check([](const std::map<std::string, std::int64_t>& integers, const std::u16string& text) {
        Dictionary dictionary;
        for (const auto& [key, integer] : integers)
            if (isValidUTF8(key) && key.find('\0') == std::string::npos) dictionary.emplace(key, Value(integer));
        RC_ASSERT(roundTripped(dictionary) == dictionary);
        // What has been through once goes through unchanged.
        const Dictionary once = roundTripped({{"text", Value(text)}});
        RC_ASSERT(roundTripped(once) == once);
    }));
}

TEST(MessageTuples, ConvertToTheirSignature) {
    const Result<Variant> tuple = variantTuple({Value("file:///x"), Value(1), Value(2), Value(3), Value(4)}, "(sttuu)");
    ASSERT_TRUE(tuple);
    EXPECT_EQ(valuesOf(tuple->get()).value(), (Array{Value("file:///x"), Value(1), Value(2), Value(3), Value(4)}));
    EXPECT_FALSE(variantTuple({Value(1)}, "(s)"));
    EXPECT_FALSE(variantTuple({Value("no path")}, "(o)"));
    EXPECT_FALSE(variantTuple({Value("x")}, "(ss)"));
    EXPECT_FALSE(variantTuple({Value("x")}, "nonsense"));
}

} // namespace
} // namespace platform
