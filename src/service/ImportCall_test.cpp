#include "service/ImportCall.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/ipc/BusError.h"

namespace quillet {
namespace {

using platform::Array;
using platform::Dictionary;
using platform::Result;
using platform::Value;

const Value kFile("file:///a%20directory/an%20export.enex"), kDirectory("file:///where/the%20outputs/go/"),
    kNoOptions((Dictionary()));

TEST(ImportCall, TakesFileURLsOfThisMachineAndOptions) {
    const Dictionary options{
        {"Debug", Value(true)}, {"QLTImportENEXOptionWebClippingsAsNotes", Value(0)}, {"Later", Value("x")}};
    for (const char* directory : {"file:///out", "file://localhost/out", "file:/out"}) {
        const Result<ImportCall> call = ImportCall::fromArguments({kFile, Value(options), Value(directory)});
        ASSERT_TRUE(call) << directory;
        EXPECT_EQ(call->file.path(), "/a directory/an export.enex");
        EXPECT_EQ(call->directory.path(), "/out");
        EXPECT_EQ(call->options, options);
    }
}

TEST(ImportCall, RefusesWhatIsNone) {
    const std::vector<Array> cases{
        {},
        {kFile, kNoOptions},
        {kFile, kNoOptions, kDirectory, kDirectory},
        {kFile, kDirectory, kNoOptions},
        {Value(1), kNoOptions, kDirectory},
        {Value("http://example.org/an-export.enex"), kNoOptions, kDirectory},
        {Value("/a/path"), kNoOptions, kDirectory},
        {kFile, kNoOptions, Value("file://elsewhere/directory")},
        {kFile, kNoOptions, Value("file:///directory%00")},
        {kFile, kNoOptions, Value("")},
        {kFile, Value(Dictionary{{"Debug", Value("true")}}), kDirectory},
        {kFile, Value(Dictionary{{"QLTImportENEXOptionWebClippingsAsNotes", Value(1.0)}}), kDirectory},
    };
    for (std::size_t index = 0; index < cases.size(); ++index) {
        const Result<ImportCall> call = ImportCall::fromArguments(cases[index]);
        ASSERT_FALSE(call) << index;
        EXPECT_EQ(call.error().domain, platform::kBusErrorDomain);
        EXPECT_EQ(call.error().code, static_cast<std::int64_t>(platform::BusError::invalidArguments)) << index;
    }
}

TEST(ImportCall, RepeatsNoMoreOfAnArgumentThanTellsWhichItIs) {
    const std::string umlauts = [] {
        std::string text = "x";
        for (int count = 0; count < 1000; ++count) text += "ü";
        return text;
    }();
    const auto text = [](const std::string& url) {
        return ImportCall::fromArguments({Value(url), kNoOptions, kDirectory}).error().localizedDescription();
    };
    EXPECT_EQ(text("short"), "The export \"short\" is no file URL.");
    EXPECT_LT(text(umlauts).size(), 300U);
    EXPECT_NE(text(umlauts).find("ü…\""), std::string::npos); // cut between two characters
}

} // namespace
} // namespace quillet
